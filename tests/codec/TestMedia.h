#pragma once
// The decoder tests' media: small files made once per build tree by
// make-media.sh, and readers of the frame number each picture shows.
#include <cstdint>
#include <string>
#include <vector>

namespace codec {
class FFmpegDecoder;
}

namespace CodecTest {

// Absolute path of a generated file ("gop12.mp4"); makes the set on first use.
std::string MediaPath(const std::string& name);

// A file name as a test name: "gop12.mp4" becomes "gop12_mp4".
std::string TestName(std::string file);

// The frame number a picture shows, from its luma plane (the first plane of
// the decoder's packed output); -1 when the picture holds no valid number.
int FrameNumberFromLuma(const uint8_t* luma, int width, int height);
// The same from packed B,G,R,A bytes.
int FrameNumberFromBgra(const uint8_t* bgra, int width, int height);

// What one NextVideo call gave: its result, the frame number the picture
// shows (-1 when none), its time, kind and size in bytes.
struct Picture {
    int ret = -1;
    int frame = -1;
    double time = -1;
    int kind = 0;
    int size = 0;
};
// Asks for the picture at `time` (-1: the next one in turn).
Picture NextPicture(codec::FFmpegDecoder& decoder, double time);

// Runs a command through the shell; returns its exit status and, when
// `output` is given, what it wrote to stdout.
int RunCommand(const std::string& command, std::string* output = nullptr);

// Writes `content` to `path` (marker files, broken files).
void WriteText(const std::string& path, const std::string& content);

}  // namespace CodecTest
