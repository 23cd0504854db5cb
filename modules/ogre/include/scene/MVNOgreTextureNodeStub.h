#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "scene/MVNOgreTextureNodeImpl.h"

namespace Morvane {

class MVNOgreMaterialImpl;

// An empty adapter for classes that take the place of a texture node but
// draw by other means: the scene operations do nothing, the uniform and
// blending operations are left to the subclass.
class MVN_OGRE_API MVNOgreTextureNodeStub : public MVNOgreTextureNodeImpl {
public:
    // The arguments of MVNOgreTextureNodePlane's constructors, ignored.
    MVNOgreTextureNodeStub(const std::string& textureName, int width, int height, int canvasWidth, int canvasHeight,
                           int zOrder, const std::string& materialName);
    MVNOgreTextureNodeStub(const std::string& textureName, int width, int height, int canvasWidth, int canvasHeight,
                           int zOrder, const std::string& materialName, const std::string& sceneName);

    void updateTexture(uint8_t* data, int width, int height) override;
    void setGeometry(const MVNRect& rect) override;
    void setVisible(bool visible) override;
    void updateAnimation(int position) override;
    void setAnimation(int type) override;
    void setRotation(int degrees) override;
    void setZOrder(int zOrder) override;
    // The material the subclass draws with; none here.
    virtual MVNOgreMaterialImpl* getOgreMaterial();
};

}  // namespace Morvane
