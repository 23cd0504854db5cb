#pragma once
#include "text/fonts/FTGlyph.h"

// The fill of a flat glyph: its outline tesselated into one strip.
class FTTriangleExtractorGlyph : public FTGlyph {
public:
    FTTriangleExtractorGlyph(FT_GlyphSlot slot, float outset);
    void Vertices(float penX, float penY, float penZ, FTVertexList& out) const override;

protected:
    // Used by the outline glyph, which tesselates a stroked outline instead.
    FTTriangleExtractorGlyph(FT_GlyphSlot slot, const FT_Outline* outline, float outset);
    void Extract(const FT_Outline& outline, float outset);

    FTVertexList strip;
};
