#pragma once
#include "MVNOgreExport.h"
#include "producers/MVNOgreQuadProducer.h"

namespace Morvane {

// The service "ogre.pixelbuffer": a test pattern in main memory that
// changes from frame to frame, so that one can see frames move: a blue
// border (see MVNProducerColor) around a flat colour whose blue and green
// follow the position and whose red is random, every channel in 200..249.
// The frames (B, G, R, A, "width" x "height") are uploaded to its quad.
class MVN_OGRE_API MVNProducerPixelBuffer : public MVNOgreQuadProducer {
public:
    // Built with its quad, 100 seconds long; null with "create failed".
    static MVNProducerPixelBuffer* create(const MVNProfile& profile, int zOrder, int width, int height);

    MVNProducerPixelBuffer(const MVNProfile& profile, int zOrder);

    MVNProducer* _alloc() override;

    // The pattern of `position` into bgra (4 bytes a pixel).
    static void paint(uint8_t* bgra, int width, int height, int position);

protected:
    void _paint(uint8_t* bgra, int width, int height, int position) override;
};

}  // namespace Morvane
