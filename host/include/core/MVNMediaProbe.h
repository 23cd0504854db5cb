#pragma once
#include <string>

#include "core/MVNProfile.h"

namespace Morvane {

// What a video or animation file holds, found without decoding a picture:
// enough to check a project before anything is built and to give a clip its
// length. Through libavformat.
struct MVNMediaProbe {
    bool video = false;     // a stream of moving pictures
    bool audio = false;     // a stream of sound
    double duration = 0;    // seconds of the picture stream (of the file without one)
    double fps = 0;         // pictures a second, 0 when unknown
    int width = 0;
    int height = 0;

    // 0, or -1 with `reason` set ("does not open", "no picture stream").
    static int probe(const std::string& path, MVNMediaProbe& out, std::string& reason);
    // Whole positions of `profile` that start inside the duration.
    int positions(const MVNProfile& profile) const;
};

}  // namespace Morvane
