#include "scene/MVNOgreResourceManager.h"

#include <Ogre.h>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNOgreResourceManager";

int antiAliasingLevel() {
    MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
    return context ? context->chooseAntiAliasingLevel() : 0;
}

Ogre::TexturePtr makeTexture(const std::string& name, int width, int height, int usage) {
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().createManual(
        name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, width, height, 1, 0,
        Ogre::PF_BYTE_BGRA, usage, nullptr, false, antiAliasingLevel(), "");
    if (usage & Ogre::TU_RENDERTARGET) MVNOgreContextBase::resyncCurrentRenderTarget();
    return texture;
}

// Gives a pooled texture new GPU storage of width x height. A manual
// texture's load state doesn't follow its storage, so unload and load would
// keep the old buffer: the storage itself is freed and made anew.
void resizeStorage(const Ogre::TexturePtr& texture, int width, int height) {
    texture->freeInternalResources();
    texture->setWidth(width);
    texture->setHeight(height);
    texture->createInternalResources();
    if (texture->getUsage() & Ogre::TU_RENDERTARGET) MVNOgreContextBase::resyncCurrentRenderTarget();
}

// Takes a texture out of the engine for good.
void removeFromEngine(const std::shared_ptr<Ogre::Texture>& texture) {
    std::string name = texture->getName();
    texture->unload();
    texture->freeInternalResources();
    Ogre::TextureManager& manager = Ogre::TextureManager::getSingleton();
    if (manager.resourceExists(name, Ogre::RGN_DEFAULT)) manager.remove(name, Ogre::RGN_DEFAULT);
    MVNOgreContextBase::resyncCurrentRenderTarget();
}
}  // namespace

MVNOgreResourceManager* MVNOgreResourceManager::getSingleton() {
    static MVNOgreResourceManager* instance = new MVNOgreResourceManager();
    return instance;
}

Ogre::TexturePtr MVNOgreResourceManager::genTexture(const std::string& owner, int width, int height) {
    std::string name = MVNGeneratorStringId::getSingleton()->genStringId("texture");
    return makeTexture(name, width, height, Ogre::TU_DYNAMIC_WRITE_ONLY);
}

Ogre::TexturePtr MVNOgreResourceManager::genRTT(const std::string& owner, int width, int height) {
    std::string name = MVNGeneratorStringId::getSingleton()->genStringId("RTT");
    return makeTexture(name, width, height, Ogre::TU_RENDERTARGET);
}

Ogre::TexturePtr MVNOgreResourceManager::getTexture(const std::string& owner, int width, int height) {
    if (idleTextures.empty()) return genTexture(owner, width, height);
    Ogre::TexturePtr texture = idleTextures.front();
    idleTextures.pop_front();
    int oldWidth = static_cast<int>(texture->getWidth());
    int oldHeight = static_cast<int>(texture->getHeight());
    resizeStorage(texture, width, height);
    log_debug(kTag, "%s reuse %s:%dx%d old:%dx%d", owner.c_str(), texture->getName().c_str(), width, height, oldWidth,
              oldHeight);
    return texture;
}

Ogre::TexturePtr MVNOgreResourceManager::getRTT(const std::string& owner, int width, int height) {
    if (idleRtts.empty()) return genRTT(owner, width, height);
    Ogre::TexturePtr texture = idleRtts.front();
    idleRtts.pop_front();
    resizeStorage(texture, width, height);
    log_debug(kTag, "%s reuse %s", owner.c_str(), texture->getName().c_str());
    return texture;
}

void MVNOgreResourceManager::releaseTexture(const std::string& name, Ogre::TexturePtr texture) {
    Ogre::TextureManager& manager = Ogre::TextureManager::getSingleton();
    if (!manager.resourceExists(name, Ogre::RGN_DEFAULT)) return;
    Ogre::TexturePtr known = manager.getByName(name, Ogre::RGN_DEFAULT);
    known->unload();
    known->freeInternalResources();
    manager.remove(name, Ogre::RGN_DEFAULT);
}

void MVNOgreResourceManager::releaseRTT(const std::string& name, Ogre::TexturePtr texture) {
    if (!texture) return;
    // Frees the GPU memory; the texture keeps its name for getRTT.
    texture->unload();
    texture->freeInternalResources();
    idleRtts.push_back(texture);
}

void MVNOgreResourceManager::clean() {
    while (!idleTextures.empty()) {
        std::shared_ptr<Ogre::Texture> texture = idleTextures.front();
        idleTextures.pop_front();
        removeFromEngine(texture);
    }
    while (!idleRtts.empty()) {
        std::shared_ptr<Ogre::Texture> texture = idleRtts.front();
        idleRtts.pop_front();
        removeFromEngine(texture);
    }
}

}  // namespace Morvane
