// The engine side of a text clip besides its glyphs: the track scene shared
// by the text clips of one zOrder (camera, lights, render texture), the
// clip's materials, the plane and background box in the main scene, and
// their release in order.
#include <OgreCamera.h>
#include <OgreEntity.h>
#include <OgreHardwarePixelBuffer.h>
#include <OgreLight.h>
#include <OgreMaterialManager.h>
#include <OgreMeshManager.h>
#include <OgreRenderTexture.h>
#include <OgreRoot.h>
#include <OgreSceneManager.h>
#include <OgreTechnique.h>
#include <OgreTextureManager.h>
#include <OgreViewport.h>

#include <cmath>

#include "core/MVNColor4B.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "text/MVNProducerText.h"
#include "text/TextUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerText";
const char* const kGroup = "General";
// The depth buffers of the track textures, apart from every other target's;
// the tracks share them, as each clears its depth on every draw.
const Ogre::uint16 kTrackDepthPool = 0x7e47;

Ogre::ushort priority(int value) { return static_cast<Ogre::ushort>(value < 0 ? 0 : value); }

Ogre::ColourValue toColourValue(MVNColor4B c) {
    return Ogre::ColourValue(c.r / 255.0f, c.g / 255.0f, c.b / 255.0f, c.a / 255.0f);
}
}  // namespace

Ogre::SceneManager* MVNProducerText::getRttMgr() {
    const std::string name = "_TextRttTrackMgr" + _zSuffix();
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    return root != nullptr && root->hasSceneManager(name) ? root->getSceneManager(name) : nullptr;
}

Ogre::SceneNode* MVNProducerText::getRttIndexNode() {
    Ogre::SceneManager* mgr = getRttMgr();
    return mgr != nullptr && mgr->hasSceneNode(_rttNodeName) ? mgr->getSceneNode(_rttNodeName) : nullptr;
}

int MVNProducerText::_textOgreRttInit() {
    const int profileW = mProfile.width(), profileH = mProfile.height();
    if (_needRtt) {
        Ogre::Root& root = Ogre::Root::getSingleton();
        const std::string mgrName = "_TextRttTrackMgr" + _zSuffix();
        if (!root.hasSceneManager(mgrName)) {
            // The first clip of the track makes the scene; one world unit is
            // one profile pixel in the plane z 0, as in the main scene.
            Ogre::SceneManager* mgr = root.createSceneManager("DefaultSceneManager", mgrName);
            Ogre::Camera* camera = mgr->createCamera("MeshCam");
            // Extruded text turned in depth, and a flat text's outline,
            // reach behind z 0, and an extruded glyph needs its depth
            // resolved finer than a unit where it stands, 10000 away: the
            // near plane is far enough out for that (a 24-bit depth buffer
            // then steps by some 0.06 units there) and the far plane lies
            // as far behind z 0 as the camera is in front.
            camera->setNearClipDistance(100);
            camera->setFarClipDistance(20000);
            camera->setAutoAspectRatio(true);
            camera->setFOVy(Ogre::Radian(2.0f * std::atan((profileH / 2) / 10000.0f)));
            mgr->getRootSceneNode()->createChildSceneNode("TextRttCamera", Ogre::Vector3(0, 0, 10000))->attachObject(camera);
            Ogre::Light* point = mgr->createLight("MeshPointLight");
            point->setType(Ogre::Light::LT_POINT);
            point->setSpecularColour(0.5f, 0.5f, 0.5f);
            point->setDiffuseColour(0.5f, 0.5f, 0.5f);
            mgr->getRootSceneNode()->createChildSceneNode("MeshPointNode", Ogre::Vector3(0, 0, 300))->attachObject(point);
            Ogre::Light* spot = mgr->createLight("MeshSpecularlight");
            spot->setType(Ogre::Light::LT_SPOTLIGHT);
            spot->setDiffuseColour(0.7f, 0.7f, 0.7f);
            spot->setSpecularColour(0.7f, 0.7f, 0.7f);
            spot->setSpotlightRange(Ogre::Degree(15), Ogre::Degree(120), 1.0f);
            mgr->getRootSceneNode()->createChildSceneNode("MeshSpecularNode", Ogre::Vector3(0, 0, 200))->attachObject(spot);
            // Multisampled like the composition: the glyph edges are drawn
            // here, and the plane that shows this texture can't smooth them.
            // The GL render system lends one multisampled colour buffer to
            // every target of this size and sample count: each draw here is
            // resolved into the texture at once (update with swap), before
            // another target draws.
            MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
            Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().createManual(
                "_TextRttTrackTexture" + _zSuffix(), kGroup, Ogre::TEX_TYPE_2D, profileW, profileH, 1, 0,
                Ogre::PF_A8R8G8B8, Ogre::TU_RENDERTARGET, nullptr, false,
                context != nullptr ? context->chooseAntiAliasingLevel() : 0, "");
            Ogre::RenderTarget* target = texture->getBuffer()->getRenderTarget();
            // Extruded glyphs write depth. In the default pool this texture
            // would share its depth buffer with the composition's texture of
            // the same size and samples, which clears depth only while its
            // own scene writes depth: the text planes would then be tested
            // against the glyphs' depth and vanish where the caps are.
            target->setDepthBufferPool(kTrackDepthPool);
            Ogre::Viewport* viewport = target->addViewport(camera, 0, 0, 0, 1, 1);
            viewport->setBackgroundColour(Ogre::ColourValue::ZERO);
            viewport->setOverlaysEnabled(false);
            // Drawn only when a clip of the track asks (renderTargetUpdate).
            target->setAutoUpdated(false);
        }
        Ogre::SceneManager* mgr = getRttMgr();
        if (mgr == nullptr) {
            log_error(kTag, "text Rtt SceneManager is Null");
            return -1;
        }
        float ambient = static_cast<float>(getInt32("textThreeLightSize", 50) * 0.006);
        mgr->setAmbientLight(Ogre::ColourValue(ambient, ambient, ambient, 1.0f));
        if (!mgr->hasSceneNode(_rttNodeName))
            mgr->getRootSceneNode()->createChildSceneNode(_rttNodeName, Ogre::Vector3(0, 0, static_cast<float>(_fontInfo.zOrder)));
    }
    _setMaterialColours(_rttMatName, true);
    _setMaterialColours(_rttOutlineMatName, false);
    return 0;
}

