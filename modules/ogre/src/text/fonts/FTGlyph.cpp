#include "text/fonts/FTGlyph.h"

#include FT_OUTLINE_H

FTGlyph::FTGlyph(FT_GlyphSlot slot) {
    advance = static_cast<float>(slot->advance.x) / 64.0f;
    if (slot->format != FT_GLYPH_FORMAT_OUTLINE) {
        err = 20;  // FreeType's "invalid glyph format"
        return;
    }
    FT_BBox box;
    FT_Outline_Get_CBox(&slot->outline, &box);
    bbox[0] = box.xMin / 64.0f;
    bbox[1] = box.yMin / 64.0f;
    bbox[2] = box.xMax / 64.0f;
    bbox[3] = box.yMax / 64.0f;
}

void FTGlyph::AppendStrip(const std::vector<FTVectoriser::Tesselation>& mesh, std::vector<FTPoint3>& out) {
    auto put = [&out](const FTVectoriser::Vertex& v) {
        out.push_back({static_cast<float>(v.x / 64.0), static_cast<float>(v.y / 64.0), 0.0f});
    };
    for (const FTVectoriser::Tesselation& piece : mesh) {
        const std::vector<FTVectoriser::Vertex>& v = piece.vertices;
        if (v.size() < 3) continue;
        switch (piece.type) {
            case 4:  // triangles: a a b c c
                for (size_t i = 0; i + 2 < v.size(); i += 3) {
                    put(v[i]);
                    put(v[i]);
                    put(v[i + 1]);
                    put(v[i + 2]);
                    put(v[i + 2]);
                }
                break;
            case 5:  // strip: first, all, last
                put(v.front());
                for (const FTVectoriser::Vertex& p : v) put(p);
                put(v.back());
                break;
            case 6:  // fan, one triangle at a time
                put(v[0]);
                for (size_t i = 1; i + 1 < v.size(); ++i) {
                    put(v[0]);
                    put(v[i]);
                    put(v[i + 1]);
                    put(v[0]);
                }
                put(v[0]);
                break;
            default:
                break;
        }
    }
}
