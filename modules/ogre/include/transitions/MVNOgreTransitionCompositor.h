#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Ogre {
class HardwarePixelBuffer;
class SceneNode;
}  // namespace Ogre

namespace Morvane {

// The earliest transition form: a plane of width x height in the shared
// scene drawn with the material "Morvane/Material/MorvaneTest", whose pass
// gets two textures of pixels (A, then B). `name` must be a compositor of
// "glslCompositor.compositor" with a material in its output pass. Steps
// "compInit", "compRelease", "compProgress", "compUpdateTextureA",
// "compUpdateTextureB".
class MVN_OGRE_API MVNOgreTransitionCompositor {
public:
    MVNOgreTransitionCompositor(const std::string& name, int width, int height);
    ~MVNOgreTransitionCompositor();
    MVNOgreTransitionCompositor(const MVNOgreTransitionCompositor&) = delete;
    MVNOgreTransitionCompositor& operator=(const MVNOgreTransitionCompositor&) = delete;

    // 0, or -1 (logged).
    int init();
    void release();
    int process(float progress);
    // width x height B,G,R,A pixels.
    void updateTextureA(uint8_t* data);
    void updateTextureB(uint8_t* data);

private:
    int _init();
    void _release();
    void _update(const std::shared_ptr<Ogre::HardwarePixelBuffer>& buffer, uint8_t* data);

    std::string name;
    int width, height;
    std::string textureAName, textureBName, textureNoneName, meshName, entityName, materialName;
    std::shared_ptr<Ogre::HardwarePixelBuffer> bufferA, bufferB;
    Ogre::SceneNode* sceneNode = nullptr;  // child of the shared scene's root
    std::shared_ptr<Ogre::Material> material;
    float progress = 0;
};

}  // namespace Morvane
