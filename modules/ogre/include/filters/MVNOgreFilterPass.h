#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreExport.h"

namespace Ogre {
class Camera;
class ManualObject;
class RenderTexture;
class SceneManager;
}  // namespace Ogre

namespace Morvane {

class MVNOgreMaterialFilter;

// The first pass of a separable filter: its material drawn over the whole of
// a render texture of the filter's own, which the filter's back-end then
// reads by name with the second pass. The quad covers every pixel of the
// texture and replaces what was there, so the texture is single-sampled,
// has no depth and is never cleared: each draw writes every pixel once.
//
// An engine object: built, drawn and destroyed on the render thread only.
class MVN_OGRE_API MVNOgreFilterPass {
public:
    // inputTexture: the picture by name (a file texture or a render
    // texture), empty when pixels of width x height come through
    // updateTexture. The texture drawn into has the picture's size, or
    // targetWidth x targetHeight where those are given: a pass whose result
    // is enlarged afterwards needs no more pixels than it has detail.
    MVNOgreFilterPass(const std::string& materialName, int width, int height, const std::string& inputTexture,
                      const std::string& rttName, int targetWidth = 0, int targetHeight = 0);
    // Destroys the quad, the material, the texture and the scene.
    ~MVNOgreFilterPass();
    MVNOgreFilterPass(const MVNOgreFilterPass&) = delete;
    MVNOgreFilterPass& operator=(const MVNOgreFilterPass&) = delete;

    // False when the material can't be had: the texture then stays empty.
    bool isValid() const { return mMaterial != nullptr; }
    // Draws the pass into its texture.
    void draw();
    // Four bytes a pixel (B, G, R, A) into the pass's input texture.
    void updateTexture(uint8_t* data, int width, int height);
    // A uniform of the pass's fragment program; one it doesn't declare is
    // skipped silently.
    void setUniformFloat(const std::string& name, float value);
    const std::string& getRttName() const { return mRttName; }
    int getTargetWidth() const { return mTargetWidth; }
    int getTargetHeight() const { return mTargetHeight; }
    MVNOgreMaterialFilter* getMaterial() const { return mMaterial; }

private:
    std::string mRttName;                         // the texture drawn into, read by the second pass
    std::string mSceneName;                       // unique, from "FilterPassScene"
    Ogre::SceneManager* mScene = nullptr;         // owned through the engine's root
    Ogre::Camera* mCamera = nullptr;              // orthographic, one world unit a texel
    Ogre::RenderTexture* mTarget = nullptr;       // owned by its texture
    MVNOgreMaterialFilter* mMaterial = nullptr;   // owned
    Ogre::ManualObject* mQuad = nullptr;          // in mScene
    int mTargetWidth = 0;                         // size of the texture drawn into
    int mTargetHeight = 0;
};

}  // namespace Morvane
