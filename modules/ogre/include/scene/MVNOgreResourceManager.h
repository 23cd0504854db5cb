#pragma once
#include <deque>
#include <map>
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Morvane {

// A recycler of textures for users of the module: a released render target
// goes into a pool with its GPU memory freed, and the next request takes it
// out at its new size, keeping its identity and name, so that a material
// that names it needs no change. The pools grow without limit; clean()
// empties them and is the only place where pooled textures leave the
// engine. `owner` only labels the log lines. Render thread only.
class MVN_OGRE_API MVNOgreResourceManager {
public:
    static MVNOgreResourceManager* getSingleton();

    // A dynamic, write-only B,G,R,A texture of width x height.
    Ogre::TexturePtr getTexture(const std::string& owner, int width, int height);
    // Removes the texture `name` from the engine; dynamic textures are not
    // pooled. A name the engine doesn't know: nothing happens.
    void releaseTexture(const std::string& name, Ogre::TexturePtr texture);
    // A render target of width x height, from the pool when one is idle.
    // Its render target object is new: add viewports after each call.
    Ogre::TexturePtr getRTT(const std::string& owner, int width, int height);
    // Frees the GPU memory of `texture` and pools it; `name` isn't used.
    void releaseRTT(const std::string& name, Ogre::TexturePtr texture);
    // Removes every pooled texture from the engine.
    void clean();

    size_t idleTextureCount() const { return idleTextures.size(); }
    size_t idleRttCount() const { return idleRtts.size(); }

protected:
    Ogre::TexturePtr genTexture(const std::string& owner, int width, int height);
    Ogre::TexturePtr genRTT(const std::string& owner, int width, int height);

private:
    std::deque<std::shared_ptr<Ogre::Texture>> idleTextures;  // pooled dynamic textures
    std::map<std::string, std::shared_ptr<Ogre::Texture>> usedTextures;  // unused: handed-out ones aren't tracked
    std::deque<std::shared_ptr<Ogre::Texture>> idleRtts;      // pooled render targets, GPU memory freed
    std::map<std::string, std::shared_ptr<Ogre::Texture>> usedRtts;  // unused: handed-out ones aren't tracked
};

}  // namespace Morvane
