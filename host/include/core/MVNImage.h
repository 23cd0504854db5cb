#pragma once
#include <cstdint>
#include <string>

namespace Morvane {

class MVNFrame;

// Still pictures from and to files, through libavformat and libavcodec.
class MVNImage {
public:
    // Decodes the first picture of an image file (PNG, JPEG, BMP, anything
    // FFmpeg reads) into a pooled frame of colour type 28 (B,G,R,A bytes).
    // A width and height above 0 scale to that size; with only one of them
    // above 0 the other follows the file's aspect; otherwise the file's own
    // size is kept. Null, with the reason logged, when the file is missing or
    // can't be decoded. The caller gives the frame back with pushBackPool.
    static MVNFrame* loadFromFile(const std::string& path, int width, int height);

    // Writes w x h B,G,R,A bytes, rows packed, as a PNG file. 0 or -1.
    static int saveToFile(const std::string& path, const uint8_t* bgra, int w, int h);
};

}  // namespace Morvane
