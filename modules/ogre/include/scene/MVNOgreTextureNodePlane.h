#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "scene/MVNOgreTextureNodeImpl.h"
#include "core/MVNSize.h"
#include "core/MVNPoint.h"

namespace Morvane {

class MVNOgreMaterialImpl;
class MVNOgreSceneNodeImpl;

// A picture on a quad of the 3D scene. The quad is placed so that, despite
// perspective, it covers the profile rectangle asked for: a quad nearer the
// camera is made smaller, and its centre nearer the axis, by
// (distance - 2 zOrder) / distance (it stands at twice its zOrder), so a
// picture shown at its own size on whole pixels covers them exactly. A move only sets
// the node's position; a new size rebuilds the mesh. Render thread only.
//
// A material that can't be had leaves the node with neither material nor
// quad ("MaterialImpl create error"); every operation then does nothing.
class MVN_OGRE_API MVNOgreTextureNodePlane : public MVNOgreTextureNodeImpl {
public:
    // textureName empty: pixels are uploaded by updateTexture; otherwise the
    // name of an existing texture. materialName empty: a plain picture;
    // otherwise the material script it is drawn with. canvasWidth and
    // canvasHeight (the profile) are not needed by a plane. The quad goes
    // into "MorvaneScene", or into sceneName where one is given.
    MVNOgreTextureNodePlane(const std::string& textureName, int width, int height, int canvasWidth, int canvasHeight,
                            int zOrder, const std::string& materialName);
    MVNOgreTextureNodePlane(const std::string& textureName, int width, int height, int canvasWidth, int canvasHeight,
                            int zOrder, const std::string& materialName, const std::string& sceneName);
    ~MVNOgreTextureNodePlane() override;
    MVNOgreTextureNodePlane(const MVNOgreTextureNodePlane&) = delete;
    MVNOgreTextureNodePlane& operator=(const MVNOgreTextureNodePlane&) = delete;

    void updateTexture(uint8_t* data, int width, int height) override;
    void setGeometry(const MVNRect& rect) override;
    void setVisible(bool visible) override;
    void updateAnimation(int position) override;
    void setAnimation(int type) override;
    void setRotation(int degrees) override;
    void setZOrder(int zOrder) override;
    void setUniformFloat(const std::string& name, float value, bool wait) override;
    void setSceneBlending(int source, int destination) override;

    MVNOgreMaterialImpl* getMaterial() const { return material; }
    MVNOgreSceneNodeImpl* getSceneNode() const { return sceneNode; }
    const MVNSize& getSize() const { return size; }

private:
    void _build(const std::string& textureName, const std::string& materialName);
    // The mesh can't change size: a new scene node replaces the old one and
    // takes over rotation and animation.
    void _resize(float width, float height, float x, float y, float z);
    // Name of the scene the quad lives in.
    std::string _sceneName() const;
    // Nearest or bilinear sampling for a plain picture, as it now stands.
    void _chooseSampling();

    MVNOgreMaterialImpl* material = nullptr;     // owned; normal or filter
    MVNOgreSceneNodeImpl* sceneNode = nullptr;   // owned; always a plane
    MVNSize size;                                // quad size in world units as last applied
    MVNPoint corner;                             // bottom-left corner in world units as last applied
    int width = 0;                               // picture size given at construction
    int height = 0;
    int zOrder = 0;                              // depth and draw order
    int animation = 0;                           // last setAnimation
    int rotation = 0;                            // last setRotation
    std::string sceneName;                       // empty: "MorvaneScene"
};

}  // namespace Morvane
