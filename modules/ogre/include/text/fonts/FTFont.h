#pragma once
#include <memory>
#include <string>

#include "text/fonts/FTFontImpl.h"

// The public handle of a glyph font; everything is done by its FTFontImpl.
// The derived fonts decide what a glyph becomes: a flat fill, a stroked
// outline or an extruded solid.
class FTFont {
public:
    virtual ~FTFont();

    virtual bool Attach(const char* fontFilePath);
    virtual void GlyphLoadFlags(int flags);
    virtual bool CharMap(FT_Encoding encoding);
    virtual unsigned int CharMapCount() const;
    virtual FT_Encoding* CharMapList();
    virtual unsigned int FaceSize() const;
    virtual bool FaceSize(unsigned int size, unsigned int resolution = 72);
    virtual void Depth(float depth);
    virtual void Outset(float front, float back);
    virtual void Outset(float outset);
    virtual void setBold(bool bold);
    virtual void setLean(bool lean);
    virtual void setGlyphCache(const FTGlyphCacheMap& cache);
    virtual void getGlyphCache(FTGlyphCacheMap& cache);
    virtual void setZOrder(int zOrder);
    virtual void setDirect(int direct);
    virtual void setOutlinePass(bool outline);
    virtual void setThree(bool three);
    virtual void setTextID(const std::string& id);
    virtual void setCanvasWidth(float width);
    virtual void setCanvasHeight(float height);
    virtual void getTextObjInfo(float& width, float& height, float& maxAdvance, float& rowHeight);
    virtual float Ascender() const;
    virtual float Descender() const;
    virtual float LineHeight() const;
    virtual float Advance(const std::u32string& text);
    virtual FTPoint3 renderRows(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                                FTPoint3 spacing, int align);
    virtual FTPoint3 renderColumns(const std::u32string& text, bool perGlyph, int maxChars, FTPoint3 position,
                                   FTPoint3 spacing, int align);
    virtual FT_Error Error() const;
    virtual FT_Error BackupError() const;
    // Makes the glyph of the loaded slot; null on failure.
    virtual FTGlyph* MakeGlyph(FT_GlyphSlot slot) = 0;

    FTFontImpl* impl() { return mImpl.get(); }

protected:
    FTFont(const std::string& fontFile, const std::string& backupPath, int loadFlags);
    // Bold and lean are applied to the slot before any glyph is made of it.
    void applyStyle(FT_GlyphSlot slot);

    std::unique_ptr<FTFontImpl> mImpl;
};
