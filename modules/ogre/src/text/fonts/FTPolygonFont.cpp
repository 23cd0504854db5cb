#include "text/fonts/FTPolygonFont.h"

#include <new>

#include FT_STROKER_H

#include "text/fonts/FTPolygonGlyph.h"

FTPolygonFont::FTPolygonFont(const std::string& fontFile, const std::string& backupPath)
    : FTFont(fontFile, backupPath, FT_LOAD_NO_HINTING) {}

FTGlyph* FTPolygonFont::MakeGlyph(FT_GlyphSlot slot) {
    applyStyle(slot);
    FT_Stroker stroker = nullptr;
    FT_Glyph glyph = nullptr;
    if (FT_Stroker_New(FTFace::Library(), &stroker) == 0) {
        FT_Stroker_Set(stroker, static_cast<FT_Fixed>(mImpl->outset * 64), FT_STROKER_LINECAP_ROUND,
                       FT_STROKER_LINEJOIN_ROUND, 0);
        if (FT_Get_Glyph(slot, &glyph) == 0) {
            // The outer border only: the outline is the glyph widened, and
            // the fill covers its middle.
            if (FT_Glyph_StrokeBorder(&glyph, stroker, false, true) != 0) {
                FT_Done_Glyph(glyph);
                glyph = nullptr;
            }
        } else {
            glyph = nullptr;
        }
        FT_Stroker_Done(stroker);
    }
    FTGlyph* made = new (std::nothrow) FTPolygonGlyph(glyph, slot, mImpl->outset);
    if (glyph != nullptr) FT_Done_Glyph(glyph);
    return made;
}
