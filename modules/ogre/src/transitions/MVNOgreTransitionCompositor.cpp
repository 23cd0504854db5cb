#include "transitions/MVNOgreTransitionCompositor.h"

#include <Ogre.h>
#include <OgreCompositionPass.h>
#include <OgreCompositionTargetPass.h>
#include <OgreCompositionTechnique.h>
#include <OgreCompositorManager.h>

#include <cstring>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreTransitionCompositor";

void onRenderThread(std::function<void()> call, const char* name) {
    MVNOgreManager::getSingleton()->callRenderableWait(std::move(call), name);
}
}  // namespace

MVNOgreTransitionCompositor::MVNOgreTransitionCompositor(const std::string& name, int width, int height)
    : name(name), width(width), height(height) {}

MVNOgreTransitionCompositor::~MVNOgreTransitionCompositor() {
    if (sceneNode || material) release();
}

int MVNOgreTransitionCompositor::init() {
    onRenderThread(
        [this]() {
            try {
                _init();
            } catch (const std::exception& e) {
                log_error(kTag, "_init failed: %s", e.what());
            }
        },
        "compInit");
    if (sceneNode == nullptr) {
        log_error(kTag, "MVNOgreTransitionCompositor init failed");
        return -1;
    }
    return 0;
}

int MVNOgreTransitionCompositor::_init() {
    log_debug(kTag, "_init...");
    Ogre::SceneManager* scene = MVNOgreManager::getSingleton()->getOgreContext()->getSceneManager();
    MVNGeneratorStringId* ids = MVNGeneratorStringId::getSingleton();
    textureNoneName = ids->genStringId("CNTextureNone");
    textureAName = ids->genStringId("CNTextureA");
    textureBName = ids->genStringId("CNTextureB");
    meshName = ids->genStringId("CNMesh");
    entityName = ids->genStringId("CNEntity");
    materialName = "Morvane/Material/MorvaneTest";

    Ogre::CompositorPtr compositor = Ogre::CompositorManager::getSingleton().getByName(
        name, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    if (!compositor) {
        log_debug(kTag, "glslCompositor.compositor dont have %s", name.c_str());
        return -1;
    }
    compositor->load();
    Ogre::CompositionTechnique* technique = compositor->getTechnique(0);
    Ogre::CompositionTargetPass* output = technique ? technique->getOutputTargetPass() : nullptr;
    if (output == nullptr || output->getNumPasses() == 0 || !output->getPass(0)->getMaterial()) {
        log_error(kTag, "glslCompositor.compositor dont have material %s", name.c_str());
        return -1;
    }

    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    for (const std::string& texture : {textureNoneName, textureAName, textureBName}) {
        textures.createManual(texture, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D,
                              width, height, 0, Ogre::PF_BYTE_BGRA, Ogre::TU_DYNAMIC_WRITE_ONLY, nullptr, false, 0,
                              "");
    }
    bufferA = textures.getByName(textureAName, Ogre::RGN_DEFAULT)->getBuffer(0, 0);
    bufferB = textures.getByName(textureBName, Ogre::RGN_DEFAULT)->getBuffer(0, 0);

    Ogre::MaterialPtr script = Ogre::MaterialManager::getSingleton().getByName(materialName);
    if (!script) {
        log_error(kTag, "not find material %s", materialName.c_str());
        return -1;
    }
    Ogre::Pass* pass = script->getTechnique(0)->getPass(0);
    pass->setLightingEnabled(false);
    pass->createTextureUnitState(textureAName, 0);
    pass->createTextureUnitState(textureBName, 0);
    script->load(false);

    Ogre::Plane plane(Ogre::Vector3::UNIT_Z, 1.0f);
    Ogre::MeshManager::getSingleton().createPlane(
        meshName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, plane, static_cast<float>(width),
        static_cast<float>(height), 1, 1, true, 1, 1.0f, 1.0f, Ogre::Vector3::UNIT_Y,
        Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY, false, false);
    Ogre::Entity* entity = scene->createEntity(entityName, meshName);
    entity->setMaterial(script);
    Ogre::SceneNode* node =
        scene->getRootSceneNode()->createChildSceneNode(Ogre::Vector3::ZERO, Ogre::Quaternion::IDENTITY);
    node->attachObject(entity);
    material = script;
    sceneNode = node;
    log_debug(kTag, "_init done");
    return 0;
}

void MVNOgreTransitionCompositor::release() {
    onRenderThread([this]() { _release(); }, "compRelease");
}

void MVNOgreTransitionCompositor::_release() {
    Ogre::SceneManager* scene = MVNOgreManager::getSingleton()->getOgreContext()->getSceneManager();
    if (sceneNode && scene) {
        sceneNode->detachAllObjects();
        scene->getRootSceneNode()->removeAndDestroyChild(sceneNode);
        if (scene->hasEntity(entityName)) scene->destroyEntity(entityName);
    }
    sceneNode = nullptr;
    Ogre::MeshManager& meshes = Ogre::MeshManager::getSingleton();
    if (meshes.resourceExists(meshName, Ogre::RGN_DEFAULT)) meshes.remove(meshName, Ogre::RGN_DEFAULT);
    if (material) {
        // The script is shared: it gets back the pass it had.
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        pass->removeAllTextureUnitStates();
        material.reset();
    }
    bufferA.reset();
    bufferB.reset();
    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    for (const std::string& texture : {textureNoneName, textureAName, textureBName}) {
        if (!texture.empty() && textures.resourceExists(texture, Ogre::RGN_DEFAULT)) {
            textures.remove(texture, Ogre::RGN_DEFAULT);
        }
    }
}

int MVNOgreTransitionCompositor::process(float progress) {
    this->progress = progress;
    onRenderThread(
        [this, progress]() {
            if (material) {
                material->getTechnique(0)->getPass(0)->getFragmentProgramParameters()->setNamedConstant("progress",
                                                                                                        progress);
            }
        },
        "compProgress");
    return 0;
}

void MVNOgreTransitionCompositor::_update(const std::shared_ptr<Ogre::HardwarePixelBuffer>& buffer, uint8_t* data) {
    if (!buffer || data == nullptr) return;
    void* target = buffer->lock(Ogre::HardwareBuffer::HBL_DISCARD);
    std::memcpy(target, data, static_cast<size_t>(width) * height * 4);
    buffer->unlock();
}

void MVNOgreTransitionCompositor::updateTextureA(uint8_t* data) {
    onRenderThread([&]() { _update(bufferA, data); }, "compUpdateTextureA");
}

void MVNOgreTransitionCompositor::updateTextureB(uint8_t* data) {
    onRenderThread([&]() { _update(bufferB, data); }, "compUpdateTextureB");
}

}  // namespace Morvane
