#include "readers/MVNVideoPictures.h"

#include <algorithm>
#include <cmath>

#include "FFmpegDecoderImplAsync.h"
#include "MediaInfo.h"
#include "core/MVNLog.h"

extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNVideoPictures";
// Times computed from frame numbers land a hair beside the picture's own.
const double kEpsilon = 1e-6;
}  // namespace

MVNVideoPictures::MVNVideoPictures(const std::string& path, bool hardware)
    : mPath(path),
      mDecoder(std::make_unique<codec::FFmpegDecoderImplAsync>(path.c_str(), 0, 0, false, 0, -1, hardware)) {}

MVNVideoPictures::~MVNVideoPictures() {
    sws_freeContext(mSws);
    mDecoder->Release();
}

bool MVNVideoPictures::hardware() const { return mDecoder->IsHardwareOpen(); }

int MVNVideoPictures::open() {
    // A timeline asks each clip for one picture and waits for it. Frame
    // threads keep a picture in flight per thread and so make each clip
    // late by that much, which adds up over clips side by side (four 1080p
    // tracks: 6 fps with them, 10 without); slice threads don't.
    mDecoder->SetThreadType("slice");
    if (mDecoder->Init() != 0) {
        log_error(kTag, "open failed, %s does not open", mPath.c_str());
        return -1;
    }
    codec::MediaInfo info;
    mDecoder->GetMediaInfo(&info);
    if (!info.has_video || mDecoder->Fps() <= 0) {
        log_error(kTag, "open failed, %s has no pictures", mPath.c_str());
        return -1;
    }
    mFps = mDecoder->Fps();
    mWidth = mDecoder->GetOutputWidth();
    mHeight = mDecoder->GetOutputHeight();
    mFormat = mDecoder->OutputPixelFormat();
    mPlanes.resize(static_cast<size_t>(std::max(mDecoder->GetFrameBufferSize(), 1)));
    // The same conversion the ffmpeg command makes by default.
    mSws = sws_getContext(mWidth, mHeight, static_cast<AVPixelFormat>(mFormat), mWidth, mHeight, AV_PIX_FMT_BGRA,
                          SWS_BICUBIC, nullptr, nullptr, nullptr);
    if (mSws == nullptr) {
        log_error(kTag, "open failed, no conversion of %s pictures to BGRA", mPath.c_str());
        return -1;
    }
    log_info(kTag, "%s: %dx%d at %.3f fps, %s decoding", mPath.c_str(), mWidth, mHeight, mFps,
             hardware() ? "hardware" : "software");
    return 0;
}

int64_t MVNVideoPictures::pictureAt(double seconds) const {
    return std::max<int64_t>(0, static_cast<int64_t>(std::floor(seconds * mFps + kEpsilon)));
}

int MVNVideoPictures::_decode(int64_t index) {
    uint8_t* data = mPlanes.data();
    double time = index / mFps;
    int kind = 0;
    double out = 0;
    // The decoder keeps the picture it showed for a step back inside its
    // window; a seek makes it decode the one asked for.
    if (mHeld >= 0 && index < mHeld && mDecoder->SeekVideo(time) != 0) return -1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        int size = static_cast<int>(mPlanes.size());
        int ret = mDecoder->NextVideo(time, data, &size, &kind, &out);
        if (ret == 0) {
            mHeld = static_cast<int64_t>(std::llround(out * mFps));
            return 0;
        }
        if (ret == 2 && mHeld == index) return 0;
        if (ret == -2 && mHeld >= 0) return 0;  // past the last picture: the last stands
        if (ret == -2) {
            // Past the end before any picture: the last one of the file.
            time = std::max(0.0, mDecoder->Duration() - 1.0 / mFps);
            if (mDecoder->SeekVideo(time) != 0) return -1;
            continue;
        }
        if (ret == 2 && mDecoder->SeekVideo(time) == 0) continue;
        log_error(kTag, "%s: picture %lld not decoded (%d)", mPath.c_str(), static_cast<long long>(index), ret);
        return -1;
    }
    return -1;
}

int MVNVideoPictures::read(int64_t index, uint8_t* bgra) {
    if (mSws == nullptr || bgra == nullptr) return -1;
    if (index != mHeld && _decode(index) != 0) return -1;
    const uint8_t* src[4] = {};
    int srcLines[4] = {};
    if (av_image_fill_arrays(const_cast<uint8_t**>(src), srcLines, mPlanes.data(), static_cast<AVPixelFormat>(mFormat),
                             mWidth, mHeight, 1) < 0) {
        return -1;
    }
    uint8_t* dst[4] = {bgra};
    int dstLines[4] = {mWidth * 4};
    sws_scale(mSws, src, srcLines, 0, mHeight, dst, dstLines);
    return 0;
}

}  // namespace Morvane
