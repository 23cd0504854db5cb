#include "text/fonts/FTExtrudeGlyph.h"

#include <cmath>

FTExtrudeGlyph::FTExtrudeGlyph(FT_GlyphSlot slot, float d, float) : FTGlyph(slot), depth(d) {
    if (err != 0) return;
    FTVectoriser vectoriser(slot->outline);
    if (vectoriser.ContourCount() < 1 || vectoriser.PointCount() < 3) return;
    vectoriser.MakeMesh(1.0, 0, 0.0f);
    AppendStrip(vectoriser.Mesh(), cap);
    for (size_t c = 0; c < vectoriser.ContourCount(); ++c) {
        if (vectoriser.Contour(c).PointCount() >= 2) contours.push_back(vectoriser.Contour(c).Points());
    }
    clockwiseFill = vectoriser.ClockwiseFill();
}

void FTExtrudeGlyph::Vertices(float penX, float penY, float penZ, FTVertexList& out) const {
    for (const FTPoint3& p : cap) out.push_back({p.x + penX, p.y + penY, penZ});
}

void FTExtrudeGlyph::Emit(float penX, float penY, float penZ, std::vector<FTExtrudeVertex>& front,
                          std::vector<FTExtrudeVertex>& side) const {
    auto capVertex = [&](const FTPoint3& p, float z) {
        float x = p.x + penX, y = p.y + penY;
        front.push_back({x, y, z + penZ, 0.0f, 0.0f, 1.0f, x * 0.001f, y * 0.001f});
    };
    if (!cap.empty()) {
        for (const FTPoint3& p : cap) capVertex(p, 0.0f);
        // The back cap repeats the front's order, joined by degenerates.
        capVertex(cap.front(), -depth);
        for (const FTPoint3& p : cap) capVertex(p, -depth);
        capVertex(cap.back(), -depth);
    }
    // Outward normal of an edge: to its left on a contour that fills
    // clockwise (TrueType), to its right on one that fills the other way.
    const float turn = clockwiseFill ? 1.0f : -1.0f;
    for (const std::vector<FTContour::Point>& contour : contours) {
        const size_t count = contour.size();
        auto wall = [&](size_t index, float z) {
            const FTContour::Point& p = contour[index % count];
            const FTContour::Point& q = contour[(index + 1) % count];
            float dx = static_cast<float>(q.x - p.x), dy = static_cast<float>(q.y - p.y);
            float len = std::sqrt(dx * dx + dy * dy);
            float nx = len > 0 ? -dy / len * turn : 0.0f, ny = len > 0 ? dx / len * turn : 0.0f;
            float x = static_cast<float>(p.x / 64.0), y = static_cast<float>(p.y / 64.0);
            float length = static_cast<float>(std::hypot(p.x, p.y));
            side.push_back({x + penX, y + penY, z + penZ, nx, ny, 0.0f, z * 0.001f * 0.001f, length * 0.001f * 0.001f});
        };
        wall(0, -depth);
        wall(0, -depth);
        for (size_t i = 0; i <= count; ++i) {
            wall(i, -depth);
            wall(i, 0.0f);
        }
        wall(count, 0.0f);
        wall(count, 0.0f);
    }
}
