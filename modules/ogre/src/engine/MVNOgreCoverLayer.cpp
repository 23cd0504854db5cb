#include "engine/MVNOgreCoverLayer.h"

#include "core/MVNLog.h"
#include "engine/MVNOgreCoverBar.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNOgreCoverLayer";

MVNOgreCoverLayer::MVNOgreCoverLayer() = default;

MVNOgreCoverLayer::~MVNOgreCoverLayer() { release(); }

int MVNOgreCoverLayer::init() {
    log_info(TAG, "init");
    mTopBar = new MVNOgreCoverBar();
    mLeftBar = new MVNOgreCoverBar();
    mRightBar = new MVNOgreCoverBar();
    mBottomBar = new MVNOgreCoverBar();
    update();
    return 0;
}

bool MVNOgreCoverLayer::adjustSizeFill(int pw, int ph, int rw, int rh, int* fw, int* fh) {
    // A profile or window without area can't be fitted either way.
    if (pw <= 0 || ph <= 0 || rw <= 0 || rh <= 0) return false;
    // Integer arithmetic throughout, in 64 bits so that large sizes can't overflow.
    if (static_cast<long long>(ph) * rw < static_cast<long long>(pw) * rh) {
        if (pw == 0) return false;
        *fw = rw;
        *fh = static_cast<int>(static_cast<long long>(ph) * rw / pw);
    } else {
        if (ph == 0) return false;
        *fw = static_cast<int>(static_cast<long long>(pw) * rh / ph);
        *fh = rh;
    }
    return true;
}

void MVNOgreCoverLayer::update() {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    const MVNProfile& profile = manager->getProfile();
    update(profile.width(), profile.height(), manager->getRenderWindowWidth(), manager->getRenderWindowHeight());
}

void MVNOgreCoverLayer::update(int pw, int ph, int rw, int rh) {
    log_info(TAG, "update profile size:%dx%d render_window:%dx%d", pw, ph, rw, rh);
    if (pw == rw && ph == rh) {
        setVisible(false);
        return;
    }
    int fw = 0;
    int fh = 0;
    if (!adjustSizeFill(pw, ph, rw, rh, &fw, &fh)) {
        log_error(TAG, "AdjustSizeFill failed");
        return;
    }
    int barW = (rw - fw) / 2;
    int barH = (rh - fh) / 2;
    if (barH != 0) {
        MVNRect bottom(0, static_cast<float>(rh - barH), static_cast<float>(rw), static_cast<float>(barH));
        if (mTopBar) {
            mTopBar->setGeometry(MVNRect(0, 0, static_cast<float>(rw), static_cast<float>(barH)));
            mTopBar->setVisible(true);
        }
        if (mBottomBar) {
            mBottomBar->setGeometry(bottom);
            mBottomBar->setVisible(true);
        }
        log_info(TAG, "mBottomBar setGeo:%s", bottom.toString().c_str());
    } else {
        if (mTopBar) mTopBar->setVisible(false);
        if (mBottomBar) mBottomBar->setVisible(false);
    }
    if (barW != 0) {
        if (mLeftBar) {
            mLeftBar->setGeometry(MVNRect(0, 0, static_cast<float>(barW), static_cast<float>(rh)));
            mLeftBar->setVisible(true);
        }
        if (mRightBar) {
            mRightBar->setGeometry(
                MVNRect(static_cast<float>(rw - barW), 0, static_cast<float>(barW), static_cast<float>(rh)));
            mRightBar->setVisible(true);
        }
    } else {
        if (mLeftBar) mLeftBar->setVisible(false);
        if (mRightBar) mRightBar->setVisible(false);
    }
}

void MVNOgreCoverLayer::setVisible(bool visible) {
    for (MVNOgreCoverBar* bar : {mTopBar, mLeftBar, mRightBar, mBottomBar}) {
        if (bar) bar->setVisible(visible);
    }
}

void MVNOgreCoverLayer::release() {
    for (MVNOgreCoverBar** bar : {&mTopBar, &mLeftBar, &mRightBar, &mBottomBar}) {
        delete *bar;
        *bar = nullptr;
    }
}

}  // namespace Morvane
