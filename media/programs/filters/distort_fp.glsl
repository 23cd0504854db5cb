#version 120
// Distortions, one define per filter; lengths are in picture heights unless
// said otherwise.
//   FISH_EYE      a lens over the ellipse of ufmFishEyeWidth x Height (1 is
//                 the whole picture) around the centre moved by
//                 ufmFishEyePos..., magnifying its middle by 1 + ufmPushOutSize / 2
//   WHIRLPOOL     turns the picture by up to ufmAngle radians inside ufmRadius
//   GLASS         a glass ball of ufmRadius in the middle, its refraction by
//                 ufmRefractiveIndex; ufmAspectRatio stretches it across
//   SHAPE         bulges (ufmScale above 0) or pinches (below) the middle
//                 within ufmRadius; ufmScale 0 leaves the picture alone
//   ZOOM_RESTORE  from the rectangle ufmZoom... (fractions of the picture)
//                 back to the whole picture, between the progress values
//                 ufmStart and ufmEnd
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmImageWidth;
uniform float ufmImageHeight;
uniform float ufmFishEyeWidth;
uniform float ufmFishEyeHeight;
uniform float ufmFishEyePosX;
uniform float ufmFishEyePosY;
uniform float ufmPushOutSize;
uniform float ufmRadius;
uniform float ufmAngle;
uniform float ufmAspectRatio;
uniform float ufmRefractiveIndex;
uniform float ufmScale;
uniform float ufmStart;
uniform float ufmEnd;
uniform float ufmZoomX;
uniform float ufmZoomY;
uniform float ufmZoomWidth;
uniform float ufmZoomHeight;
uniform float ufmProgress;

void main()
{
    float aspect = aspectOf(ufmImageWidth, ufmImageHeight, texelSize);
    // Picture heights from the centre, x to the right, y down.
    vec2 p = (vUv - 0.5) * vec2(aspect, 1.0);
    vec2 uv = vUv;
    vec3 shade = vec3(1.0);

#if defined(FISH_EYE)
    vec2 centre = vec2(0.5 + ufmFishEyePosX, 0.5 + ufmFishEyePosY);
    vec2 halfSize = max(vec2(ufmFishEyeWidth, ufmFishEyeHeight) * 0.5, vec2(0.0001));
    vec2 q = (vUv - centre) / halfSize;
    float r = length(q);
    if (r < 1.0) {
        float k = clamp(ufmPushOutSize * 0.5, -0.9, 0.9);
        uv = centre + q * (1.0 - k + k * r) * halfSize;
    }
#elif defined(WHIRLPOOL)
    float radius = max(ufmRadius, 0.0001);
    float d = length(p);
    if (d < radius) {
        float f = 1.0 - d / radius;
        float turn = ufmAngle * f * f;
        float s = sin(turn);
        float k = cos(turn);
        vec2 q = vec2(p.x * k - p.y * s, p.x * s + p.y * k);
        uv = q / vec2(aspect, 1.0) + 0.5;
    }
#elif defined(GLASS)
    float radius = max(ufmRadius, 0.0001);
    vec2 q = p / vec2(max(ufmAspectRatio, 0.0001), 1.0);
    float d = length(q) / radius;
    if (d < 1.0) {
        vec3 normal = vec3(q / radius, sqrt(1.0 - d * d));
        vec3 bent = refract(vec3(0.0, 0.0, -1.0), normal, ufmRefractiveIndex);
        vec2 offset = bent.xy * radius * vec2(max(ufmAspectRatio, 0.0001), 1.0);
        uv = (p + offset) / vec2(aspect, 1.0) + 0.5;
        // A lit rim and a glint at the top left make it read as glass.
        float rim = smoothstep(0.7, 1.0, d);
        float glint = pow(max(dot(normal, normalize(vec3(-0.4, -0.5, 0.75))), 0.0), 40.0);
        shade = vec3(1.0 - 0.25 * rim) + glint * 0.6;
    }
#elif defined(SHAPE)
    vec2 q = p / vec2(max(ufmAspectRatio, 0.0001), 1.0);
    float radius = max(ufmRadius, 0.0001) * 0.5;
    float d = length(q);
    if (d < radius) {
        float f = 1.0 - d / radius;
        float factor = 1.0 - clamp(ufmScale, -1.0, 1.0) * 0.5 * f * f;
        uv = (p * factor) / vec2(aspect, 1.0) + 0.5;
    }
#elif defined(ZOOM_RESTORE)
    float span = max(ufmEnd - ufmStart, 0.0001);
    float t = smoothstep(0.0, 1.0, clamp((ufmProgress - ufmStart) / span, 0.0, 1.0));
    vec2 origin = mix(vec2(ufmZoomX, ufmZoomY), vec2(0.0), t);
    vec2 size = mix(vec2(ufmZoomWidth, ufmZoomHeight), vec2(1.0), t);
    uv = origin + vUv * size;
#endif

    vec4 colour = picture(uv);
    gl_FragColor = vec4(clamp(colour.rgb * shade, 0.0, 1.0), colour.a);
}
