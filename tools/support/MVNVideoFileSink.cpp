#include "MVNVideoFileSink.h"

#include <algorithm>
#include <cstdio>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/imgutils.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace Morvane {
namespace {

std::string avError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(code, text, sizeof text);
    return text;
}

}  // namespace

MVNVideoFileSink::MVNVideoFileSink(const std::string& path) : mPath(path) {
    // Keep the extension last so that libavformat still picks the container.
    auto dot = path.rfind('.');
    auto slash = path.rfind('/');
    std::string dir = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string ext = dot == std::string::npos ? "" : path.substr(dot);
    mTempPath = dir + "." + name + ".part" + ext;
}

MVNVideoFileSink::~MVNVideoFileSink() {
    if (mFormat) abort();
    close();
}

int MVNVideoFileSink::open(int width, int height, int fpsNum, int fpsDen, int colorType) {
    mWidth = width;
    mHeight = height;
    mSrcFormat = colorType == 28 ? AV_PIX_FMT_BGRA : AV_PIX_FMT_RGBA;
    if (width % 2 || height % 2) {
        mError = "H.264 needs an even width and height, got " + std::to_string(width) + "x" + std::to_string(height);
        return -1;
    }
    int rc = avformat_alloc_output_context2(&mFormat, nullptr, nullptr, mTempPath.c_str());
    if (rc < 0 || !mFormat) {
        mError = "cannot create output " + mPath + ": " + avError(rc);
        return -1;
    }
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    if (!codec) codec = avcodec_find_encoder(AV_CODEC_ID_H264);
    if (!codec) {
        mError = "no H.264 encoder available";
        return -1;
    }
    mStream = avformat_new_stream(mFormat, nullptr);
    mCodec = avcodec_alloc_context3(codec);
    if (!mStream || !mCodec) {
        mError = "out of memory";
        return -1;
    }
    mCodec->width = width;
    mCodec->height = height;
    mCodec->pix_fmt = AV_PIX_FMT_YUV420P;
    mCodec->time_base = AVRational{fpsDen > 0 ? fpsDen : 1, fpsNum > 0 ? fpsNum : 25};
    mCodec->framerate = AVRational{mCodec->time_base.den, mCodec->time_base.num};
    mCodec->gop_size = kKeyFrameInterval;
    mCodec->color_range = AVCOL_RANGE_MPEG;
    mCodec->colorspace = AVCOL_SPC_BT709;
    mCodec->color_primaries = AVCOL_PRI_BT709;
    mCodec->color_trc = AVCOL_TRC_BT709;
    if (mFormat->oformat->flags & AVFMT_GLOBALHEADER) mCodec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_opt_set(mCodec->priv_data, "preset", "veryfast", 0);
    av_opt_set(mCodec->priv_data, "crf", "20", 0);
    if ((rc = avcodec_open2(mCodec, codec, nullptr)) < 0) {
        mError = "cannot open the H.264 encoder: " + avError(rc);
        return -1;
    }
    avcodec_parameters_from_context(mStream->codecpar, mCodec);
    mStream->time_base = mCodec->time_base;
    if (mSoundRate > 0 && openSound() != 0) return -1;
    if (!(mFormat->oformat->flags & AVFMT_NOFILE)) {
        if ((rc = avio_open(&mFormat->pb, mTempPath.c_str(), AVIO_FLAG_WRITE)) < 0) {
            mError = "cannot write " + mPath + ": " + avError(rc);
            return -1;
        }
    }
    // MP4 keeps tags of its own names only when asked to.
    AVDictionary* muxerOptions = nullptr;
    for (const auto& [key, value] : mTags) av_dict_set(&mFormat->metadata, key.c_str(), value.c_str(), 0);
    if (!mTags.empty()) av_dict_set(&muxerOptions, "movflags", "use_metadata_tags", 0);
    rc = avformat_write_header(mFormat, &muxerOptions);
    av_dict_free(&muxerOptions);
    if (rc < 0) {
        mError = "cannot write the header of " + mPath + ": " + avError(rc);
        return -1;
    }
    mFrame = av_frame_alloc();
    mPacket = av_packet_alloc();
    if (!mFrame || !mPacket) {
        mError = "out of memory";
        return -1;
    }
    mFrame->format = AV_PIX_FMT_YUV420P;
    mFrame->width = width;
    mFrame->height = height;
    if (av_frame_get_buffer(mFrame, 0) < 0) {
        mError = "out of memory";
        return -1;
    }
    mSws = sws_getContext(width, height, static_cast<AVPixelFormat>(mSrcFormat), width, height, AV_PIX_FMT_YUV420P,
                          SWS_BILINEAR, nullptr, nullptr, nullptr);
    if (!mSws) {
        mError = "cannot set up the colour conversion";
        return -1;
    }
    // Full-range RGB in, limited-range BT.709 out: what players expect of H.264.
    const int* coeffs = sws_getCoefficients(SWS_CS_ITU709);
    sws_setColorspaceDetails(mSws, coeffs, 1, coeffs, 0, 0, 1 << 16, 1 << 16);
    return 0;
}

