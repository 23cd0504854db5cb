// Rings run out from the centre, carrying clip A away on their crests while
// clip B settles in as they calm.
vec4 transition(vec2 uv)
{
    vec2 d = uv - 0.5;
    d.x *= ratio;
    float dist = length(d);
    vec2 dir = dist > 0.0 ? d / dist : vec2(0.0);
    dir.x /= ratio;
    float strength = sin(progress * PI);
    vec2 offset = dir * sin(dist * ufmAmplitude - progress * ufmSpeed) * 0.03 * strength;
    return mix(getFromColor(uv + offset), getToColor(uv + offset), smoothstep(0.25, 0.75, progress));
}
