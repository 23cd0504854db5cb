#include "MVNProjectCheck.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <ft2build.h>
#include FT_FREETYPE_H
#include <nlohmann/json.hpp>

#include "MVNFFmpegLog.h"
#include "MVNToolSetup.h"
#include "core/MVNCellKinds.h"
#include "core/MVNColor4B.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "core/MVNLut3d.h"
#include "core/MVNMediaProbe.h"
#include "core/MVNUtils.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRepository.h"

namespace Morvane {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

struct Refusal {
    std::string path;
    std::string reason;
};

[[noreturn]] void refuse(const std::string& path, const std::string& reason) { throw Refusal{path, reason}; }

// A value as the file wrote it, cut short for a one-line message.
std::string quoted(const json& v) {
    std::string text = v.dump();
    if (text.size() > 60) text = text.substr(0, 57) + "...";
    return text;
}

// The size a PNG or JPEG file states in its header, read without decoding
// anything: false for other files.
bool headerSize(const std::string& file, long& width, long& height) {
    std::ifstream in(file, std::ios::binary);
    unsigned char head[24] = {};
    if (!in.read(reinterpret_cast<char*>(head), sizeof head)) return false;
    auto be32 = [](const unsigned char* p) { return (long(p[0]) << 24) | (p[1] << 16) | (p[2] << 8) | p[3]; };
    if (std::memcmp(head, "\x89PNG\r\n\x1a\n", 8) == 0 && std::memcmp(head + 12, "IHDR", 4) == 0) {
        width = be32(head + 16);
        height = be32(head + 20);
        return true;
    }
    if (head[0] != 0xFF || head[1] != 0xD8) return false;
    // JPEG: walk the segments to the first start of frame.
    in.clear();
    in.seekg(2);
    unsigned char seg[9];
    while (in.read(reinterpret_cast<char*>(seg), 4)) {
        if (seg[0] != 0xFF) return false;
        const int marker = seg[1];
        const long length = (seg[2] << 8) | seg[3];
        const bool frame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (frame) {
            if (!in.read(reinterpret_cast<char*>(seg + 4), 5)) return false;
            height = (seg[5] << 8) | seg[6];
            width = (seg[7] << 8) | seg[8];
            return true;
        }
        if (length < 2) return false;
        in.seekg(length - 2, std::ios::cur);
    }
    return false;
}

// Services whose "resource" is a picture the engine decodes.
const char* const kPictureServices[] = {"ogre.image", "stb_image"};
// Properties whose value is a file, checked by what the file must be.
const char* const kLutKey = "ufmMVNLutPath";
const char* const kFontKeys[] = {"textFontFile", "textBackupPath"};

// "#rrggbbaa" properties: the services' colours and the colours whose
// channels feed filter uniforms ("ufmColor" gives ufmColorR, ...).
bool isColourKey(const std::string& key) {
    static const char* const kKeys[] = {"color", "textColorBase", "textColorOutline", "textBgColor"};
    if (std::find(std::begin(kKeys), std::end(kKeys), key) != std::end(kKeys)) return true;
    return key.rfind("ufm", 0) == 0 && key.size() > 5 && key.compare(key.size() - 5, 5, "Color") == 0;
}

class Checker {
public:
    Checker(const std::string& folder) : mFolder(folder) {}

    void tracks(const json& list, const std::string& path) {
        for (size_t t = 0; t < list.size(); ++t) {
            const std::string tpath = path + "[" + std::to_string(t) + "]";
            const json& clips = list[t]["clips"];
            for (size_t c = 0; c < clips.size(); ++c) clip(clips[c], tpath + ".clips[" + std::to_string(c) + "]");
        }
    }

private:
    void clip(const json& v, const std::string& path) {
        if (v.contains("blank")) return;
        if (v.contains("properties")) properties(v["properties"], path + ".properties");
        if (v.contains("transition")) return;
        const std::string service = v.value("service", "");
        if (v.contains("resource") && v["resource"].is_string() &&
            std::find(std::begin(kPictureServices), std::end(kPictureServices), service) != std::end(kPictureServices)) {
            picture(v["resource"].get<std::string>(), path + ".resource");
        }
        // A grid's picture cells.
        if (v.contains("properties")) {
            for (auto it = v["properties"].begin(); it != v["properties"].end(); ++it) {
                if (it.key().rfind("clip.", 0) == 0 && it.value().is_string() &&
                    cellServiceForPath(it.value().get<std::string>()) == "stb_image") {
                    picture(it.value().get<std::string>(), path + ".properties." + it.key());
                }
            }
        }
        if (service == "text" && v.contains("properties")) {
            for (const char* key : kFontKeys) {
                if (v["properties"].contains(key)) font(v["properties"][key], path + ".properties." + key);
            }
        }
        if (v.contains("tracks")) tracks(v["tracks"], path + ".tracks");
        if (v.contains("filters")) {
            const json& filters = v["filters"];
            for (size_t i = 0; i < filters.size(); ++i) filter(filters[i], path + ".filters[" + std::to_string(i) + "]");
        }
    }

    void filter(const json& v, const std::string& path) {
        const std::string service = v.value("service", "");
        std::vector<std::string> names = MVNRepository::getSingleton()->resourceNames(service);
        // "ogre.tool" may run without a name; a sample filter draws nothing without one.
        if (!names.empty() && !v.contains("resource") && service != "ogre.tool") {
            refuse(path + ".resource", "missing: the name of the filter");
        }
        if (!names.empty() && v.contains("resource")) {
            const std::string name = v["resource"].get<std::string>();
            if (std::find(names.begin(), names.end(), name) == names.end()) {
                refuse(path + ".resource", "unknown filter \"" + name + "\" for " + service);
            }
        }
        if (!v.contains("properties")) return;
        const json& props = v["properties"];
        properties(props, path + ".properties");
        if (service == "ogre.filter.canvas" && props.value("canvasType", 0) == 1 && props.contains("resource")) {
            picture(props["resource"].get<std::string>(), path + ".properties.resource");
        }
        if (props.contains(kLutKey)) lut(props[kLutKey], path + ".properties." + kLutKey);
    }

