#include "core/MVNPoint.h"

#include <cfloat>
#include <cmath>
#include <cstdio>

namespace Morvane {

bool MVNPoint::equals(const MVNPoint& other) const {
    return std::fabs(x - other.x) < FLT_EPSILON && std::fabs(y - other.y) < FLT_EPSILON;
}

float MVNPoint::getLength() const { return std::sqrt(x * x + y * y); }

float MVNPoint::getAngle() const { return std::atan2(y, x); }

MVNPoint MVNPoint::normalize() const {
    float length = getLength();
    if (length == 0.0f) {
        return {1.0f, 0.0f};
    }
    return {x / length, y / length};
}

std::string MVNPoint::toString() const {
    char text[128];
    std::snprintf(text, sizeof text, "[%.6f:%.6f]", x, y);
    return text;
}

bool MVNPoint::fromString(const std::string& s) {
    if (s.empty() || s[0] != '[') {
        return false;
    }
    // A short scan is accepted: whatever it did not find reads as 0.
    float px = 0, py = 0;
    std::sscanf(s.c_str(), "[%f:%f]", &px, &py);
    if (!std::isfinite(px) || !std::isfinite(py)) return false;
    x = px;
    y = py;
    return true;
}

MVNPoint MVNPoint::strToPoint(const std::string& s) {
    MVNPoint p;
    p.fromString(s);
    return p;
}

}  // namespace Morvane
