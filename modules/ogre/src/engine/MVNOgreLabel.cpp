#include "engine/MVNOgreLabel.h"

#include <OgreFontManager.h>
#include <OgreMaterial.h>
#include <OgreOverlay.h>
#include <OgrePass.h>
#include <OgreTechnique.h>
#include <OgreOverlayContainer.h>
#include <OgreOverlayManager.h>
#include <OgreResourceGroupManager.h>
#include <OgreTextAreaOverlayElement.h>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderableResult.h"
#include "core/MVNUtils.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNOgreLabel";

// Blends colour over what is below but adds coverage to the alpha channel,
// so that a label over an opaque picture leaves the read-back frame opaque.
static void keepAlphaOpaque(const Ogre::MaterialPtr& material) {
    if (!material) return;
    for (Ogre::Technique* tech : material->getTechniques()) {
        for (Ogre::Pass* pass : tech->getPasses()) {
            pass->setSeparateSceneBlending(Ogre::SBF_SOURCE_ALPHA, Ogre::SBF_ONE_MINUS_SOURCE_ALPHA, Ogre::SBF_ONE,
                                           Ogre::SBF_ONE_MINUS_SOURCE_ALPHA);
        }
    }
}

MVNOgreLabel::MVNOgreLabel() {
    log_debug(TAG, "init thread: %lld", static_cast<long long>(getCurrentThreadId()));
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _init(); }, "LabelInit");
}

MVNOgreLabel::~MVNOgreLabel() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _release(); }, "LabelRelease");
}

void MVNOgreLabel::_init() {
    log_debug(TAG, "_init thread: %ld", static_cast<long>(getCurrentThreadId()));
    try {
        MVNGeneratorStringId* ids = MVNGeneratorStringId::getSingleton();
        mName = ids->genStringId("MVNLabel");
        std::string panelName = ids->genStringId("MVNLabelPanel");
        std::string overlayName = ids->genStringId("MVNLabelOverlay");
        Ogre::OverlayManager& om = Ogre::OverlayManager::getSingleton();
        mPanel = om.createOverlayElement("BorderPanel", panelName);
        mPanel->setMetricsMode(Ogre::GMM_PIXELS);
        mPanel->setMaterialName("Core/StatsBlockCenter", Ogre::RGN_AUTODETECT);
        mOverlay = om.create(overlayName);
        mOverlay->add2D(static_cast<Ogre::OverlayContainer*>(mPanel));
        auto* text = static_cast<Ogre::TextAreaOverlayElement*>(om.createOverlayElement("TextArea", mName));
        mTextArea = text;
        text->setMetricsMode(Ogre::GMM_PIXELS);
        text->setLeft(20);
        text->setTop(40);
        text->setWidth(80);
        text->setHeight(40);
        text->setColourTop(Ogre::ColourValue(1, 0, 0, 0.7f));
        text->setColourBottom(Ogre::ColourValue(1, 0, 0, 0.7f));
        // The glyphs must be there before the text area lays out its
        // first caption, or it keeps texture coordinates of nothing.
        Ogre::FontPtr font = Ogre::FontManager::getSingleton().getByName("Sony_Sketch_EF", Ogre::RGN_AUTODETECT);
        if (!font) {
            OGRE_EXCEPT(Ogre::Exception::ERR_ITEM_NOT_FOUND, "Could not find font Sony_Sketch_EF",
                        "Morvane::MVNOgreLabel::_init");
        }
        font->load();
        keepAlphaOpaque(font->getMaterial());
        text->setFontName("Sony_Sketch_EF", Ogre::RGN_AUTODETECT);
        text->setCharHeight(24);
        static_cast<Ogre::OverlayContainer*>(mPanel)->addChild(text);
        mOverlay->show();
        _setGeometry();
        log_debug(TAG, "init done");
    } catch (const std::exception& e) {
        // A missing material or font leaves no half-built label behind.
        log_error(TAG, "init error %s", e.what());
        _release();
    }
}

void MVNOgreLabel::setGeometry(const MVNRect& rect) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this, rect]() {
            mGeometry = rect;
            _setGeometry();
        },
        "LabelSetGeo");
}

void MVNOgreLabel::_setGeometry() {
    if (!mPanel || !mTextArea) return;
    MVNRect r = MVNOgreManager::getSingleton()->adjustGeometryProfileToScreen(mGeometry);
    mPanel->setLeft(r.x);
    mPanel->setTop(r.y);
    mPanel->setWidth(r.width);
    mPanel->setHeight(r.height);
    mTextArea->setLeft(10);
    mTextArea->setTop(10);
    mTextArea->setWidth(r.width - 10);
    mTextArea->setHeight(r.height - 10);
}

void MVNOgreLabel::setText(std::string text) {
    mText = text;
    MVNOgreManager::getSingleton()->callRenderableWait([this, text]() { _setText(text); }, "LabelSetText");
}

void MVNOgreLabel::setTextRenderCall(MVNOgreRenderableResult& result) { _setText(std::string(mText)); }

void MVNOgreLabel::_setText(const std::string& text) {
    if (mTextArea) mTextArea->setCaption(text);
}

void MVNOgreLabel::setPosition(float left, float top) {
    if (mTextArea) mTextArea->setPosition(left, top);
}

void MVNOgreLabel::setColor(float r, float g, float b, float a) {
    if (mTextArea) mTextArea->setColour(Ogre::ColourValue(r, g, b, a));
}

void MVNOgreLabel::setVisible(bool visible) {
    if (!mOverlay) return;
    if (visible) {
        mOverlay->show();
    } else {
        mOverlay->hide();
    }
}

void MVNOgreLabel::_release() {
    Ogre::OverlayManager* om = Ogre::OverlayManager::getSingletonPtr();
    if (!om) {
        mTextArea = mPanel = nullptr;
        mOverlay = nullptr;
        return;
    }
    if (mTextArea) {
        if (mPanel) static_cast<Ogre::OverlayContainer*>(mPanel)->removeChild(mTextArea->getName());
        om->destroyOverlayElement(mTextArea);
        mTextArea = nullptr;
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
