#pragma once
#include "MVNOgreExport.h"

namespace Ogre {
class RenderTarget;
}

namespace Morvane {

// Clears the depth buffer of a watched render target only while something
// can see what it holds. Quads neither write nor test depth, so a frame of
// quads alone comes out the same whether its depth was cleared or not, and
// where the raster is done in software the clear costs as much as a good
// part of a full-frame quad. A watched viewport clears colour and depth on
// its first update, on every update while a depth writer lives, and once
// after the number of writers changed; colour alone otherwise. Its other
// settings (background, whether it clears at all) are left as they are.
//
// All of it runs on the render thread.
class MVN_OGRE_API MVNOgreDepthClear {
public:
    // Every viewport of `target`, present and to come, follows the rule.
    static void watch(Ogre::RenderTarget* target);
    // Something that writes depth into a scene came or went.
    static void addWriter();
    static void removeWriter();
    static int writers();
};

}  // namespace Morvane
