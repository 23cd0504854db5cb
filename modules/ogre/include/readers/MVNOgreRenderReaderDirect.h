#pragma once
// Reads the hidden render window itself: no texture of its own, the window's
// viewport draws the scene. Sync and async like the RTT reader.
#include "readers/MVNOgreRenderReaderRTT.h"

namespace Morvane {

class MVN_OGRE_API MVNOgreRenderReaderDirect : public MVNOgreRenderReaderRTT {
public:
    explicit MVNOgreRenderReaderDirect(MVNOgreContextBase* context);
    ~MVNOgreRenderReaderDirect() override;

    static MVNOgreRenderReaderDirect* create(MVNOgreContextBase* context);

    int init() override;
    MVNOgreRenderReaderType type() const override { return MVN_READER_DIRECT; }

protected:
    const char* tag() const override;
    Ogre::RenderTarget* target() override;
    void drawAndCopy(Ogre::RenderTarget* target, unsigned char* dst) override;
    // Reads the back buffer: the hook runs before the swap.
    void copyTarget(Ogre::RenderTarget* target, unsigned char* dst) override;
    void copyAfterUpdate(Ogre::RenderTarget* target, unsigned char* dst) override;
    void finishUpdate(Ogre::RenderTarget* target) override;
};

}  // namespace Morvane
