#include "text/MVNProducerText.h"

#include <OgreEntity.h>
#include <OgreMaterialManager.h>
#include <OgreRenderTarget.h>
#include <OgreRoot.h>
#include <OgreSceneManager.h>
#include <OgreTechnique.h>

#include <cstring>
#include <exception>
#include <functional>
#include <filesystem>

#include "core/MVNColor4B.h"
#include "core/MVNFrame.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNGeometry.h"
#include "core/MVNLog.h"
#include "core/MVNUtils.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "text/TextUtils.h"
#include "text/fonts/FTExtrudeFont.h"
#include "text/fonts/FTPolygonFont.h"
#include "text/fonts/FTTriangleExtractorFont.h"

#ifndef MVN_BUILD_CONFIG_DIR
#define MVN_BUILD_CONFIG_DIR ""
#endif
#ifndef MVN_INSTALL_CONFIG_DIR
#define MVN_INSTALL_CONFIG_DIR ""
#endif

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerText";

// A font named relative to the working folder, or else the copy that the
// build and the installation put beside the engine configuration.
std::string findFont(const char* relative) {
    std::string path = ports::path::abspath(relative);
    std::error_code ec;
    if (std::filesystem::exists(path, ec)) return path;
    for (const char* dir : {MVN_BUILD_CONFIG_DIR, MVN_INSTALL_CONFIG_DIR}) {
        if (*dir == '\0') continue;
        std::string candidate = std::string(dir) + "/" + relative;
        for (char& c : candidate) {
            if (c == '\\') c = '/';
        }
        if (std::filesystem::exists(candidate, ec)) return candidate;
    }
    return path;
}

std::u32string toCodePoints(const std::string& utf8) {
    std::wstring wide = to_wideStr(utf8);
    return std::u32string(wide.begin(), wide.end());
}

Ogre::ColourValue toColourValue(MVNColor4B c) { return Ogre::ColourValue(c.r / 255.0f, c.g / 255.0f, c.b / 255.0f, c.a / 255.0f); }

void runGuarded(const char* what, const std::function<void()>& body) {
    try {
        body();
    } catch (const std::exception& e) {
        log_error(kTag, "%s catch error: %s", what, e.what());
    }
}
}  // namespace

std::string MVNProducerText::defaultFontFile() { return findFont("resources\\fonts\\SimHeiRegular.ttf"); }
std::string MVNProducerText::defaultBackupFile() { return findFont("resources\\fonts\\DejaVuSans.ttf"); }

MVNProducerText::MVNProducerText(const MVNProfile& profile, int zOrder, bool textThree, const std::string& fontFile,
                                 const std::string& backupPath, bool cloned)
    : MVNProducer(profile), _cloned(cloned) {
    setProfile(profile);
    const float w = static_cast<float>(profile.width()), h = static_cast<float>(profile.height());
    _geometry = MVNRect(0, 0, w, h);
    _textPosition[0] = _textPosition[1] = 0.0f;
    _textPosition[2] = static_cast<float>(zOrder);
    _titlePosition[0] = _titlePosition[1] = 0.0f;
    _titlePosition[2] = static_cast<float>(zOrder - 2);
    _titleWidth = w;
    _titleHeight = h;
    block();
    setString("service", "text");
    setInt32("flags", 4);
    setBoolean("_active", true);
    setBoolean("textThree", textThree);
    unblock();
    genStringId("producer_text");
    MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
    _sceneManager = context != nullptr ? context->getSceneManager() : nullptr;
    _fontInfo.textID = MVNGeneratorStringId::getSingleton()->genStringId("textID");
    _fontInfo.zOrder = zOrder;
    // One missing path discards the other: the two defaults belong together.
    if (!fontFile.empty() && !backupPath.empty()) {
        _fontInfo.fontFile = fontFile;
        _fontInfo.backupPath = backupPath;
    } else {
        _fontInfo.fontFile = defaultFontFile();
        _fontInfo.backupPath = defaultBackupFile();
    }
    const std::string& id = _fontInfo.textID;
    _rttNodeName = "_TextRttIndexNode" + id;
    _nodeName = "_TextMorVaneNode" + id;
    _titleNodeName = "_TextMorVaneTitleNode" + id;
    _rttMatName = "_TextRttIndexMat" + id;
    _rttOutlineMatName = "_TextRttIndexOutlineMat" + id;
    _textObjInfo.canvasWidth = w;
    _textObjInfo.canvasHeight = h;
    _textPropertiesInit();
}

MVNProducerText::~MVNProducerText() = default;

