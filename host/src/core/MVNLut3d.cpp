#include "core/MVNLut3d.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string_view>

#include "core/MVNLog.h"

namespace Morvane {

namespace {

const char* const TAG = "MVNLut3d";

// The widest picture GPUs take is 16384 pixels, N * N: larger tables are
// resampled to this many steps.
constexpr int kMaxImageSize = 128;

std::vector<std::string_view> splitWords(std::string_view line) {
    std::vector<std::string_view> words;
    size_t pos = 0;
    while ((pos = line.find_first_not_of(" \t", pos)) != std::string_view::npos) {
        size_t end = line.find_first_of(" \t", pos);
        if (end == std::string_view::npos) end = line.size();
        words.push_back(line.substr(pos, end - pos));
        pos = end;
    }
    return words;
}

bool parseNumber(std::string_view text, float& out) {
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    if (text.empty()) return false;
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, out);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(out);
}

bool parseWhole(std::string_view text, int& out) {
    const char* end = text.data() + text.size();
    auto result = std::from_chars(text.data(), end, out);
    return !text.empty() && result.ec == std::errc() && result.ptr == end;
}

uint8_t toByte(float v) {
    return static_cast<uint8_t>(std::lround(std::clamp(v, 0.0f, 1.0f) * 255.0f));
}

}  // namespace

int MVNLut3d::fail(const char* format, ...) {
    char text[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    mLastError = text;
    log_error(TAG, "%s", text);
    mSize = 0;
    mColors.clear();
    mImage.clear();
    return -1;
}

void MVNLut3d::reset() {
    mSize = 0;
    mColors.clear();
    mImage.clear();
    mLastError.clear();
    mDomainMin.set(0, 0, 0);
    mDomainMax.set(1, 1, 1);
}

int MVNLut3d::loadFromFile(const std::string& path) {
    reset();
    std::ifstream in(path, std::ios::binary);
    if (!in) return fail("cannot open LUT file %s", path.c_str());
    return load(in, path);
}

int MVNLut3d::loadFromString(const std::string& text, const std::string& name) {
    reset();
    std::istringstream in(text);
    return load(in, name);
}

int MVNLut3d::load(std::istream& in, const std::string& name) {
    const char* file = name.c_str();
    int fileSize = 0;
    size_t expected = 0;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        std::string_view text(line);
        while (!text.empty() && (text.back() == '\r' || text.back() == ' ' || text.back() == '\t')) {
            text.remove_suffix(1);
        }
        while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
        if (text.empty() || text.front() == '#') continue;

        if (std::isalpha(static_cast<unsigned char>(text.front()))) {
            std::vector<std::string_view> words = splitWords(text);
            std::string keyword(words[0]);
            if (keyword == "TITLE") continue;
            if (keyword == "LUT_3D_SIZE") {
                if (fileSize) return fail("%s:%d: LUT_3D_SIZE given twice", file, number);
                if (!mColors.empty()) return fail("%s:%d: LUT_3D_SIZE must come before the colours", file, number);
                if (words.size() != 2 || !parseWhole(words[1], fileSize) || fileSize < 2 || fileSize > 256) {
                    return fail("%s:%d: LUT_3D_SIZE must be a whole number from 2 to 256", file, number);
                }
                expected = static_cast<size_t>(fileSize) * fileSize * fileSize;
                mColors.reserve(expected);
            } else if (keyword == "DOMAIN_MIN" || keyword == "DOMAIN_MAX") {
                float v[3];
                if (words.size() != 4 || !parseNumber(words[1], v[0]) || !parseNumber(words[2], v[1]) ||
                    !parseNumber(words[3], v[2])) {
                    return fail("%s:%d: %s needs three numbers", file, number, keyword.c_str());
                }
                (keyword == "DOMAIN_MIN" ? mDomainMin : mDomainMax).set(v[0], v[1], v[2]);
            } else if (keyword == "LUT_3D_INPUT_RANGE") {
                float low, high;
                if (words.size() != 3 || !parseNumber(words[1], low) || !parseNumber(words[2], high)) {
                    return fail("%s:%d: LUT_3D_INPUT_RANGE needs two numbers", file, number);
                }
                mDomainMin.set(low, low, low);
                mDomainMax.set(high, high, high);
            } else if (keyword == "LUT_1D_SIZE") {
                return fail("%s:%d: 1D tables are not supported", file, number);
            } else {
                log_warn(TAG, "%s:%d: unknown keyword %s skipped", file, number, keyword.c_str());
            }
            continue;
        }

        if (!fileSize) return fail("%s:%d: colours before LUT_3D_SIZE", file, number);
        if (mColors.size() == expected) {
            return fail("%s:%d: more colours than LUT_3D_SIZE %d holds", file, number, fileSize);
        }
        MVNLut3dColor3F colour;
        if (!colour.fromString(std::string(text))) {
            return fail("%s:%d: bad colour line \"%s\"", file, number, std::string(text).c_str());
        }
        mColors.push_back(colour);
    }

    if (!fileSize) return fail("%s: no LUT_3D_SIZE", file);
    if (mColors.size() != expected) {
        return fail("%s: %d colours where LUT_3D_SIZE %d needs %zu", file, static_cast<int>(mColors.size()),
                    fileSize, expected);
    }
    if (!(mDomainMax.r > mDomainMin.r && mDomainMax.g > mDomainMin.g && mDomainMax.b > mDomainMin.b)) {
        return fail("%s: DOMAIN_MAX must be above DOMAIN_MIN in every channel", file);
    }
    mSize = std::min(fileSize, kMaxImageSize);
    buildImage();
    return 0;
}

