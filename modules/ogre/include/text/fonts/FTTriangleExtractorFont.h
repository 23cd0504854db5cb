#pragma once
#include "text/fonts/FTFont.h"

// Flat fill glyphs, hinted.
class FTTriangleExtractorFont : public FTFont {
public:
    FTTriangleExtractorFont(const std::string& fontFile, const std::string& backupPath);
    FTGlyph* MakeGlyph(FT_GlyphSlot slot) override;
};