void MVNProducerText::_textPropertiesInit() {
    const int w = mProfile.width(), h = mProfile.height();
    block();
    setLength(static_cast<int>(mProfile.fps() * 60 * 5));
    auto d = [this](const char* key, double def) { setDouble(key, getDouble(key, def)); };
    auto i = [this](const char* key, int def) { setInt32(key, getInt32(key, def)); };
    auto b = [this](const char* key, bool def) { setBoolean(key, getBoolean(key, def)); };
    auto s = [this](const char* key, const std::string& def) { setString(key, getString(key, def)); };
    auto c = [this](const char* key, MVNColor4B def) { setColor(key, getColor(key, def)); };
    d("TextDiffuseValue", 0.2);
    d("TextSpecularValue", 0.24);
    setString("TextGenStringId", _fontInfo.textID);
    b("textThree", false);
    s("textTitleVideoPath", "");
    s("textTitleMaskVideoPath", "");
    s("textTitleImagePath", "");
    s("textTitleImageName", "");
    s("textFontFile", _fontInfo.fontFile);
    s("textBackupPath", _fontInfo.backupPath);
    s("textString", "");
    i("textSize", 72);
    i("textDepth", 15);
    i("textThreeLightSize", 50);
    d("textShadowSize", 0);
    b("textBold", false);
    d("textOutlineSize", 0);
    b("textLean", false);
    i("zOrder", _fontInfo.zOrder);
    c("textBgColor", MVNColor4B(127, 127, 127, 0));
    c("textColorBase", MVNColor4B(255, 255, 255, 255));
    c("textColorOutline", MVNColor4B(255, 0, 255, 255));
    i("textAlignType", 2);
    i("textSpace", 0);
    i("textRowSpace", 0);
    d("textRoll", 0);
    d("textThreePitch", 0);
    d("textThreeYaw", 0);
    d("textBgAngle", 0);
    setRect("textBgGeometry", getRect("textBgGeometry", MVNRect()));
    i("textAnimationType", 0);
    b("textVerticalAlign", false);
    d("_textActualMaxWidth", w);
    d("_textActualMaxHeight", h);
    d("textAnimationStartTime", 0);
    d("textAnimationEndTime", 1);
    d("textAnimationFirstEndTime", 0.4);
    d("textAnimationSecendStartTime", 0.6);
    setBoolean("_textEditStatus", false);
    setBoolean("_textErrorStatus", false);
    setBoolean("_textNeedReBuild", false);
    d("textTitleEditImage", 1);
    setInt32("_textGeoPlaneWidth", w);
    setInt32("_textGeoPlaneHeight", h);
    unblock();
}

bool MVNProducerText::_computeNeedRtt() {
    _needRtt = getInt32("textAnimationType", 0) != 0 || getBoolean("textThree", false);
    return _needRtt;
}

// ---- public operations and the steps they post ----

int MVNProducerText::init() { return _textInitRenderableWait(); }

int MVNProducerText::_textInitRenderableWait() {
    int result = -1;
    MVNOgreManager::getSingleton()->callRenderableWait([&] { runGuarded("_textInit", [&] { result = _textInit(); }); },
                                                       "_textInit");
    return result;
}

int MVNProducerText::_textInit() {
    log_debug(kTag, "_textInit Start : %s", _fontInfo.textID.c_str());
    _computeNeedRtt();
    if (_cloned) {
        _textUpdate();
        return 0;
    }
    if (_textOgreRttInit() != 0 || _textOgreMVNOreInit() != 0) return -1;
    if (!_needRtt) _setAlphaRejection();
    log_debug(kTag, "_textInit End");
    return 0;
}

void MVNProducerText::release() { _textReleaseRenderableWait(); }

void MVNProducerText::_textReleaseRenderableWait() {
    MVNOgreManager::getSingleton()->callRenderableWait([this] { _textRelease(); }, "_TextRelease");
}

void MVNProducerText::_textRelease() {
    try {
        _releaseTextTitle();
        _releaseTextOutScene();
        _releaseTextMesh(getInt32("zOrder", 0));
    } catch (const std::exception& e) {
        log_error(kTag, "text Release catch error: %s", (std::string("Error occurred during execution: ") + e.what()).c_str());
    }
    log_debug(kTag, "text Release End");
}

void MVNProducerText::_OnPropertyChanged(const char* name) {
    _reconfigTextStatusRenderableWait(name);
    MVNProducer::_OnPropertyChanged(name);
}

int MVNProducerText::_reconfigTextStatusRenderableWait(const char* name) {
    int result = -1;
    std::string key = name != nullptr ? name : "";
    MVNOgreManager::getSingleton()->callRenderableWait([&] { result = _reconfigTextStatus(key.c_str()); },
                                                       "_reconfigTextStatus");
    return result;
}

