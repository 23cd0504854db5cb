#pragma once
#include <string>

namespace codec {

// What FFmpegDecoder::GetMediaInfo tells about an opened file.
struct MediaInfo {
    float duration = 0;          // seconds of the clip
    bool has_video = false;
    bool has_audio = false;
    int width = 0;               // of the source picture
    int height = 0;
    float fps = 0;               // 0 without video
    int color_format = -1;       // AVPixelFormat of the pictures handed out, full-range forms folded
    std::string pixel_format;    // the source's pixel format name
    int bit_rate = 0;
    int sample_rate = 0;
    int channels = 0;            // of the source audio
    int sample_format = -1;      // AVSampleFormat of the audio handed out, -1 when unusual
    float dar = 1.0f;            // display aspect ratio
    double rotation = 0;         // degrees clockwise, in [0, 360)
};

}  // namespace codec
