#pragma once
#include <string>

#include "core/MVNSize.h"
#include "transitions/MVNOgreTransitionBase.h"

namespace Morvane {

class MVNOgreMaterialTransition;
class MVNOgreSceneNodePlane;
class TextureConvert;

// The back-end of "ogre.transition.sample": each clip is first drawn, with
// its own geometry, rotation and animation, into a picture of the render
// window's size (TextureConvert), then the transition material runs over
// the two pictures on one full-frame quad. So a transition between clips of
// any size and place needs nothing of them but two full pictures.
//
// Engine work runs on the render thread under the step names "transInit",
// "transRelease", "transProgress", "transpUpdateTextureA",
// "transUpdateTextureB", "transSetGeo", "transSetGeoA", "transSetGeoB",
// "transSetUniformFloat", "transRender", "transSetResource"; each public
// operation waits for its step. Visibility, rotation and animation changes
// hop there too ("transSetVisible", "transSetRotationA", ...), so that no
// engine node is touched from a host thread while the scene is drawn; an
// unchanged visibility costs no step, as it is asked for every frame.
class MVN_OGRE_API MVNOgreTransitionMaterialCanvas : public MVNOgreTransitionBase {
public:
    // textureNameA/B name a render texture a clip already draws into, or
    // are empty when its pixels are uploaded. An empty sceneName puts the
    // quad in the shared scene.
    MVNOgreTransitionMaterialCanvas(const std::string& resource, int widthA, int heightA, int widthB, int heightB,
                                    int zOrder, const std::string& textureNameA, const std::string& textureNameB,
                                    int animationA, int animationB, const std::string& sceneName);
    ~MVNOgreTransitionMaterialCanvas() override;
    MVNOgreTransitionMaterialCanvas(const MVNOgreTransitionMaterialCanvas&) = delete;
    MVNOgreTransitionMaterialCanvas& operator=(const MVNOgreTransitionMaterialCanvas&) = delete;

    int init() override;
    void release() override;
    void process(float progress) override;
    void updateTextureA(uint8_t* data, int width, int height) override;
    void updateTextureB(uint8_t* data, int width, int height) override;
    void setGeometry(const MVNRect& rect) override;
    void setGeometryA(const MVNRect& rect) override;
    void setGeometryB(const MVNRect& rect) override;
    // The present name returns at once, without a step.
    void setResource(const std::string& name) override;
    void setVisible(bool visible) override;
    // Draws the converters, but for a clip that fills the frame as it is,
    // which the material then samples directly; must run before the scene
    // is drawn.
    void render(int position) override;
    void setAnimationA(int type) override;
    void setAnimationB(int type) override;
    void updateAnimationA(int position) override;
    void updateAnimationB(int position) override;
    void* getAnimationObjectA() override;
    void* getAnimationObjectB() override;
    void setRotationA(int degrees) override;
    void setRotationB(int degrees) override;
    void setUniformFloat(const std::string& name, float value) override;

    // For tests: the converters and the material, null before init.
    TextureConvert* getConvertA() const { return convertA; }
    TextureConvert* getConvertB() const { return convertB; }
    MVNOgreMaterialTransition* getMaterial() const { return material; }
    const std::string& getResource() const { return resource; }
    // Where the transition runs, as fractions of the frame from its top
    // left (left, top, width, height): the smallest rectangle holding both
    // clips, the whole frame until they are placed.
    MVNRect clipRect() const;

private:
    int _init();
    int _config();
    void _release();
    void _setGeometry(const MVNRect& rect);
    void _resize(float width, float height, float x, float y, float z);
    void _applyClipRect();
    void _renderInput(TextureConvert* convert, int unit);

    std::string resource;                  // name of the material script
    int widthA, heightA, widthB, heightB;  // the clips' sizes
    int windowWidth = 0, windowHeight = 0;  // the render window's, read at _init
    std::string textureNameA, textureNameB;
    MVNOgreSceneNodePlane* sceneNode = nullptr;  // owned; the full-frame quad
    float progress = 0;
    MVNRect geometry, geometryA, geometryB;  // last rectangles
    MVNSize size;                            // quad size as last applied
    int zOrder;
    MVNOgreMaterialTransition* material = nullptr;  // owned
    TextureConvert* convertA = nullptr;             // owned
    TextureConvert* convertB = nullptr;             // owned
    int animationA, animationB;
    int rotationA = 0, rotationB = 0;
    std::string sceneName;  // empty: "MorvaneScene"
    int visible = -1;       // last visibility applied; -1 none yet
};

}  // namespace Morvane
