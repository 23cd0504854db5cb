#include "scene/MVNOgreColorChunk.h"

#include <Ogre.h>

#include <cmath>
#include <vector>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreDepthClear.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreColorChunk";
const float kCameraDistance = 10000.0f;

Ogre::SceneManager* sceneNamed(const std::string& name) {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    return root && root->hasSceneManager(name) ? root->getSceneManager(name) : nullptr;
}
}  // namespace

MVNOgreColorChunk::MVNOgreColorChunk(const std::string& sceneManagerName, int width, int height, int zOrder,
                                     const MVNColor4B& colour)
    : mSceneName(sceneManagerName), mWidth(width), mHeight(height), mZOrder(zOrder + 1), mColour(colour) {
    Ogre::SceneManager* scene = sceneNamed(mSceneName);
    if (scene == nullptr || width <= 0 || height <= 0) {
        log_error(kTag, "scene %s not found or empty size %dx%d", mSceneName.c_str(), width, height);
        return;
    }
    MVNGeneratorStringId* ids = MVNGeneratorStringId::getSingleton();
    mTextureName = ids->genStringId("FilterTexture");
    mMaterialName = ids->genStringId("ColorMaterial");
    mMeshName = ids->genStringId("FilterMesh");
    mEntityName = ids->genStringId("FilterEntity");
    try {
        Ogre::TextureManager::getSingleton().createManual(mTextureName, Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, width,
                                                          height, 0, Ogre::PF_BYTE_BGRA, Ogre::TU_DYNAMIC_WRITE_ONLY);
        Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().create(mMaterialName, Ogre::RGN_DEFAULT);
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        pass->setLightingEnabled(false);
        pass->setDepthWriteEnabled(true);
        MVNOgreDepthClear::addWriter();
        mDepthWriter = true;
        material->setDiffuse(Ogre::ColourValue::White);
        material->setAmbient(Ogre::ColourValue::White);
        pass->createTextureUnitState(mTextureName, 0)->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
        material->setLightingEnabled(false);
        _createEntity();
        mNode = scene->getRootSceneNode()->createChildSceneNode(Ogre::Vector3(0, 0, static_cast<float>(mZOrder)));
        mNode->attachObject(mEntity);
        _fill();
    } catch (const std::exception& e) {
        log_error(kTag, "build failed: %s", e.what());
        _release();
    }
}

MVNOgreColorChunk::~MVNOgreColorChunk() { _release(); }

void MVNOgreColorChunk::_createEntity() {
    log_debug(kTag, "_createEntity...");
    log_debug(kTag, "zOrder:%d", mZOrder);
    Ogre::SceneManager* scene = sceneNamed(mSceneName);
    if (scene->hasEntity(mEntityName)) scene->destroyEntity(mEntityName);
    if (Ogre::MeshManager::getSingleton().resourceExists(mMeshName, Ogre::RGN_DEFAULT)) {
        Ogre::MeshManager::getSingleton().remove(mMeshName, Ogre::RGN_DEFAULT);
    }
    // Nearer the camera by zOrder, so smaller by that ratio to cover the same
    // pixels.
    float scale = (kCameraDistance - static_cast<float>(mZOrder)) / kCameraDistance;
    // The node carries the depth; the mesh lies in its own z = 0.
    Ogre::Plane plane(Ogre::Vector3::UNIT_Z, 0.0f);
    // Rounded, not truncated, as the quads of the pictures: 48 * 0.9999
    // must stay 48 pixels wide.
    Ogre::MeshManager::getSingleton().createPlane(mMeshName, Ogre::RGN_DEFAULT, plane,
                                                  std::round(mWidth * scale), std::round(mHeight * scale));
    mEntity = scene->createEntity(mEntityName, mMeshName);
    mEntity->setMaterialName(mMaterialName);
    log_debug(kTag, "_createEntity done");
}

// One colour in every pixel, blue, green, red, alpha as the texture holds it.
void MVNOgreColorChunk::_fill() {
    std::vector<uint8_t> pixels(static_cast<size_t>(mWidth) * mHeight * 4);
    for (size_t i = 0; i < pixels.size(); i += 4) {
        pixels[i] = mColour.b;
        pixels[i + 1] = mColour.g;
        pixels[i + 2] = mColour.r;
        pixels[i + 3] = mColour.a;
    }
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().getByName(mTextureName, Ogre::RGN_DEFAULT);
    Ogre::PixelBox box(mWidth, mHeight, 1, Ogre::PF_BYTE_BGRA, pixels.data());
    texture->getBuffer(0, 0)->blitFromMemory(box);
}

void MVNOgreColorChunk::setPosition(float x, float y, float z) {
    if (mNode) mNode->setPosition(x, y, z);
}

void MVNOgreColorChunk::_release() {
    Ogre::SceneManager* scene = sceneNamed(mSceneName);
    if (scene && mNode) scene->destroySceneNode(mNode);
    if (scene && mEntity) scene->destroyEntity(mEntity);
    mNode = nullptr;
    mEntity = nullptr;
    if (mDepthWriter) MVNOgreDepthClear::removeWriter();
    mDepthWriter = false;
    if (!Ogre::Root::getSingletonPtr()) return;
    if (!mMeshName.empty() && Ogre::MeshManager::getSingleton().resourceExists(mMeshName, Ogre::RGN_DEFAULT)) {
        Ogre::MeshManager::getSingleton().remove(mMeshName, Ogre::RGN_DEFAULT);
    }
    if (!mMaterialName.empty() && Ogre::MaterialManager::getSingleton().resourceExists(mMaterialName, Ogre::RGN_DEFAULT)) {
        Ogre::MaterialManager::getSingleton().remove(mMaterialName, Ogre::RGN_DEFAULT);
    }
    if (!mTextureName.empty() && Ogre::TextureManager::getSingleton().resourceExists(mTextureName, Ogre::RGN_DEFAULT)) {
        Ogre::TextureManager::getSingleton().remove(mTextureName, Ogre::RGN_DEFAULT);
    }
}

}  // namespace Morvane
