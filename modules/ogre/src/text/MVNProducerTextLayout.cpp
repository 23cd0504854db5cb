// From text properties to glyph meshes: the two rebuild paths (direct and
// through the track scene), one pass of the font classes, and the text box
// that follows the clip's geometry.
#include <OgreEntity.h>
#include <OgreMeshManager.h>
#include <OgreSceneManager.h>

#include <cmath>
#include <memory>

#include "core/MVNGeometry.h"
#include "core/MVNLog.h"
#include "core/MVNUtils.h"
#include "engine/MVNOgreManager.h"
#include "text/MVNProducerText.h"
#include "text/TextUtils.h"
#include "text/fonts/FTExtrudeFont.h"
#include "text/fonts/FTPolygonFont.h"
#include "text/fonts/FTTriangleExtractorFont.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerText";
}  // namespace

int MVNProducerText::_updateTextNode() {
    if (_needRtt) _updateRttObjNode();
    else _updateMorvaneObjNode();
    return 0;
}

int MVNProducerText::_updateMorvaneObjNode() {
    if (_sceneManager == nullptr || !_sceneManager->hasSceneNode(_nodeName)) return -1;
    _destroyGlyphs(_sceneManager->getSceneNode(_nodeName));
    if (_createTextObj(_fontInfo, _textObjInfo, false) != 0) return -1;
    if (getDouble("textOutlineSize", 0) > 0 && _createTextObj(_fontInfo, _textObjInfo, true) != 0) return -1;
    return 0;
}

int MVNProducerText::_updateRttObjNode() {
    Ogre::SceneNode* index = getRttIndexNode();
    if (index == nullptr) return -1;
    _destroyGlyphs(index);
    if (_createTextObj(_fontInfo, _textObjInfo, false) != 0) return -1;
    if (getDouble("textOutlineSize", 0) > 0 && _createTextObj(_fontInfo, _textObjInfo, true) != 0) return -1;
    if (getBoolean("textThree", false)) _placeIndexNode(true);
    _updateAnimation("textAnimationType");
    _renderTargetUpdate();
    return 0;
}

// The extruded text is pushed towards the camera by as much as it can reach
// behind its plane when turned, so that no part of it is clipped.
void MVNProducerText::_placeIndexNode(bool moveLights) {
    Ogre::SceneNode* index = getRttIndexNode();
    if (index == nullptr) return;
    const double yaw = getDouble("textThreeYaw", 0), pitch = getDouble("textThreePitch", 0);
    const int z0 = _fontInfo.zOrder;
    float a = static_cast<float>(std::fabs(std::sin(yaw * 0.017453292)) * _textObjInfo.actualMaxWidth + z0);
    float b = static_cast<float>(getInt32("textDepth", 15) * 5 + z0);
    float z = std::max(std::max(a, b), _textObjInfo.actualMaxHeight);
    index->resetOrientation();
    index->pitch(Ogre::Degree(static_cast<float>(pitch)), Ogre::Node::TS_LOCAL);
    index->yaw(Ogre::Degree(static_cast<float>(yaw)), Ogre::Node::TS_LOCAL);
    index->setPosition(0, 0, z);
    index->setInitialState();
    if (!moveLights) return;
    Ogre::SceneManager* mgr = getRttMgr();
    if (mgr->hasSceneNode("MeshPointNode") && mgr->hasSceneNode("MeshSpecularNode")) {
        mgr->getSceneNode("MeshPointNode")->setPosition(0, 0, 300 + z);
        mgr->getSceneNode("MeshSpecularNode")->setPosition(0, 0, 100 + z);
    }
}

int MVNProducerText::_createTextObj(FontInfo info, TextObjInfo& obj, bool outline) {
    bool perGlyph = getInt32("textAnimationType", 0) == 10 || getInt32("textAnimationType", 0) == 23;
    const bool three = getBoolean("textThree", false);
    std::unique_ptr<FTFont> font;
    if (three) {
        font.reset(new FTExtrudeFont(info.fontFile, info.backupPath));
        perGlyph = true;
    } else if (outline) {
        font.reset(new FTPolygonFont(info.fontFile, info.backupPath));
    } else {
        font.reset(new FTTriangleExtractorFont(info.fontFile, info.backupPath));
    }
    if (font->Error() != 0 || font->BackupError() != 0) {
        log_error(kTag, "text path is error");
        return -1;
    }
    font->CharMap(FT_ENCODING_UNICODE);
    font->setBold(getBoolean("textBold", false));
    font->setLean(getBoolean("textLean", false));
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    int winW = manager->getRenderWindowWidth(), winH = manager->getRenderWindowHeight();
    int size = convertFontSizeProfileToScreen(getInt32("textSize", 72), mProfile.width(), mProfile.height(),
                                              winW > 0 ? winW : mProfile.width(), winH > 0 ? winH : mProfile.height());
    font->FaceSize(static_cast<unsigned int>(std::max(size, 1)), 72);
    font->setZOrder(getInt32("zOrder", 0));
    font->setDirect(!_needRtt);
    font->setTextID(info.textID);
    FTGlyphCacheMap& cache = outline ? _outlineGlyphCache : _glyphCache;
    font->setGlyphCache(cache);
    font->setCanvasWidth(obj.canvasWidth);
    font->setCanvasHeight(obj.canvasHeight);
    font->setThree(three);
    font->Depth(static_cast<float>(getInt32("textDepth", 15) * 5.0));
    font->setOutlinePass(outline);
    font->Outset(static_cast<float>(getDouble("textOutlineSize", 0)));
    if (font->Error() != 0 || font->BackupError() != 0) return -1;
    FTPoint3 position{0, 0, 0};
    FTPoint3 spacing{static_cast<float>(getInt32("textSpace", 0)), static_cast<float>(getInt32("textRowSpace", 0)), 0};
    std::wstring wide = to_wideStr(getString("textString", ""));
    std::u32string text(wide.begin(), wide.end());
    const int align = getInt32("textAlignType", 2);
    if (getBoolean("textVerticalAlign", false)) font->renderColumns(text, perGlyph, _maxChars, position, spacing, align);
    else font->renderRows(text, perGlyph, _maxChars, position, spacing, align);
    if (font->Error() != 0 && font->BackupError() != 0) {
        log_error(kTag, "Text Render Error dont support this char");
        return -1;
    }
    font->getGlyphCache(cache);
    font->getTextObjInfo(obj.actualMaxWidth, obj.actualMaxHeight, obj.maxAdvance, obj.rowHeight);
    block();
    setDouble("_textActualMaxWidth", obj.actualMaxWidth);
    setDouble("_textActualMaxHeight", obj.actualMaxHeight);
    unblock();
    return 0;
}

