#include "text/fonts/FTFace.h"

#include <mutex>

FT_Library FTFace::Library() {
    static FT_Library library = nullptr;
    static std::once_flag once;
    std::call_once(once, [] { FT_Init_FreeType(&library); });
    return library;
}

FTFace::FTFace(const std::string& path, int flags) : loadFlags(flags) {
    // Faces are opened on the render thread only, so the shared library
    // needs no lock of its own.
    err = FT_New_Face(Library(), path.c_str(), 0, &face);
    if (err != 0) face = nullptr;
}

FTFace::~FTFace() {
    if (face != nullptr) FT_Done_Face(face);
}

bool FTFace::CharMap(FT_Encoding encoding) {
    if (face == nullptr) return false;
    err = FT_Select_Charmap(face, encoding);
    return err == 0;
}

bool FTFace::Size(unsigned int size, unsigned int resolution) {
    if (face == nullptr) return false;
    err = FT_Set_Char_Size(face, 0, static_cast<FT_F26Dot6>(size) * 64, resolution, resolution);
    return err == 0;
}

unsigned int FTFace::CharIndex(unsigned int charCode) const {
    return face != nullptr ? FT_Get_Char_Index(face, charCode) : 0;
}

FT_GlyphSlot FTFace::LoadGlyph(unsigned int index) {
    if (face == nullptr) return nullptr;
    err = FT_Load_Glyph(face, index, loadFlags);
    return err == 0 ? face->glyph : nullptr;
}

float FTFace::KernAdvance(unsigned int index1, unsigned int index2) const {
    if (face == nullptr || !FT_HAS_KERNING(face) || index1 == 0 || index2 == 0) return 0.0f;
    FT_Vector delta;
    if (FT_Get_Kerning(face, index1, index2, FT_KERNING_DEFAULT, &delta) != 0) return 0.0f;
    return static_cast<float>(delta.x) / 64.0f;
}

float FTFace::Ascender() const { return face != nullptr ? face->size->metrics.ascender / 64.0f : 0.0f; }
float FTFace::Descender() const { return face != nullptr ? face->size->metrics.descender / 64.0f : 0.0f; }
float FTFace::LineHeight() const { return face != nullptr ? face->size->metrics.height / 64.0f : 0.0f; }
