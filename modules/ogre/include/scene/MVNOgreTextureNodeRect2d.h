#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "scene/MVNOgreTextureNodeImpl.h"
#include "core/MVNSize.h"

namespace Morvane {

class MVNOgreMaterialImpl;
class MVNOgreSceneNodeImpl;

// A picture on a screen-space rectangle of "MorvaneScene" that ignores
// depth, z-order, animation and rotation; its geometry is mapped onto the
// canvas (the profile) directly. Render thread only.
class MVN_OGRE_API MVNOgreTextureNodeRect2d : public MVNOgreTextureNodeImpl {
public:
    // zOrder, materialName and sceneName are taken and not used.
    MVNOgreTextureNodeRect2d(const std::string& textureName, int width, int height, int canvasWidth,
                             int canvasHeight, int zOrder, const std::string& materialName);
    MVNOgreTextureNodeRect2d(const std::string& textureName, int width, int height, int canvasWidth,
                             int canvasHeight, int zOrder, const std::string& materialName,
                             const std::string& sceneName);
    ~MVNOgreTextureNodeRect2d() override;
    MVNOgreTextureNodeRect2d(const MVNOgreTextureNodeRect2d&) = delete;
    MVNOgreTextureNodeRect2d& operator=(const MVNOgreTextureNodeRect2d&) = delete;

    void updateTexture(uint8_t* data, int width, int height) override;
    void setGeometry(const MVNRect& rect) override;
    void setVisible(bool visible) override;
    void updateAnimation(int position) override {}
    void setAnimation(int type) override {}
    void setRotation(int degrees) override {}
    void setZOrder(int zOrder) override {}
    void setUniformFloat(const std::string& name, float value, bool wait) override;
    void setSceneBlending(int source, int destination) override {}

    MVNOgreMaterialImpl* getMaterial() const { return material; }
    MVNOgreSceneNodeImpl* getSceneNode() const { return sceneNode; }

private:
    void _build(const std::string& textureName);

    MVNOgreMaterialImpl* material = nullptr;    // owned; always normal
    MVNOgreSceneNodeImpl* sceneNode = nullptr;  // owned; always a rectangle
    MVNSize size;                               // stays zero
    int width = 0;                              // picture size
    int height = 0;
    int canvasWidth = 0;                        // profile size the corners are relative to
    int canvasHeight = 0;
};

}  // namespace Morvane
