#include "core/MVNSize.h"

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>

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
    // The width is read up to its 'x' and converted apart: a plain "%f"
    // would take a width of 0 and the 'x' after it for a hexadecimal number.
    float h = 0;
    char widthText[64] = {0};
    std::sscanf(s.c_str(), "[%63[^x]x%f]", widthText, &h);
    float w = std::strtof(widthText, nullptr);
    if (!std::isfinite(w) || !std::isfinite(h)) return false;
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
