#include "readers/MVNAudioSamples.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "FFmpegDecoderImplAsync.h"
#include "MediaInfo.h"
#include "core/MVNAudioBlock.h"
#include "core/MVNLog.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNAudioSamples";
// A jump forward shorter than this is decoded through rather than sought.
const int64_t kDecodeThrough = MVNAudioBlock::kRate / 2;
const int kBlockBytes = 1 << 18;
// A decoder of compressed sound needs the block before the first one it
// gives out right: a seek lands this much early and the lead is dropped.
const int64_t kPreroll = MVNAudioBlock::kRate / 10;
}  // namespace

MVNAudioSamples::MVNAudioSamples(const std::string& path)
    : mPath(path),
      mDecoder(std::make_unique<codec::FFmpegDecoderImplAsync>(path.c_str(), 0, 0, false, 0, -1, false)) {}

MVNAudioSamples::~MVNAudioSamples() {
    swr_free(&mSwr);
    mDecoder->Release();
}

int MVNAudioSamples::open() {
    mDecoder->SetAudioSampleFormat(AV_SAMPLE_FMT_FLT);
    if (mDecoder->Init() != 0) return -1;
    codec::MediaInfo info;
    mDecoder->GetMediaInfo(&info);
    if (!info.has_audio || info.sample_rate <= 0) {
        log_debug(kTag, "%s has no sound", mPath.c_str());
        return -1;
    }
    mSourceRate = info.sample_rate;
    mDuration = info.duration;
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    if (swr_alloc_set_opts2(&mSwr, &stereo, AV_SAMPLE_FMT_FLT, MVNAudioBlock::kRate, &stereo, AV_SAMPLE_FMT_FLT,
                            mSourceRate, 0, nullptr) < 0 ||
        swr_init(mSwr) < 0) {
        log_error(kTag, "%s: no resampler from %d Hz", mPath.c_str(), mSourceRate);
        swr_free(&mSwr);
        return -1;
    }
    mBlock.resize(kBlockBytes);
    // From the start of the file: a seek to 0 would skip the encoder's
    // priming block, which the first block of sound needs.
    mPending.clear();
    mPendingStart = -1;
    mEnd = false;
    return 0;
}

int MVNAudioSamples::_seek(int64_t first) {
    mPending.clear();
    mPendingStart = -1;
    mEnd = false;
    swr_init(mSwr);  // forgets what it held of the old place
    double time = static_cast<double>(first) / MVNAudioBlock::kRate;
    if (time > mDuration) {
        mEnd = true;
        return 0;
    }
    return mDecoder->SeekAudio(std::max(0.0, time)) == 0 ? 0 : -1;
}

bool MVNAudioSamples::_decodeMore() {
    for (;;) {
        int size = static_cast<int>(mBlock.size());
        int samples = 0;
        double time = 0;
        int ret = mDecoder->NextAudio(0, mBlock.data(), &size, &samples, &time);
        if (ret == 1 || ret == 4) continue;
        if (ret != 0) return false;
        if (samples <= 0) continue;
        if (mPendingStart < 0) {
            // The first block after a seek places everything after it.
            mPendingStart = static_cast<int64_t>(std::llround(time * MVNAudioBlock::kRate));
        }
        int room = swr_get_out_samples(mSwr, samples);
        size_t at = mPending.size();
        mPending.resize(at + static_cast<size_t>(std::max(room, 0)) * 2);
        uint8_t* out[1] = {reinterpret_cast<uint8_t*>(mPending.data() + at)};
        const uint8_t* in[1] = {mBlock.data()};
        int made = swr_convert(mSwr, out, room, in, samples);
        mPending.resize(at + static_cast<size_t>(std::max(made, 0)) * 2);
        return true;
    }
}

int MVNAudioSamples::read(int64_t first, int count, float* out) {
    if (mSwr == nullptr || out == nullptr || count < 0) return -1;
    std::memset(out, 0, static_cast<size_t>(count) * 2 * sizeof(float));
    int64_t pendingEnd = mPendingStart + static_cast<int64_t>(mPending.size() / 2);
    if ((mPendingStart >= 0 && (first < mPendingStart || first > pendingEnd + kDecodeThrough)) ||
        (mPendingStart < 0 && (first > kDecodeThrough || mEnd))) {
        if (_seek(std::max<int64_t>(0, first - kPreroll)) != 0) return -1;
    }
    const int64_t end = first + count;
    while (!mEnd && (mPendingStart < 0 || mPendingStart + static_cast<int64_t>(mPending.size() / 2) < end)) {
        if (!_decodeMore()) mEnd = true;
    }
    if (mPendingStart < 0) return 0;
    // The part of the pending samples that falls into [first, end).
    int64_t from = std::max(first, mPendingStart);
    int64_t to = std::min(end, mPendingStart + static_cast<int64_t>(mPending.size() / 2));
    if (to > from) {
        std::memcpy(out + (from - first) * 2, mPending.data() + (from - mPendingStart) * 2,
                    static_cast<size_t>(to - from) * 2 * sizeof(float));
    }
    // What was handed out is not needed again by a reader that goes on.
    int64_t drop = std::clamp<int64_t>(end - mPendingStart, 0, static_cast<int64_t>(mPending.size() / 2));
    mPending.erase(mPending.begin(), mPending.begin() + drop * 2);
    mPendingStart += drop;
    return 0;
}

}  // namespace Morvane
