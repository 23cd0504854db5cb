#include "core/MVNPixelUtils.h"

#include <mutex>
#include <vector>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include "core/MVNLog.h"

namespace Morvane {

namespace {

const char* kTag = "Morvane::MVNPixelUtils";

// A format below 10000 that FFmpeg knows, as its own type; AV_PIX_FMT_NONE
// otherwise.
AVPixelFormat toAVFormat(MVNColorType type) {
    if (type < 0 || type >= 10000 || !av_pix_fmt_desc_get(static_cast<AVPixelFormat>(type))) {
        return AV_PIX_FMT_NONE;
    }
    return static_cast<AVPixelFormat>(type);
}

struct ScaleKey {
    int srcW, srcH, dstW, dstH;
    AVPixelFormat srcFmt, dstFmt;
    bool operator==(const ScaleKey& o) const {
        return srcW == o.srcW && srcH == o.srcH && dstW == o.dstW && dstH == o.dstH && srcFmt == o.srcFmt &&
               dstFmt == o.dstFmt;
    }
};

// Scaler contexts are costly to set up and a steady timeline asks for the
// same few conversions every frame, so idle ones are kept here. A context is
// taken out while it converts, so two threads never share one; the cache is
// bounded and lives as long as the process.
class ScalerCache {
public:
    static constexpr size_t kMaxIdle = 8;
    static constexpr int kFlags = SWS_BILINEAR | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT;

    SwsContext* take(const ScaleKey& key) {
        SwsContext* reuse = nullptr;
        {
            std::lock_guard<std::mutex> guard(mLock);
            for (auto it = mIdle.begin(); it != mIdle.end(); ++it) {
                if (it->key == key) {
                    SwsContext* ctx = it->ctx;
                    mIdle.erase(it);
                    return ctx;
                }
            }
            // A full cache gives up its oldest context; sws_getCachedContext
            // rebuilds it for the new conversion.
            if (mIdle.size() >= kMaxIdle) {
                reuse = mIdle.front().ctx;
                mIdle.erase(mIdle.begin());
            }
        }
        return sws_getCachedContext(reuse, key.srcW, key.srcH, key.srcFmt, key.dstW, key.dstH, key.dstFmt, kFlags,
                                    nullptr, nullptr, nullptr);
    }

    void give(const ScaleKey& key, SwsContext* ctx) {
        SwsContext* evicted = nullptr;
        {
            std::lock_guard<std::mutex> guard(mLock);
            mIdle.push_back({key, ctx});
            if (mIdle.size() > kMaxIdle) {
                evicted = mIdle.front().ctx;
                mIdle.erase(mIdle.begin());
            }
        }
        sws_freeContext(evicted);
    }

private:
    struct Entry {
        ScaleKey key;
        SwsContext* ctx;
    };
    std::mutex mLock;
    std::vector<Entry> mIdle;  // oldest first
};

ScalerCache& scalerCache() {
    static ScalerCache* cache = new ScalerCache;  // never destroyed, used until exit
    return *cache;
}

}  // namespace

const char* getColorFormatName(MVNColorType type) {
    switch (type) {
        case MVN_COLOR_RTT: return "rtt";
        case MVN_COLOR_BLANK: return "blank";
        case MVN_COLOR_NONE: return "none";
        default: break;
    }
    AVPixelFormat fmt = toAVFormat(type);
    const char* name = fmt == AV_PIX_FMT_NONE ? nullptr : av_get_pix_fmt_name(fmt);
    return name ? name : "unknown";
}

int getPixelsBufferSize(int width, int height, MVNColorType type) {
    if (type == MVN_COLOR_RTT || type == MVN_COLOR_BLANK) {
        return 0;
    }
    AVPixelFormat fmt = toAVFormat(type);
    if (fmt == AV_PIX_FMT_NONE || width <= 0 || height <= 0) {
        return -1;
    }
    int size = av_image_get_buffer_size(fmt, width, height, 1);
    return size < 0 ? -1 : size;
}

int getPixelsStride(int width, MVNColorType type) {
    AVPixelFormat fmt = toAVFormat(type);
    if (fmt == AV_PIX_FMT_NONE || width <= 0) {
        return -1;
    }
    int linesizes[4] = {0, 0, 0, 0};
    if (av_image_fill_linesizes(linesizes, fmt, width) < 0) {
        return -1;
    }
    return linesizes[0];
}

int convertImage(const uint8_t* src, int srcW, int srcH, MVNColorType srcType, uint8_t* dst, int dstW, int dstH,
                 MVNColorType dstType) {
    AVPixelFormat srcFmt = toAVFormat(srcType);
    AVPixelFormat dstFmt = toAVFormat(dstType);
    if (!src || !dst || srcW <= 0 || srcH <= 0 || dstW <= 0 || dstH <= 0 ||
        av_image_check_size(srcW, srcH, 0, nullptr) < 0 || av_image_check_size(dstW, dstH, 0, nullptr) < 0) {
        log_error(kTag, "convert refused, bad arguments %dx%d -> %dx%d", srcW, srcH, dstW, dstH);
        return -1;
    }
    if (srcFmt == AV_PIX_FMT_NONE || dstFmt == AV_PIX_FMT_NONE || !sws_isSupportedInput(srcFmt) ||
        !sws_isSupportedOutput(dstFmt)) {
        log_error(kTag, "convert refused, unsupported format %s -> %s", getColorFormatName(srcType),
                  getColorFormatName(dstType));
        return -1;
    }
    uint8_t* srcData[4] = {nullptr, nullptr, nullptr, nullptr};
    int srcLines[4] = {0, 0, 0, 0};
    uint8_t* dstData[4] = {nullptr, nullptr, nullptr, nullptr};
    int dstLines[4] = {0, 0, 0, 0};
    if (av_image_fill_arrays(srcData, srcLines, src, srcFmt, srcW, srcH, 1) < 0 ||
        av_image_fill_arrays(dstData, dstLines, dst, dstFmt, dstW, dstH, 1) < 0) {
        return -1;
    }
    const ScaleKey key{srcW, srcH, dstW, dstH, srcFmt, dstFmt};
    SwsContext* ctx = scalerCache().take(key);
    if (!ctx) {
        log_error(kTag, "convert failed, no scaler for %s %dx%d -> %s %dx%d", getColorFormatName(srcType), srcW,
                  srcH, getColorFormatName(dstType), dstW, dstH);
        return -1;
    }
    int rows = sws_scale(ctx, srcData, srcLines, 0, srcH, dstData, dstLines);
    scalerCache().give(key, ctx);
    if (rows != dstH) {
        log_error(kTag, "convert failed, scaler wrote %d of %d rows", rows, dstH);
        return -1;
    }
    return 0;
}

int scaleImage2(uint8_t* src, int srcW, int srcH, MVNColorType type, uint8_t* dst, int dstW, int dstH) {
    return convertImage(src, srcW, srcH, type, dst, dstW, dstH, type);
}

}  // namespace Morvane