int MVNVideoFileSink::encode(AVFrame* frame) {
    int rc = avcodec_send_frame(mCodec, frame);
    if (rc < 0) {
        mError = "encoding failed: " + avError(rc);
        return -1;
    }
    return writePackets(mCodec, mStream);
}

int MVNVideoFileSink::writePackets(AVCodecContext* codec, AVStream* stream) {
    for (;;) {
        int rc = avcodec_receive_packet(codec, mPacket);
        if (rc == AVERROR(EAGAIN) || rc == AVERROR_EOF) return 0;
        if (rc < 0) {
            mError = "encoding failed: " + avError(rc);
            return -1;
        }
        // A picture lasts one frame: the file's length then counts the last.
        if (mPacket->duration == 0 && codec == mCodec) mPacket->duration = 1;
        av_packet_rescale_ts(mPacket, codec->time_base, stream->time_base);
        mPacket->stream_index = stream->index;
        rc = av_interleaved_write_frame(mFormat, mPacket);
        if (rc < 0) {
            mError = "cannot write " + mPath + ": " + avError(rc);
            return -1;
        }
    }
}

void MVNVideoFileSink::enableSound(int rate, int channels) {
    mSoundRate = rate;
    mSoundChannels = channels;
}

int MVNVideoFileSink::openSound() {
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!codec) {
        mError = "no AAC encoder available";
        return -1;
    }
    mSoundStream = avformat_new_stream(mFormat, nullptr);
    mSoundCodec = avcodec_alloc_context3(codec);
    mSoundFrame = av_frame_alloc();
    if (!mSoundStream || !mSoundCodec || !mSoundFrame) {
        mError = "out of memory";
        return -1;
    }
    mSoundCodec->sample_fmt = AV_SAMPLE_FMT_FLTP;
    mSoundCodec->sample_rate = mSoundRate;
    av_channel_layout_default(&mSoundCodec->ch_layout, mSoundChannels);
    mSoundCodec->bit_rate = 192000;
    mSoundCodec->time_base = AVRational{1, mSoundRate};
    if (mFormat->oformat->flags & AVFMT_GLOBALHEADER) mSoundCodec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    int rc = avcodec_open2(mSoundCodec, codec, nullptr);
    if (rc < 0) {
        mError = "cannot open the AAC encoder: " + avError(rc);
        return -1;
    }
    avcodec_parameters_from_context(mSoundStream->codecpar, mSoundCodec);
    mSoundStream->time_base = mSoundCodec->time_base;
    return 0;
}

int MVNVideoFileSink::writeSound(const float* samples, int count) {
    if (mSoundRate <= 0 || samples == nullptr || count <= 0) return 0;
    mSoundQueue.insert(mSoundQueue.end(), samples, samples + static_cast<size_t>(count) * mSoundChannels);
    // Before the first picture opened the file the sound waits.
    return mSoundCodec != nullptr && mPacket != nullptr ? encodeSound(false) : 0;
}