MVNLut3dColor3F MVNLut3d::sample(float r, float g, float b) const {
    int n = static_cast<int>(std::lround(std::cbrt(static_cast<double>(mColors.size()))));
    auto grid = [n](float v, float low, float high, int& i0, float& f) {
        float s = std::clamp((v - low) / (high - low), 0.0f, 1.0f) * static_cast<float>(n - 1);
        i0 = std::min(static_cast<int>(s), n - 2);
        f = s - static_cast<float>(i0);
    };
    int ri, gi, bi;
    float rf, gf, bf;
    grid(r, mDomainMin.r, mDomainMax.r, ri, rf);
    grid(g, mDomainMin.g, mDomainMax.g, gi, gf);
    grid(b, mDomainMin.b, mDomainMax.b, bi, bf);
    auto at = [&](int dr, int dg, int db) -> const MVNLut3dColor3F& {
        return mColors[static_cast<size_t>((bi + db) * n + (gi + dg)) * n + (ri + dr)];
    };
    auto mix = [](const MVNLut3dColor3F& a, const MVNLut3dColor3F& c, float t) {
        return MVNLut3dColor3F(a.r + (c.r - a.r) * t, a.g + (c.g - a.g) * t, a.b + (c.b - a.b) * t);
    };
    MVNLut3dColor3F c00 = mix(at(0, 0, 0), at(1, 0, 0), rf);
    MVNLut3dColor3F c10 = mix(at(0, 1, 0), at(1, 1, 0), rf);
    MVNLut3dColor3F c01 = mix(at(0, 0, 1), at(1, 0, 1), rf);
    MVNLut3dColor3F c11 = mix(at(0, 1, 1), at(1, 1, 1), rf);
    return mix(mix(c00, c10, gf), mix(c01, c11, gf), bf);
}

void MVNLut3d::buildImage() {
    const int n = mSize;
    const int fileSize = static_cast<int>(std::lround(std::cbrt(static_cast<double>(mColors.size()))));
    const bool plain = n == fileSize && mDomainMin.r == 0 && mDomainMin.g == 0 && mDomainMin.b == 0 &&
                       mDomainMax.r == 1 && mDomainMax.g == 1 && mDomainMax.b == 1;
    const int width = n * n;
    mImage.assign(static_cast<size_t>(width) * n * 3, 0);
    for (int b = 0; b < n; ++b) {
        for (int g = 0; g < n; ++g) {
            for (int r = 0; r < n; ++r) {
                MVNLut3dColor3F c;
                if (plain) {
                    c = mColors[(static_cast<size_t>(b) * n + g) * n + r];
                } else {
                    // The picture's grid covers inputs 0..1, wherever the
                    // file's domain lies.
                    float step = 1.0f / static_cast<float>(n - 1);
                    c = sample(r * step, g * step, b * step);
                }
                uint8_t* p = &mImage[(static_cast<size_t>(g) * width + b * n + r) * 3];
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
                p[0] = toByte(c.b);
                p[1] = toByte(c.g);
                p[2] = toByte(c.r);
#else
                p[0] = toByte(c.r);
                p[1] = toByte(c.g);
                p[2] = toByte(c.b);
#endif
            }
        }
    }
}

}  // namespace Morvane
