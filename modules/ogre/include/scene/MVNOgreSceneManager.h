#pragma once
#include <string>

#include "MVNOgreExport.h"

namespace Ogre {
class RenderTexture;
class SceneManager;
}  // namespace Ogre

namespace Morvane {

// The private world of one render texture: an engine scene manager with its
// own camera and light that draws into a texture of its own, for groups,
// scene filters and transitions. Built and destroyed on the render thread
// only; others refer to the scene and the texture by name.
class MVN_OGRE_API MVNOgreSceneManager {
public:
    // Builds the scene, its light and camera (one world unit is one pixel on
    // z = 0) and a render texture of width x height named rttName; an empty
    // sceneName gets a unique one.
    MVNOgreSceneManager(int width, int height, const std::string& rttName, const std::string& sceneName);
    // Unloads the texture and destroys the engine scene, when the engine
    // still has them.
    ~MVNOgreSceneManager();
    MVNOgreSceneManager(const MVNOgreSceneManager&) = delete;
    MVNOgreSceneManager& operator=(const MVNOgreSceneManager&) = delete;

    const std::string& getSceneName() const { return mSceneName; }
    const std::string& getRttName() const { return mRttName; }
    // The engine's scene manager of this scene; null once the engine is gone.
    Ogre::SceneManager* getSceneManager() const;
    // update(true) on it draws the scene into the texture.
    Ogre::RenderTexture* getRenderTarget() const { return mRenderTarget; }
    // The texture's real size, which the engine may have rounded.
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }

private:
    std::string mSceneName;                       // name of the engine's scene manager
    std::string mRttName;                         // name of the render-target texture
    Ogre::RenderTexture* mRenderTarget = nullptr;  // owned by the texture
    int mWidth = 0;
    int mHeight = 0;
};

}  // namespace Morvane
