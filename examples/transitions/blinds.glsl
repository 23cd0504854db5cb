// Horizontal slats turn from the outgoing clip to the incoming one, the top
// slat first.
uniform float slats; // = 8.0

vec4 transition(vec2 uv)
{
    float row = floor((1.0 - uv.y) * slats);
    float delay = row / slats * 0.5;
    float turn = clamp((progress - delay) * 2.0, 0.0, 1.0);
    float within = fract((1.0 - uv.y) * slats);
    return within < turn ? getToColor(uv) : getFromColor(uv);
}
