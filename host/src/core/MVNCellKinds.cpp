#include "core/MVNCellKinds.h"

#include "core/MVNUtils.h"

namespace Morvane {

namespace {

struct CellKind {
    const char* extension;  // as getExtension gives it, dot included
    const char* service;
};

// "wmv" and "kmv" carry no dot and so never match: such files are refused
// as of an unknown kind, and grids made before rely on that refusal.
const CellKind kCellKinds[] = {
    {".jpg", "stb_image"},  {".jpeg", "stb_image"},  {".png", "stb_image"},   {".bmp", "stb_image"},
    {".webp", "stb_image"}, {".mp4", "codec.video"}, {".mov", "codec.video"}, {".flv", "codec.video"},
    {"wmv", "codec.video"}, {"kmv", "codec.video"},  {".gif", "codec.gif"},
};

}  // namespace

std::string cellServiceForPath(const std::string& path) {
    std::string extension = getExtension(path);
    for (const CellKind& kind : kCellKinds) {
        if (icaseCompare(extension, kind.extension)) return kind.service;
    }
    return std::string();
}

std::string cellExtensions() {
    std::string out;
    for (const CellKind& kind : kCellKinds) {
        if (kind.extension[0] != '.') continue;
        if (!out.empty()) out += ", ";
        out += kind.extension;
    }
    return out;
}

}  // namespace Morvane
