#pragma once
#include <cstdint>
#include <map>
#include <vector>

// A vertex of a glyph mesh, in pixels.
struct FTPoint3 {
    float x;
    float y;
    float z;
};
using FTVertexList = std::vector<FTPoint3>;
// Flat glyph vertices by character code, with pen (0, 0, 0).
using FTGlyphCacheMap = std::map<uint32_t, FTVertexList>;
