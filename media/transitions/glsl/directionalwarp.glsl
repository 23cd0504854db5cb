// A soft front sweeps across the frame along a direction, stretching clip A
// ahead of it and letting clip B settle behind.
vec4 transition(vec2 uv)
{
    vec2 dir = normalize(vec2(ufmDirectionX, ufmDirectionY) + vec2(1e-5));
    float along = dot(uv - 0.5, dir) / (abs(dir.x) * 0.5 + abs(dir.y) * 0.5) * 0.5 + 0.5;
    float m = smoothstep(-0.2, 0.0, progress * 1.2 - along);
    vec2 warpA = uv - dir * m * 0.5 * (1.0 - m) * 0.8 - dir * progress * 0.1;
    vec2 warpB = uv + dir * (1.0 - m) * 0.3 * m;
    return mix(getFromColor(warpA), getToColor(warpB), m);
}
