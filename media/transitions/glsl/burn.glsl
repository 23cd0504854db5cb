// Clip A burns away in ragged holes with glowing edges, showing clip B.
float burnNoise(vec2 p)
{
    vec2 i = floor(p);
    vec2 f = fract(p);
    f = f * f * (3.0 - 2.0 * f);
    return mix(mix(noise2(i), noise2(i + vec2(1.0, 0.0)), f.x),
               mix(noise2(i + vec2(0.0, 1.0)), noise2(i + vec2(1.0, 1.0)), f.x), f.y);
}

vec4 transition(vec2 uv)
{
    vec2 q = uv * vec2(ratio, 1.0) * 6.0;
    float n = 0.5 * burnNoise(q) + 0.25 * burnNoise(q * 2.0) + 0.125 * burnNoise(q * 4.0) + 0.125 * burnNoise(q * 8.0);
    float level = progress * (1.0 + ufmEdge) - ufmEdge;
    if (n < level) return getToColor(uv);
    float glow = 1.0 - smoothstep(level, level + ufmEdge, n);
    vec4 a = getFromColor(uv);
    vec3 fire = mix(vec3(1.0, 0.9, 0.3), vec3(0.6, 0.05, 0.0), glow);
    vec3 charred = a.rgb * (1.0 - glow * 0.8);
    return vec4(mix(charred, fire, glow * glow * step(0.001, progress)), a.a);
}