int MVNProducerText::_getImage(int position, MVNFrame** frame) {
    render(position);
    MVNFrame* f = MVNFrame::pullFromPool(1);
    if (f == nullptr) return -1;
    f->setColorFormat(MVN_COLOR_BLANK);
    *frame = f;
    return 0;
}

void MVNProducerText::render(int frame) {
    if (getInt32("hidden", 0) != 0) return;
    if (_needRtt) _checkTextRenderVisibleRaWait(frame);
    const int relative = frame - getIn();
    _updateTitleFrames(relative);
    if (_needRtt) {
        // While editing, the clip stands still in its final look.
        if (getInt32("textAnimationType", 0) != 0 && !getBoolean("_textEditStatus", false)) {
            const double fps = mProfile.fps() > 0 ? mProfile.fps() : 25.0;
            _animationsUpdateRenderableWait(relative, static_cast<float>(relative / fps));
        }
        _renderTargetUpdateRaWait();
    }
    _textVisibleRaWait(true);
}

void MVNProducerText::resetRender(int) { _textVisibleRaWait(false); }

void MVNProducerText::setActive(bool active, bool, int, int) { setBoolean("_active", active); }

MVNProducer* MVNProducerText::_alloc() {
    return new MVNProducerText(mProfile, getInt32("zOrder", 0), getBoolean("textThree", false), _fontInfo.fontFile,
                               _fontInfo.backupPath, true);
}

void MVNProducerText::_checkTextRenderVisibleRaWait(int frame) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&] { runGuarded("checkTextRenderVisible", [&] { _checkTextRenderVisible(frame); }); }, "checkTextRenderVisible");
}

void MVNProducerText::_renderTargetUpdateRaWait() {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&] { runGuarded("renderTargetUpdate", [&] { _renderTargetUpdate(); }); }, "renderTargetUpdate");
}

void MVNProducerText::_textVisibleRaWait(bool visible) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&] { runGuarded("_textVisibleRaWait", [&] { _textVisible(visible); }); }, "_textVisibleRaWait");
}

void MVNProducerText::_textVisible(bool visible) {
    if (_sceneManager == nullptr) return;
    if (_sceneManager->hasSceneNode(_nodeName)) _sceneManager->getSceneNode(_nodeName)->setVisible(visible, true);
    if ((_titleVideoOn || _titleImageOn) && _sceneManager->hasSceneNode(_titleNodeName))
        _sceneManager->getSceneNode(_titleNodeName)->setVisible(visible, true);
}

void MVNProducerText::_renderTargetUpdate() {
    Ogre::RenderTarget* target = TextUtils::getRenderTarget("_TextRttTrackTexture" + _zSuffix());
    if (target != nullptr) target->update(true);
}

void MVNProducerText::_checkTextRenderVisible(int frame) {
    Ogre::SceneManager* mgr = getRttMgr();
    Ogre::SceneNode* index = getRttIndexNode();
    if (mgr == nullptr || index == nullptr) return;
    const bool editing = getBoolean("_textEditStatus", false);
    const int type = getInt32("textAnimationType", 0);
    const bool printing = type == 10 || type == 23;
    bool redraw = false;
    const std::string mine = "animation" + _fontInfo.textID;
    if (!editing) {
        for (auto& state : mgr->getAnimationStates()) {
            Ogre::AnimationState* s = state.second;
            if (s->getAnimationName() == mine) {
                if (!s->getEnabled()) {
                    index->resetToInitialState();
                    s->setEnabled(true);
                    if (_textEffect.matEffect()) _textEffect.restore(false);
                }
            } else if (s->getEnabled()) {
                s->setEnabled(false);
            }
        }
    } else {
        // The user edits the text as it stands once it has come in.
        index->resetToInitialState();
        for (auto& state : mgr->getAnimationStates()) state.second->setEnabled(false);
        if (_textEffect.matEffect()) _textEffect.restore(true);
        else _textEffect.showFinal(static_cast<unsigned>(type));
        redraw = true;
    }
    // One clip owns the shared track scene at a time: show ours, hide the
    // other clips' nodes.
    for (Ogre::Node* child : mgr->getRootSceneNode()->getChildren()) {
        const std::string& name = child->getName();
        if (name == "TextRttCamera" || name == "MeshPointNode" || name == "MeshSpecularNode") continue;
        Ogre::SceneNode* node = static_cast<Ogre::SceneNode*>(child);
        if (name != _rttNodeName) {
            node->setVisible(false, true);
        } else if (printing) {
            // A print starts from no glyph; its track shows them one by one.
            if (editing || frame == 0) {
                node->setVisible(editing, true);
                redraw = true;
            }
        } else {
            bool hidden = false;
            for (Ogre::Node* glyph : node->getChildren()) {
                Ogre::SceneNode* g = static_cast<Ogre::SceneNode*>(glyph);
                if (g->numAttachedObjects() > 0 && !g->getAttachedObject(0)->getVisible()) hidden = true;
            }
            if (hidden) {
                node->setVisible(true, true);
                redraw = true;
            }
        }
    }
    if (redraw) _renderTargetUpdate();
}

