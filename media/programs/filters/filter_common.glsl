// Shared by the filter programs, included right after the version line.
// Pictures come in and go out with straight (not premultiplied) alpha;
// vUv is (0, 0) at the top left of the picture.
varying vec2 vUv;

uniform sampler2D inputImageTexture;

// Luma weights of video (BT.601).
const vec3 kLuma = vec3(0.299, 0.587, 0.114);

float luma(vec3 c)
{
    return dot(c, kLuma);
}

vec4 picture(vec2 uv)
{
    return texture2D(inputImageTexture, uv);
}

// Transparent outside the picture, for effects that move it.
vec4 pictureOrClear(vec2 uv)
{
    if (uv.x < 0.0 || uv.y < 0.0 || uv.x > 1.0 || uv.y > 1.0) {
        return vec4(0.0);
    }
    return texture2D(inputImageTexture, uv);
}

// A repeatable pseudo-random number in [0, 1) for a point of the plane.
float hash12(vec2 p)
{
    vec3 q = fract(vec3(p.xyx) * 0.1031);
    q += dot(q, q.yzx + 33.33);
    return fract((q.x + q.y) * q.z);
}

// Smooth value noise in [0, 1).
float noise12(vec2 p)
{
    vec2 i = floor(p);
    vec2 f = fract(p);
    vec2 w = f * f * (3.0 - 2.0 * f);
    float a = hash12(i);
    float b = hash12(i + vec2(1.0, 0.0));
    float c = hash12(i + vec2(0.0, 1.0));
    float d = hash12(i + vec2(1.0, 1.0));
    return mix(mix(a, b, w.x), mix(c, d, w.x), w.y);
}

// YIQ, whose chroma plane turns hues by a plain rotation.
vec3 rgbToYiq(vec3 c)
{
    return vec3(dot(c, vec3(0.299, 0.587, 0.114)),
                dot(c, vec3(0.595716, -0.274453, -0.321263)),
                dot(c, vec3(0.211456, -0.522591, 0.311135)));
}

vec3 yiqToRgb(vec3 c)
{
    return vec3(dot(c, vec3(1.0, 0.9563, 0.6210)),
                dot(c, vec3(1.0, -0.2721, -0.6474)),
                dot(c, vec3(1.0, -1.1070, 1.7046)));
}

vec3 rotateHue(vec3 c, float radians)
{
    vec3 yiq = rgbToYiq(c);
    float s = sin(radians);
    float k = cos(radians);
    yiq.yz = vec2(yiq.y * k - yiq.z * s, yiq.y * s + yiq.z * k);
    return yiqToRgb(yiq);
}

// Width over height of the picture, from the size the processor sent or,
// when it sent none, from the texture.
float aspectOf(float width, float height, vec4 texel)
{
    if (width > 0.0 && height > 0.0) {
        return width / height;
    }
    return texel.y / texel.x;
}
