#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "core/MVNRect.h"

namespace Morvane {

class MVNOgreFilterPass;
class MVNOgreMaterialFilter;

// The render back-end of a filter service: the engine objects of one
// filter, hiding whether the picture is drawn into the shared scene or into
// a render texture of the filter's own. The service holds no GPU state but
// this. Operations that build or change engine objects run on the render
// thread (each back-end names its steps); setUniformFloat, setVisible and
// the animation, rotation and blending setters call straight through on the
// caller's thread.
//
// Blend factors and texture types are the engine's enumerators
// (Ogre::SceneBlendFactor, Ogre::TextureType) passed as int, so that this
// header needs none of the engine's.
class MVN_OGRE_API MVNOgreFilterBase {
public:
    virtual ~MVNOgreFilterBase() = default;
    // Builds the engine objects: 0, or -1 when the filter can't draw.
    virtual int init() = 0;
    virtual void release() = 0;
    // Draws the picture where it goes, for back-ends that draw on demand.
    virtual void render(int position) = 0;
    // Four bytes a pixel (B, G, R, A) into the filter's input texture.
    virtual void updateTexture(unsigned char* data, int width, int height) = 0;
    // A rectangle in profile pixels, bottom-left origin.
    virtual void setGeometry(const MVNRect& rect) = 0;
    virtual void setVisible(bool visible) = 0;
    // The render texture the filter draws into; empty when it draws into a
    // scene.
    virtual std::string getRTTTextureName() = 0;
    virtual void updateAnimation(int position) = 0;
    virtual void setAnimation(int animation) = 0;
    virtual void setSceneBlending(int source, int destination) = 0;
    // A second picture for the material (a lookup table): packed R8G8B8,
    // rows without gaps, bound as "inputImageTextureLut" at unit 1.
    virtual void addExtraTexture(const std::string& name, unsigned char* data, int width, int height, int type) = 0;
    // Debug aid: writes what the filter drew to a file.
    virtual void dump() {}
    // A float uniform of the fragment program; one the program doesn't
    // declare is skipped silently.
    virtual void setUniformFloat(const std::string& name, float value) {}
    virtual void setRotation(int rotation) = 0;
    virtual void setZOrder(int zOrder) = 0;

    // Makes the back-end the second pass of a separable filter: the
    // material `materialName` is drawn first, from the input picture into
    // the render texture `rttName`, which the back-end's own material then
    // reads. Uploads go to the first pass, uniforms to both. Before init
    // only; the texture lives and goes with the back-end's engine objects.
    void setFirstPass(const std::string& materialName, const std::string& rttName);
    // For tests: the first pass, null when the filter draws in one pass or
    // before init.
    MVNOgreFilterPass* getFirstPass() const { return mFirstPass; }

protected:
    // What the back-ends that draw with a filter material share. The first
    // two work on any thread (they only write the pass's state and
    // constants); the last runs on the render thread.
    static void _setUniformOn(MVNOgreMaterialFilter* material, const std::string& name, float value);
    static void _setSceneBlendingOn(MVNOgreMaterialFilter* material, int source, int destination);
    static void _addExtraTextureTo(MVNOgreMaterialFilter* material, const std::string& name, unsigned char* data,
                                   int width, int height, int type);

    // Render thread. With a first pass set: builds it reading `input`, and
    // gives the name of its texture, which the back-end's material must
    // read instead. Without one: gives `input` back.
    std::string _buildFirstPass(int width, int height, const std::string& input);
    void _releaseFirstPass();

    std::string mFirstPassMaterial;          // empty: the back-end draws in one pass
    std::string mFirstPassRtt;               // the texture between the two passes
    MVNOgreFilterPass* mFirstPass = nullptr;  // owned; render thread
};

}  // namespace Morvane