int MVNProducerText::_reconfigTextGeo(const MVNRect& rect) {
    if (_sceneManager == nullptr || !_sceneManager->hasSceneNode(_nodeName)) return 0;
    Ogre::SceneNode* node = _sceneManager->getSceneNode(_nodeName);
    const std::string& id = _fontInfo.textID;
    const float profileW = static_cast<float>(mProfile.width()), profileH = static_cast<float>(mProfile.height());
    if (static_cast<int>(rect.width) != getInt32("_textGeoPlaneWidth", 0) ||
        static_cast<int>(rect.height) != getInt32("_textGeoPlaneHeight", 0)) {
        // The window is centred on the render texture: where the text sits
        // is the node's business, not the window's.
        _canvasMinX = ((profileW - rect.width) / profileW) / 2.0f;
        _canvasMaxX = rect.width / profileW + _canvasMinX;
        _canvasMinY = ((profileH - rect.height) / profileH) / 2.0f;
        _canvasMaxY = rect.height / profileH + _canvasMinY;
        if (rect.width > profileW) _canvasMinX = 0, _canvasMaxX = 1;
        if (rect.height > profileH) _canvasMinY = 0, _canvasMaxY = 1;
        if (rect.width <= 0) _canvasMinX = _canvasMaxX = 0;
        if (rect.height <= 0) _canvasMinY = _canvasMaxY = 0;
        const int z = _fontInfo.zOrder;
        TextUtils::removeEntity(_sceneManager, "mOutBoxEnt" + id);
        TextUtils::removeMesh("mOutBoxPlane" + id);
        // On the text node, at the text's depth: the plane holds the rest.
        Ogre::Plane plane(Ogre::Vector3::UNIT_Z, _boxDepth(z) - z);
        if (rect.width > 0 && rect.height > 0) {
            Ogre::MeshManager::getSingleton().createPlane("mOutBoxPlane" + id, "General", plane, rect.width, rect.height,
                                                          1, 1, true, 1, 1, 1, Ogre::Vector3::UNIT_Y);
        }
        node->detachAllObjects();
        if (_needRtt) {
            if (!_sceneManager->hasEntity("mOutEnt" + id)) return -1;
            node->attachObject(_sceneManager->getEntity("mOutEnt" + id));
        }
        if (rect.width > 0 && rect.height > 0) {
            Ogre::Entity* box = _sceneManager->createEntity("mOutBoxEnt" + id, "mOutBoxPlane" + id);
            box->setRenderQueueGroupAndPriority(50, static_cast<Ogre::ushort>(std::max(z - 5, 0)));
            box->setMaterialName("mOutBoxCol" + id);
            node->attachObject(box);
        }
        if (_needRtt) _setCanvasUniforms();
        // Centred rows do not depend on the box; the other layouts do.
        if (getInt32("textAlignType", 2) != 2 || getBoolean("textVerticalAlign", false)) _updateTextNode();
    }
    node->setPosition(_textPosition[0], _textPosition[1], _textPosition[2]);
    _updateAnimation("textAnimationType");
    return 0;
}

int MVNProducerText::_updateTextGeo(const MVNRect& rect) {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    MVNRect world = manager->adjustGeometryProfileToWorld(rect);
    float d = manager->getCameraDistance();
    const int z = _fontInfo.zOrder;
    float scale = d > 0 ? (d - z) / d : 1.0f;
    _textPosition[0] = (world.x + world.width / 2.0f) * scale;
    _textPosition[1] = (world.y + world.height / 2.0f) * scale;
    _textPosition[2] = static_cast<float>(z);
    _textObjInfo.canvasWidth = rect.width;
    _textObjInfo.canvasHeight = rect.height;
    // The box is rebuilt for the new depth even when its size stays.
    block();
    setInt32("_textGeoPlaneWidth", -1);
    unblock();
    if (_sceneManager != nullptr && _sceneManager->hasSceneNode(_nodeName)) _reconfigTextGeo(rect);
    block();
    setInt32("_textGeoPlaneWidth", static_cast<int>(rect.width));
    setInt32("_textGeoPlaneHeight", static_cast<int>(rect.height));
    unblock();
    return 0;
}

}  // namespace Morvane
