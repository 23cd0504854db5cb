#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct SwsContext;

namespace codec {
class FFmpegDecoderImplAsync;
}

namespace Morvane {

// The pictures of a video file by time, frame-exact, as B,G,R,A bytes: the
// picture shown at time t is the last one that starts at or before t, the
// one a player has on screen then. Reads go through the decoder of codec/,
// which reaches a picture ahead by decoding on and any other by a seek to
// the key frame before it; a step back within the decoder's window is made
// a seek here, since the decoder would keep the picture it showed. The
// decoded picture is kept, so asking for it again costs only the
// conversion. One reader serves one clip from one thread at a time.
class MVNVideoPictures {
public:
    // `hardware`: decode on a hardware decoder when one opens, in software
    // otherwise.
    MVNVideoPictures(const std::string& path, bool hardware);
    ~MVNVideoPictures();
    MVNVideoPictures(const MVNVideoPictures&) = delete;
    MVNVideoPictures& operator=(const MVNVideoPictures&) = delete;

    // 0, or -1 (logged) when the file has no picture to show.
    int open();
    int width() const { return mWidth; }
    int height() const { return mHeight; }
    double fps() const { return mFps; }
    bool hardware() const;

    // The picture shown at `seconds` of the clip, counted from its first
    // picture.
    int64_t pictureAt(double seconds) const;
    // Writes picture `index` (or the last one, past the end) as width x
    // height B,G,R,A bytes, rows packed, into `bgra`. 0 or -1.
    int read(int64_t index, uint8_t* bgra);

private:
    int _decode(int64_t index);

    std::string mPath;
    std::unique_ptr<codec::FFmpegDecoderImplAsync> mDecoder;
    std::vector<uint8_t> mPlanes;  // the decoded picture as the decoder packs it
    int64_t mHeld = -1;            // which picture mPlanes holds, -1 for none
    SwsContext* mSws = nullptr;
    int mFormat = -1;
    int mWidth = 0;
    int mHeight = 0;
    double mFps = 0;
};

}  // namespace Morvane
