#pragma once
#include <cstdint>
#include <map>
#include <vector>

#include <ft2build.h>
#include FT_FREETYPE_H

#include "text/fonts/FTPoint.h"
#include "text/fonts/FTVectoriser.h"


// A vertex of an extruded glyph: position, normal, texture coordinate.
struct FTExtrudeVertex {
    float px, py, pz;
    float nx, ny, nz;
    float u, v;
};

// One glyph of a font: its advance, its box and the vertex lists that draw
// it. Glyphs give vertices instead of drawing, so that many of them can go
// into one mesh.
class FTGlyph {
public:
    explicit FTGlyph(FT_GlyphSlot slot);
    virtual ~FTGlyph() = default;

    float Advance() const { return advance; }
    // Ink box in pixels, pen at the origin: x0, y0 (lower), x1, y1 (upper).
    float BBoxLowerX() const { return bbox[0]; }
    float BBoxLowerY() const { return bbox[1]; }
    float BBoxUpperX() const { return bbox[2]; }
    float BBoxUpperY() const { return bbox[3]; }
    bool HasInk() const { return bbox[2] > bbox[0]; }
    // 0, or 20 for a glyph that is not an outline.
    FT_Error Error() const { return err; }
    // Flat vertices in strip order moved by the pen; extruded glyphs give
    // their front list here.
    virtual void Vertices(float penX, float penY, float penZ, FTVertexList& out) const = 0;

protected:
    // Appends the pieces of a tesselation as one triangle strip joined by
    // degenerate triangles; coordinates are divided by 64.
    static void AppendStrip(const std::vector<FTVectoriser::Tesselation>& mesh, std::vector<FTPoint3>& out);

    float advance = 0.0f;
    float bbox[4] = {0, 0, 0, 0};
    FT_Error err = 0;
};
