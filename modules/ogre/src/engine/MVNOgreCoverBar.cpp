#include "engine/MVNOgreCoverBar.h"

#include <OgreOverlay.h>
#include <OgreOverlayContainer.h>
#include <OgreOverlayElement.h>
#include <OgreOverlayManager.h>
#include <OgreResourceGroupManager.h>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNOgreCoverBar";

MVNOgreCoverBar::MVNOgreCoverBar() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _init(); }, "coverBarInit");
}

MVNOgreCoverBar::~MVNOgreCoverBar() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _release(); }, "LabelRelease");
}

void MVNOgreCoverBar::_init() {
    try {
        MVNGeneratorStringId* ids = MVNGeneratorStringId::getSingleton();
        std::string panelName = ids->genStringId("MVNCoverPanel");
        std::string overlayName = ids->genStringId("MVNCoverOverlay");
        Ogre::OverlayManager& om = Ogre::OverlayManager::getSingleton();
        mPanel = om.createOverlayElement("BorderPanel", panelName);
        mPanel->setMetricsMode(Ogre::GMM_PIXELS);
        mPanel->setMaterialName("Morvane/Black", Ogre::RGN_AUTODETECT);
        mOverlay = om.create(overlayName);
        mOverlay->add2D(static_cast<Ogre::OverlayContainer*>(mPanel));
        mOverlay->show();
        _setGeometry();
        log_debug(TAG, "init done");
    } catch (const std::exception& e) {
        log_error(TAG, "init error %s", e.what());
        _release();
    }
}

void MVNOgreCoverBar::setGeometry(const MVNRect& rect) {
    mGeometry = rect;
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _setGeometry(); }, "coverSetGeometry");
}

void MVNOgreCoverBar::_setGeometry() {
    if (!mPanel) return;
    mPanel->setLeft(mGeometry.x);
    mPanel->setTop(mGeometry.y);
    mPanel->setWidth(mGeometry.width);
    mPanel->setHeight(mGeometry.height);
}

void MVNOgreCoverBar::setVisible(bool visible) {
    // Only the overlay's flag changes; the render thread reads it at the next draw.
    if (!mOverlay) return;
    if (visible) {
        mOverlay->show();
    } else {
        mOverlay->hide();
    }
}

bool MVNOgreCoverBar::isVisible() const { return mOverlay && mOverlay->isVisible(); }

void MVNOgreCoverBar::_release() {
    Ogre::OverlayManager* om = Ogre::OverlayManager::getSingletonPtr();
    if (!om) {
        // The engine went down first and took its overlays with it.
        mPanel = nullptr;
        mOverlay = nullptr;
        return;
    }
    if (mPanel) {
        if (mOverlay) mOverlay->remove2D(static_cast<Ogre::OverlayContainer*>(mPanel));
        om->destroyOverlayElement(mPanel);
        mPanel = nullptr;
    }
    if (mOverlay) {
        om->destroy(mOverlay);
        mOverlay = nullptr;
    }
}

}  // namespace Morvane
