// Clip B shows first where clip A is darkest: A's own brightness is the key
// that opens the frame.
vec4 transition(vec2 uv)
{
    vec4 a = getFromColor(uv);
    float key = luma(a.rgb);
    float level = progress * (1.0 + ufmSoftness);
    float m = smoothstep(key, key + ufmSoftness + 1e-4, level);
    return mix(a, getToColor(uv), m);
}
