#pragma once
#include "MVNOgreExport.h"
#include "producers/MVNOgreQuadProducer.h"

namespace Morvane {

// The service "ogre.image": shows a texture known to the engine by name (a
// picture already on the GPU, another service's RTT, or an image file the
// resource system can load). It never holds pixels: its frames are blank
// and the quad draws the picture when the scene is drawn.
//
// Properties: "resource" (texture name), "zOrder", "service" ("ogre.image"),
// "flags" (1), "_active", "width"/"height" (profile size), "render.width"/
// "render.height" (size of the picture on its quad), "anim", "rotation"
// (-1 for none).
class MVN_OGRE_API MVNProducerImage : public MVNOgreQuadProducer {
public:
    // Built, ten seconds long, with its quad; null with "create failed",
    // also when the host has no "ogreRenderTexture" factory registered.
    static MVNProducerImage* create(const MVNProfile& profile, const char* resource, int zOrder);

    MVNProducerImage(const MVNProfile& profile, const char* resource, int zOrder);

    // The quad on the texture "resource".
    int init() override;
    void release() override;
    // A blank frame: the quad draws the picture when the scene is drawn.
    int _getImage(int position, MVNFrame** frame) override;
    MVNProducer* _alloc() override;
    // The quad on the texture "resource", with the producer's geometry,
    // animation and rotation, in the scene of its group.
    void _createTextureNode() override;
    using MVNProducer::_createTextureNode;
};

}  // namespace Morvane
