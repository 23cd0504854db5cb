#include "text/fonts/FTExtrudeFont.h"

#include <new>

#include "text/fonts/FTExtrudeGlyph.h"

FTExtrudeFont::FTExtrudeFont(const std::string& fontFile, const std::string& backupPath)
    : FTFont(fontFile, backupPath, FT_LOAD_NO_HINTING) {}

FTGlyph* FTExtrudeFont::MakeGlyph(FT_GlyphSlot slot) {
    applyStyle(slot);
    return new (std::nothrow) FTExtrudeGlyph(slot, mImpl->depth, mImpl->front);
}
