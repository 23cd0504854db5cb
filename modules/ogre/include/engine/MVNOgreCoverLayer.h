#pragma once
// Letterbox bars: when the profile and the render window differ in shape, the
// picture is fitted into the window and up to four black overlay bars cover
// the rest. Overlays show in the frames the RTT readers read back.
#include "MVNOgreExport.h"

namespace Morvane {

class MVNOgreCoverBar;

class MVN_OGRE_API MVNOgreCoverLayer {
public:
    MVNOgreCoverLayer();
    ~MVNOgreCoverLayer();
    MVNOgreCoverLayer(const MVNOgreCoverLayer&) = delete;
    MVNOgreCoverLayer& operator=(const MVNOgreCoverLayer&) = delete;

    // Builds the four bars and places them; 0.
    int init();
    // Re-fits the bars to the manager's profile and render window.
    void update();
    // Fits a pw x ph profile into an rw x rh window; bars that aren't
    // needed are hidden, all of them when the sizes are equal.
    void update(int pw, int ph, int rw, int rh);
    void setVisible(bool visible);
    void release();

    // Fits pw x ph into rw x rh keeping the aspect; false for a side of 0.
    static bool adjustSizeFill(int pw, int ph, int rw, int rh, int* fw, int* fh);

    MVNOgreCoverBar* topBar() const { return mTopBar; }
    MVNOgreCoverBar* leftBar() const { return mLeftBar; }
    MVNOgreCoverBar* rightBar() const { return mRightBar; }
    MVNOgreCoverBar* bottomBar() const { return mBottomBar; }

private:
    MVNOgreCoverBar* mTopBar = nullptr;
    MVNOgreCoverBar* mLeftBar = nullptr;
    MVNOgreCoverBar* mRightBar = nullptr;
    MVNOgreCoverBar* mBottomBar = nullptr;
};

}  // namespace Morvane
