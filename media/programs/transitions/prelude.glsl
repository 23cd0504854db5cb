// What every transition function may use, in the open transition format.
// The clips arrive as two pictures of the render window's size, A in unit 0
// and B in unit 1, transparent wherever a clip doesn't cover the frame.
// uv passed to getFromColor / getToColor is (0, 0) at the bottom left of the
// picture as seen; vUv from the vertex program has it at the top left.
varying vec2 vUv;

uniform sampler2D inputImageTexture;
uniform sampler2D inputImageTexture2;
// 0 at the first frame of the transition, towards 1 at the last.
uniform float progress;
// Width / height of the frame.
uniform float ratio;
// 1.0 swaps the roles of the clips: the transition runs from B to A.
uniform float transitionInvert;

vec4 getFromColor(vec2 uv)
{
    vec2 st = vec2(uv.x, 1.0 - uv.y);
    return transitionInvert > 0.5 ? texture2D(inputImageTexture2, st) : texture2D(inputImageTexture, st);
}

vec4 getToColor(vec2 uv)
{
    vec2 st = vec2(uv.x, 1.0 - uv.y);
    return transitionInvert > 0.5 ? texture2D(inputImageTexture, st) : texture2D(inputImageTexture2, st);
}
