#include "MVNProducerPixelBuffer.h"

#include <cmath>
#include <cstdlib>
#include <new>

#include "MVNByteBuffer.h"
#include "MVNFrame.h"
#include "MVNLog.h"
#include "MVNManager.h"
#include "MVNPixelUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerPixelBuffer";
const float kDegree = 0.017453292f;

// A channel of the pattern: the wave's byte (truncated through int), folded
// into 200..249.
uint8_t channel(float wave) {
    uint8_t v = static_cast<uint8_t>(static_cast<int>(wave * 255.0f));
    return static_cast<uint8_t>(v % 50 + 200);
}
}  // namespace

MVNProducerPixelBuffer* MVNProducerPixelBuffer::create(const MVNProfile& profile, int zOrder, int width, int height) {
    MVNProducerPixelBuffer* producer = new (std::nothrow) MVNProducerPixelBuffer(profile, zOrder);
    if (producer == nullptr) return nullptr;
    int length = static_cast<int>(profile.fps() * 100.0);
    producer->block();
    producer->setIn(0);
    producer->setLength(length);
    producer->setOut(length - 1);
    producer->setInt32("width", width);
    producer->setInt32("render.width", width);
    producer->setInt32("height", height);
    producer->setInt32("render.height", height);
    producer->unblock();
    if (producer->init() != 0) {
        log_error(kTag, "create failed");
        delete producer;
        return nullptr;
    }
    return producer;
}

MVNProducerPixelBuffer::MVNProducerPixelBuffer(const MVNProfile& profile, int zOrder) : MVNProducer(profile) {
    block();
    setProfile(profile);
    setInt32("zOrder", zOrder);
    setString("service", "ogre.pixelbuffer");
    setInt32("flags", 1);
    setBoolean("_active", true);
    unblock();
    genStringId("producer");
}

MVNProducerPixelBuffer::~MVNProducerPixelBuffer() { log_debug(kTag, "%s destroy", getStringId().c_str()); }

int MVNProducerPixelBuffer::init() {
    _createTextureNode("", true);
    _createAudioConverter();
    return renderTexture() != nullptr ? 0 : -1;
}

void MVNProducerPixelBuffer::release() {
    _destroyAudioConverter();
    _destroyTextureNode();
}

void MVNProducerPixelBuffer::resetRender(int position) { MVNProducer::resetRender(position); }

int MVNProducerPixelBuffer::seek(int position, int whence) {
    this->position = position;
    return MVNProducer::seek(position, whence);
}

void MVNProducerPixelBuffer::onClipEnd() {
    MVNProducer::onClipEnd();
    MVNMode mode = MVNManager::getSingleton()->getMode();
    if (mode == MVN_MODE_RENDER || mode == MVN_MODE_RENDER_PREVIEW) release();
}

void MVNProducerPixelBuffer::setActive(bool active, bool force, int position, int flags) {
    setBoolean("_active", active);
}

int MVNProducerPixelBuffer::_getImage(int position, MVNFrame** frame) {
    int width = getInt32("width", 0);
    int height = getInt32("height", 0);
    int size = getPixelsBufferSize(width, height, MVN_COLOR_BGRA);
    MVNFrame* f = MVNFrame::pullFromPool(1, size);
    if (f == nullptr) {
        log_error(kTag, "_getImage failed, pull frame error");
        return -1;
    }
    this->position = position;
    MVNByteBuffer* buffer = f->buffer();
    if (buffer != nullptr && buffer->ptr() != nullptr) paint(buffer->ptr(), width, height, position);
    f->setColorFormat(MVN_COLOR_BGRA);
    f->setWidth(width);
    f->setHeight(height);
    f->setSize(size);
    *frame = f;
    return 0;
}

MVNProducer* MVNProducerPixelBuffer::_alloc() { return new MVNProducerPixelBuffer(mProfile, getInt32("zOrder", 0)); }

void MVNProducerPixelBuffer::paint(uint8_t* bgra, int width, int height, int position) {
    // Red follows no wave: a fresh random value each frame.
    uint8_t r = static_cast<uint8_t>(std::rand() % 50 + 200);
    uint8_t b = channel(std::cos((position % 180) * kDegree));
    uint8_t g = channel(std::cos((position % 90) * kDegree));
    for (int y = 0; y < height; ++y) {
        uint8_t* p = bgra + static_cast<size_t>(y) * width * 4;
        bool innerRow = y > 3 && y < height - 3;
        for (int x = 0; x < width; ++x, p += 4) {
            bool onBorder = !(innerRow && x > 3 && x < width - 3);
            p[0] = onBorder ? 255 : b;
            p[1] = g;
            p[2] = onBorder ? 0 : r;
            p[3] = 255;
        }
    }
}

}  // namespace Morvane
