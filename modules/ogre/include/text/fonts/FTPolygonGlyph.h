#pragma once
#include "text/fonts/FTTriangleExtractorGlyph.h"

#include FT_GLYPH_H

// The outline of a flat glyph: the glyph widened by FreeType's stroker and
// filled, drawn behind the fill. Advance and pen come from the plain slot.
class FTPolygonGlyph : public FTTriangleExtractorGlyph {
public:
    // `stroked` is the stroked copy of the slot's glyph, or null when the
    // stroker failed (the plain outline is used then).
    FTPolygonGlyph(FT_Glyph stroked, FT_GlyphSlot slot, float outset);
};
