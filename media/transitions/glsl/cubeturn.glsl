// The two clips are faces of a cube that turns to the left: A swings away
// on the left, B comes round from the right, both shrinking into depth.
vec4 sampleFace(vec2 st, bool from)
{
    if (st.x < 0.0 || st.x > 1.0 || st.y < 0.0 || st.y > 1.0) return vec4(0.0, 0.0, 0.0, 1.0);
    return from ? getFromColor(st) : getToColor(st);
}

vec4 transition(vec2 uv)
{
    float edge = 1.0 - progress;
    float depth = ufmPerspective * sin(progress * PI) * 0.25;
    if (uv.x < edge) {
        // Face A, squeezed into [0, edge], its right edge nearer.
        float x = uv.x / max(edge, 1e-4);
        float scale = 1.0 - depth * (1.0 - x) * 2.0 * progress;
        vec2 st = vec2(x, (uv.y - 0.5) / max(scale, 1e-4) + 0.5);
        return sampleFace(st, true) * (1.0 - 0.5 * progress);
    }
    float x = (uv.x - edge) / max(progress, 1e-4);
    float scale = 1.0 - depth * x * 2.0 * (1.0 - progress);
    vec2 st = vec2(x, (uv.y - 0.5) / max(scale, 1e-4) + 0.5);
    return sampleFace(st, false) * (0.5 + 0.5 * progress);
}
