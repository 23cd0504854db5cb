#include "text/fonts/FTTriangleExtractorFont.h"

#include <new>

#include "text/fonts/FTTriangleExtractorGlyph.h"

// The fill of flat text is loaded hinted, as FreeType draws it on screen.
FTTriangleExtractorFont::FTTriangleExtractorFont(const std::string& fontFile, const std::string& backupPath)
    : FTFont(fontFile, backupPath, FT_LOAD_DEFAULT) {}

FTGlyph* FTTriangleExtractorFont::MakeGlyph(FT_GlyphSlot slot) {
    applyStyle(slot);
    return new (std::nothrow) FTTriangleExtractorGlyph(slot, mImpl->outset);
}
