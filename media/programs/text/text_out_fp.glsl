#version 120
// Shows a track's render texture in the main scene. The texture holds the
// clip's ink premultiplied by its coverage, which is in alpha, on nothing.
// Outside the canvas window nothing shows.
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
    vec4 ink = texture2D(inputImageTexture, oUv0);
    gl_FragColor = vec4(ink.rgb / max(ink.a, 1.0 / 255.0), ink.a);
}
