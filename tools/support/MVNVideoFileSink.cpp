#include "MVNVideoFileSink.h"

#include <cstdio>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
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
    mCodec->gop_size = 50;
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
    if (!(mFormat->oformat->flags & AVFMT_NOFILE)) {
        if ((rc = avio_open(&mFormat->pb, mTempPath.c_str(), AVIO_FLAG_WRITE)) < 0) {
            mError = "cannot write " + mPath + ": " + avError(rc);
            return -1;
        }
    }
    if ((rc = avformat_write_header(mFormat, nullptr)) < 0) {
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
    for (;;) {
        rc = avcodec_receive_packet(mCodec, mPacket);
        if (rc == AVERROR(EAGAIN) || rc == AVERROR_EOF) return 0;
        if (rc < 0) {
            mError = "encoding failed: " + avError(rc);
            return -1;
        }
        av_packet_rescale_ts(mPacket, mCodec->time_base, mStream->time_base);
        mPacket->stream_index = mStream->index;
        rc = av_interleaved_write_frame(mFormat, mPacket);
        if (rc < 0) {
            mError = "cannot write " + mPath + ": " + avError(rc);
            return -1;
        }
    }
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
    av_frame_free(&mFrame);
    av_packet_free(&mPacket);
    sws_freeContext(mSws);
    mSws = nullptr;
    mStream = nullptr;
}

}  // namespace Morvane
