#pragma once
// A small text overlay for on-screen notes: a half-transparent panel with a
// line of text, placed in profile pixels. Built, changed and destroyed on the
// render thread; setPosition, setColor and setVisible act on the caller's.
#include <string>

#include "MVNOgreExport.h"
#include "core/MVNProfile.h"
#include "core/MVNRect.h"

namespace Ogre {
class OverlayElement;
class Overlay;
}  // namespace Ogre

namespace Morvane {

class MVNOgreRenderableResult;

class MVN_OGRE_API MVNOgreLabel {
public:
    MVNOgreLabel();   // posts "LabelInit" and waits
    ~MVNOgreLabel();  // posts "LabelRelease" and waits
    MVNOgreLabel(const MVNOgreLabel&) = delete;
    MVNOgreLabel& operator=(const MVNOgreLabel&) = delete;

    // Profile pixels; converted to the render window's.
    void setGeometry(const MVNRect& rect);
    void setProfile(const MVNProfile& profile) { mProfile = profile; }
    void setText(std::string text);
    void setPosition(float left, float top);
    void setColor(float r, float g, float b, float a);
    void setVisible(bool visible);
    // Sets the stored text from inside a running renderable (it touches the
    // engine directly). The argument isn't read.
    void setTextRenderCall(MVNOgreRenderableResult& result);

    const std::string& getText() const { return mText; }
    bool isReady() const { return mTextArea != nullptr; }

private:
    void _init();
    void _setGeometry();
    void _setText(const std::string& text);
    void _release();

    Ogre::OverlayElement* mPanel = nullptr;
    Ogre::Overlay* mOverlay = nullptr;
    Ogre::OverlayElement* mTextArea = nullptr;
    std::string mName;
    std::string mText;
    MVNRect mGeometry;
    MVNProfile mProfile;
};

}  // namespace Morvane
