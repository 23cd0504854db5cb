#pragma once
#include <memory>
#include <string>

#include "core/MVNColor4B.h"
#include "MVNOgreExport.h"

namespace Ogre {
class Entity;
class SceneNode;
}  // namespace Ogre

namespace Morvane {

// A solid plane of one colour in a named scene, a picture-sized backdrop:
// its own texture (filled once), material, mesh, entity and node, all with
// unique names. It is built by the constructor and taken down by the
// destructor, both on the render thread, which is the only thread it may be
// used on. The plane stands one unit behind zOrder.
class MVN_OGRE_API MVNOgreColorChunk {
public:
    MVNOgreColorChunk(const std::string& sceneManagerName, int width, int height, int zOrder,
                      const MVNColor4B& colour);
    ~MVNOgreColorChunk();
    MVNOgreColorChunk(const MVNOgreColorChunk&) = delete;
    MVNOgreColorChunk& operator=(const MVNOgreColorChunk&) = delete;

    // World position of the plane's centre.
    void setPosition(float x, float y, float z);
    // False when the scene was not found or the engine refused a part.
    bool isBuilt() const { return mNode != nullptr; }

private:
    void _createEntity();
    void _fill();
    void _release();

    std::string mSceneName;
    int mWidth;
    int mHeight;
    int mZOrder;  // zOrder + 1
    MVNColor4B mColour;
    std::string mTextureName;   // from "FilterTexture"
    std::string mMaterialName;  // from "ColorMaterial"
    std::string mMeshName;      // from "FilterMesh"
    std::string mEntityName;    // from "FilterEntity"
    Ogre::Entity* mEntity = nullptr;
    bool mDepthWriter = false;  // counted as a depth writer until released
    Ogre::SceneNode* mNode = nullptr;
};

}  // namespace Morvane
