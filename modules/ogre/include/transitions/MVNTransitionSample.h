#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "services/MVNTransition.h"
#include "transitions/MVNTransitionEasing.h"

namespace Morvane {

class MVNOgreTransitionBase;

// The service "ogre.transition.sample": blends two clips on the GPU over the
// span of a transition. "resource" names a material script whose fragment
// program is the transition (its uniform "progress" runs from 0 towards 1),
// or a .glsl file in the open transition format, wrapped into a material at
// run time (MVNTransitionGlslFile). The service holds no picture logic: it
// collects what the clips can tell (size, output texture, rotation,
// animation), builds one back-end (MVNOgreTransitionMaterialCanvas) and
// per frame feeds it the two pictures and a progress of position over
// playtime, reshaped by "transitionEasing". The transition is drawn with the
// scene: processImage returns no frame.
//
// Properties: "resource"; "transitionInvert" (bool, to the uniform of that
// name); "rotationA", "rotationB" (degrees); "transitionEasing"; every
// "ufm..." property sets the uniform of its name ("ufmamplitude" sets
// "amplitude" in a .glsl file, which has no prefix of its own). "CircleScale"
// also gets "ufmImageWidth" and "ufmImageHeight" from the profile; the
// canvas gives every material "clipRect" and its "ratio" (width / height).
class MVN_OGRE_API MVNTransitionSample : public MVNTransition {
public:
    MVNTransitionSample(const MVNProfile& profile, const char* resource);
    ~MVNTransitionSample() override;
    MVNTransitionSample(const MVNTransitionSample&) = delete;
    MVNTransitionSample& operator=(const MVNTransitionSample&) = delete;

    void _OnPropertyChanged(const char* key) override;
    int init() override;
    void release() override;
    void resetRender(int position) override;
    void setDefaultGeometry() override;
    void _OnGeometryChanged(const MVNRect& rect) override;
    void _OnVisibleChanged(bool visible) override;
    MVNFrame* processImage(int position, MVNFrame* frameA, MVNFrame* frameB) override;
    void reconfig() override;
    void _OnConnected() override;
    void _OnDisconnected() override;

    // For tests: the back-end, null without a setup.
    MVNOgreTransitionBase* getNode() const { return node; }
    // The progress handed to the back-end for `position`, easing included.
    float progressAt(int position) const;

private:
    void _Config();
    void _SetupParameters();
    void _ApplyUniform(const std::string& key);
    void _ReadEasing();
    bool _HasCanvas(MVNProducer* clip);
    MVNRect _ClipGeometry(MVNProducer* clip) const;
    // The texture the converter of a clip samples; empty: uploaded pixels.
    std::string _InputTexture(MVNProducer* clip) const;
    void _ReleaseNode();
    // The material a resource names: itself, or the one made from a .glsl
    // file.
    std::string _MaterialFor(const std::string& resource);

    MVNOgreTransitionBase* node = nullptr;  // owned; null without a setup
    std::string resource;                   // the name given at construction
    MVNTransitionEasing easing;             // from "transitionEasing"
};

}  // namespace Morvane
