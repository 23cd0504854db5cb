#pragma once
#include <cstdint>
#include <string>

namespace Morvane {

// What a rebuild of a text clip's glyphs needs to know of the clip, passed
// by value to each pass.
struct FontInfo {
    std::string textID;      // suffix of every engine name of the clip
    int32_t zOrder = 0;      // track and depth
    std::string fontFile;    // main font file
    std::string backupPath;  // fallback font file
    float alpha = 1.0f;      // fill alpha
    float playTime = 5.0f;   // seconds
    uint32_t animationType = 0;
    float startTime = 0.3f;
    float endTime = 0.6f;
    float firstEndTime = 0.0f;
    float secendStartTime = 1.0f;
};

}  // namespace Morvane
