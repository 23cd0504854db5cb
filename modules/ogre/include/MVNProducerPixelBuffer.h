#pragma once
#include "MVNOgreExport.h"
#include "MVNProducer.h"

namespace Morvane {

// The service "ogre.pixelbuffer": a test pattern in main memory that
// changes from frame to frame, so that one can see frames move: a blue
// border (see MVNProducerColor) around a flat colour whose blue and green
// follow the position and whose red is random, every channel in 200..249.
// The frames (B, G, R, A, "width" x "height") are uploaded to its quad.
class MVN_OGRE_API MVNProducerPixelBuffer : public MVNProducer {
public:
    // Built with its quad, 100 seconds long; null with "create failed".
    static MVNProducerPixelBuffer* create(const MVNProfile& profile, int zOrder, int width, int height);

    MVNProducerPixelBuffer(const MVNProfile& profile, int zOrder);
    ~MVNProducerPixelBuffer() override;

    int init() override;
    void release() override;
    void resetRender(int position) override;
    int seek(int position, int whence) override;
    void onClipEnd() override;
    int getRenderType(int position) override { return 1; }
    void setActive(bool active, bool force, int position, int flags) override;
    void _OnGeometryChanged(const MVNRect& rect) override {}
    int _getImage(int position, MVNFrame** frame) override;
    MVNProducer* _alloc() override;

    // The pattern of `position` into bgra (4 bytes a pixel).
    static void paint(uint8_t* bgra, int width, int height, int position);

private:
    int position = 0;  // last position asked for
};

}  // namespace Morvane
