// Clip A opens like two doors to the sides; clip B comes forward from behind
// them, out of the dark.
vec4 transition(vec2 uv)
{
    float leaf = 0.5 * (1.0 - progress);
    vec2 c = uv - 0.5;
    if (abs(c.x) > 0.5 - leaf) {
        // A door: the left or right leaf of A, squeezed towards its hinge.
        float side = sign(c.x);
        float x = side > 0.0 ? 1.0 - (1.0 - uv.x) * 0.5 / max(leaf, 1e-4) : uv.x * 0.5 / max(leaf, 1e-4);
        float lean = 1.0 + progress * 0.3 * abs(x - (side > 0.0 ? 1.0 : 0.0));
        vec2 st = vec2(x, (uv.y - 0.5) / lean + 0.5);
        return getFromColor(st) * (1.0 - 0.6 * progress);
    }
    float zoom = mix(1.0 / ufmDepth, 1.0, progress);
    vec2 st = c * (1.0 / mix(0.6, 1.0, progress)) + 0.5;
    vec4 b = getToColor(clamp(st, 0.0, 1.0));
    return vec4(b.rgb * zoom, b.a);
}
