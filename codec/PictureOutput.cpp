#include "PictureOutput.h"

#include "core/MVNLog.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/hwcontext.h>
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace codec {

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";

// The full-range formats have the layout of their plain twins.
AVPixelFormat FoldFullRange(int format) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P: return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P: return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P: return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ411P: return AV_PIX_FMT_YUV411P;
    default: return static_cast<AVPixelFormat>(format);
    }
}

}  // namespace

PictureOutput::PictureOutput() = default;

PictureOutput::~PictureOutput() { Release(); }

void PictureOutput::Release() {
    sws_freeContext(mScaler);
    mScaler = nullptr;
    sws_freeContext(mChanged);
    mChanged = nullptr;
    av_frame_free(&mSoftware);
    mChangedWidth = mChangedHeight = 0;
    mBufferSize = 0;
}

int PictureOutput::Configure(int sourceWidth, int sourceHeight, int format, int outputWidth, int outputHeight) {
    Release();
    mSourceWidth = sourceWidth;
    mSourceHeight = sourceHeight;
    mFormat = format;
    mWidth = outputWidth;
    mHeight = outputHeight;
    const auto f = static_cast<AVPixelFormat>(format);
    if (mWidth != mSourceWidth || mHeight != mSourceHeight) {
        mScaler = sws_getContext(mSourceWidth, mSourceHeight, f, mWidth, mHeight, f, SWS_FAST_BILINEAR, nullptr,
                                 nullptr, nullptr);
        if (!mScaler) {
            log_error(kTag, "sws_getContext failed");
            return -1;
        }
        log_debug(kTag, "sws %d", 1);
    }
    mBufferSize = av_image_get_buffer_size(f, mWidth, mHeight, 1);
    return mBufferSize > 0 ? 0 : -1;
}

AVFrame* PictureOutput::_Transfer(AVFrame* frame) {
    if (!mSoftware && !(mSoftware = av_frame_alloc())) {
        log_error(kTag, "Could not allocate software video frame");
        return nullptr;
    }
    // NV12 where the surface offers it; 10-bit surfaces give P010 and the
    // like, which the conversion in Copy turns into the output format.
    AVPixelFormat target = AV_PIX_FMT_NV12;
    enum AVPixelFormat* formats = nullptr;
    if (av_hwframe_transfer_get_formats(frame->hw_frames_ctx, AV_HWFRAME_TRANSFER_DIRECTION_FROM, &formats, 0) >= 0 &&
        formats) {
        bool nv12 = false;
        for (enum AVPixelFormat* p = formats; *p != AV_PIX_FMT_NONE; ++p)
            nv12 = nv12 || *p == AV_PIX_FMT_NV12;
        if (!nv12 && formats[0] != AV_PIX_FMT_NONE)
            target = formats[0];
        av_free(formats);
    }
    av_frame_unref(mSoftware);
    mSoftware->format = target;
    int ret = av_hwframe_transfer_data(mSoftware, frame, 0);
    if (ret < 0) {
        log_error(kTag, "Failed to transfer data to sw frame err:%d", ret);
        return nullptr;
    }
    if (av_frame_copy_props(mSoftware, frame) < 0) {
        log_error(kTag, "Failed to av_frame_copy_props");
        return nullptr;
    }
    return mSoftware;
}

int PictureOutput::Copy(AVFrame* frame, uint8_t* data, int* size) {
    if (!data || !size || *size < mBufferSize || mBufferSize <= 0) {
        log_error(kTag, "out buffer too small %d<%d", size ? *size : 0, mBufferSize);
        return -1;
    }
    AVFrame* src = frame;
    if (frame->hw_frames_ctx && frame->format != mFormat) {
        src = _Transfer(frame);
        if (!src)
            return -1;
    }
    uint8_t* dst[4] = {};
    int lines[4] = {};
    const auto outFormat = static_cast<AVPixelFormat>(mFormat);
    if (av_image_fill_arrays(dst, lines, data, outFormat, mWidth, mHeight, 1) < 0)
        return -1;
    const AVPixelFormat srcFormat = FoldFullRange(src->format);
    const bool resized = src->width != mSourceWidth || src->height != mSourceHeight;
    if (resized || srcFormat != outFormat) {
        if (resized && (src->width != mChangedWidth || src->height != mChangedHeight)) {
            log_debug(kTag, "video frame size changed %dx%d->%dx%d", mSourceWidth, mSourceHeight, src->width,
                      src->height);
            mChangedWidth = src->width;
            mChangedHeight = src->height;
        }
        mChanged = sws_getCachedContext(mChanged, src->width, src->height, srcFormat, mWidth, mHeight, outFormat,
                                        SWS_FAST_BILINEAR, nullptr, nullptr, nullptr);
        if (!mChanged) {
            const char* name = av_get_pix_fmt_name(srcFormat);
            log_error(kTag, "sws_getCachedContext failed %dx%d %s", src->width, src->height, name ? name : "");
            return -1;
        }
        sws_scale(mChanged, src->data, src->linesize, 0, src->height, dst, lines);
    } else {
        mChangedWidth = mChangedHeight = 0;
        if (mScaler)
            sws_scale(mScaler, src->data, src->linesize, 0, src->height, dst, lines);
        else
            av_image_copy(dst, lines, const_cast<const uint8_t**>(src->data), src->linesize, outFormat, mWidth,
                          mHeight);
    }
    *size = mBufferSize;
    return 0;
}

}  // namespace codec
