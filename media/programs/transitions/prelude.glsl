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

// Where the clips stand in the frame, as fractions of it from its top left:
// left, top, width, height. The transition runs inside this rectangle, so a
// shape centres on the clips rather than on the frame; uv is (0, 0) at the
// rectangle's bottom left. Never set (all zero) stands for the whole frame.
uniform vec4 clipRect;

vec4 clipArea()
{
    return clipRect.z > 0.0 && clipRect.w > 0.0 ? clipRect : vec4(0.0, 0.0, 1.0, 1.0);
}

// The frame's size in pixels, measured by main before the transition runs
// (derivatives are only sure outside any branch).
vec2 transitionFramePixels = vec2(1.0);

// Texture coordinates in the frame-sized pictures of uv in the rectangle.
vec2 frameStOf(vec2 uv)
{
    vec4 r = clipArea();
    return r.xy + vec2(uv.x, 1.0 - uv.y) * r.zw;
}

vec4 getFromColor(vec2 uv)
{
    vec2 st = frameStOf(uv);
    return transitionInvert > 0.5 ? texture2D(inputImageTexture2, st) : texture2D(inputImageTexture, st);
}

vec4 getToColor(vec2 uv)
{
    vec2 st = frameStOf(uv);
    return transitionInvert > 0.5 ? texture2D(inputImageTexture, st) : texture2D(inputImageTexture2, st);
}
