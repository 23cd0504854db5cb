#pragma once
#include <string>

#include "filters/MVNOgreFilterBase.h"

namespace Morvane {

class MVNOgreSceneNodePlane;

// The back-end of a filter whose picture stays in the shared scene: a clone
// of the filter's material on a quad of "MorvaneScene", drawn whenever the
// scene is drawn. render() thus has nothing to do, but for a separable
// filter's first pass, which it draws into its texture.
class MVN_OGRE_API MVNOgreFilterMaterial : public MVNOgreFilterBase {
public:
    // textureName: the input texture by name (an RTT, or an image the
    // engine can load), empty when pixels come through updateTexture.
    // sceneName: the scene of the clip's group, empty for the shared scene.
    MVNOgreFilterMaterial(const std::string& materialName, int width, int height, int zOrder,
                          std::string textureName, int animation, const std::string& sceneName = std::string());
    ~MVNOgreFilterMaterial() override;
    MVNOgreFilterMaterial(const MVNOgreFilterMaterial&) = delete;
    MVNOgreFilterMaterial& operator=(const MVNOgreFilterMaterial&) = delete;

    // Step "filterInit"; -1 ("init failed") when no quad could be built.
    int init() override;
    // Step "filterRelease".
    void release() override;
    // Step "filterPassRender" with a first pass; nothing otherwise.
    void render(int position) override;
    // Step "filterUpdateTexture"; into the first pass when there is one.
    void updateTexture(unsigned char* data, int width, int height) override;
    // Step "fitlerSetGeo": moves the quad, or rebuilds it at a new size.
    void setGeometry(const MVNRect& rect) override;
    // Step "filterSetVisible", only when the value changes.
    void setVisible(bool visible) override;
    std::string getRTTTextureName() override { return ""; }
    // Steps "filterUpdateAnimation", "filterSetAnimation".
    void updateAnimation(int position) override;
    void setAnimation(int animation) override;
    // Step "filterSetSceneBlending".
    void setSceneBlending(int source, int destination) override;
    // Step "filterAddExtraTexture".
    void addExtraTexture(const std::string& name, unsigned char* data, int width, int height, int type) override;
    void setUniformFloat(const std::string& name, float value) override;
    // Step "filterSetRotation".
    void setRotation(int rotation) override;
    // Step "filterSetZOrder".
    void setZOrder(int zOrder) override;

    // For code on the render thread and for tests: the material clone and
    // the quad, null until init and after release.
    MVNOgreMaterialFilter* getMaterial() const { return mMaterial; }
    MVNOgreSceneNodePlane* getNode() const { return mNode; }

private:
    void _init();
    void _release();
    void _setGeometry(const MVNRect& rect);
    void _resize(float width, float height, float x, float y, float z);
    float _scale() const;

    std::string mMaterialName;                  // the script the clone comes from
    std::string mSceneName;                     // where the quad lives
    std::string mTextureName;                   // input texture by name, or empty
    MVNOgreMaterialFilter* mMaterial = nullptr;  // owned; render thread
    MVNOgreSceneNodePlane* mNode = nullptr;      // owned; render thread
    MVNRect mGeometry;                          // last geometry asked for
    float mSize[2] = {0, 0};                    // quad size in world units, before perspective
    int mZOrder;
    int mWidth;
    int mHeight;
    std::string mId;                            // unique, from "FilterMaterial"
    int mAnimation;
    int mRotation = 0;
    int mVisible = -1;                          // last visibility sent; -1 none yet
};

}  // namespace Morvane
