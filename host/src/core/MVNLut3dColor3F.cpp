#include "core/MVNLut3dColor3F.h"

#include <charconv>
#include <cmath>
#include <string_view>

#include "core/MVNLog.h"

namespace Morvane {

namespace {

// One number in the C form whatever the locale: from_chars never looks at
// it, unlike sscanf and strtof.
bool parseNumber(std::string_view text, float& out) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return false;
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, out);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(out);
}

}  // namespace

bool MVNLut3dColor3F::fromString(const std::string& line) {
    if (line.empty()) return false;
    float values[3];
    int count = 0;
    bool good = true;
    size_t pos = 0;
    while (good) {
        pos = line.find_first_not_of(" \t\r\n", pos);
        if (pos == std::string::npos) break;
        size_t end = line.find_first_of(" \t\r\n", pos);
        if (end == std::string::npos) end = line.size();
        if (count == 3 || !parseNumber(std::string_view(line).substr(pos, end - pos), values[count])) {
            good = false;
        }
        ++count;
        pos = end;
    }
    if (!good || count != 3) {
        log_error("MVNLut3dColor3F", "error LUT3D color format");
        return false;
    }
    set(values[0], values[1], values[2]);
    return true;
}

}  // namespace Morvane
