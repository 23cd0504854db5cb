#pragma once

namespace Morvane {

// Image format of a frame. Values below 10000 follow FFmpeg's pixel-format
// numbering (26 is R,G,B,A bytes; 28 is B,G,R,A bytes); the two above name
// frames without pixels.
enum MVNColorType : int {
    MVN_COLOR_NONE = -1,
    MVN_COLOR_YUV420P = 0,
    MVN_COLOR_RGB24 = 2,
    MVN_COLOR_BGR24 = 3,
    MVN_COLOR_RGBA = 26,  // tag of the readers' asynchronous frames
    MVN_COLOR_BGRA = 28,  // the working CPU format: uploads and conversions use it
    MVN_COLOR_RTT = 10001,    // no pixels: the name of a render texture in MVNFrame::rtt()
    MVN_COLOR_BLANK = 10002,  // no pixels, no render texture: the scene draws the picture
};

}  // namespace Morvane
