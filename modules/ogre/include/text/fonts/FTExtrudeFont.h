#pragma once
#include "text/fonts/FTFont.h"

// Extruded glyphs with front, back and sides.
class FTExtrudeFont : public FTFont {
public:
    FTExtrudeFont(const std::string& fontFile, const std::string& backupPath);
    FTGlyph* MakeGlyph(FT_GlyphSlot slot) override;
};
