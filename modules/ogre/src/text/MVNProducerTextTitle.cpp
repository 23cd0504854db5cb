// The title picture of a text clip: a plane in the main scene behind the
// text and in front of the background box, showing a video through its mask
// video or a still image. Video and image share the material, plane and
// entity names: the last one set wins.
#include <OgreEntity.h>
#include <OgreException.h>
#include <OgreMaterialManager.h>
#include <OgreMeshManager.h>
#include <OgreResourceGroupManager.h>
#include <OgreSceneManager.h>
#include <OgreTechnique.h>
#include <OgreTextureManager.h>

#include <algorithm>

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "text/MVNProducerText.h"
#include "text/TextUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerText";
const char* const kGroup = "General";
const char* const kImageGroup = "titleImageGeneral";

Ogre::ushort priority(int value) { return static_cast<Ogre::ushort>(value < 0 ? 0 : value); }

// A fresh material for the title plane: blended over what lies below, never
// hiding the text by depth, drawn in the order of the clips' priorities.
Ogre::Pass* newTitleMaterial(const std::string& name) {
    TextUtils::removeMaterial(name);
    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().create(name, kGroup);
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    pass->setLightingEnabled(false);
    pass->setCullingMode(Ogre::CULL_NONE);
    pass->setDepthWriteEnabled(false);
    pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
    pass->setTransparentSortingEnabled(false);
    pass->setTransparentSortingForced(true);
    return pass;
}
}  // namespace

// The main camera's far clip plane is z 0: whatever lies behind it is not
// drawn. The box and the title stand 5 and 2 units behind their text where
// its zOrder leaves room, as the priorities order them, and else at a quarter
// and a half of the text's depth, still in that order and in sight.
float MVNProducerText::_boxDepth(int zOrder) { return std::max(zOrder - 5.0f, zOrder / 4.0f); }

float MVNProducerText::_titleDepth(int zOrder) { return std::max(zOrder - 2.0f, zOrder / 2.0f); }

Ogre::SceneNode* MVNProducerText::_titleNode() {
    if (_sceneManager == nullptr) return nullptr;
    if (!_sceneManager->hasSceneNode(_titleNodeName)) {
        Ogre::SceneNode* node = _sceneManager->getRootSceneNode()->createChildSceneNode(_titleNodeName);
        // Shown by the clip's visibility step, like the text.
        node->setVisible(false, true);
    }
    return _sceneManager->getSceneNode(_titleNodeName);
}

int MVNProducerText::_updateTextTitleVideo() {
    const std::string path = getString("textTitleVideoPath", ""), mask = getString("textTitleMaskVideoPath", "");
    if (path.empty() || mask.empty()) return 0;
    const std::string& id = _fontInfo.textID;
    const float fps = static_cast<float>(mProfile.fps());
    int rc = _titleDecoder.init(path.c_str(), false, id, fps, mProfile.width(), mProfile.height());
    if (rc == 0) rc = _titleMaskDecoder.init(mask.c_str(), true, id, fps, mProfile.width(), mProfile.height());
    if (rc != 0) {
        _titleVideoOn = false;
    } else {
        Ogre::Pass* pass = newTitleMaterial("mOutTitleMat" + id);
        pass->setVertexProgram("RectTemplate_Text_VP");
        pass->setFragmentProgram("textTitleMat_FP");
        Ogre::SceneNode* node = _titleNode();
        if (node == nullptr) return -1;
        _titleVideoOn = true;
        _titleEditFrame = static_cast<int>(getDouble("textTitleEditImage", 1) * fps) - 1;
        pass->createTextureUnitState("textTitle" + id)->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
        pass->createTextureUnitState("textTitleMask" + id)->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
        pass->getParent()->getParent()->load();
        _buildTitlePlane(node);
    }
    _setTextTitleGeo(getRect("textBgGeometry", MVNRect()));
    return rc;
}

int MVNProducerText::_updateTextTitleImage() {
    const std::string folder = getString("textTitleImagePath", ""), name = getString("textTitleImageName", "");
    const std::string& id = _fontInfo.textID;
    if (folder.empty() || name.empty()) {
        if (_titleImageOn && !_titleVideoOn && _sceneManager != nullptr && _sceneManager->hasSceneNode(_titleNodeName))
            _sceneManager->getSceneNode(_titleNodeName)->setVisible(false, true);
        _titleImageOn = false;
        return 0;
    }
    // The picture is loaded under a name of the clip's own, so that two
    // clips with same-named files in different folders don't share it.
    const std::string texture = "titleImageTexture" + id;
    try {
        Ogre::ResourceGroupManager& groups = Ogre::ResourceGroupManager::getSingleton();
        if (!groups.resourceGroupExists(kImageGroup)) groups.createResourceGroup(kImageGroup, false);
        if (groups.resourceLocationExists(folder, kImageGroup)) groups.removeResourceLocation(folder, kImageGroup);
        groups.addResourceLocation(folder, "FileSystem", kImageGroup, false, true);
        Ogre::Image image;
        image.load(name, kImageGroup);
        TextUtils::removeTexture(texture);
        Ogre::TextureManager::getSingleton().loadImage(texture, kGroup, image, Ogre::TEX_TYPE_2D, 0);
    } catch (const Ogre::Exception& e) {
        log_error(kTag, "title image %s/%s not loaded: %s", folder.c_str(), name.c_str(), e.getDescription().c_str());
        _titleImageOn = false;
        return -1;
    }
    Ogre::Pass* pass = newTitleMaterial("mOutTitleMat" + id);
    pass->createTextureUnitState(texture)->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
    pass->getParent()->getParent()->load();
    Ogre::SceneNode* node = _titleNode();
    if (node == nullptr) return -1;
    _buildTitlePlane(node);
    _titleImageOn = true;
    _setTextTitleGeo(getRect("textBgGeometry", MVNRect()));
    return 0;
}

