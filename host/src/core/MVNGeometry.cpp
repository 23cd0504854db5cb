#include "core/MVNGeometry.h"

#include <algorithm>
#include <cmath>

namespace Morvane {

namespace {

// The profile as it lies in the window: scale and the bottom-left corner.
struct Fit {
    bool valid = false;
    float scale = 1.0f;
    float offsetX = 0.0f;
    float offsetY = 0.0f;
};

Fit fitProfile(int profileW, int profileH, int screenW, int screenH) {
    Fit f;
    if (profileW <= 0 || profileH <= 0 || screenW <= 0 || screenH <= 0) return f;
    double s = std::min(static_cast<double>(screenW) / profileW, static_cast<double>(screenH) / profileH);
    f.valid = true;
    f.scale = static_cast<float>(s);
    f.offsetX = static_cast<float>((screenW - profileW * s) / 2.0);
    f.offsetY = static_cast<float>((screenH - profileH * s) / 2.0);
    return f;
}

}  // namespace

MVNRect convertGeometryProfileToScreen(const MVNRect& rect, int profileW, int profileH, int screenW, int screenH) {
    Fit f = fitProfile(profileW, profileH, screenW, screenH);
    if (!f.valid) return rect;
    return MVNRect(f.offsetX + rect.x * f.scale, f.offsetY + rect.y * f.scale, rect.width * f.scale,
                   rect.height * f.scale);
}

MVNRect convertGeometryScreenToProfile(const MVNRect& rect, int profileW, int profileH, int screenW, int screenH) {
    Fit f = fitProfile(profileW, profileH, screenW, screenH);
    if (!f.valid) return rect;
    return MVNRect((rect.x - f.offsetX) / f.scale, (rect.y - f.offsetY) / f.scale, rect.width / f.scale,
                   rect.height / f.scale);
}

MVNRect convertGeometryProfileToWorld2(const MVNRect& rect, int profileW, int profileH, int screenW, int screenH) {
    if (!fitProfile(profileW, profileH, screenW, screenH).valid) return rect;
    MVNRect s = convertGeometryProfileToScreen(rect, profileW, profileH, screenW, screenH);
    return s.profileToWorld(static_cast<float>(screenW), static_cast<float>(screenH));
}

MVNPoint convertPointScreenToProfile(const MVNPoint& point, int profileW, int profileH, int screenW, int screenH) {
    Fit f = fitProfile(profileW, profileH, screenW, screenH);
    if (!f.valid) return point;
    return MVNPoint((point.x - f.offsetX) / f.scale, (point.y - f.offsetY) / f.scale);
}

int convertFontSizeProfileToScreen(int size, int profileW, int profileH, int screenW, int screenH) {
    Fit f = fitProfile(profileW, profileH, screenW, screenH);
    if (!f.valid || size <= 0) return size;
    return std::max(1, static_cast<int>(std::lround(size * f.scale)));
}

MVNSize adjustSizeFill(const MVNSize& size, const MVNSize& box) {
    if (!(size.width > 0) || !(size.height > 0) || !(box.width > 0) || !(box.height > 0)) return MVNSize();
    float s = std::min(box.width / size.width, box.height / size.height);
    // The side that touches the box takes the box's value exactly, so that
    // rounding never leaves a one-pixel gap or overhang.
    if (box.width / size.width <= box.height / size.height)
        return MVNSize(box.width, std::min(box.height, size.height * s));
    return MVNSize(std::min(box.width, size.width * s), box.height);
}

MVNSize adjustSizeContainAlign(const MVNSize& size, const MVNSize& box, int align) {
    if (!(size.width > 0) || !(size.height > 0) || !(box.width > 0) || !(box.height > 0)) return MVNSize();
    MVNSize out = size;
    if (size.width > box.width || size.height > box.height) out = adjustSizeFill(size, box);
    if (align > 1) {
        auto down = [align](float v) {
            float a = static_cast<float>(align);
            return std::max(a, std::floor(v / a) * a);
        };
        out.width = down(out.width);
        out.height = down(out.height);
    }
    return out;
}

}  // namespace Morvane
