// Rings spread from the centre: each pixel of the outgoing clip is pushed
// along its ring while the incoming clip fades in beneath.
uniform float amplitude; // = 30.0
uniform float speed; // = 20.0

vec4 transition(vec2 uv)
{
    vec2 fromCentre = uv - vec2(0.5);
    fromCentre.x *= ratio;
    float distanceOut = length(fromCentre);
    vec2 direction = distanceOut > 0.0 ? fromCentre / distanceOut : vec2(0.0);
    direction.x /= ratio;
    float wave = sin(distanceOut * amplitude - progress * speed);
    vec2 pushed = uv + direction * wave * 0.03 * (1.0 - progress) * progress * 4.0;
    return mix(getFromColor(pushed), getToColor(uv), smoothstep(0.2, 0.8, progress));
}
