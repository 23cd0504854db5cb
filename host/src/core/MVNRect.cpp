#include "core/MVNRect.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace Morvane {

bool MVNRect::containsPoint(const MVNPoint& p) const { return containsPoint(p.x, p.y); }

bool MVNRect::containsPoint(float px, float py) const {
    return px >= getMinX() && px <= getMaxX() && py >= getMinY() && py <= getMaxY();
}

bool MVNRect::containsRect(const MVNRect& r) const {
    return r.getMinX() >= getMinX() && r.getMaxX() <= getMaxX() && r.getMinY() >= getMinY() &&
           r.getMaxY() <= getMaxY();
}

bool MVNRect::intersectsRect(const MVNRect& r) const {
    return !(getMaxX() < r.getMinX() || r.getMaxX() < getMinX() || getMaxY() < r.getMinY() ||
             r.getMaxY() < getMinY());
}

bool MVNRect::equals(const MVNRect& r) const {
    return std::fabs(x - r.x) < FLT_EPSILON && std::fabs(y - r.y) < FLT_EPSILON &&
           std::fabs(width - r.width) < FLT_EPSILON && std::fabs(height - r.height) < FLT_EPSILON;
}

bool MVNRect::isEmpty() const { return equals(MVNRect()); }

MVNRect MVNRect::absToRel(float W, float H) const {
    if (W == 0.0f) W = 1.0f;
    if (H == 0.0f) H = 1.0f;
    return {-1.0f + 2.0f * x / W, -1.0f + 2.0f * y / H, 2.0f * width / W, 2.0f * height / H};
}

MVNRect MVNRect::profileToWorld(float W, float H) const { return {x - W / 2, y - H / 2, width, height}; }

MVNRect MVNRect::leftBottomToLeftTop(float /*W*/, float H) const { return {x, H - y - height, width, height}; }

std::string MVNRect::toString() const {
    char text[256];
    std::snprintf(text, sizeof text, "[%.6f:%.6f %.6fx%.6f]", x, y, width, height);
    return text;
}

bool MVNRect::fromString(const std::string& s) {
    if (s.empty() || s[0] != '[') {
        return false;
    }
    // Project files written by older versions may lack trailing fields; they
    // read as 0 rather than refusing the whole rectangle.
    // The width is read up to its 'x' and converted apart: a plain "%f"
    // would take a width of 0 and the 'x' after it for a hexadecimal number.
    float px = 0, py = 0, h = 0;
    char widthText[64] = {0};
    std::sscanf(s.c_str(), "[%f:%f %63[^x]x%f]", &px, &py, widthText, &h);
    float pw = std::strtof(widthText, nullptr);
    // "nan" and "inf" scan as numbers; a quad placed there trips the engine,
    // so such a text is no rectangle.
    if (!std::isfinite(px) || !std::isfinite(py) || !std::isfinite(pw) || !std::isfinite(h)) return false;
    setRect(px, py, pw, h);
    return true;
}

MVNRect MVNRect::strToRect(const std::string& s) {
    MVNRect r;
    r.fromString(s);
    return r;
}

}  // namespace Morvane
