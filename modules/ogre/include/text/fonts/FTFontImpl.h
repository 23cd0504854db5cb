#pragma once
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "text/fonts/FTFace.h"
#include "text/fonts/FTGlyph.h"

class FTFont;

// The working half of a font: two faces (the main file and the fallback
// that supplies what the main one lacks), the glyphs made so far, the
// layout of rows and columns, and the engine meshes the laid-out glyphs
// become. Only used on the render thread.
class FTFontImpl {
public:
    FTFontImpl(FTFont* owner, const std::string& fontFile, const std::string& backupPath, int loadFlags);
    ~FTFontImpl();

    bool CharMap(FT_Encoding encoding);
    bool FaceSize(unsigned int size, unsigned int resolution);
    unsigned int FaceSize() const { return size; }

    // True when c has a glyph (made now or before), from either face.
    bool CheckGlyph(uint32_t c);
    const FTGlyph* Glyph(uint32_t c) const;
    float Advance(uint32_t c, uint32_t next);

    // Lays the text out and builds the meshes; returns the pen after it.
    FTPoint3 renderRows(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                        FTPoint3 spacing, int align);
    FTPoint3 renderColumns(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                           FTPoint3 spacing, int align);
    void getTextObjInfo(float& w, float& h, float& advance, float& row) const;

    // Mesh of a flat string or glyph, attached invisible below the clip's
    // node; -1 for an empty list, 0 otherwise (also when there is no node).
    int createFlatMesh(const FTVertexList& vertices);
    int createExtrudeMesh(const std::vector<FTExtrudeVertex>& front, const std::vector<FTExtrudeVertex>& side);

    FTFace face;
    FTFace backupFace;
    unsigned int size = 0;
    int load_flags;
    FT_Error err = 0;
    FT_Error backupErr = 0;
    FTFont* intf;
    // Glyphs by character, whichever face they came from.
    std::map<uint32_t, std::unique_ptr<FTGlyph>> glyphList;
    // Which glyphs came from the main face (kerning applies between those).
    std::map<uint32_t, unsigned int> mainIndex;
    bool direct = true;
    bool outlinePass = false;
    bool three = false;
    int zOrder = 0;
    std::string textID;
    FTGlyphCacheMap glyphCache;
    float canvasWidth = 0.0f, canvasHeight = 0.0f;
    float width = 0.0f, height = 0.0f, maxAdvance = 0.0f, rowHeight = 0.0f;
    // Derived fonts' settings.
    float depth = 0.0f, front = 0.0f, back = 0.0f, outset = 0.0f;
    bool bold = false, lean = false;

private:
    // Widths of the rows (line breaks 10 and 13 end a row), the row height
    // and the widest advance.
    void measure(const std::u32string& text, size_t count, FTPoint3 spacing, std::map<int, float>& rows);
    // The glyph's vertices at the pen: from the cache for flat text.
    void glyphVertices(uint32_t c, const FTPoint3& pen, FTVertexList& out, std::vector<FTExtrudeVertex>* front,
                       std::vector<FTExtrudeVertex>* side);
    void attach(const std::string& meshName);
};
