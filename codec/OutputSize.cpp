#include "OutputSize.h"

#include <cmath>
#include <cstdint>

#include "core/MVNLog.h"

extern "C" {
#include <libavutil/rational.h>
}

namespace codec {

namespace {
const char* kTag = "codec::FFmpegDecoderImpl";
}

OutputSize OutputSize::Compute(int w, int h, int sarNum, int sarDen, int maxWidth, int maxHeight, bool scale) {
    OutputSize out;
    out.width = w;
    out.height = h;
    if (w <= 0 || h <= 0)
        return out;
    if (sarNum <= 0 || sarDen <= 0)
        sarNum = sarDen = 1;
    int darNum = 0;
    int darDen = 0;
    av_reduce(&darNum, &darDen, static_cast<int64_t>(w) * sarNum, static_cast<int64_t>(h) * sarDen, 0x100000);
    if (darNum <= 0 || darDen <= 0) {
        darNum = w;
        darDen = h;
    }
    const double dar = static_cast<double>(darNum) / darDen;
    out.dar = static_cast<float>(dar);

    const bool fits = w <= maxWidth && h <= maxHeight;
    if (maxWidth <= 0 || maxHeight <= 0 || !scale || fits) {
        if (std::fabs(static_cast<double>(w) / h - dar) < 1.1920929e-07) {
            out.dar = static_cast<float>(static_cast<double>(w) / h);
            return out;
        }
        // Non-square pixels: keep the longer side and stretch the other one.
        // Integer arithmetic gives w / dar exactly (720 / (4/3) is 540, not 539).
        int64_t side = w > h ? static_cast<int64_t>(w) * darDen / darNum : static_cast<int64_t>(h) * darNum / darDen;
        side &= ~int64_t{1};
        // A damaged or hostile file may claim pixels thousands of times taller
        // than wide: no GPU takes such a picture, and the size would overflow
        // further on. Its pixels are taken as square instead.
        if (side < 2 || side > kMaxSide) {
            log_warn(kTag, "sample aspect ratio %d:%d would make the %dx%d picture %s %lld, its pixels are taken as square",
                     sarNum, sarDen, w, h, w > h ? "height" : "width", static_cast<long long>(side));
            out.dar = static_cast<float>(static_cast<double>(w) / h);
            return out;
        }
        if (w > h)
            out.height = static_cast<int>(side);
        else
            out.width = static_cast<int>(side);
        if (out.width == w && out.height == h)
            log_debug(kTag, "dar %f calc scale size equal to origin size", dar);
        return out;
    }

    // Fit the display size into the limits, keeping its shape.
    const int64_t sw = static_cast<int64_t>(h) * darNum / darDen;
    const int64_t sh = h;
    const int64_t mw = maxWidth;
    const int64_t mh = maxHeight;
    if (sh * mw < sw * mh) {
        out.width = static_cast<int>(mw);
        out.height = static_cast<int>(sh * mw / sw);
    } else {
        out.height = static_cast<int>(mh);
        out.width = static_cast<int>(sw * mh / sh);
    }
    out.width &= ~1;
    out.height &= ~1;
    if (out.width < 2)
        out.width = 2;
    if (out.height < 2)
        out.height = 2;
    if (out.width == w && out.height == h)
        log_debug(kTag, "profile calc scale size equal to origin size");
    return out;
}

}  // namespace codec
