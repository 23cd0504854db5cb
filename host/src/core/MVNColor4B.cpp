#include "core/MVNColor4B.h"

#include <cctype>
#include <cstdio>

namespace Morvane {

namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::string MVNColor4B::toString() const {
    char text[16];
    std::snprintf(text, sizeof text, "#%02x%02x%02x%02x", r, g, b, a);
    return text;
}

bool MVNColor4B::fromString(const std::string& s) {
    if (s.size() != 9 || s[0] != '#') {
        return false;
    }
    uint8_t bytes[4];
    for (int i = 0; i < 4; ++i) {
        int hi = hexDigit(s[1 + 2 * i]);
        int lo = hexDigit(s[2 + 2 * i]);
        // A stray character would otherwise turn into a silently wrong colour.
        if (hi < 0 || lo < 0) {
            return false;
        }
        bytes[i] = static_cast<uint8_t>(hi * 16 + lo);
    }
    set(bytes[0], bytes[1], bytes[2], bytes[3]);
    return true;
}

MVNColor4B MVNColor4B::strToColor4B(const std::string& s) {
    MVNColor4B c;
    if (!c.fromString(s)) {
        return MVNColor4B(0, 0, 0, 1);
    }
    return c;
}

}  // namespace Morvane