// Plane "mOutTitlePlane" and entity "mOutTitleEnt" of the current size on
// the title node, at its place and turned by "textBgAngle".
int MVNProducerText::_buildTitlePlane(Ogre::SceneNode* node) {
    const std::string& id = _fontInfo.textID;
    const int z = _fontInfo.zOrder;
    node->detachAllObjects();
    TextUtils::removeEntity(_sceneManager, "mOutTitleEnt" + id);
    TextUtils::removeMesh("mOutTitlePlane" + id);
    if (_titleWidth <= 0 || _titleHeight <= 0) return 0;
    // In the plane of the node, which holds the depth.
    Ogre::Plane plane(Ogre::Vector3::UNIT_Z, 0.0f);
    Ogre::MeshManager::getSingleton().createPlane("mOutTitlePlane" + id, kGroup, plane, _titleWidth, _titleHeight, 1, 1,
                                                  true, 1, 1, 1, Ogre::Vector3::UNIT_Y);
    Ogre::Entity* entity = _sceneManager->createEntity("mOutTitleEnt" + id, "mOutTitlePlane" + id);
    entity->setRenderQueueGroupAndPriority(50, priority(z - 4));
    entity->setMaterialName("mOutTitleMat" + id);
    node->attachObject(entity);
    node->resetOrientation();
    node->setPosition(_titlePosition[0], _titlePosition[1], _titlePosition[2]);
    node->roll(Ogre::Degree(static_cast<float>(getDouble("textBgAngle", 0))));
    return 0;
}

// An empty "textBgGeometry" puts the title behind the whole text box.
int MVNProducerText::_setTextTitleGeo(const MVNRect& requested) {
    const MVNRect rect = requested.width > 0 && requested.height > 0 ? requested : _geometry;
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    const MVNRect world = manager->adjustGeometryProfileToWorld(rect);
    const float cx = world.x + world.width / 2.0f, cy = world.y + world.height / 2.0f;
    const float d = manager->getCameraDistance();
    const float depth = _titleDepth(_fontInfo.zOrder);
    // Nearer the camera than z 0 by `depth`: smaller by as much, so that
    // the title covers its geometry's pixels exactly.
    const float scale = d > 0 ? (d - depth) / d : 1.0f;
    _titlePosition[0] = cx * scale;
    _titlePosition[1] = cy * scale;
    _titlePosition[2] = depth;
    _titleWidth = world.width * scale;
    _titleHeight = world.height * scale;
    if (!(_titleVideoOn || _titleImageOn) || _sceneManager == nullptr || !_sceneManager->hasSceneNode(_titleNodeName))
        return 0;
    return _buildTitlePlane(_sceneManager->getSceneNode(_titleNodeName));
}

// On the clip's reader thread: the decoders read here, only their uploads
// hop to the render thread. While editing, the frame the user chose stands.
void MVNProducerText::_updateTitleFrames(int relative) {
    if (!_titleVideoOn) return;
    const int frame = getBoolean("_textEditStatus", false) ? _titleEditFrame : relative;
    _titleDecoder.update(frame);
    _titleMaskDecoder.update(frame);
}

// Render thread, at the clip's release.
void MVNProducerText::_releaseTextTitle() {
    const std::string& id = _fontInfo.textID;
    _titleDecoder.release();
    _titleMaskDecoder.release();
    if (_sceneManager != nullptr && _sceneManager->hasSceneNode(_titleNodeName))
        _sceneManager->getSceneNode(_titleNodeName)->detachAllObjects();
    TextUtils::removeEntity(_sceneManager, "mOutTitleEnt" + id);
    TextUtils::removeNode(_sceneManager, _titleNodeName);
    TextUtils::removeMesh("mOutTitlePlane" + id);
    TextUtils::removeMaterial("mOutTitleMat" + id);
    TextUtils::removeTexture("titleImageTexture" + id);
    _titleVideoOn = _titleImageOn = false;
}

}  // namespace Morvane
