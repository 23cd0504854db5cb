#include "HardwareDecoderOpener.h"

#include <cstdint>

#include "core/MVNLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/hwcontext.h>
#include <libavutil/pixdesc.h>
}

namespace codec {

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";

// The decoder asks for its output format once it knows the stream; it gets
// the hardware surface format when offered, else the first software format
// so that decoding goes on in software rather than failing.
enum AVPixelFormat PickHardwareFormat(AVCodecContext* ctx, const enum AVPixelFormat* offered) {
    const auto wanted = static_cast<AVPixelFormat>(reinterpret_cast<intptr_t>(ctx->opaque));
    for (const enum AVPixelFormat* p = offered; *p != AV_PIX_FMT_NONE; ++p)
        if (*p == wanted)
            return *p;
    for (const enum AVPixelFormat* p = offered; *p != AV_PIX_FMT_NONE; ++p) {
        const AVPixFmtDescriptor* desc = av_pix_fmt_desc_get(*p);
        if (desc && !(desc->flags & AV_PIX_FMT_FLAG_HWACCEL))
            return *p;
    }
    return AV_PIX_FMT_NONE;
}

AVHWDeviceType DeviceTypeByVendor(const std::string& vendor) {
    if (vendor == "NVIDIA")
        return AV_HWDEVICE_TYPE_CUDA;
    // Linux reaches Intel and AMD decoders alike through VAAPI.
    if (vendor == "Intel" || vendor == "AMD")
        return AV_HWDEVICE_TYPE_VAAPI;
    return AV_HWDEVICE_TYPE_NONE;
}

bool VaapiVendorCodec(AVCodecID id) {
    return id == AV_CODEC_ID_MPEG2VIDEO || id == AV_CODEC_ID_H264 || id == AV_CODEC_ID_VP9 ||
           id == AV_CODEC_ID_HEVC;
}

}  // namespace

HardwareDecoderOpener::HardwareDecoderOpener(AVFormatContext* format, const std::string& path, int threadCount,
                                             const std::string& threadType)
    : mFormat(format), mPath(path), mThreadCount(threadCount), mThreadType(threadType) {}

std::string HardwareDecoderOpener::DecoderNameByVendor(const std::string& vendor, int codecId) {
    const auto id = static_cast<AVCodecID>(codecId);
    if (vendor.empty()) {
        log_debug(kTag, "not find vendor");
        return "";
    }
    if (vendor == "NVIDIA") {
        switch (id) {
        case AV_CODEC_ID_MPEG2VIDEO: return "mpeg2_cuvid";
        case AV_CODEC_ID_MPEG4: return "mpeg4_cuvid";
        case AV_CODEC_ID_H264: return "h264_cuvid";
        case AV_CODEC_ID_VC1: return "vc1_cuvid";
        case AV_CODEC_ID_VP8: return "vp8_cuvid";
        case AV_CODEC_ID_VP9: return "vp9_cuvid";
        case AV_CODEC_ID_HEVC: return "hevc_cuvid";
        default:
            log_debug(kTag, "hwccel: cuvid not support codec %s", avcodec_get_name(id));
            return "";
        }
    }
    if (vendor == "Intel" || vendor == "AMD") {
        // VAAPI works inside the stock decoder, so the vendor path names it.
        const AVCodec* stock = VaapiVendorCodec(id) ? avcodec_find_decoder(id) : nullptr;
        if (stock)
            return stock->name;
        if (vendor == "Intel")
            log_debug(kTag, "hwccel: qsv not support codec %s", avcodec_get_name(id));
        return "";
    }
    log_debug(kTag, "hwccel: not support vendor:%s", vendor.c_str());
    return "";
}

AVCodecContext* HardwareDecoderOpener::_AllocContext(const void* decoder, int stream, const char* allocFailure) {
    const auto* codec = static_cast<const AVCodec*>(decoder);
    AVCodecContext* ctx = avcodec_alloc_context3(codec);
    if (!ctx) {
        log_error(kTag, "%s", allocFailure);
        return nullptr;
    }
    AVStream* st = mFormat->streams[stream];
    if (avcodec_parameters_to_context(ctx, st->codecpar) < 0) {
        log_error(kTag, "%s", allocFailure);
        avcodec_free_context(&ctx);
        return nullptr;
    }
    ctx->pkt_timebase = st->time_base;
    return ctx;
}

void HardwareDecoderOpener::_ApplyThreads(AVCodecContext* ctx, bool spacedMessages) {
    if (mThreadCount > 0) {
        ctx->thread_count = mThreadCount;
        log_debug(kTag, "hwaccel: thread_count:%d", mThreadCount);
    }
    if (mThreadType == "frame") {
        ctx->thread_type = FF_THREAD_FRAME;
        log_debug(kTag, spacedMessages ? "hwaccel: thread_type: frame" : "hwaccel: thread_type:frame");
    } else if (mThreadType == "slice") {
        ctx->thread_type = FF_THREAD_SLICE;
        log_debug(kTag, spacedMessages ? "hwaccel: thread_type: slice" : "hwaccel: thread_type:slice");
    }
}

