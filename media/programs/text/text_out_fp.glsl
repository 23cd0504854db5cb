#version 120
// Shows a track's render texture in the main scene. The texture has no alpha
// channel and a black background: ink is what differs from black, and its
// strongest channel is the coverage. Outside the canvas window nothing shows.
uniform sampler2D inputImageTexture;
uniform float textCanvasMaxX;
uniform float textCanvasMinX;
uniform float textCanvasMaxY;
uniform float textCanvasMinY;

varying vec2 oUv0;

void main()
{
    if (oUv0.x < textCanvasMinX || oUv0.x > textCanvasMaxX ||
        1.0 - oUv0.y < textCanvasMinY || 1.0 - oUv0.y > textCanvasMaxY)
        discard;
    vec3 colour = texture2D(inputImageTexture, oUv0).rgb;
    float alpha = clamp(max(colour.r, max(colour.g, colour.b)) * 8.0, 0.0, 1.0);
    gl_FragColor = vec4(colour / max(alpha, 1.0 / 255.0), alpha);
}
