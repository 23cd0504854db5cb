#pragma once
#include "text/fonts/FTGlyph.h"

// An extruded glyph: the front cap at z 0, the back cap at z -depth and the
// side walls between them, each wall vertex with the normal of its edge.
class FTExtrudeGlyph : public FTGlyph {
public:
    FTExtrudeGlyph(FT_GlyphSlot slot, float depth, float frontOutset);

    // Front list (both caps, strip order, normal (0, 0, 1)) and side list
    // (one strip per contour joined by degenerates), moved by the pen.
    void Emit(float penX, float penY, float penZ, std::vector<FTExtrudeVertex>& front,
              std::vector<FTExtrudeVertex>& side) const;
    void Vertices(float penX, float penY, float penZ, FTVertexList& out) const override;

private:
    float depth;
    FTVertexList cap;  // strip order, pixels, z 0
    std::vector<std::vector<FTContour::Point>> contours;  // 26.6 units
    bool clockwiseFill = true;
};
