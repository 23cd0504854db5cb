"""The transition library: every transition name with its family, its GLSL
function and its uniforms. generate.py turns this table into the material
script of media/materials/ and the C++ table of modules/ogre/src; a new
transition is one row here and one function.

A row is (name, family, function, uniforms). The function is the body of
`vec4 transition(vec2 uv)` in the open transition format (getFromColor,
getToColor, progress, ratio), written inline, or "file:NAME" for
media/transitions/glsl/NAME.glsl holding the whole function. Inline bodies
may use the helpers of media/programs/transitions/library.glsl. A uniform is
(name, default, minimum, maximum); the library names its own `ufmXxx` so that
the property of the same name sets it.

The transitions that share a name with the processor's cross-fade filter
give its pictures: they count pixels from the top left as it does, and work
with its progress, `p = 1 - progress`, which runs from 1 down to 0.
"""

# Opening of every cross-fade-style body: the pixel, the frame size, and
# the progress as the processor's filter counts it.
XF = "vec2 s = frameSize(); vec2 px = pixelOf(uv); float p = 1.0 - progress;\n"


def xf(body):
    return XF + body


# A weighted pick: a * m + b * (1 - m), the processor's own way round.
MIX = "#define XMIX(a, b, m) ((a) * (m) + (b) * (1.0 - (m)))\n"

