#pragma once
#include "text/fonts/FTFont.h"

// Flat outline glyphs: the stroked glyph, filled.
class FTPolygonFont : public FTFont {
public:
    FTPolygonFont(const std::string& fontFile, const std::string& backupPath);
    FTGlyph* MakeGlyph(FT_GlyphSlot slot) override;
};
