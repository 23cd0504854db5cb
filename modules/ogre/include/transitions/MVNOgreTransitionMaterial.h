#pragma once
#include <string>

#include "core/MVNSize.h"
#include "transitions/MVNOgreTransitionBase.h"

namespace Morvane {

class MVNOgreMaterialTransition;
class MVNOgreSceneNodePlane;

// The plain back-end: the transition material samples the two inputs
// directly on a quad of clip A's width and clip B's height in the shared
// scene, with no regard for where the clips stand. Steps "transInit",
// "transRelease", "transProgress", "transpUpdateTextureA",
// "transUpdateTextureB", "transSetGeo", "transSetUniformFloat".
class MVN_OGRE_API MVNOgreTransitionMaterial : public MVNOgreTransitionBase {
public:
    MVNOgreTransitionMaterial(const std::string& resource, int widthA, int heightA, int widthB, int heightB,
                              int zOrder, const std::string& textureNameA, const std::string& textureNameB);
    ~MVNOgreTransitionMaterial() override;
    MVNOgreTransitionMaterial(const MVNOgreTransitionMaterial&) = delete;
    MVNOgreTransitionMaterial& operator=(const MVNOgreTransitionMaterial&) = delete;

    int init() override;
    void release() override;
    void process(float progress) override;
    void updateTextureA(uint8_t* data, int width, int height) override;
    void updateTextureB(uint8_t* data, int width, int height) override;
    void setGeometry(const MVNRect& rect) override;
    void setGeometryA(const MVNRect& rect) override {}
    void setGeometryB(const MVNRect& rect) override {}
    void setResource(const std::string& name) override {}
    void setVisible(bool visible) override;
    void render(int position) override {}
    void setAnimationA(int type) override {}
    void setAnimationB(int type) override {}
    void updateAnimationA(int position) override {}
    void updateAnimationB(int position) override {}
    void* getAnimationObjectA() override { return nullptr; }
    void* getAnimationObjectB() override { return nullptr; }
    void setRotationA(int degrees) override {}
    void setRotationB(int degrees) override {}
    void setUniformFloat(const std::string& name, float value) override;

private:
    int _init();
    void _release();
    void _setGeometry(const MVNRect& rect);

    std::string resource;
    int widthA, heightA, widthB, heightB;
    std::string textureNameA, textureNameB;
    MVNOgreSceneNodePlane* sceneNode = nullptr;     // owned
    MVNOgreMaterialTransition* material = nullptr;  // owned
    float progress = 0;
    MVNRect geometry;
    MVNSize size;
    int zOrder;
};

}  // namespace Morvane