ROWS = [
    # --- fades -----------------------------------------------------------------------------------
    ("fade", "fade", xf("return mix(getToColor(uv), getFromColor(uv), p);"), []),
    ("fadeblack", "fade", xf(
        "vec4 bg = vec4(0.0, 0.0, 0.0, 1.0);\n"
        "vec4 a = mix(getFromColor(uv), bg, 1.0 - smoothstep(0.8, 1.0, p));\n"
        "vec4 b = mix(getToColor(uv), bg, smoothstep(0.2, 1.0, p));\n"
        "return mix(b, a, p);"), []),
    ("fadewhite", "fade", xf(
        "vec4 bg = vec4(1.0);\n"
        "vec4 a = mix(getFromColor(uv), bg, 1.0 - smoothstep(0.8, 1.0, p));\n"
        "vec4 b = mix(getToColor(uv), bg, smoothstep(0.2, 1.0, p));\n"
        "return mix(b, a, p);"), []),
    ("fadegrays", "fade", xf(
        "vec4 a = getFromColor(uv); vec4 b = getToColor(uv);\n"
        "vec4 ga = vec4(vec3(grayOf(a.rgb)), a.a); vec4 gb = vec4(vec3(grayOf(b.rgb)), b.a);\n"
        "vec4 aa = mix(a, ga, 1.0 - smoothstep(0.8, 1.0, p));\n"
        "vec4 bb = mix(b, gb, smoothstep(0.2, 1.0, p));\n"
        "return mix(bb, aa, p);"), []),
    ("fadefast", "fade", xf(
        "vec4 a = getFromColor(uv); vec4 b = getToColor(uv);\n"
        "vec4 m = pow(vec4(p), 1.0 + log(1.0 + 1.1920929e-7 + abs(a - b)));\n"
        "return mix(b, a, m);"), []),
    ("fadeslow", "fade", xf(
        "vec4 a = getFromColor(uv); vec4 b = getToColor(uv);\n"
        "vec4 m = pow(vec4(p), 1.0 + log(2.0 - abs(a - b)));\n"
        "return mix(b, a, m);"), []),
    ("distance", "fade", xf(
        "vec4 a = getFromColor(uv); vec4 b = getToColor(uv);\n"
        "float d = length(a.rgb - b.rgb) <= p ? 1.0 : 0.0;\n"
        "return mix(b, mix(b, a, d), p);"), []),
    ("dissolve", "noise", xf(
        "return noise2(px) * 2.0 + p * 2.0 - 1.5 >= 0.5 ? getFromColor(uv) : getToColor(uv);"), []),
    ("pixelize", "noise", xf(
        "float d = min(p, 1.0 - p);\n"
        "float dist = ceil(d * 50.0) / 50.0;\n"
        "float sq = 2.0 * dist * min(s.x, s.y) / 20.0;\n"
        "vec2 q = px;\n"
        "if (dist > 0.0) q = min(floor((floor(px / sq) + 0.5) * sq), s - 1.0);\n"
        "return mix(toPixel(q), fromPixel(q), p);"), []),
    # --- wipes -----------------------------------------------------------------------------------
    ("wipeleft", "wipe", xf("return px.x > floor(s.x * p) ? getToColor(uv) : getFromColor(uv);"), []),
    ("wiperight", "wipe", xf("return px.x > floor(s.x * (1.0 - p)) ? getFromColor(uv) : getToColor(uv);"), []),
    ("wipeup", "wipe", xf("return px.y > floor(s.y * p) ? getToColor(uv) : getFromColor(uv);"), []),
    ("wipedown", "wipe", xf("return px.y > floor(s.y * (1.0 - p)) ? getFromColor(uv) : getToColor(uv);"), []),
    ("wipetl", "wipe", xf(
        "vec2 z = s * p;\n"
        "return px.y <= z.y && px.x <= z.x ? getFromColor(uv) : getToColor(uv);"), []),
    ("wipetr", "wipe", xf(
        "vec2 z = s * p;\n"
        "return px.y <= z.y && px.x > s.x - z.x ? getFromColor(uv) : getToColor(uv);"), []),
    ("wipebl", "wipe", xf(
        "vec2 z = s * p;\n"
        "return px.y > s.y - z.y && px.x <= z.x ? getFromColor(uv) : getToColor(uv);"), []),
    ("wipebr", "wipe", xf(
        "vec2 z = s * p;\n"
        "return px.y > s.y - z.y && px.x > s.x - z.x ? getFromColor(uv) : getToColor(uv);"), []),
    ("smoothleft", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + px.x / s.x - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("smoothright", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + (s.x - 1.0 - px.x) / s.x - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("smoothup", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + px.y / s.y - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("smoothdown", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + (s.y - 1.0 - px.y) / s.y - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("diagtl", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + px.x / s.x * px.y / s.y - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("diagtr", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + (s.x - 1.0 - px.x) / s.x * px.y / s.y - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("diagbl", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + px.x / s.x * (s.y - 1.0 - px.y) / s.y - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("diagbr", "wipe", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 + (s.x - 1.0 - px.x) / s.x * (s.y - 1.0 - px.y) / s.y - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("radial", "wipe", xf(
        "float m = clamp(atan(px.x - s.x / 2.0, px.y - s.y / 2.0) - (p - 0.5) * (PI * 2.5), 0.0, 1.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    # --- slides, covers and reveals --------------------------------------------------------------
    ("slideleft", "slide", xf(
        "float x = px.x - floor(p * s.x) + s.x;\n"
        "return x < s.x ? fromPixel(vec2(x, px.y)) : toPixel(vec2(x - s.x, px.y));"), []),
    ("slideright", "slide", xf(
        "float x = px.x + floor(p * s.x) - s.x;\n"
        "return x < 0.0 ? toPixel(vec2(x + s.x, px.y)) : fromPixel(vec2(x, px.y));"), []),
    ("slideup", "slide", xf(
        "float y = px.y - floor(p * s.y) + s.y;\n"
        "return y < s.y ? fromPixel(vec2(px.x, y)) : toPixel(vec2(px.x, y - s.y));"), []),
    ("slidedown", "slide", xf(
        "float y = px.y + floor(p * s.y) - s.y;\n"
        "return y < 0.0 ? toPixel(vec2(px.x, y + s.y)) : fromPixel(vec2(px.x, y));"), []),
    ("coverleft", "slide", xf(
        "float x = px.x - floor(p * s.x);\n"
        "return x >= 0.0 ? toPixel(vec2(x, px.y)) : getFromColor(uv);"), []),
    ("coverright", "slide", xf(
        "float x = px.x + floor(p * s.x);\n"
        "return x < s.x ? toPixel(vec2(x, px.y)) : getFromColor(uv);"), []),
    ("coverup", "slide", xf(
        "float y = px.y - floor(p * s.y);\n"
        "return y >= 0.0 ? toPixel(vec2(px.x, y)) : getFromColor(uv);"), []),
    ("coverdown", "slide", xf(
        "float y = px.y + floor(p * s.y);\n"
        "return y < s.y ? toPixel(vec2(px.x, y)) : getFromColor(uv);"), []),
    ("revealleft", "slide", xf(
        "float x = px.x + floor((1.0 - p) * s.x);\n"
        "return x < s.x ? fromPixel(vec2(x, px.y)) : getToColor(uv);"), []),
    ("revealright", "slide", xf(
        "float x = px.x - floor((1.0 - p) * s.x);\n"
        "return x >= 0.0 ? fromPixel(vec2(x, px.y)) : getToColor(uv);"), []),
    ("revealup", "slide", xf(
        "float y = px.y + floor((1.0 - p) * s.y);\n"
        "return y < s.y ? fromPixel(vec2(px.x, y)) : getToColor(uv);"), []),
    ("revealdown", "slide", xf(
        "float y = px.y - floor((1.0 - p) * s.y);\n"
        "return y >= 0.0 ? fromPixel(vec2(px.x, y)) : getToColor(uv);"), []),
    ("squeezeh", "slide", xf(
        "float z = 0.5 + (px.y / s.y - 0.5) / p;\n"
        "if (z < 0.0 || z > 1.0) return getToColor(uv);\n"
        "return fromPixel(vec2(px.x, floor(z * (s.y - 1.0) + 0.5)));"), []),
    ("squeezev", "slide", xf(
        "float z = 0.5 + (px.x / s.x - 0.5) / p;\n"
        "if (z < 0.0 || z > 1.0) return getToColor(uv);\n"
        "return fromPixel(vec2(floor(z * (s.x - 1.0) + 0.5), px.y));"), []),
    ("zoomin", "slide", xf(
        "float zf = smoothstep(0.5, 1.0, p);\n"
        "vec2 st = 0.5 + (px / s - 0.5) * zf;\n"
        "vec4 a = fromPixel(ceil(st * (s - 1.0)));\n"
        "return mix(getToColor(uv), a, smoothstep(0.0, 0.5, p));"), []),
    # --- shapes ----------------------------------------------------------------------------------
    ("circlecrop", "shape", xf(
        "vec2 c = floor(s / 2.0);\n"
        "float z = pow(2.0 * abs(p - 0.5), 3.0) * length(c);\n"
        "vec4 v = p < 0.5 ? getToColor(uv) : getFromColor(uv);\n"
        "return z < length(px - c) ? vec4(0.0, 0.0, 0.0, 1.0) : v;"), []),
    ("rectcrop", "shape", xf(
        "vec2 z = floor(abs(p - 0.5) * s);\n"
        "vec2 d = abs(px - floor(s / 2.0));\n"
        "vec4 v = p < 0.5 ? getToColor(uv) : getFromColor(uv);\n"
        "return d.x < z.x && d.y < z.y ? v : vec4(0.0, 0.0, 0.0, 1.0);"), []),
    ("circleopen", "shape", xf(
        "float m = smoothstep(0.0, 1.0, length(px - s / 2.0) / length(s / 2.0) + (p - 0.5) * 3.0);\n"
        "return mix(getToColor(uv), getFromColor(uv), m);"), []),
    ("circleclose", "shape", xf(
        "float m = smoothstep(0.0, 1.0, 1.0 - length(px - s / 2.0) / length(s / 2.0) + (p - 0.5) * 3.0);\n"
        "return mix(getToColor(uv), getFromColor(uv), m);"), []),
    ("vertopen", "shape", xf(
        "float h = s.x / 2.0;\n"
        "float m = smoothstep(0.0, 1.0, 2.0 - abs((px.x - h) / h) - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("vertclose", "shape", xf(
        "float h = s.x / 2.0;\n"
        "float m = smoothstep(0.0, 1.0, 1.0 + abs((px.x - h) / h) - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("horzopen", "shape", xf(
        "float h = s.y / 2.0;\n"
        "float m = smoothstep(0.0, 1.0, 2.0 - abs((px.y - h) / h) - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("horzclose", "shape", xf(
        "float h = s.y / 2.0;\n"
        "float m = smoothstep(0.0, 1.0, 1.0 + abs((px.y - h) / h) - p * 2.0);\n"
        "return mix(getFromColor(uv), getToColor(uv), m);"), []),
    ("CircleScale", "shape",
     "// A circle of clip B grows from the centre, round in the frame whatever its shape.\n"
     "vec2 size = vec2(max(ufmImageWidth, 1.0), max(ufmImageHeight, 1.0));\n"
     "vec2 d = (uv - 0.5) * size;\n"
     "float r = progress * length(size) * 0.5;\n"
     "float edge = clamp(r - length(d) + 0.5, 0.0, 1.0);\n"
     "return mix(getFromColor(uv), getToColor(uv), edge);",
     [("ufmImageWidth", 1920.0, 1.0, 16384.0), ("ufmImageHeight", 1080.0, 1.0, 16384.0)]),
    # --- slices and wind -------------------------------------------------------------------------
    ("hlslice", "slice", xf(
        "float xx = px.x / s.x;\n"
        "float m = smoothstep(-0.5, 0.0, xx - p * 1.5);\n"
        "return m <= fract(10.0 * xx) ? getFromColor(uv) : getToColor(uv);"), []),
    ("hrslice", "slice", xf(
        "float xx = (s.x - 1.0 - px.x) / s.x;\n"
        "float m = smoothstep(-0.5, 0.0, xx - p * 1.5);\n"
        "return m <= fract(10.0 * xx) ? getFromColor(uv) : getToColor(uv);"), []),
    ("vuslice", "slice", xf(
        "float yy = px.y / s.y;\n"
        "float m = smoothstep(-0.5, 0.0, yy - p * 1.5);\n"
        "return m <= fract(10.0 * yy) ? getFromColor(uv) : getToColor(uv);"), []),
    ("vdslice", "slice", xf(
        "float yy = (s.y - 1.0 - px.y) / s.y;\n"
        "float m = smoothstep(-0.5, 0.0, yy - p * 1.5);\n"
        "return m <= fract(10.0 * yy) ? getFromColor(uv) : getToColor(uv);"), []),
    # Wind: each row (or column) is a strand that the wind carries off at its
    # own pace; B shows where a strand has blown away.
    ("hlwind", "slice", xf(
        "float r = noise2(vec2(0.0, px.y));\n"
        "float m = smoothstep(-0.2, 0.0, px.x / s.x * 0.8 + 0.2 * r - (1.0 - p) * 1.2);\n"
        "return mix(getToColor(uv), getFromColor(uv), m);"), []),
    ("hrwind", "slice", xf(
        "float r = noise2(vec2(0.0, px.y));\n"
        "float m = smoothstep(-0.2, 0.0, (s.x - 1.0 - px.x) / s.x * 0.8 + 0.2 * r - (1.0 - p) * 1.2);\n"
        "return mix(getToColor(uv), getFromColor(uv), m);"), []),
    ("vuwind", "slice", xf(
        "float r = noise2(vec2(px.x, 0.0));\n"
        "float m = smoothstep(-0.2, 0.0, px.y / s.y * 0.8 + 0.2 * r - (1.0 - p) * 1.2);\n"
        "return mix(getToColor(uv), getFromColor(uv), m);"), []),
    ("vdwind", "slice", xf(
        "float r = noise2(vec2(px.x, 0.0));\n"
        "float m = smoothstep(-0.2, 0.0, (s.y - 1.0 - px.y) / s.y * 0.8 + 0.2 * r - (1.0 - p) * 1.2);\n"
        "return mix(getToColor(uv), getFromColor(uv), m);"), []),
    ("hblur", "blur", xf(
        "// A box blur of each row that grows to half the width and back; the box\n"
        "// runs from the pixel rightwards and shrinks at the right edge.\n"
        "float prog = p <= 0.5 ? p * 2.0 : (1.0 - p) * 2.0;\n"
        "float size = floor(1.0 + floor(s.x / 2.0) * prog);\n"
        "float last = min(px.x + size, s.x);\n"
        "vec4 sa = vec4(0.0); vec4 sb = vec4(0.0);\n"
        "for (int i = 0; i < 8192; ++i) {\n"
        "    float x = px.x + float(i);\n"
        "    if (x >= last) break;\n"
        "    sa += fromPixel(vec2(x, px.y)); sb += toPixel(vec2(x, px.y));\n"
        "}\n"
        "float n = last - px.x;\n"
        "return mix(sb / n, sa / n, p);"), []),
]

# Our own: looks that ask for the GPU.
OWN = [
    ("pagecurl", "3d", "file:pagecurl", [("ufmCurlRadius", 0.12, 0.02, 0.5)]),
    ("cubeturn", "3d", "file:cubeturn", [("ufmPerspective", 0.7, 0.0, 1.0)]),
    ("doorway", "3d", "file:doorway", [("ufmDepth", 3.0, 1.0, 10.0)]),
    ("flip", "3d", "file:flip", []),
    ("ripple", "distort", "file:ripple", [("ufmAmplitude", 60.0, 0.0, 200.0), ("ufmSpeed", 30.0, 0.0, 100.0)]),
    ("swirl", "distort", "file:swirl", [("ufmTurns", 1.5, 0.0, 6.0)]),
    ("directionalwarp", "distort", "file:directionalwarp", [("ufmDirectionX", -1.0, -1.0, 1.0),
                                                           ("ufmDirectionY", 1.0, -1.0, 1.0)]),
    ("kaleidoscope", "distort", "file:kaleidoscope", [("ufmSegments", 6.0, 2.0, 16.0)]),
    ("morph", "distort", "file:morph", [("ufmStrength", 0.12, 0.0, 1.0)]),
    ("waterdrop", "distort", "file:waterdrop", [("ufmAmplitude", 30.0, 0.0, 100.0)]),
    ("zoomblur", "blur", "file:zoomblur", [("ufmStrength", 0.4, 0.0, 1.0)]),
    ("crosszoom", "blur", "file:crosszoom", [("ufmStrength", 0.35, 0.0, 1.0)]),
    ("burn", "light", "file:burn", [("ufmEdge", 0.08, 0.01, 0.5)]),
    ("flash", "light", "file:flash", [("ufmIntensity", 3.0, 0.0, 10.0)]),
    ("glitch", "noise", "file:glitch", [("ufmStrength", 0.1, 0.0, 1.0)]),
    ("lumakey", "noise", "file:lumakey", [("ufmSoftness", 0.1, 0.0, 1.0)]),
    ("polkadots", "shape", "file:polkadots", [("ufmDots", 12.0, 2.0, 60.0)]),
    ("heart", "shape", "file:heart", []),
    ("star", "shape", "file:star", [("ufmPoints", 5.0, 3.0, 12.0)]),
    ("blinds", "wipe", "file:blinds", [("ufmCount", 10.0, 2.0, 60.0)]),
    ("pinwheel", "wipe", "file:pinwheel", [("ufmBlades", 4.0, 1.0, 16.0)]),
    ("checkerboard", "wipe", "file:checkerboard", [("ufmCells", 8.0, 2.0, 64.0)]),
    ("mosaic", "noise", "file:mosaic", [("ufmCells", 16.0, 2.0, 128.0)]),
    ("melt", "slide", "file:melt", [("ufmDrip", 0.5, 0.0, 1.0)]),
]


def catalogue():
    out = []
    for name, family, function, uniforms in ROWS + OWN:
        out.append(dict(name=name, family=family, function=function,
                        uniforms=[dict(name=u[0], default=float(u[1]), minimum=float(u[2]),
                                       maximum=float(u[3])) for u in uniforms]))
    return out