int MVNVideoFileSink::encodeSound(bool last) {
    const int frameSize = mSoundCodec->frame_size > 0 ? mSoundCodec->frame_size : 1024;
    const bool smallLast = (mSoundCodec->codec->capabilities & AV_CODEC_CAP_SMALL_LAST_FRAME) != 0;
    size_t at = 0;
    for (;;) {
        int queued = static_cast<int>((mSoundQueue.size() - at) / mSoundChannels);
        if (queued <= 0 || (queued < frameSize && !last)) break;
        int take = std::min(queued, frameSize);
        av_frame_unref(mSoundFrame);
        mSoundFrame->format = AV_SAMPLE_FMT_FLTP;
        mSoundFrame->sample_rate = mSoundRate;
        av_channel_layout_copy(&mSoundFrame->ch_layout, &mSoundCodec->ch_layout);
        // A short last frame is padded with silence where the encoder wants
        // whole frames.
        mSoundFrame->nb_samples = smallLast ? take : frameSize;
        if (av_frame_get_buffer(mSoundFrame, 0) < 0) {
            mError = "out of memory";
            return -1;
        }
        for (int c = 0; c < mSoundChannels; ++c) {
            float* plane = reinterpret_cast<float*>(mSoundFrame->data[c]);
            for (int i = 0; i < mSoundFrame->nb_samples; ++i)
                plane[i] = i < take ? mSoundQueue[at + static_cast<size_t>(i) * mSoundChannels + c] : 0.0f;
        }
        at += static_cast<size_t>(take) * mSoundChannels;
        mSoundFrame->pts = mSoundPts;
        mSoundPts += take;
        int rc = avcodec_send_frame(mSoundCodec, mSoundFrame);
        if (rc < 0) {
            mError = "sound encoding failed: " + avError(rc);
            return -1;
        }
        if (writePackets(mSoundCodec, mSoundStream) != 0) return -1;
    }
    mSoundQueue.erase(mSoundQueue.begin(), mSoundQueue.begin() + static_cast<long>(at));
    if (last) {
        if (avcodec_send_frame(mSoundCodec, nullptr) < 0) return 0;
        return writePackets(mSoundCodec, mSoundStream);
    }
    return 0;
}

int MVNVideoFileSink::write(const uint8_t* pixels, int stride) {
    if (!mSws) {
        mError = "output not open";
        return -1;
    }
    if (av_frame_make_writable(mFrame) < 0) {
        mError = "out of memory";
        return -1;
    }
    const uint8_t* src[4] = {pixels, nullptr, nullptr, nullptr};
    int srcStride[4] = {stride, 0, 0, 0};
    sws_scale(mSws, src, srcStride, 0, mHeight, mFrame->data, mFrame->linesize);
    mFrame->pts = mPts++;
    return encode(mFrame);
}

int MVNVideoFileSink::finish() {
    if (!mFormat) {
        mError = "output not open";
        return -1;
    }
    if (encode(nullptr) < 0) return -1;
    if (mSoundCodec != nullptr && encodeSound(true) != 0) return -1;
    int rc = av_write_trailer(mFormat);
    if (rc < 0) {
        mError = "cannot finish " + mPath + ": " + avError(rc);
        return -1;
    }
    close();
    if (std::rename(mTempPath.c_str(), mPath.c_str()) != 0) {
        mError = "cannot move the finished video to " + mPath;
        std::remove(mTempPath.c_str());
        return -1;
    }
    return 0;
}

void MVNVideoFileSink::abort() {
    close();
    std::remove(mTempPath.c_str());
}

void MVNVideoFileSink::close() {
    if (mFormat) {
        if (!(mFormat->oformat->flags & AVFMT_NOFILE) && mFormat->pb) avio_closep(&mFormat->pb);
        avformat_free_context(mFormat);
        mFormat = nullptr;
    }
    avcodec_free_context(&mCodec);
    avcodec_free_context(&mSoundCodec);
    av_frame_free(&mSoundFrame);
    mSoundStream = nullptr;
    av_frame_free(&mFrame);
    av_packet_free(&mPacket);
    sws_freeContext(mSws);
    mSws = nullptr;
    mStream = nullptr;
}

}  // namespace Morvane
