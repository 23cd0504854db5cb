// The page of clip A lifts from its bottom right corner and rolls towards
// the top left around a cylinder; its back shows pale and the page casts a
// shadow on clip B underneath.
vec4 transition(vec2 uv)
{
    vec2 dir = normalize(vec2(-1.0, 1.0 / ratio));
    vec2 q = vec2(uv.x * ratio, uv.y);
    vec2 corner = vec2(ratio, 0.0);
    float span = dot(vec2(0.0, 1.0) - corner, dir) + 2.0 * ufmCurlRadius;
    float d = dot(q - corner, dir) - progress * span;
    float r = ufmCurlRadius;
    if (d > r) return getFromColor(uv);
    if (d > 0.0) {
        // On the curl: the front of the page, bent over the cylinder.
        float angle = asin(d / r);
        vec2 back = q - dir * (d - angle * r);
        vec2 st = vec2(back.x / ratio, back.y);
        if (all(greaterThanEqual(st, vec2(0.0))) && all(lessThanEqual(st, vec2(1.0))))
            return getFromColor(st) * (0.75 + 0.25 * cos(angle));
        return getToColor(uv);
    }
    // Behind the edge: the underside of the rolled page, else B in its shadow.
    float angle = PI - asin(clamp(-d / r, 0.0, 1.0));
    vec2 under = q - dir * (d - angle * r);
    vec2 st = vec2(under.x / ratio, under.y);
    if (-d < r && all(greaterThanEqual(st, vec2(0.0))) && all(lessThanEqual(st, vec2(1.0)))) {
        vec4 c = getFromColor(st);
        return vec4(mix(c.rgb, vec3(0.92), 0.65), c.a);
    }
    float shadow = 1.0 - 0.5 * smoothstep(r * 2.5, 0.0, -d);
    vec4 b = getToColor(uv);
    return vec4(b.rgb * shadow, b.a);
}
