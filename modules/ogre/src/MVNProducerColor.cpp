#include "MVNProducerColor.h"

#include <new>

#include "MVNByteBuffer.h"
#include "MVNFrame.h"
#include "MVNLog.h"
#include "MVNManager.h"
#include "MVNPixelUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerColor";
}

MVNProducerColor* MVNProducerColor::create(const MVNProfile& profile, int zOrder, int width, int height,
                                           MVNColor4B color) {
    MVNProducerColor* producer = new (std::nothrow) MVNProducerColor(profile, zOrder);
    if (producer == nullptr) return nullptr;
    int length = static_cast<int>(profile.fps() * 99999.0);
    producer->block();
    producer->setIn(0);
    producer->setLength(length);
    producer->setOut(length - 1);
    producer->setInt32("width", width);
    producer->setInt32("render.width", width);
    producer->setInt32("height", height);
    producer->setInt32("render.height", height);
    producer->setColor("color", color);
    producer->unblock();
    if (producer->init() != 0) {
        log_error(kTag, "create failed");
        delete producer;
        return nullptr;
    }
    return producer;
}

MVNProducerColor::MVNProducerColor(const MVNProfile& profile, int zOrder) : MVNProducer(profile) {
    block();
    setProfile(profile);
    setInt32("zOrder", zOrder);
    setString("service", "ogre.color");
    setInt32("flags", 1);
    setBoolean("_active", true);
    unblock();
    genStringId("producer");
}

MVNProducerColor::~MVNProducerColor() { log_debug(kTag, "%s destroy", getStringId().c_str()); }

int MVNProducerColor::init() {
    log_debug(kTag, "%s init...", getStringId().c_str());
    block();
    setInt32("_inputType", 0);
    unblock();
    _createTextureNode("", true);
    _createAudioConverter();
    log_debug(kTag, "%s init done", getStringId().c_str());
    // Without a quad the colour would never be seen.
    return renderTexture() != nullptr ? 0 : -1;
}

void MVNProducerColor::release() {
    _destroyAudioConverter();
    _destroyTextureNode();
}

int MVNProducerColor::seek(int position, int whence) {
    this->position = position;
    return MVNProducer::seek(position, whence);
}

void MVNProducerColor::onClipEnd() {
    MVNProducer::onClipEnd();
    MVNMode mode = MVNManager::getSingleton()->getMode();
    if (mode == MVN_MODE_RENDER || mode == MVN_MODE_RENDER_PREVIEW) release();
}

void MVNProducerColor::setActive(bool active, bool force, int position, int flags) { setBoolean("_active", active); }

int MVNProducerColor::_getImage(int position, MVNFrame** frame) {
    int width = getInt32("width", 0);
    int height = getInt32("height", 0);
    int size = getPixelsBufferSize(width, height, MVN_COLOR_BGRA);
    MVNFrame* f = MVNFrame::pullFromPool(1, size);
    if (f == nullptr) {
        log_error(kTag, "_getImage failed, pull frame error");
        return -1;
    }
    this->position = position;
    _update(position, f);
    f->setColorFormat(MVN_COLOR_BGRA);
    f->setWidth(width);
    f->setHeight(height);
    f->setSize(size);
    *frame = f;
    return 0;
}

int MVNProducerColor::_getCacheImage(int position, MVNFrame** frame) { return _getImage(position, frame); }

MVNProducer* MVNProducerColor::_alloc() { return new MVNProducerColor(mProfile, getInt32("zOrder", 0)); }

void MVNProducerColor::_update(int position, MVNFrame* frame) {
    MVNByteBuffer* buffer = frame->buffer();
    if (buffer == nullptr || buffer->ptr() == nullptr) return;
    paint(buffer->ptr(), getInt32("width", 0), getInt32("height", 0), getColor("color", MVNColor4B()),
          getBoolean("border", false), getBoolean("grids", false));
}

void MVNProducerColor::paint(uint8_t* bgra, int width, int height, MVNColor4B color, bool border, bool grids) {
    for (int y = 0; y < height; ++y) {
        uint8_t* p = bgra + static_cast<size_t>(y) * width * 4;
        // Rows 0 and height - 1 and columns 0 and width - 1 carry no grid line.
        bool innerRow = y > 3 && y < height - 3;
        bool gridRow = y > 0 && y < height - 1;
        for (int x = 0; x < width; ++x, p += 4) {
            bool onBorder = border && !(innerRow && x > 3 && x < width - 3);
            bool onGrid = grids && gridRow && x > 0 && x < width - 1 && (y % 50 == 0 || x % 50 == 0);
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
    }
}

}  // namespace Morvane
