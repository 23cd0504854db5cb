#version 120
// The one vertex program of every filter material: the quad's corners go
// through the world-view-projection matrix and its texture coordinates pass
// on untouched, (0, 0) at the top left of the picture.
attribute vec4 vertex;
attribute vec2 uv0;

uniform mat4 worldViewProj;

varying vec2 vUv;

void main()
{
    gl_Position = worldViewProj * vertex;
    vUv = uv0;
}
