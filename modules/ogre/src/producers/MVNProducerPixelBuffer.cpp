#include "producers/MVNProducerPixelBuffer.h"

#include <cmath>
#include <cstdlib>
#include <new>

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
    return static_cast<MVNProducerPixelBuffer*>(
        _setUp(producer, static_cast<int>(profile.fps() * 100.0), width, height));
}

MVNProducerPixelBuffer::MVNProducerPixelBuffer(const MVNProfile& profile, int zOrder)
    : MVNOgreQuadProducer(profile, zOrder, "ogre.pixelbuffer", kTag) {}

MVNProducer* MVNProducerPixelBuffer::_alloc() { return new MVNProducerPixelBuffer(mProfile, getInt32("zOrder", 0)); }

void MVNProducerPixelBuffer::_paint(uint8_t* bgra, int width, int height, int position) {
    paint(bgra, width, height, position);
}

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
