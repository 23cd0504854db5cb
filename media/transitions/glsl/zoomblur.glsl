// Clip A rushes into the centre with a radial blur, clip B comes out of it.
vec4 transition(vec2 uv)
{
    float amount = sin(progress * PI) * ufmStrength;
    vec2 toCentre = vec2(0.5) - uv;
    vec4 sum = vec4(0.0);
    for (int i = 0; i < 16; ++i) {
        float t = float(i) / 15.0;
        vec2 st = uv + toCentre * t * amount;
        sum += mix(getFromColor(st), getToColor(st), smoothstep(0.4, 0.6, progress));
    }
    return sum / 16.0;
}
