#include "core/MVNUtils.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cctype>
#include <filesystem>
#include <system_error>

#include "core/MVNTypes.h"

namespace Morvane {

const char* getInputName(int type) {
    switch (type) {
        case MVN_INPUT_NONE: return "none";
        case MVN_INPUT_FRAME: return "frame";
        case MVN_INPUT_RTT: return "rtt";
        case MVN_INPUT_GROUP_RTT: return "group rtt";
        default: return "unknown";
    }
}

const char* getOutputName(int type) {
    switch (type) {
        case MVN_OUTPUT_NONE: return "none";
        case MVN_OUTPUT_SCENE: return "scene";
        case MVN_OUTPUT_RTT: return "rtt";
        case MVN_OUTPUT_RTT_CHAIN: return "rtt chain";
        case MVN_OUTPUT_RTT_NODE: return "rtt node";
        default: return "unknown";
    }
}

std::string getExtension(const std::string& path) {
    size_t slash = path.find_last_of("/\\");
    size_t nameStart = slash == std::string::npos ? 0 : slash + 1;
    size_t dot = path.find_last_of('.');
    if (dot == std::string::npos || dot <= nameStart) return std::string();
    return path.substr(dot);
}

std::string oneLine(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (unsigned char c : text) {
        if (c == '\n') {
            out += "\\n";
        } else if (c == '\r') {
            out += "\\r";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c < 0x20 || c == 0x7f) {
            static const char kHex[] = "0123456789abcdef";
            out += "\\x";
            out += kHex[c >> 4];
            out += kHex[c & 15];
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

bool icaseCompare(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

std::string to_utf8Str(std::wstring text) {
    std::string out;
    out.reserve(text.size());
    for (wchar_t wc : text) {
        uint32_t c = static_cast<uint32_t>(wc);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = 0xFFFD;
        if (c < 0x80) {
            out += static_cast<char>(c);
        } else if (c < 0x800) {
            out += static_cast<char>(0xC0 | (c >> 6));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else if (c < 0x10000) {
            out += static_cast<char>(0xE0 | (c >> 12));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (c >> 18));
            out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (c & 0x3F));
        }
    }
    return out;
}

std::wstring to_wideStr(const std::string& utf8) {
    std::wstring out;
    out.reserve(utf8.size());
    const auto* s = reinterpret_cast<const unsigned char*>(utf8.data());
    size_t n = utf8.size();
    size_t i = 0;
    while (i < n) {
        unsigned char b = s[i];
        uint32_t c = 0;
        size_t len = 0;
        uint32_t min = 0;
        if (b < 0x80) { c = b; len = 1; }
        else if ((b & 0xE0) == 0xC0) { c = b & 0x1F; len = 2; min = 0x80; }
        else if ((b & 0xF0) == 0xE0) { c = b & 0x0F; len = 3; min = 0x800; }
        else if ((b & 0xF8) == 0xF0) { c = b & 0x07; len = 4; min = 0x10000; }
        else { out += static_cast<wchar_t>(0xFFFD); ++i; continue; }
        bool ok = i + len <= n;
        for (size_t k = 1; ok && k < len; ++k) {
            if ((s[i + k] & 0xC0) != 0x80) ok = false;
            else c = (c << 6) | (s[i + k] & 0x3F);
        }
        // Overlong forms, surrogates and values past U+10FFFF are refused
        // byte by byte, as a strict decoder does.
        if (!ok || (len > 1 && c < min) || c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) {
            out += static_cast<wchar_t>(0xFFFD);
            ++i;
            continue;
        }
        out += static_cast<wchar_t>(c);
        i += len;
    }
    return out;
}

uint64_t getCurrentThreadId() { return static_cast<uint64_t>(::syscall(SYS_gettid)); }

namespace ports {
namespace path {

std::string abspath(const char* path) {
    if (path == nullptr || *path == '\0') return std::string();
    std::string p(path);
    for (char& c : p) {
        if (c == '\\') c = '/';
    }
    std::error_code ec;
    std::filesystem::path abs = std::filesystem::absolute(std::filesystem::path(p), ec);
    if (ec) return p;
    std::string out = abs.lexically_normal().string();
    // "dir/" normalises to "dir/"; a trailing separator says nothing here.
    if (out.size() > 1 && out.back() == '/') out.pop_back();
    return out;
}

}  // namespace path
}  // namespace ports

}  // namespace Morvane
