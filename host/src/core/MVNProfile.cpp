#include "core/MVNProfile.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <numeric>

#include "core/MVNLog.h"

namespace Morvane {

namespace {

const char* const kTag = "Morvane::MVNProfile";
const char* const kDefaultName = "hdv_540_24p";

struct Rate {
    const char* suffix;  // as it appears in the name, before the trailing 'p'
    int num;
    int den;
};

struct Size {
    const char* prefix;  // "hd_1080"
    const char* label;   // for the description
    int width;
    int height;
};

// The named table is the cross product of these sizes and rates, so every
// size exists at every rate and a new rate is one row.
const Size kSizes[] = {
    {"sd_480", "SD 480", 720, 480},        {"sd_576", "SD 576", 720, 576},
    {"hdv_540", "HDV 540", 960, 540},      {"hd_720", "HD 720", 1280, 720},
    {"hd_1080", "HD 1080", 1920, 1080},    {"uhd_2160", "UHD 2160", 3840, 2160},
};

const Rate kRates[] = {
    {"23.976", 24000, 1001}, {"24", 24, 1},         {"25", 25, 1},  {"29.97", 30000, 1001},
    {"30", 30, 1},           {"50", 50, 1},         {"59.94", 60000, 1001}, {"60", 60, 1},
};

bool lookupNamed(const std::string& name, const Size*& size, const Rate*& rate) {
    for (const Size& s : kSizes) {
        for (const Rate& r : kRates) {
            if (name == std::string(s.prefix) + "_" + r.suffix + "p") {
                size = &s;
                rate = &r;
                return true;
            }
        }
    }
    return false;
}

// Frame rates written with a decimal point become fractions; the three
// NTSC-family rates get their exact x000/1001 form.
bool parseRate(const std::string& text, int& num, int& den) {
    if (text.empty()) return false;
    size_t slash = text.find('/');
    if (slash != std::string::npos) {
        char* end = nullptr;
        long n = std::strtol(text.c_str(), &end, 10);
        if (end != text.c_str() + slash) return false;
        const char* dstart = text.c_str() + slash + 1;
        long d = std::strtol(dstart, &end, 10);
        if (end == dstart || *end != '\0' || n <= 0 || d <= 0 || n > 1000000 || d > 1000000) return false;
        num = static_cast<int>(n);
        den = static_cast<int>(d);
        return true;
    }
    char* end = nullptr;
    double v = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || *end != '\0' || !(v > 0) || v > 10000) return false;
    for (const Rate& r : kRates) {
        if (r.den == 1001 && std::fabs(v - static_cast<double>(r.num) / r.den) < 0.005) {
            num = r.num;
            den = r.den;
            return true;
        }
    }
    long n = std::lround(v * 1000.0);
    long d = 1000;
    long g = std::gcd(n, d);
    if (n <= 0) return false;
    num = static_cast<int>(n / g);
    den = static_cast<int>(d / g);
    return true;
}

// "WxH@FPS", e.g. "1280x720@25" or "1920x1080@30000/1001".
bool parseFree(const std::string& name, int& w, int& h, int& num, int& den) {
    size_t x = name.find('x');
    size_t at = name.find('@');
    if (x == std::string::npos || at == std::string::npos || x == 0 || at < x + 2) return false;
    char* end = nullptr;
    long pw = std::strtol(name.c_str(), &end, 10);
    if (end != name.c_str() + x) return false;
    long ph = std::strtol(name.c_str() + x + 1, &end, 10);
    if (end != name.c_str() + at) return false;
    if (pw <= 0 || ph <= 0 || pw > 16384 || ph > 16384) return false;
    if (!parseRate(name.substr(at + 1), num, den)) return false;
    w = static_cast<int>(pw);
    h = static_cast<int>(ph);
    return true;
}

std::string rateText(int num, int den) {
    char buf[64];
    if (den == 1)
        std::snprintf(buf, sizeof buf, "%d", num);
    else
        std::snprintf(buf, sizeof buf, "%.3g", static_cast<double>(num) / den);
    return buf;
}

}  // namespace

MVNProfile::MVNProfile() : MVNProfile(std::string(kDefaultName)) {}

MVNProfile::MVNProfile(const std::string& name) {
    const Size* size = nullptr;
    const Rate* rate = nullptr;
    int w = 0, h = 0, num = 0, den = 1;
    if (lookupNamed(name, size, rate)) {
        mName = name;
        mWidth = size->width;
        mHeight = size->height;
        mFpsNum = rate->num;
        mFpsDen = rate->den;
        mDescription = std::string(size->label) + " " + rate->suffix + " fps";
        mValid = true;
    } else if (parseFree(name, w, h, num, den)) {
        mName = name;
        mWidth = w;
        mHeight = h;
        mFpsNum = num;
        mFpsDen = den;
        mDescription = std::to_string(w) + "x" + std::to_string(h) + " " + rateText(num, den) + " fps";
        mValid = true;
    } else {
        // A usable profile is still better than a zero size that divides by
        // zero downstream; isValid() tells the caller that the name was bad.
        log_error(kTag, "unknown profile:%s, using %s", name.c_str(), kDefaultName);
        lookupNamed(kDefaultName, size, rate);
        mName = kDefaultName;
        mWidth = size->width;
        mHeight = size->height;
        mFpsNum = rate->num;
        mFpsDen = rate->den;
        mDescription = std::string(size->label) + " " + rate->suffix + " fps";
        mValid = false;
    }
}

MVNProfile::MVNProfile(int width, int height, int fpsNum, int fpsDen) {
    if (width <= 0 || height <= 0 || fpsNum <= 0 || fpsDen <= 0) {
        log_error(kTag, "invalid profile %dx%d@%d/%d, using %s", width, height, fpsNum, fpsDen, kDefaultName);
        *this = MVNProfile(std::string(kDefaultName));
        mValid = false;
        return;
    }
    mWidth = width;
    mHeight = height;
    mFpsNum = fpsNum;
    mFpsDen = fpsDen;
    mName = std::to_string(width) + "x" + std::to_string(height) + "@" +
            (fpsDen == 1 ? std::to_string(fpsNum) : std::to_string(fpsNum) + "/" + std::to_string(fpsDen));
    mDescription = std::to_string(width) + "x" + std::to_string(height) + " " + rateText(fpsNum, fpsDen) + " fps";
    mValid = true;
}

bool MVNProfile::exists(const std::string& name) {
    const Size* size = nullptr;
    const Rate* rate = nullptr;
    int w, h, num, den;
    return lookupNamed(name, size, rate) || parseFree(name, w, h, num, den);
}

}  // namespace Morvane
