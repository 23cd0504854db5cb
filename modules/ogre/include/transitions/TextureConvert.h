#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreExport.h"
#include "core/MVNRect.h"
#include "core/MVNSize.h"

namespace Morvane {

class MVNOgreMaterialImpl;
class MVNOgreSceneManager;
class MVNOgreSceneNodePlane;

// Puts one clip, as it would stand on screen (geometry, rotation,
// animation), into a picture of the render window's size, so that a
// transition material needs no knowledge of geometry: a private scene with
// one quad, drawn into its own render texture, which clears to zero colour
// so that everything around the clip is transparent. Render thread only,
// construction and destruction included.
class MVN_OGRE_API TextureConvert {
public:
    // An empty inputName gives a texture that takes uploaded pixels; a name
    // samples that render texture. zOrder isn't used: the clip stands at 0.
    TextureConvert(int clipWidth, int clipHeight, int rttWidth, int rttHeight, int zOrder,
                   const std::string& inputName, int animation);
    // Quad, material, then the scene at once.
    ~TextureConvert();
    TextureConvert(const TextureConvert&) = delete;
    TextureConvert& operator=(const TextureConvert&) = delete;

    // Places the clip in profile pixels; only a new size rebuilds the quad.
    void setGeometry(const MVNRect& rect);
    void updateTexture(uint8_t* data, int width, int height);
    // Draws the clip into the render texture.
    void render();
    void setRotation(int degrees);
    void setAnimation(int type);
    void updateAnimation(int position);
    void* getAnimationObject();

    // The clip's picture stands in the converted one unchanged: an opaque
    // texture of the render texture's size on a quad that covers it exactly,
    // unturned and unanimated. Then a transition may sample sourceName()
    // itself and the pass is not needed (see render()).
    bool passesUnchanged() const;
    // The texture the clip's quad samples; empty without one.
    std::string sourceName() const;

    const std::string& getRttName() const { return rttName; }
    MVNOgreSceneManager* getSceneManager() const { return sceneManager; }
    MVNOgreMaterialImpl* getMaterial() const { return material; }

private:
    void _resize(int width, int height, float x, float y, float z);

    MVNOgreSceneManager* sceneManager = nullptr;  // owned
    MVNOgreMaterialImpl* material = nullptr;      // owned; an MVNOgreMaterialNormal
    MVNOgreSceneNodePlane* sceneNode = nullptr;   // owned
    std::string rttName;                          // from "ConvertRtt"
    int width, height;                            // the clip's
    int zOrder = 0;                               // always 0
    int rttWidth, rttHeight;
    MVNSize size;                                 // quad size as last applied
    MVNPoint centre;                              // quad centre in world units, (0, 0) the frame's
    int animation;
    int rotation = 0;
};

}  // namespace Morvane