void MVNProducerText::_OnVisibleChanged(bool visible) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&] {
            runGuarded("_OnVisibleChanged", [&] {
                Ogre::SceneNode* index = getRttIndexNode();
                if (index != nullptr) {
                    index->setVisible(visible, true);
                    _renderTargetUpdate();
                }
                _textVisible(visible);
            });
        },
        "_textVisibleRaWait");
}

// ---- property reactions ----

int MVNProducerText::_reconfigTextStatus(const char* name) {
    if (_sceneManager == nullptr || !_sceneManager->hasSceneNode(_nodeName)) return -1;
    auto is = [name](const char* key) { return std::strcmp(name, key) == 0; };
    try {
        if (is("textFontFile") || is("textBackupPath") || is("textDepth") || is("textBold") || is("textLean") ||
            is("textSize") || is("textOutlineSize") || is("textSpace") || is("textRowSpace") || is("textAlignType") ||
            is("textVerticalAlign")) {
            _fontInfo.fontFile = getString("textFontFile", _fontInfo.fontFile);
            _fontInfo.backupPath = getString("textBackupPath", _fontInfo.backupPath);
            _glyphCache.clear();
            _outlineGlyphCache.clear();
            _updateTextNode();
        } else if (is("textString")) {
            _updateTextNode();
        } else if (is("textWstring")) {
            if (getString("textString", "").empty()) {
                block();
                setString("textString", getString("textWstring", ""));
                unblock();
            }
            _updateTextNode();
        } else if (is("textThree")) {
            _releaseTextMesh(_fontInfo.zOrder);
            _releaseTextOutScene();
            _textUpdate();
        } else if (is("_textNeedReBuild") || is("textAnimationType")) {
            _computeNeedRtt();
            _releaseTextMesh(_fontInfo.zOrder);
            _releaseTextOutScene();
            _textUpdate();
            if (is("textAnimationType")) _updateAnimation("textAnimationType");
            if (!_needRtt) _setAlphaRejection();
        } else if (is("zOrder")) {
            int z = getInt32("zOrder", 0);
            if (_needRtt) {
                _releaseTextMesh(_fontInfo.zOrder);
                _fontInfo.zOrder = z;
                _textChangeTrack();
                _updateAnimation("textAnimationType");
            } else {
                Ogre::SceneNode* node = _sceneManager->getSceneNode(_nodeName);
                const size_t count = node->numChildren();
                for (size_t i = 0; i < count; ++i) {
                    Ogre::SceneNode* child = static_cast<Ogre::SceneNode*>(node->getChild(static_cast<unsigned short>(i)));
                    if (child->numAttachedObjects() == 0) continue;
                    int priority = z;  // outline glyphs sort behind the fill by depth
                    child->getAttachedObject(0)->setRenderQueueGroupAndPriority(
                        50, static_cast<Ogre::ushort>(std::max(priority, 0)));
                }
                if (_sceneManager->hasEntity("mOutBoxEnt" + _fontInfo.textID))
                    _sceneManager->getEntity("mOutBoxEnt" + _fontInfo.textID)
                        ->setRenderQueueGroupAndPriority(50, static_cast<Ogre::ushort>(std::max(z - 5, 0)));
                if (_sceneManager->hasEntity("mOutTitleEnt" + _fontInfo.textID))
                    _sceneManager->getEntity("mOutTitleEnt" + _fontInfo.textID)
                        ->setRenderQueueGroupAndPriority(50, static_cast<Ogre::ushort>(std::max(z - 4, 0)));
                _fontInfo.zOrder = z;
            }
            _updateTextGeo(_geometry);
            _setTextTitleGeo(getRect("textBgGeometry", MVNRect()));
        } else if (is("textRoll")) {
            Ogre::SceneNode* node = _sceneManager->getSceneNode(_nodeName);
            node->resetOrientation();
            node->roll(Ogre::Degree(static_cast<float>(getDouble("textRoll", 0))));
        } else if (is("textThreePitch") || is("textThreeYaw")) {
            _placeIndexNode(false);
        } else if (is("textBgGeometry")) {
            _setTextTitleGeo(getRect("textBgGeometry", MVNRect()));
        } else if (is("textTitleVideoPath") || is("textTitleMaskVideoPath")) {
            _updateTextTitleVideo();
        } else if (is("textTitleImagePath") || is("textTitleImageName")) {
            _updateTextTitleImage();
        } else if (is("textBgAngle")) {
            if (_sceneManager->hasSceneNode(_titleNodeName)) {
                Ogre::SceneNode* node = _sceneManager->getSceneNode(_titleNodeName);
                node->resetOrientation();
                node->roll(Ogre::Degree(static_cast<float>(getDouble("textBgAngle", 0))));
            }
        } else if (is("textThreeLightSize")) {
            Ogre::SceneManager* mgr = getRttMgr();
            float a = static_cast<float>(getInt32("textThreeLightSize", 50) * 0.006);
            if (mgr != nullptr) mgr->setAmbientLight(Ogre::ColourValue(a, a, a, 1.0f));
        } else if (is("textColorBase")) {
            _setMaterialColours(_rttMatName, true);
            _updateAnimation("textAnimationType");
        } else if (is("textColorOutline")) {
            _setMaterialColours(_rttOutlineMatName, false);
        } else if (is("textBgColor")) {
            Ogre::ColourValue c = toColourValue(getColor("textBgColor", MVNColor4B(127, 127, 127, 0)));
            const std::string box = "mOutBoxCol" + _fontInfo.textID;
            TextUtils::setMaterialFloat(box, 0, "colR", c.r);
            TextUtils::setMaterialFloat(box, 0, "colG", c.g);
            TextUtils::setMaterialFloat(box, 0, "colB", c.b);
            TextUtils::setMaterialFloat(box, 0, "colA", c.a);
        } else if (is("TextDiffuseValue") || is("TextSpecularValue")) {
            if (getBoolean("textThree", false)) _setMaterialColours(_rttMatName, true);
        } else if (is("in") || is("out") || is("textAnimationFirstEndTime") || is("textAnimationSecendStartTime") ||
                   is("textAnimationStartTime") || is("textAnimationEndTime") || is("AnimTextKaLaOkCol")) {
            _updateAnimation("textAnimationType");
        }
    } catch (const std::exception& e) {
        log_error(kTag, "%s", (std::string("Error occurred during execution: ") + e.what()).c_str());
        _releaseTextOutScene();
        _releaseTextMesh(_fontInfo.zOrder);
        block();
        setBoolean("_textErrorStatus", true);
        unblock();
        return -1;
    }
    return 0;
}

