#pragma once
#include <string>

#include "filters/MVNOgreFilterBase.h"

namespace Morvane {

class MVNOgreSceneManager;
class MVNOgreSceneNodePlane;
class MVNOgreTextureNodePlane;
template <class T>
class MVNOgreTextureNodeThread;

// The back-end of a filter that draws into a render texture of its own: a
// private scene (MVNOgreSceneManager) holding one quad with a clone of the
// filter's material, drawn into the texture by render(). With showNode the
// texture is also shown on a quad of the group's scene (or of the shared
// scene when there is no group).
//
// A material that can't be had still gives a working back-end: init returns
// 0, the texture stays empty and frames that name it pass on.
class MVN_OGRE_API MVNOgreFilterScene : public MVNOgreFilterBase {
public:
    MVNOgreFilterScene(const std::string& materialName, int width, int height, int zOrder,
                       const std::string& textureName, bool showNode, const std::string& rttName, int animation,
                       const std::string& groupName);
    ~MVNOgreFilterScene() override;
    MVNOgreFilterScene(const MVNOgreFilterScene&) = delete;
    MVNOgreFilterScene& operator=(const MVNOgreFilterScene&) = delete;

    // Step "filterSceneInit", then with showNode the texture node
    // ("textureNodeInit"). Always 0.
    int init() override;
    // The texture node on the calling thread, then step "filterSceneRelease".
    void release() override;
    // Step "filterSceneRender": draws the first pass, when there is one,
    // then the private scene into the texture.
    void render(int position) override;
    // Step "filterSceneUpdateTexture"; into the first pass when there is one.
    void updateTexture(unsigned char* data, int width, int height) override;
    // Moves the texture node only: the render texture always holds the
    // whole picture.
    void setGeometry(const MVNRect& rect) override;
    void setVisible(bool visible) override;
    std::string getRTTTextureName() override { return mRttName; }
    void updateAnimation(int position) override;
    void setAnimation(int animation) override;
    // Step "filterSceneSetBlending".
    void setSceneBlending(int source, int destination) override;
    // Step "filterAddExtraTexture".
    void addExtraTexture(const std::string& name, unsigned char* data, int width, int height, int type) override;
    // Step "writeToFile": the fifth call writes the texture to xxyy5.png in
    // the working folder.
    void dump() override;
    void setUniformFloat(const std::string& name, float value) override;
    void setRotation(int rotation) override;
    void setZOrder(int zOrder) override;

    // For code on the render thread and for tests.
    MVNOgreMaterialFilter* getMaterial() const { return mMaterial; }
    MVNOgreSceneManager* getSceneManager() const { return mSceneManager; }

private:
    void _init();
    void _release();

    std::string mMaterialName;  // the script the clone comes from
    std::string mRttName;       // the texture drawn into
    std::string mTextureName;   // input texture by name, or empty
    int mZOrder;
    int mWidth;
    int mHeight;
    // Shows the texture in a scene; owned, only with showNode.
    MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>* mTextureNode = nullptr;
    bool mShowNode;
    std::string mId;                             // unique, from "FilterScene"
    MVNOgreMaterialFilter* mMaterial = nullptr;   // owned; render thread
    MVNOgreSceneNodePlane* mNode = nullptr;       // owned; render thread
    MVNOgreSceneManager* mSceneManager = nullptr;  // owned; render thread
    int mAnimation;
    int mRotation = 0;
    std::string mGroupName;  // scene of the texture node; empty: the shared scene
    int mVisible = -1;       // last visibility sent; -1 none yet
};

}  // namespace Morvane
