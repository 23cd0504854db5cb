// Helpers of the library's own transitions (a .glsl file of a user's does
// not get them). The pixel helpers count as the frame does on the processor:
// column from the left, row from the top, each pixel sampled at its centre.

// The size in pixels of the rectangle the transition runs in (the whole
// frame unless the clips are smaller).
vec2 frameSize()
{
    return floor(transitionFramePixels * clipArea().zw + 0.5);
}

// Column and row (from the top) of the pixel at uv.
vec2 pixelOf(vec2 uv)
{
    return floor(vec2(uv.x, 1.0 - uv.y) * frameSize());
}

// uv of the centre of pixel (column, row from the top).
vec2 uvOfPixel(vec2 px)
{
    vec2 st = (px + 0.5) / frameSize();
    return vec2(st.x, 1.0 - st.y);
}

vec4 fromPixel(vec2 px) { return getFromColor(uvOfPixel(px)); }
vec4 toPixel(vec2 px) { return getToColor(uvOfPixel(px)); }

// A repeatable value in [0, 1) for a pixel or a cell.
float noise2(vec2 co)
{
    return fract(sin(dot(co, vec2(12.9898, 78.233))) * 43758.5453);
}

// The plain average of the three channels in whole levels, the grey a
// processor's RGB pipeline computes.
float grayOf(vec3 c)
{
    return floor((c.r + c.g + c.b) * 255.0 / 3.0 + 0.001) / 255.0;
}

// Rec. 709 luma.
float luma(vec3 c)
{
    return dot(c, vec3(0.2126, 0.7152, 0.0722));
}

const float PI = 3.14159265358979;
