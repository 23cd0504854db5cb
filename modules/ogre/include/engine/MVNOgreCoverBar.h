#pragma once
// One black overlay panel of the cover layer. Built and destroyed on the
// render thread; setVisible touches the overlay on the caller's thread.
#include "MVNOgreExport.h"
#include "core/MVNRect.h"

namespace Ogre {
class OverlayElement;
class Overlay;
}  // namespace Ogre

namespace Morvane {

class MVN_OGRE_API MVNOgreCoverBar {
public:
    MVNOgreCoverBar();   // posts "coverBarInit" and waits
    ~MVNOgreCoverBar();  // posts "LabelRelease" and waits
    MVNOgreCoverBar(const MVNOgreCoverBar&) = delete;
    MVNOgreCoverBar& operator=(const MVNOgreCoverBar&) = delete;

    // Pixels of the render window, origin top left.
    void setGeometry(const MVNRect& rect);
    const MVNRect& getGeometry() const { return mGeometry; }
    void setVisible(bool visible);
    bool isVisible() const;

private:
    void _init();
    void _setGeometry();
    void _release();

    Ogre::OverlayElement* mPanel = nullptr;
    Ogre::Overlay* mOverlay = nullptr;
    MVNRect mGeometry;
};

}  // namespace Morvane
