#version 120
// Vertex program of every text material: glyph meshes, the plane that shows
// a track's render texture and the background box.
attribute vec4 vertex;
attribute vec2 uv0;

uniform mat4 worldViewProj;

varying vec2 oUv0;

void main()
{
    gl_Position = worldViewProj * vertex;
    oUv0 = uv0;
}
