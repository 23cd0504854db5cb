#include "producers/MVNProducerColor.h"

#include <cstring>
#include <new>

#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerColor";
}

MVNProducerColor* MVNProducerColor::create(const MVNProfile& profile, int zOrder, int width, int height,
                                           MVNColor4B color) {
    MVNProducerColor* producer = new (std::nothrow) MVNProducerColor(profile, zOrder);
    auto setColour = [&] { producer->setColor("color", color); };
    return static_cast<MVNProducerColor*>(
        _setUp(producer, static_cast<int>(profile.fps() * 99999.0), width, height, setColour));
}

MVNProducerColor::MVNProducerColor(const MVNProfile& profile, int zOrder)
    : MVNOgreQuadProducer(profile, zOrder, "ogre.color", kTag) {}

int MVNProducerColor::init() {
    log_debug(kTag, "%s init...", getStringId().c_str());
    block();
    setInt32("_inputType", 0);
    unblock();
    int result = _buildQuad("");
    log_debug(kTag, "%s init done", getStringId().c_str());
    // Without a quad the colour would never be seen.
    return result;
}

int MVNProducerColor::_getCacheImage(int position, MVNFrame** frame) { return _getImage(position, frame); }

MVNProducer* MVNProducerColor::_alloc() { return new MVNProducerColor(mProfile, getInt32("zOrder", 0)); }

void MVNProducerColor::_paint(uint8_t* bgra, int width, int height, int position) {
    paint(bgra, width, height, getColor("color", MVNColor4B()), getBoolean("border", false),
          getBoolean("grids", false));
}

uint64_t MVNProducerColor::_pictureKey(int position) {
    int width = getInt32("width", 0);
    int height = getInt32("height", 0);
    if (width <= 0 || height <= 0 || width >= (1 << 14) || height >= (1 << 14)) return 0;
    MVNColor4B c = getColor("color", MVNColor4B());
    uint64_t key = uint64_t(c.r) | uint64_t(c.g) << 8 | uint64_t(c.b) << 16 | uint64_t(c.a) << 24;
    key |= uint64_t(getBoolean("border", false)) << 32 | uint64_t(getBoolean("grids", false)) << 33;
    key |= uint64_t(width) << 34 | uint64_t(height) << 48;
    return key | uint64_t(1) << 62;  // never 0
}

void MVNProducerColor::paint(uint8_t* bgra, int width, int height, MVNColor4B color, bool border, bool grids) {
    const size_t rowBytes = static_cast<size_t>(width) * 4;
    // Rows come in a few kinds only (by border and grid); each kind is
    // painted once and copied after that.
    const uint8_t* painted[2][3] = {{nullptr, nullptr, nullptr}, {nullptr, nullptr, nullptr}};
    for (int y = 0; y < height; ++y) {
        uint8_t* row = bgra + static_cast<size_t>(y) * rowBytes;
        // Rows 0 and height - 1 and columns 0 and width - 1 carry no grid line.
        bool innerRow = y > 3 && y < height - 3;
        bool gridRow = y > 0 && y < height - 1;
        int gridKind = !grids || !gridRow ? 0 : (y % 50 == 0 ? 2 : 1);
        const uint8_t*& same = painted[innerRow][gridKind];
        if (same != nullptr) {
            std::memcpy(row, same, rowBytes);
            continue;
        }
        uint8_t* p = row;
        for (int x = 0; x < width; ++x, p += 4) {
            bool onBorder = border && !(innerRow && x > 3 && x < width - 3);
            bool onGrid = gridKind != 0 && x > 0 && x < width - 1 && (gridKind == 2 || x % 50 == 0);
            if (onBorder) {
                p[0] = 255;  // blue
                p[1] = 0;
                p[2] = 0;
            } else if (onGrid) {
                p[0] = 255;
                p[1] = 255;
                p[2] = 255;
            } else {
                p[0] = color.b;
                p[1] = color.g;
                p[2] = color.r;
            }
            p[3] = color.a;
        }
        same = row;
    }
}

}  // namespace Morvane