void MVNProducerText::_setMaterialColours(const std::string& name, bool fill) {
    Ogre::ColourValue c = fill ? toColourValue(getColor("textColorBase", MVNColor4B(0, 0, 0, 1)))
                               : toColourValue(getColor("textColorOutline", MVNColor4B(0, 0, 0, 1)));
    Ogre::MaterialManager& manager = Ogre::MaterialManager::getSingleton();
    Ogre::MaterialPtr material = manager.getByName(name, kGroup);
    const bool three = fill && getBoolean("textThree", false);
    if (!material) {
        material = manager.create(name, kGroup);
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        pass->setCullingMode(Ogre::CULL_NONE);
        if (!three) {
            pass->setLightingEnabled(false);
            // Glyphs sort by priority with the quads, like every clip.
            pass->setDepthWriteEnabled(false);
            // Sorted back to front with the clips' quads: the outline, one
            // unit behind, is drawn before the fill.
            pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
            // In a track texture the coverage adds up in alpha, so that a
            // fading text fades to nothing rather than to black.
            if (_needRtt)
                pass->setSeparateSceneBlending(Ogre::SBF_SOURCE_ALPHA, Ogre::SBF_ONE_MINUS_SOURCE_ALPHA, Ogre::SBF_ONE,
                                               Ogre::SBF_ONE_MINUS_SOURCE_ALPHA);
            pass->setVertexProgram("RectTemplate_Text_VP");
            pass->setFragmentProgram("TextMeshMat_FP");
        } else {
            pass->setLightingEnabled(true);
            // Opaque while its alpha is 1; a fade lets the track texture's
            // alpha follow the diffuse alpha.
            pass->setSeparateSceneBlending(Ogre::SBF_SOURCE_ALPHA, Ogre::SBF_ONE_MINUS_SOURCE_ALPHA, Ogre::SBF_ONE,
                                           Ogre::SBF_ONE_MINUS_SOURCE_ALPHA);
        }
        material->load();
    }
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    if (three) {
        const float d = static_cast<float>(getDouble("TextDiffuseValue", 0.2));
        const float s = static_cast<float>(getDouble("TextSpecularValue", 0.24));
        pass->setAmbient(Ogre::ColourValue(c.r, c.g, c.b, 1));
        pass->setDiffuse(Ogre::ColourValue(c.r * d, c.g * d, c.b * d, 1));
        pass->setSpecular(Ogre::ColourValue(c.r * s, c.g * s, c.b * s, 1));
        return;
    }
    TextUtils::setMaterialFloat(name, 0, "colR", c.r);
    TextUtils::setMaterialFloat(name, 0, "colG", c.g);
    TextUtils::setMaterialFloat(name, 0, "colB", c.b);
    TextUtils::setMaterialFloat(name, 0, "colA", c.a);
}

void MVNProducerText::_setAlphaRejection() {
    for (const std::string& name : {_rttMatName, _rttOutlineMatName}) {
        Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(name, kGroup);
        if (!material) continue;
        material->getTechnique(0)->getPass(0)->setAlphaRejectSettings(Ogre::CMPF_GREATER_EQUAL, 0, true);
    }
}