    // Value types the module would read as something else without a word.
    void properties(const json& v, const std::string& path) {
        for (auto it = v.begin(); it != v.end(); ++it) {
            const std::string& key = it.key();
            const json& value = it.value();
            const std::string at = path + "." + key;
            if (isColourKey(key)) {
                MVNColor4B c;
                if (!value.is_string() || !c.fromString(value.get<std::string>())) {
                    refuse(at, "not a colour \"#rrggbbaa\": " + quoted(value));
                }
            } else if (key.rfind("ufm", 0) == 0 && key != kLutKey) {
                if (!value.is_number()) refuse(at, "not a number: " + quoted(value));
            } else if (key == "volume") {
                if (!value.is_number() || value.get<double>() < 0 || value.get<double>() > 16) {
                    refuse(at, "expected a level from 0 to 16 (1 as recorded), got " + quoted(value));
                }
            } else if (key == "textSize") {
                if (!value.is_number() || !(value.get<double>() > 0) || value.get<double>() > 4096) {
                    refuse(at, "expected a size in pixels above 0 and up to 4096, got " + quoted(value));
                }
            }
        }
    }

    std::string resolve(const std::string& file) const {
        fs::path p(file);
        std::error_code ec;
        return fs::absolute(p.is_absolute() ? p : fs::path(mFolder) / p, ec).lexically_normal().string();
    }

    // Refused from the header when too large, else decoded once.
    void picture(const std::string& file, const std::string& path) {
        const std::string full = resolve(file);
        long statedWidth = 0, statedHeight = 0;
        if (headerSize(full, statedWidth, statedHeight) &&
            (statedWidth > MVNProjectCheck::kMaxPictureSide || statedHeight > MVNProjectCheck::kMaxPictureSide)) {
            refuse(path, "picture too large: " + std::to_string(statedWidth) + "x" + std::to_string(statedHeight) +
                             " (at most " + std::to_string(MVNProjectCheck::kMaxPictureSide) + " a side): " + full);
        }
        MVNMediaProbe probe;
        std::string reason;
        MVNFFmpegLog::clear();
        if (MVNMediaProbe::probe(full, probe, reason) != 0 || probe.width <= 0 || probe.height <= 0) {
            refuse(path, "not a picture: " + full);
        }
        if (probe.width > MVNProjectCheck::kMaxPictureSide || probe.height > MVNProjectCheck::kMaxPictureSide) {
            refuse(path, "picture too large: " + std::to_string(probe.width) + "x" + std::to_string(probe.height) +
                             " (at most " + std::to_string(MVNProjectCheck::kMaxPictureSide) + " a side): " + full);
        }
        MVNFrame* frame = MVNImage::loadFromFile(full, 0, 0);
        if (frame == nullptr) {
            std::string why = MVNFFmpegLog::lastError();
            refuse(path, "the picture does not decode" + (why.empty() ? "" : " (" + why + ")") + ": " + full);
        }
        MVNFrame::pushBackPool(frame);
    }

    void lut(const json& v, const std::string& path) {
        if (!v.is_string() || v.get<std::string>().empty()) refuse(path, "expected the path of a .cube file");
        // The loader made it absolute from the project's folder.
        const std::string full = resolve(v.get<std::string>());
        std::error_code ec;
        if (!fs::is_regular_file(full, ec)) refuse(path, "file not found: " + full);
        MVNLut3d table;
        if (table.loadFromFile(full) != 0) refuse(path, "not a 3D LUT: " + table.lastError());
    }

    // A file the text clip would otherwise refuse at its first frame with
    // nothing drawn: opened by the same library that lays the glyphs out.
    // The loader has already refused one that is missing.
    void font(const json& v, const std::string& path) {
        if (!v.is_string() || v.get<std::string>().empty()) refuse(path, "expected the path of a font file");
        const std::string full = resolve(v.get<std::string>());
        FT_Library library = nullptr;
        if (FT_Init_FreeType(&library) != 0) return;
        FT_Face face = nullptr;
        const FT_Error error = FT_New_Face(library, full.c_str(), 0, &face);
        if (face != nullptr) FT_Done_Face(face);
        FT_Done_FreeType(library);
        if (error != 0) refuse(path, "not a font: " + full);
    }

    std::string mFolder;
};

}  // namespace

int MVNProjectCheck::check(const std::string& path, const MVNProject& project) {
    mError.clear();
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    // The decoders' own complaints would come before the one line.
    MVNToolSetup::muteLog(true);
    try {
        json root = json::parse(text.str());
        Checker(project.folder).tracks(root["tracks"], "tracks");
    } catch (const Refusal& r) {
        mError = Morvane::oneLine(path + ": " + r.path + ": " + r.reason);
    } catch (const json::exception& e) {
        mError = Morvane::oneLine(path + ": " + e.what());
    }
    MVNToolSetup::muteLog(false);
    return mError.empty() ? 0 : -1;
}

int readCheckedProject(const char* tool, MVNProjectLoader& loader, const std::string& path,
                       const std::string& profile, MVNProject& project) {
    if (loader.read(path, project, profile) != 0) {
        std::fprintf(stderr, "%s: %s\n", tool, loader.error().c_str());
        return -1;
    }
    MVNProjectCheck check;
    if (check.check(path, project) != 0) {
        std::fprintf(stderr, "%s: %s\n", tool, check.error().c_str());
        return -1;
    }
    return 0;
}

}  // namespace Morvane
