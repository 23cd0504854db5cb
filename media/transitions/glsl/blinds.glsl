// Venetian blinds: slats of clip A turn edge-on and clip B shows between them.
vec4 transition(vec2 uv)
{
    float slat = fract(uv.y * ufmCount);
    float open = abs(slat - 0.5) * 2.0;
    return open < progress ? getToColor(uv) : getFromColor(uv);
}