int MVNProducerText::_textOgreMVNOreInit() {
    if (_sceneManager == nullptr) return -1;
    const std::string& id = _fontInfo.textID;
    const int z = _fontInfo.zOrder;
    if (!_sceneManager->hasSceneNode(_nodeName)) _sceneManager->getRootSceneNode()->createChildSceneNode(_nodeName);
    Ogre::SceneNode* node = _sceneManager->getSceneNode(_nodeName);
    Ogre::MaterialManager& materials = Ogre::MaterialManager::getSingleton();
    if (_needRtt && !materials.resourceExists("mOutMat" + id, kGroup)) {
        Ogre::MaterialPtr material = materials.create("mOutMat" + id, kGroup);
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        pass->setLightingEnabled(false);
        pass->setDepthWriteEnabled(false);
        pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
        pass->setVertexProgram("RectTemplate_Text_VP");
        pass->setFragmentProgram("TextOutMat_FP");
        pass->createTextureUnitState("_TextRttTrackTexture" + _zSuffix())
            ->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
        material->load();
        // In the plane of the text node, which stands at the zOrder: as much
        // smaller as it is nearer the camera, so that the texture's pixels
        // fall on the frame's one to one and the text is not resampled.
        const float d = MVNOgreManager::getSingleton()->getCameraDistance();
        const float scale = d > 0 ? (d - z) / d : 1.0f;
        Ogre::Plane plane(Ogre::Vector3::UNIT_Z, 0.0f);
        Ogre::MeshManager::getSingleton().createPlane("mOutPlane" + id, kGroup, plane, mProfile.width() * scale,
                                                      mProfile.height() * scale, 1, 1, true, 1, 1, 1,
                                                      Ogre::Vector3::UNIT_Y);
        Ogre::Entity* entity = _sceneManager->createEntity("mOutEnt" + id, "mOutPlane" + id);
        entity->setMaterialName("mOutMat" + id);
        entity->setRenderQueueGroupAndPriority(50, priority(z));
        node->attachObject(entity);
    }
    if (!materials.resourceExists("mOutBoxCol" + id, kGroup)) {
        Ogre::MaterialPtr material = materials.create("mOutBoxCol" + id, kGroup);
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        pass->setLightingEnabled(false);
        pass->setDepthWriteEnabled(false);
        pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
        pass->setVertexProgram("RectTemplate_Text_VP");
        pass->setFragmentProgram("TextOutBoxColMat_FP");
        material->setTransparencyCastsShadows(false);
        pass->setTransparentSortingEnabled(false);
        pass->setTransparentSortingForced(true);
        material->load();
        // On the text node, at the text's depth: the plane holds the rest.
        Ogre::Plane plane(Ogre::Vector3::UNIT_Z, _boxDepth(z) - z);
        Ogre::MeshManager::getSingleton().createPlane(
            "mOutBoxPlane" + id, kGroup, plane, static_cast<float>(getInt32("_textGeoPlaneWidth", mProfile.width())),
            static_cast<float>(getInt32("_textGeoPlaneHeight", mProfile.height())), 1, 1, true, 1, 1, 1,
            Ogre::Vector3::UNIT_Y);
        Ogre::Entity* entity = _sceneManager->createEntity("mOutBoxEnt" + id, "mOutBoxPlane" + id);
        entity->setMaterialName("mOutBoxCol" + id);
        entity->setRenderQueueGroupAndPriority(50, priority(z - 5));
        node->attachObject(entity);
    }
    node->resetOrientation();
    node->setPosition(_textPosition[0], _textPosition[1], _textPosition[2]);
    node->roll(Ogre::Degree(static_cast<float>(getDouble("textRoll", 0))));
    node->setVisible(false, true);
    Ogre::ColourValue box = toColourValue(getColor("textBgColor", MVNColor4B(127, 127, 127, 0)));
    TextUtils::setMaterialFloat("mOutBoxCol" + id, 0, "colR", box.r);
    TextUtils::setMaterialFloat("mOutBoxCol" + id, 0, "colG", box.g);
    TextUtils::setMaterialFloat("mOutBoxCol" + id, 0, "colB", box.b);
    TextUtils::setMaterialFloat("mOutBoxCol" + id, 0, "colA", box.a);
    if (_needRtt) _setCanvasUniforms();
    return 0;
}

void MVNProducerText::_setCanvasUniforms() {
    const std::string material = "mOutMat" + _fontInfo.textID;
    TextUtils::setMaterialFloat(material, 0, "textCanvasMaxX", _canvasMaxX);
    TextUtils::setMaterialFloat(material, 0, "textCanvasMinX", _canvasMinX);
    TextUtils::setMaterialFloat(material, 0, "textCanvasMaxY", _canvasMaxY);
    TextUtils::setMaterialFloat(material, 0, "textCanvasMinY", _canvasMinY);
}

