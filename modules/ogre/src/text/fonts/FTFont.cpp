#include "text/fonts/FTFont.h"

#include FT_SYNTHESIS_H

FTFont::FTFont(const std::string& fontFile, const std::string& backupPath, int loadFlags)
    : mImpl(new FTFontImpl(this, fontFile, backupPath, loadFlags)) {}

FTFont::~FTFont() = default;

bool FTFont::Attach(const char*) { return false; }  // one file per face; nothing to attach
void FTFont::GlyphLoadFlags(int flags) { mImpl->load_flags = flags; }
bool FTFont::CharMap(FT_Encoding encoding) { return mImpl->CharMap(encoding); }
unsigned int FTFont::CharMapCount() const {
    FT_Face f = mImpl->face.Face();
    return f != nullptr ? static_cast<unsigned int>(f->num_charmaps) : 0;
}
FT_Encoding* FTFont::CharMapList() { return nullptr; }
unsigned int FTFont::FaceSize() const { return mImpl->FaceSize(); }
bool FTFont::FaceSize(unsigned int size, unsigned int resolution) { return mImpl->FaceSize(size, resolution); }
void FTFont::Depth(float depth) { mImpl->depth = depth; }
void FTFont::Outset(float front, float back) {
    mImpl->front = front;
    mImpl->back = back;
}
void FTFont::Outset(float outset) {
    mImpl->outset = outset;
    mImpl->front = outset;
    mImpl->back = outset;
}
void FTFont::setBold(bool bold) { mImpl->bold = bold; }
void FTFont::setLean(bool lean) { mImpl->lean = lean; }
void FTFont::setGlyphCache(const FTGlyphCacheMap& cache) { mImpl->glyphCache = cache; }
void FTFont::getGlyphCache(FTGlyphCacheMap& cache) { cache = mImpl->glyphCache; }
void FTFont::setZOrder(int zOrder) { mImpl->zOrder = zOrder; }
void FTFont::setDirect(int direct) { mImpl->direct = direct != 0; }
void FTFont::setOutlinePass(bool outline) { mImpl->outlinePass = outline; }
void FTFont::setThree(bool three) { mImpl->three = three; }
void FTFont::setTextID(const std::string& id) { mImpl->textID = id; }
void FTFont::setCanvasWidth(float width) { mImpl->canvasWidth = width; }
void FTFont::setCanvasHeight(float height) { mImpl->canvasHeight = height; }
void FTFont::getTextObjInfo(float& width, float& height, float& maxAdvance, float& rowHeight) {
    mImpl->getTextObjInfo(width, height, maxAdvance, rowHeight);
}
float FTFont::Ascender() const { return mImpl->face.Ascender(); }
float FTFont::Descender() const { return mImpl->face.Descender(); }
float FTFont::LineHeight() const { return mImpl->face.LineHeight(); }
float FTFont::Advance(const std::u32string& text) {
    float advance = 0.0f;
    for (size_t i = 0; i < text.size(); ++i) {
        if (mImpl->CheckGlyph(text[i])) advance += mImpl->Advance(text[i], i + 1 < text.size() ? text[i + 1] : 0);
    }
    return advance;
}
FTPoint3 FTFont::renderRows(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                            FTPoint3 spacing, int align) {
    return mImpl->renderRows(text, perGlyph, maxChars, position, spacing, align);
}
FTPoint3 FTFont::renderColumns(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                               FTPoint3 spacing, int align) {
    return mImpl->renderColumns(text, perGlyph, maxChars, position, spacing, align);
}
FT_Error FTFont::Error() const { return mImpl->err; }
FT_Error FTFont::BackupError() const { return mImpl->backupErr; }

void FTFont::applyStyle(FT_GlyphSlot slot) {
    if (mImpl->bold) FT_GlyphSlot_Embolden(slot);
    if (mImpl->lean) FT_GlyphSlot_Oblique(slot);
}
