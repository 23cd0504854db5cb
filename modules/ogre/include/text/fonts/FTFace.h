#pragma once
#include <string>

#include <ft2build.h>
#include FT_FREETYPE_H

// One font file opened through FreeType, with its size. A face that failed
// to open keeps the FreeType error in Error() and answers every question
// with nothing.
class FTFace {
public:
    FTFace(const std::string& path, int loadFlags);
    ~FTFace();
    FTFace(const FTFace&) = delete;
    FTFace& operator=(const FTFace&) = delete;

    FT_Error Error() const { return err; }
    FT_Face Face() const { return face; }
    bool CharMap(FT_Encoding encoding);
    // Character size in points at `resolution` dots per inch.
    bool Size(unsigned int size, unsigned int resolution);
    unsigned int CharIndex(unsigned int charCode) const;
    // Loads glyph `index` into the face's slot; null on failure (Error()).
    FT_GlyphSlot LoadGlyph(unsigned int index);
    // Horizontal kerning between two glyph indices, in pixels.
    float KernAdvance(unsigned int index1, unsigned int index2) const;
    float Ascender() const;
    float Descender() const;
    float LineHeight() const;

    // The library all faces share; made on first use and kept for the
    // process (FreeType libraries are cheap and a face must not outlive its).
    static FT_Library Library();

private:
    FT_Face face = nullptr;
    FT_Error err = 0;
    int loadFlags;
};