int MVNProducerText::_textChangeTrack() {
    if (_textOgreRttInit() != 0 || _updateTextNode() != 0) return -1;
    const std::string& id = _fontInfo.textID;
    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName("mOutMat" + id, kGroup);
    if (!material) return -1;
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    pass->removeAllTextureUnitStates();
    pass->createTextureUnitState("_TextRttTrackTexture" + _zSuffix());
    if (_sceneManager->hasEntity("mOutBoxEnt" + id))
        _sceneManager->getEntity("mOutBoxEnt" + id)->setRenderQueueGroupAndPriority(50, priority(_fontInfo.zOrder - 5));
    if (_sceneManager->hasEntity("mOutTitleEnt" + id))
        _sceneManager->getEntity("mOutTitleEnt" + id)->setRenderQueueGroupAndPriority(50, priority(_fontInfo.zOrder - 4));
    return 0;
}

void MVNProducerText::_destroyGlyphs(Ogre::SceneNode* node) {
    if (node == nullptr) return;
    Ogre::SceneManager* mgr = node->getCreator();
    // The glyph meshes belong to the clip: they go with their entities.
    for (Ogre::Node* child : node->getChildren()) {
        Ogre::SceneNode* glyph = static_cast<Ogre::SceneNode*>(child);
        while (glyph->numAttachedObjects() > 0) {
            Ogre::MovableObject* object = glyph->detachObject(static_cast<unsigned short>(0));
            Ogre::Entity* entity = dynamic_cast<Ogre::Entity*>(object);
            std::string mesh = entity != nullptr ? entity->getMesh()->getName() : std::string();
            mgr->destroyMovableObject(object);
            if (!mesh.empty()) TextUtils::removeMesh(mesh);
        }
    }
    node->removeAndDestroyAllChildren();
}

void MVNProducerText::_releaseTextOutScene() {
    const std::string& id = _fontInfo.textID;
    log_debug(kTag, "_release Text OutScene start textID:%s", id.c_str());
    if (_sceneManager == nullptr) return;
    if (_sceneManager->hasSceneNode(_nodeName)) {
        Ogre::SceneNode* node = _sceneManager->getSceneNode(_nodeName);
        _destroyGlyphs(node);
        node->detachAllObjects();
    }
    TextUtils::removeNode(_sceneManager, _nodeName);
    TextUtils::removeMaterial("mOutMat" + id);
    TextUtils::removeMaterial("mOutBoxCol" + id);
    TextUtils::removeEntity(_sceneManager, "mOutEnt" + id);
    TextUtils::removeEntity(_sceneManager, "mOutBoxEnt" + id);
    TextUtils::removeMesh("mOutPlane" + id);
    TextUtils::removeMesh("mOutBoxPlane" + id);
    log_debug(kTag, "_release Text OutScene end");
}

int MVNProducerText::_releaseTextMesh(int zOrder) {
    log_debug(kTag, "_release Text Mesh Start :%s", getStringId().c_str());
    TextUtils::removeMaterial(_rttMatName);
    TextUtils::removeMaterial(_rttOutlineMatName);
    _glyphCache.clear();
    _outlineGlyphCache.clear();
    const std::string mgrName = "_TextRttTrackMgr" + std::to_string(zOrder);
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (root == nullptr || !root->hasSceneManager(mgrName)) return -1;
    Ogre::SceneManager* mgr = root->getSceneManager(mgrName);
    const std::string animation = "animation" + _fontInfo.textID;
    _textEffect.clear();
    if (mgr->hasAnimationState(animation)) mgr->destroyAnimationState(animation);
    if (mgr->hasAnimation(animation)) mgr->destroyAnimation(animation);
    if (mgr->hasSceneNode(_rttNodeName)) {
        _destroyGlyphs(mgr->getSceneNode(_rttNodeName));
        mgr->destroySceneNode(_rttNodeName);
    }
    // Camera node and two light nodes: nothing else left on the track.
    if (mgr->getRootSceneNode()->numChildren() == 3) {
        TextUtils::removeTexture("_TextRttTrackTexture" + std::to_string(zOrder));
        mgr->clearScene();
        mgr->destroyAllAnimationStates();
        mgr->destroyAllAnimations();
        root->destroySceneManager(mgr);
        log_debug(kTag, "destroySceneManager:mTextMeshMgr%s = %s", getStringId().c_str(), std::to_string(zOrder).c_str());
    }
    log_debug(kTag, "_release Text Mesh End");
    return 0;
}

}  // namespace Morvane
