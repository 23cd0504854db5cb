#include "AudioConverter.h"

#include <cstring>

#include "FramePool.h"
#include "core/MVNLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace codec {

namespace {
const char* kTag = "codec::FFmpegDecoderImpl";
const char* kTagAsync = "codec::FFmpegDecoderImplAsync";
// Scratch size of the tail drain: a second of 8 channels of doubles at 9600 Hz.
const int kDrainBytes = 614400;
}

AudioConverter::AudioConverter() = default;

AudioConverter::~AudioConverter() { Release(); }

void AudioConverter::Release() {
    swr_free(&mSwr);
    mSrcFormat = -1;
    mSrcChannels = 0;
    mRate = 0;
    mOutFormat = -1;
    mOutChannels = 0;
}

int AudioConverter::Init(const AVCodecContext* source, int targetFormat, int targetChannels, bool force) {
    Release();
    mSrcFormat = source->sample_fmt;
    mSrcChannels = source->ch_layout.nb_channels;
    mRate = source->sample_rate;
    mOutFormat = mSrcFormat;
    mOutChannels = mSrcChannels;
    // Formats beyond the usual ten (64-bit integers, unknown numbers) mean
    // "as the source has it".
    if (targetFormat > AV_SAMPLE_FMT_DBLP)
        targetFormat = -1;
    if (mSrcFormat == targetFormat && mSrcChannels == targetChannels && !force)
        return 0;
    if (targetFormat < 0 || targetChannels <= 0)
        return 0;
    log_debug(kTag, "audio sample format is %s, convert it to %s ",
              av_get_sample_fmt_name(static_cast<AVSampleFormat>(mSrcFormat)),
              av_get_sample_fmt_name(static_cast<AVSampleFormat>(targetFormat)));
    mOutFormat = targetFormat;
    mOutChannels = targetChannels;
    return _Build(mSrcFormat, mSrcChannels, &source->ch_layout, mRate);
}

int AudioConverter::_Build(int srcFormat, int srcChannels, const void* srcLayout, int rate) {
    swr_free(&mSwr);
    AVChannelLayout in = {};
    const auto* given = static_cast<const AVChannelLayout*>(srcLayout);
    if (given && given->order != AV_CHANNEL_ORDER_UNSPEC && given->nb_channels == srcChannels)
        av_channel_layout_copy(&in, given);
    else
        av_channel_layout_default(&in, srcChannels);
    AVChannelLayout out = {};
    if (mOutChannels == 1)
        out = AV_CHANNEL_LAYOUT_MONO;
    else if (mOutChannels == 2)
        out = AV_CHANNEL_LAYOUT_STEREO;
    else
        av_channel_layout_default(&out, mOutChannels);
    int ret = swr_alloc_set_opts2(&mSwr, &out, static_cast<AVSampleFormat>(mOutFormat), rate, &in,
                                  static_cast<AVSampleFormat>(srcFormat), rate, 0, nullptr);
    av_channel_layout_uninit(&in);
    av_channel_layout_uninit(&out);
    if (ret < 0 || !mSwr) {
        log_error(kTag, "swr_alloc_set_opts failed");
        swr_free(&mSwr);
        return -1;
    }
    if (swr_init(mSwr) < 0) {
        log_error(kTag, "swr_init failed");
        swr_free(&mSwr);
        return -1;
    }
    mSrcFormat = srcFormat;
    mSrcChannels = srcChannels;
    return 0;
}

int AudioConverter::BytesPerSample() const {
    return mOutFormat < 0 ? 0 : av_get_bytes_per_sample(static_cast<AVSampleFormat>(mOutFormat));
}

int AudioConverter::OutputBytes(const AVFrame* frame) const {
    int samples = frame->nb_samples;
    if (mSwr)
        samples = swr_get_out_samples(mSwr, frame->nb_samples);
    if (samples <= 0 || mOutChannels <= 0)
        return 0;
    return av_samples_get_buffer_size(nullptr, mOutChannels, samples, static_cast<AVSampleFormat>(mOutFormat), 1);
}

int AudioConverter::Convert(const AVFrame* frame, uint8_t* out, int room) {
    const int channels = frame->ch_layout.nb_channels;
    if (frame->format != mSrcFormat || channels != mSrcChannels) {
        // The stream changed its audio format: keep handing out the format
        // the client was told at open.
        if (_Build(frame->format, channels, &frame->ch_layout, mRate) != 0)
            return -1;
    }
    const auto outFormat = static_cast<AVSampleFormat>(mOutFormat);
    const int bps = av_get_bytes_per_sample(outFormat);
    if (bps <= 0 || mOutChannels <= 0)
        return -1;
    const bool planar = av_sample_fmt_is_planar(outFormat);

    if (!mSwr) {
        const int plane = frame->nb_samples * bps * (planar ? 1 : mOutChannels);
        const int total = plane * (planar ? mOutChannels : 1);
        if (total > room)
            return -1;
        for (int c = 0; c < (planar ? mOutChannels : 1); ++c)
            std::memcpy(out + c * plane, frame->extended_data[c], static_cast<size_t>(plane));
        return total;
    }

    const int capacity = room / (bps * mOutChannels);
    if (capacity <= 0)
        return 0;
    if (!planar) {
        uint8_t* planes[1] = {out};
        int converted = swr_convert(mSwr, planes, capacity, const_cast<const uint8_t**>(frame->extended_data),
                                    frame->nb_samples);
        if (converted < 0) {
            log_error(kTag, "swr_convert error");
            return -1;
        }
        return av_samples_get_buffer_size(nullptr, mOutChannels, converted, outFormat, 1);
    }
    // Planar target: convert into full-size planes, then close the gaps so
    // that plane c starts at c * converted samples.
    const int planeBytes = capacity * bps;
    if (mPlanar.size() < static_cast<size_t>(planeBytes) * mOutChannels)
        mPlanar.resize(static_cast<size_t>(planeBytes) * mOutChannels);
    std::vector<uint8_t*> planes(static_cast<size_t>(mOutChannels));
    for (int c = 0; c < mOutChannels; ++c)
        planes[static_cast<size_t>(c)] = mPlanar.data() + static_cast<size_t>(c) * planeBytes;
    int converted = swr_convert(mSwr, planes.data(), capacity, const_cast<const uint8_t**>(frame->extended_data),
                                frame->nb_samples);
    if (converted < 0) {
        log_error(kTag, "swr_convert error");
        return -1;
    }
    const int used = converted * bps;
    for (int c = 0; c < mOutChannels; ++c)
        std::memcpy(out + c * used, planes[static_cast<size_t>(c)], static_cast<size_t>(used));
    return used * mOutChannels;
}

int AudioConverter::DrainTail() {
    if (!mSwr)
        return 0;
    const int bps = BytesPerSample();
    if (bps <= 0 || mOutChannels <= 0)
        return 0;
    Frame* scratch = FramePool::Instance().GetAudio(kDrainBytes);
    const int capacity = kDrainBytes / (bps * mOutChannels);
    std::vector<uint8_t*> planes(static_cast<size_t>(mOutChannels), scratch->data.data());
    if (av_sample_fmt_is_planar(static_cast<AVSampleFormat>(mOutFormat))) {
        for (int c = 0; c < mOutChannels; ++c)
            planes[static_cast<size_t>(c)] = scratch->data.data() + static_cast<size_t>(c) * capacity * bps;
    }
    int drained = swr_convert(mSwr, planes.data(), capacity, nullptr, 0);
    log_debug(kTagAsync, "clean swr cache %d", drained);
    FramePool::Instance().Put(scratch);
    return drained < 0 ? 0 : drained;
}

}  // namespace codec
