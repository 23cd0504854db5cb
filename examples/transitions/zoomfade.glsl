// The outgoing clip grows towards the viewer and fades out over the
// incoming one.
uniform float zoom; // = 0.6

vec4 transition(vec2 uv)
{
    vec2 grown = (uv - vec2(0.5)) / (1.0 + zoom * progress) + vec2(0.5);
    vec4 from = getFromColor(grown);
    vec4 to = getToColor(uv);
    return mix(from, to, progress * progress);
}
