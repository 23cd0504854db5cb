// Both clips zoom through the middle with a streaked blur and meet in a
// flash of white.
vec4 transition(vec2 uv)
{
    float amount = sin(progress * PI) * ufmStrength;
    vec2 centre = vec2(mix(0.35, 0.65, progress), 0.5);
    vec2 toCentre = centre - uv;
    float dissolve = smoothstep(0.3, 0.7, progress);
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 16; ++i) {
        float t = (float(i) + noise2(uv * 100.0)) / 16.0;
        vec2 st = uv + toCentre * t * amount;
        sum += mix(getFromColor(st), getToColor(st), dissolve);
    }
    vec4 c = sum / 16.0;
    return vec4(mix(c.rgb, vec3(1.0), amount * 0.6), c.a);
}
