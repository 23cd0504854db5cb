#pragma once
#include <cstdint>
#include <functional>

#include "MVNOgreExport.h"
#include "services/MVNProducer.h"

namespace Morvane {

// A producer that draws its picture itself, on a quad of its own in the
// scene (getRenderType 1). The frames it gives hold a B, G, R, A picture of
// "width" x "height" that _paint fills and the host uploads to the quad;
// a producer whose quad shows a texture already on the GPU gives blank
// frames through its own _getImage.
//
// Properties set here: "zOrder", "service", "flags" (1), "_active"; the
// create functions add "in", "length", "out", "width"/"height" and
// "render.width"/"render.height".
class MVN_OGRE_API MVNOgreQuadProducer : public MVNProducer {
public:
    ~MVNOgreQuadProducer() override;

    // The quad for uploaded pixels; 0 with a quad, -1 without one.
    int init() override;
    void release() override;
    int seek(int position, int whence) override;
    // When rendering, a clip doesn't come back: its quad can go. In the
    // editing modes it stays for the clip to be played again.
    void onClipEnd() override;
    int getRenderType(int position) override { return 1; }
    void setActive(bool active, bool force, int position, int flags) override;
    // A pooled BGRA frame of "width" x "height", filled by _paint.
    int _getImage(int position, MVNFrame** frame) override;

protected:
    // `tag` heads every log line of the producer, `service` is its service
    // name.
    MVNOgreQuadProducer(const MVNProfile& profile, int zOrder, const char* service, const char* tag);

    // The end of every create function: gives `producer` (null when out of
    // memory) `length` frames from 0, a picture of width x height and what
    // `more` sets, all without notifications, and initialises it. Null,
    // with "create failed" logged and the producer deleted, when init fails.
    static MVNOgreQuadProducer* _setUp(MVNOgreQuadProducer* producer, int length, int width, int height,
                                       const std::function<void()>& more = nullptr);

    // Builds the quad on the texture `name` (empty: pixels are uploaded) and
    // the audio converter; 0 with a quad, -1 without one.
    int _buildQuad(const std::string& name);

    // Fills the 4-byte pixels of one frame for `position`.
    virtual void _paint(uint8_t* bgra, int width, int height, int position) {}

    const char* const mTag;
    int mLastPosition = 0;  // last position asked for
};

}  // namespace Morvane
