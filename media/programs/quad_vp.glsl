#version 120
// Shared vertex program of the quad materials: position and picture
// coordinates through, nothing else.
attribute vec4 vertex;
attribute vec2 uv0;

uniform mat4 worldViewProj;

varying vec2 oUv0;

void main()
{
    gl_Position = worldViewProj * vertex;
    oUv0 = uv0;
}
