// A burst of light: clip A flares to white and clip B fades out of the glare.
vec4 transition(vec2 uv)
{
    float glare = pow(sin(progress * PI), 4.0) * ufmIntensity;
    vec4 c = mix(getFromColor(uv), getToColor(uv), smoothstep(0.4, 0.6, progress));
    return vec4(min(c.rgb * (1.0 + glare) + vec3(glare * 0.25), vec3(1.0)), c.a);
}
