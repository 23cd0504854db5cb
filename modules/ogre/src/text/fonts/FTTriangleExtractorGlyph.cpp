#include "text/fonts/FTTriangleExtractorGlyph.h"

#include FT_OUTLINE_H

FTTriangleExtractorGlyph::FTTriangleExtractorGlyph(FT_GlyphSlot slot, float outset) : FTGlyph(slot) {
    if (err == 0) Extract(slot->outline, 0.0f);
    (void)outset;
}

FTTriangleExtractorGlyph::FTTriangleExtractorGlyph(FT_GlyphSlot slot, const FT_Outline* outline, float outset)
    : FTGlyph(slot) {
    if (err != 0 || outline == nullptr) return;
    FT_BBox box;
    FT_Outline_Get_CBox(outline, &box);
    bbox[0] = box.xMin / 64.0f;
    bbox[1] = box.yMin / 64.0f;
    bbox[2] = box.xMax / 64.0f;
    bbox[3] = box.yMax / 64.0f;
    Extract(*outline, outset);
}

void FTTriangleExtractorGlyph::Extract(const FT_Outline& outline, float outset) {
    FTVectoriser vectoriser(outline);
    // A space has no contours: an advance and no geometry.
    if (vectoriser.ContourCount() < 1 || vectoriser.PointCount() < 3) return;
    vectoriser.MakeMesh(1.0, 0, outset);
    AppendStrip(vectoriser.Mesh(), strip);
}

void FTTriangleExtractorGlyph::Vertices(float penX, float penY, float penZ, FTVertexList& out) const {
    out.reserve(out.size() + strip.size());
    for (const FTPoint3& p : strip) out.push_back({p.x + penX, p.y + penY, p.z + penZ});
}
