#include "text/fonts/FTPolygonGlyph.h"

namespace {
const FT_Outline* strokedOutline(FT_Glyph stroked, FT_GlyphSlot slot) {
    if (stroked != nullptr && stroked->format == FT_GLYPH_FORMAT_OUTLINE)
        return &reinterpret_cast<FT_OutlineGlyph>(stroked)->outline;
    return slot->format == FT_GLYPH_FORMAT_OUTLINE ? &slot->outline : nullptr;
}
}  // namespace

FTPolygonGlyph::FTPolygonGlyph(FT_Glyph stroked, FT_GlyphSlot slot, float outset)
    : FTTriangleExtractorGlyph(slot, strokedOutline(stroked, slot), outset) {}
