#include "core/MVNImage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "core/MVNPixelUtils.h"

namespace Morvane {

namespace {

const char* kTag = "Morvane::MVNImage";

std::string errorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(code, text, sizeof text);
    return text;
}

struct FormatCloser {
    void operator()(AVFormatContext* ctx) const { avformat_close_input(&ctx); }
};
struct CodecFreer {
    void operator()(AVCodecContext* ctx) const { avcodec_free_context(&ctx); }
};
struct FrameFreer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFreer {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerFreer {
    void operator()(SwsContext* ctx) const { sws_freeContext(ctx); }
};

using FormatPtr = std::unique_ptr<AVFormatContext, FormatCloser>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecFreer>;
using FramePtr = std::unique_ptr<AVFrame, FrameFreer>;
using PacketPtr = std::unique_ptr<AVPacket, PacketFreer>;
using ScalerPtr = std::unique_ptr<SwsContext, ScalerFreer>;

// The first decoded picture of the video stream `index`, or null.
FramePtr decodeFirstPicture(AVFormatContext* fmt, AVCodecContext* codec, int index, const std::string& path) {
    PacketPtr packet(av_packet_alloc());
    FramePtr picture(av_frame_alloc());
    if (!packet || !picture) {
        return nullptr;
    }
    bool flushed = false;
    while (true) {
        int rc = avcodec_receive_frame(codec, picture.get());
        if (rc == 0) {
            return picture;
        }
        if (rc != AVERROR(EAGAIN) || flushed) {
            log_error(kTag, "loadFromFile %s failed, no picture decoded: %s", path.c_str(), errorText(rc).c_str());
            return nullptr;
        }
        rc = av_read_frame(fmt, packet.get());
        if (rc < 0) {
            // End of file: drain what the decoder still holds.
            avcodec_send_packet(codec, nullptr);
            flushed = true;
            continue;
        }
        if (packet->stream_index == index) {
            rc = avcodec_send_packet(codec, packet.get());
            if (rc < 0 && rc != AVERROR(EAGAIN)) {
                av_packet_unref(packet.get());
                log_error(kTag, "loadFromFile %s failed, decode error: %s", path.c_str(), errorText(rc).c_str());
                return nullptr;
            }
        }
        av_packet_unref(packet.get());
    }
}

// JPEG decoders report full-range "yuvj" formats, which the scaler takes as
// deprecated: the plain format with the full range set is the same thing.
AVPixelFormat withoutJRange(AVPixelFormat fmt, bool& fullRange) {
    switch (fmt) {
        case AV_PIX_FMT_YUVJ420P: fullRange = true; return AV_PIX_FMT_YUV420P;
        case AV_PIX_FMT_YUVJ422P: fullRange = true; return AV_PIX_FMT_YUV422P;
        case AV_PIX_FMT_YUVJ444P: fullRange = true; return AV_PIX_FMT_YUV444P;
        case AV_PIX_FMT_YUVJ440P: fullRange = true; return AV_PIX_FMT_YUV440P;
        case AV_PIX_FMT_YUVJ411P: fullRange = true; return AV_PIX_FMT_YUV411P;
        default: return fmt;
    }
}

}  // namespace

MVNFrame* MVNImage::loadFromFile(const std::string& path, int width, int height) {
    if (path.empty()) {
        log_error(kTag, "loadFromFile failed, empty path");
        return nullptr;
    }
    AVFormatContext* rawFmt = nullptr;
    int rc = avformat_open_input(&rawFmt, path.c_str(), nullptr, nullptr);
    if (rc < 0) {
        log_error(kTag, "loadFromFile %s failed, open error: %s", path.c_str(), errorText(rc).c_str());
        return nullptr;
    }
    FormatPtr fmt(rawFmt);
    if ((rc = avformat_find_stream_info(fmt.get(), nullptr)) < 0) {
        log_error(kTag, "loadFromFile %s failed, no stream info: %s", path.c_str(), errorText(rc).c_str());
        return nullptr;
    }
    const AVCodec* decoder = nullptr;
    int index = av_find_best_stream(fmt.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (index < 0 || !decoder) {
        log_error(kTag, "loadFromFile %s failed, no picture stream", path.c_str());
        return nullptr;
    }
    CodecPtr codec(avcodec_alloc_context3(decoder));
    if (!codec || avcodec_parameters_to_context(codec.get(), fmt->streams[index]->codecpar) < 0) {
        log_error(kTag, "loadFromFile %s failed, decoder setup", path.c_str());
        return nullptr;
    }
    if ((rc = avcodec_open2(codec.get(), decoder, nullptr)) < 0) {
        log_error(kTag, "loadFromFile %s failed, open decoder %s: %s", path.c_str(), decoder->name,
                  errorText(rc).c_str());
        return nullptr;
    }
    FramePtr picture = decodeFirstPicture(fmt.get(), codec.get(), index, path);
    if (!picture) {
        return nullptr;
    }
    const int srcW = picture->width;
    const int srcH = picture->height;
    bool fullRange = picture->color_range == AVCOL_RANGE_JPEG;
    const AVPixelFormat srcFmt = withoutJRange(static_cast<AVPixelFormat>(picture->format), fullRange);
    if (srcW <= 0 || srcH <= 0) {
        log_error(kTag, "loadFromFile %s failed, empty picture", path.c_str());
        return nullptr;
    }
    int dstW = width;
    int dstH = height;
    if (dstW <= 0 && dstH <= 0) {
        dstW = srcW;
        dstH = srcH;
    } else if (dstW <= 0) {
        dstW = std::max(1, static_cast<int>(std::lround(static_cast<double>(dstH) * srcW / srcH)));
    } else if (dstH <= 0) {
        dstH = std::max(1, static_cast<int>(std::lround(static_cast<double>(dstW) * srcH / srcW)));
    }
    const int size = getPixelsBufferSize(dstW, dstH, MVN_COLOR_BGRA);
    if (size <= 0) {
        log_error(kTag, "loadFromFile %s failed, bad size %dx%d", path.c_str(), dstW, dstH);
        return nullptr;
    }

    ScalerPtr scaler(sws_getContext(srcW, srcH, srcFmt, dstW, dstH, AV_PIX_FMT_BGRA,
                                    SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr));
    if (!scaler) {
        log_error(kTag, "loadFromFile %s failed, can't convert %s %dx%d", path.c_str(),
                  av_get_pix_fmt_name(srcFmt) ? av_get_pix_fmt_name(srcFmt) : "?", srcW, srcH);
        return nullptr;
    }
    // JPEG pictures use the full 0-255 range; the scaler assumes video range
    // unless told.
    if (fullRange) {
        const int* coefficients = sws_getCoefficients(SWS_CS_DEFAULT);
        sws_setColorspaceDetails(scaler.get(), coefficients, 1, coefficients, 1, 0, 1 << 16, 1 << 16);
    }

    MVNFrame* frame = MVNFrame::pullFromPool(1, size);
    if (!frame) {
        log_error(kTag, "loadFromFile %s failed, alloc frame of %d bytes", path.c_str(), size);
        return nullptr;
    }
    uint8_t* dstData[4] = {frame->buffer()->ptr(), nullptr, nullptr, nullptr};
    int dstLines[4] = {dstW * 4, 0, 0, 0};
    if (sws_scale(scaler.get(), picture->data, picture->linesize, 0, srcH, dstData, dstLines) != dstH) {
        MVNFrame::pushBackPool(frame);
        log_error(kTag, "loadFromFile %s failed, convert error", path.c_str());
        return nullptr;
    }
    frame->setColorFormat(MVN_COLOR_BGRA);
    frame->setWidth(dstW);
    frame->setHeight(dstH);
    frame->setSize(size);
    return frame;
}

int MVNImage::saveToFile(const std::string& path, const uint8_t* bgra, int w, int h) {
    if (path.empty() || !bgra || w <= 0 || h <= 0) {
        log_error(kTag, "saveToFile refused, path:'%s' %dx%d", path.c_str(), w, h);
        return -1;
    }
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_PNG);
    CodecPtr codec(encoder ? avcodec_alloc_context3(encoder) : nullptr);
    if (!codec) {
        log_error(kTag, "saveToFile %s failed, no PNG encoder", path.c_str());
        return -1;
    }
    codec->width = w;
    codec->height = h;
    codec->pix_fmt = AV_PIX_FMT_RGBA;  // PNG stores R,G,B,A
    codec->time_base = AVRational{1, 25};
    int rc = avcodec_open2(codec.get(), encoder, nullptr);
    if (rc < 0) {
        log_error(kTag, "saveToFile %s failed, open encoder: %s", path.c_str(), errorText(rc).c_str());
        return -1;
    }
    FramePtr frame(av_frame_alloc());
    PacketPtr packet(av_packet_alloc());
    if (!frame || !packet) {
        return -1;
    }
    frame->format = AV_PIX_FMT_RGBA;
    frame->width = w;
    frame->height = h;
    if (av_frame_get_buffer(frame.get(), 0) < 0) {
        log_error(kTag, "saveToFile %s failed, alloc frame", path.c_str());
        return -1;
    }
    const int size = getPixelsBufferSize(w, h, MVN_COLOR_RGBA);
    MVNByteBuffer rgba(size, 0);
    if (!rgba.good() || convertImage(bgra, w, h, MVN_COLOR_BGRA, rgba.ptr(), w, h, MVN_COLOR_RGBA) != 0) {
        log_error(kTag, "saveToFile %s failed, convert error", path.c_str());
        return -1;
    }
    av_image_copy_plane(frame->data[0], frame->linesize[0], rgba.ptr(), w * 4, w * 4, h);

    if ((rc = avcodec_send_frame(codec.get(), frame.get())) < 0 || (rc = avcodec_send_frame(codec.get(), nullptr)) < 0 ||
        (rc = avcodec_receive_packet(codec.get(), packet.get())) < 0) {
        log_error(kTag, "saveToFile %s failed, encode error: %s", path.c_str(), errorText(rc).c_str());
        return -1;
    }
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) {
        log_error(kTag, "saveToFile %s failed, can't open for writing", path.c_str());
        return -1;
    }
    const bool written = std::fwrite(packet->data, 1, static_cast<size_t>(packet->size), file) ==
                         static_cast<size_t>(packet->size);
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed) {
        log_error(kTag, "saveToFile %s failed, write error", path.c_str());
        std::remove(path.c_str());
        return -1;
    }
    return 0;
}

}  // namespace Morvane
