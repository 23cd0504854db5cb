#include "MVNSize.h"

#include <cfloat>
#include <cmath>
#include <cstdio>

namespace Morvane {

bool MVNSize::equals(const MVNSize& other) const {
    return std::fabs(width - other.width) < FLT_EPSILON && std::fabs(height - other.height) < FLT_EPSILON;
}

std::string MVNSize::toString() const {
    char text[128];
    std::snprintf(text, sizeof text, "[%.6fx%.6f]", width, height);
    return text;
}

bool MVNSize::fromString(const std::string& s) {
    if (s.empty() || s[0] != '[') {
        return false;
    }
    float w = 0, h = 0;
    std::sscanf(s.c_str(), "[%fx%f]", &w, &h);
    width = w;
    height = h;
    return true;
}

MVNSize MVNSize::strToSize(const std::string& s) {
    MVNSize size;
    size.fromString(s);
    return size;
}

}  // namespace Morvane