// Creates the device and opens the decoder on it. -1: the device failed and
// the context may serve another try; -2: the open failed and the caller frees
// the context, which FFmpeg does not let us reuse.
int HardwareDecoderOpener::_OpenOnDevice(AVCodecContext* ctx, const void* decoder, int deviceType,
                                         int hwPixelFormat, HardwareDecoder* out) {
    const auto type = static_cast<AVHWDeviceType>(deviceType);
    const char* typeName = av_hwdevice_get_type_name(type);
    AVBufferRef* device = nullptr;
    if (av_hwdevice_ctx_create(&device, type, nullptr, nullptr, 0) < 0) {
        log_error(kTag, "hwaccel: Failed to create specified HW device %s", typeName ? typeName : "");
        return -1;
    }
    log_debug(kTag, "hwaccel: Decode Video By Gpu %s", typeName ? typeName : "");
    if (!device) {
        log_error(kTag, "hwaccel: not find available codec device");
        return -1;
    }
    ctx->hw_device_ctx = av_buffer_ref(device);
    ctx->opaque = reinterpret_cast<void*>(static_cast<intptr_t>(hwPixelFormat));
    ctx->get_format = PickHardwareFormat;
    AVDictionary* opts = nullptr;
    av_dict_set(&opts, "refcounted_frames", "1", 0);
    const auto* codec = static_cast<const AVCodec*>(decoder);
    int ret = avcodec_open2(ctx, codec, &opts);
    av_dict_free(&opts);
    if (ret < 0) {
        log_error(kTag, "hwaccel: avcodec_open2 failed");
        av_buffer_unref(&ctx->hw_device_ctx);
        av_buffer_unref(&device);
        return -2;
    }
    out->context = ctx;
    out->device = device;
    out->hwPixelFormat = hwPixelFormat;
    log_debug(kTag, "hwaccel: open windows codec successfully, name:%s", codec->name);
    return 0;
}

int HardwareDecoderOpener::OpenByVendor(const std::string& vendor, HardwareDecoder* out) {
    int stream = av_find_best_stream(mFormat, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (stream < 0) {
        log_error(kTag, "hwaccel: Could not find video stream in input file '%s'", mPath.c_str());
        return -1;
    }
    const AVCodecID id = mFormat->streams[stream]->codecpar->codec_id;
    std::string name = DecoderNameByVendor(vendor, id);
    if (name.empty()) {
        log_debug(kTag, "hwaccel: not find codec");
        return -1;
    }
    const AVCodec* decoder = avcodec_find_decoder_by_name(name.c_str());
    if (!decoder) {
        log_error(kTag, "hwaccel: find decoder %s failed", name.c_str());
        return -1;
    }
    log_debug(kTag, "hwaccel: find decoder %s ok", name.c_str());
    AVCodecContext* ctx = _AllocContext(decoder, stream, "hwaccel: avcodec_alloc_context3 failed");
    if (!ctx)
        return -1;
    _ApplyThreads(ctx, false);
    const AVHWDeviceType type = DeviceTypeByVendor(vendor);
    if (type == AV_HWDEVICE_TYPE_NONE) {
        log_error(kTag, "hwaccel: not find hw device type by vendor");
        avcodec_free_context(&ctx);
        return -1;
    }
    // cuvid copies its pictures out as NV12 itself; VAAPI hands out surfaces
    // that the copy transfers.
    const int hwFormat = type == AV_HWDEVICE_TYPE_CUDA ? AV_PIX_FMT_NV12 : AV_PIX_FMT_VAAPI;
    if (_OpenOnDevice(ctx, decoder, type, hwFormat, out) != 0) {
        avcodec_free_context(&ctx);
        return -1;
    }
    out->stream = stream;
    return 0;
}

int HardwareDecoderOpener::OpenByAuto(HardwareDecoder* out) {
    int stream = av_find_best_stream(mFormat, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (stream < 0) {
        log_error(kTag, "hwaccel: Could not find video stream in input file '%s'", mPath.c_str());
        return -1;
    }
    const AVCodecID id = mFormat->streams[stream]->codecpar->codec_id;
    const AVCodec* decoder = avcodec_find_decoder(id);
    if (!decoder) {
        log_error(kTag, "hwaccel: avcodec_find_decoder failed, codec_name:%s", avcodec_get_name(id));
        return -1;
    }
    AVCodecContext* ctx = _AllocContext(decoder, stream, "hwaccel: avcodec_alloc_context3 failed");
    if (!ctx)
        return -1;
    _ApplyThreads(ctx, true);

    for (int i = 0;; ++i) {
        const AVCodecHWConfig* config = avcodec_get_hw_config(decoder, i);
        if (!config)
            break;
        if ((config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX) && config->device_type != AV_HWDEVICE_TYPE_NONE)
            log_debug(kTag, "hwaccel: available hw device type:%s", av_hwdevice_get_type_name(config->device_type));
    }
    // Each offered configuration in turn: a machine may have the library of
    // one device type and the hardware of another.
    bool offered = false;
    for (int i = 0;; ++i) {
        const AVCodecHWConfig* config = avcodec_get_hw_config(decoder, i);
        if (!config)
            break;
        if (!(config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX) || config->device_type == AV_HWDEVICE_TYPE_NONE)
            continue;
        offered = true;
        if (!ctx) {
            ctx = _AllocContext(decoder, stream, "hwaccel: avcodec_alloc_context3 failed");
            if (!ctx)
                return -1;
            _ApplyThreads(ctx, true);
        }
        int ret = _OpenOnDevice(ctx, decoder, config->device_type, config->pix_fmt, out);
        if (ret == 0) {
            out->stream = stream;
            return 0;
        }
        if (ret == -2)
            avcodec_free_context(&ctx);
    }
    if (!offered)
        log_error(kTag, "hwaccel: not find available codec pixel format");
    avcodec_free_context(&ctx);
    return -1;
}

}  // namespace codec