int MVNProducerText::_textUpdate() {
    _fontInfo.zOrder = getInt32("zOrder", 0);
    if (_textOgreRttInit() != 0 || _textOgreMVNOreInit() != 0) return -1;
    _fontInfo.fontFile = getString("textFontFile", _fontInfo.fontFile);
    _fontInfo.backupPath = getString("textBackupPath", _fontInfo.backupPath);
    _updateTextNode();
    _updateTextTitleVideo();
    _updateTextTitleImage();
    return 0;
}

// ---- geometry ----

void MVNProducerText::_OnGeometryChanged(const MVNRect& rect) {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    MVNRect world = manager->adjustGeometryProfileToWorld(rect);
    float cx = world.x + world.width / 2.0f, cy = world.y + world.height / 2.0f;
    float d = manager->getCameraDistance();
    int z = getInt32("zOrder", 0);
    float scale = d > 0 ? (d - z) / d : 1.0f;
    _textPosition[0] = cx * scale;
    _textPosition[1] = cy * scale;
    _textPosition[2] = static_cast<float>(z);
    _textObjInfo.canvasWidth = rect.width;
    _textObjInfo.canvasHeight = rect.height;
    try {
        _reconfigTextGeoRenderableWait(rect);
    } catch (const std::exception& e) {
        log_error(kTag, "_OnGeometryChanged catch error: %s",
                  (std::string("Error occurred during execution: ") + e.what()).c_str());
    }
    block();
    setInt32("_textGeoPlaneWidth", static_cast<int>(rect.width));
    setInt32("_textGeoPlaneHeight", static_cast<int>(rect.height));
    unblock();
    _geometry = rect;
}

int MVNProducerText::_reconfigTextGeoRenderableWait(const MVNRect& rect) {
    int result = -1;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&] { runGuarded("_reconfigTextGeo", [&] { result = _reconfigTextGeo(rect); }); }, "_reconfigTextGeo");
    return result;
}

}  // namespace Morvane
