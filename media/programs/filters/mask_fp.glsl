#version 120
// Masks, one define per shape: what lies outside the shape turns
// transparent. Lengths are in picture heights (ufmAspect is width over
// height); the shape turns by ufmOrient degrees about its centre, its edge
// softens over ufmSmoothDiff, and ufmInvert 1 keeps the outside instead.
//   MASK_LINE         the half above a line through the centre moved by
//                     ufmPosition... (fractions of the picture)
//   MASK_DOUBLE_LINE  a band ufmLineWidth wide along that line
//   MASK_CIRCLE       an ellipse of radii ufmCircleSizeX and Y
//   MASK_RECTANGLE    a rectangle of ufmRectangleSizeX x Y of the picture,
//                     centred on ufmPosition... (0.5 0.5 is the middle),
//                     corners rounded by ufmCircleRadius
//   MASK_HEART        a heart in the box of ufmHeartSizeX x Y (scales of a
//                     1024-pixel reference heart)
//   MASK_STAR         a five-pointed star in the box of ufmStarSizeX x Y
#include "filter_common.glsl"

uniform vec4 texelSize;
uniform float ufmSmoothDiff;
uniform float ufmInvert;
uniform float ufmOrient;
uniform float ufmAspect;
uniform float ufmPositionX;
uniform float ufmPositionY;
uniform float ufmLineWidth;
uniform float ufmCircleSizeX;
uniform float ufmCircleSizeY;
uniform float ufmRectangleSizeX;
uniform float ufmRectangleSizeY;
uniform float ufmCircleRadius;
uniform float ufmHeartSizeX;
uniform float ufmHeartSizeY;
uniform float ufmStarSizeX;
uniform float ufmStarSizeY;

// Signed distance to a five-pointed star of outer radius r pointing up
// (y down), inner radius 0.382 r: folded into one tenth of the circle.
float starDistance(vec2 p, float r)
{
    float angle = atan(p.x, -p.y);
    float sector = 6.28318531 / 5.0;
    float a = mod(angle + sector * 0.5, sector) - sector * 0.5;
    vec2 q = length(p) * vec2(abs(sin(a)), cos(a));
    vec2 tip = vec2(0.0, r);
    vec2 valley = 0.382 * r * vec2(sin(sector * 0.5), cos(sector * 0.5));
    vec2 edge = valley - tip;
    vec2 w = q - tip;
    float h = clamp(dot(w, edge) / dot(edge, edge), 0.0, 1.0);
    float d = length(w - edge * h);
    // Inside when on the centre's side of the edge.
    float side = edge.x * w.y - edge.y * w.x;
    return side < 0.0 ? -d : d;
}

// Signed distance (approximate) to a heart filling [-1, 1] x [-1, 1], y down.
float heartDistance(vec2 p)
{
    // The curve (x^2 + y^2 - 1)^3 = x^2 y^3 spans x in +-1.139 and y from
    // -1 to 1.236 (y up); map the box onto that.
    vec2 h = vec2(p.x * 1.139, 0.118 - p.y * 1.118);
    float a = dot(h, h) - 1.0;
    float f = a * a * a - h.x * h.x * h.y * h.y * h.y;
    vec2 gradient = vec2(6.0 * h.x * a * a - 2.0 * h.x * h.y * h.y * h.y,
                         6.0 * h.y * a * a - 3.0 * h.x * h.x * h.y * h.y);
    return f / max(length(gradient), 0.05) / 1.118;
}

void main()
{
    vec4 colour = picture(vUv);
    float aspect = ufmAspect > 0.0 ? ufmAspect : texelSize.y / texelSize.x;

#if defined(MASK_RECTANGLE)
    vec2 centre = vec2(ufmPositionX, ufmPositionY);
#else
    vec2 centre = vec2(0.5 + ufmPositionX, 0.5 + ufmPositionY);
#endif
    vec2 p = (vUv - centre) * vec2(aspect, 1.0);
    float turn = radians(ufmOrient);
    float s = sin(turn);
    float k = cos(turn);
    p = vec2(p.x * k + p.y * s, -p.x * s + p.y * k);

    float d;
#if defined(MASK_LINE)
    d = p.y;
#elif defined(MASK_DOUBLE_LINE)
    d = abs(p.y) - ufmLineWidth * 0.5;
#elif defined(MASK_CIRCLE)
    vec2 radii = max(vec2(ufmCircleSizeX, ufmCircleSizeY), vec2(0.0001));
    d = (length(p / radii) - 1.0) * min(radii.x, radii.y);
#elif defined(MASK_RECTANGLE)
    vec2 halfSize = vec2(ufmRectangleSizeX * aspect, ufmRectangleSizeY) * 0.5;
    float r = clamp(ufmCircleRadius, 0.0, min(halfSize.x, halfSize.y));
    vec2 q = abs(p) - halfSize + r;
    d = length(max(q, 0.0)) + min(max(q.x, q.y), 0.0) - r;
#elif defined(MASK_HEART)
    vec2 halfSize = vec2(ufmHeartSizeX * 601.94 / 1024.0 * aspect, ufmHeartSizeY * 540.34 / 1024.0) * 0.5;
    if (halfSize.x <= 0.0 || halfSize.y <= 0.0) {
        d = 1.0;
    } else {
        d = heartDistance(p / halfSize) * min(halfSize.x, halfSize.y);
    }
#elif defined(MASK_STAR)
    vec2 box = vec2(ufmStarSizeX * 578.0 / 1024.0 * aspect, ufmStarSizeY * 552.0 / 1024.0);
    if (box.x <= 0.0 || box.y <= 0.0) {
        d = 1.0;
    } else {
        // The star's outer radius from the box height (1.809 radii), its
        // centre a little below the middle of the box; x is scaled to fit.
        float radius = box.y / 1.809;
        vec2 q = vec2(p.x * (box.y * 1.0515) / box.x, p.y - 0.0955 * radius);
        d = starDistance(q, radius);
    }
#endif

    float soft = max(ufmSmoothDiff, 0.0) * 0.5;
    float inside = soft > 0.0 ? 1.0 - smoothstep(-soft, soft, d) : 1.0 - step(0.0, d);
    if (ufmInvert > 0.5) {
        inside = 1.0 - inside;
    }
    gl_FragColor = vec4(colour.rgb, colour.a * inside);
}
