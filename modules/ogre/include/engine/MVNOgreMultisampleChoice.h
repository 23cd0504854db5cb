#pragma once

#include "MVNOgreExport.h"

namespace Ogre {
class Camera;
class SceneManager;
}  // namespace Ogre

namespace Morvane {

// Whether multisampling changes anything in the next frame of a scene.
// Multisampling only differs from one sample a pixel where an edge of a
// drawn shape crosses a pixel partly: the fragment programs run once a
// pixel, at its centre, either way. A quad standing square to the frame
// with its edges on whole pixels (nearer than any sample lies to a pixel's
// border, 1/16 of a pixel, or outside the frame) covers each pixel as one
// sample at its centre would, so a frame made only of such quads is the
// same byte for byte without it. A
// quad turned by other than a multiple of 90 degrees, scaled or moved
// (an animation) off whole pixels, tilted in depth, or any shape that is no
// flat quad (3D geometry, overlays, the glyphs of a text drawn in the frame)
// needs it. A text drawn in its track's texture (extruded or animated) is
// multisampled there, as the frame would be: the frame sees only the quad
// that shows that texture, and multisampling it would change nothing.
//
// Render thread only; reads the scene as it will be drawn.
class MVN_OGRE_API MVNOgreMultisampleChoice {
public:
    // With anti-aliasing on, whether the default reader draws each frame
    // multisampled only where needed() says so: the render system's choice
    // when its host doesn't say "anti_aliasing". Takes effect when the
    // reader is made; off until a render system turns it on.
    static void setAutomatic(bool automatic);
    static bool automatic();

    // The visible objects of `scene` seen by `camera` in a frame of
    // `width` x `height` pixels.
    static bool needed(Ogre::SceneManager* scene, Ogre::Camera* camera, int width, int height);
};

}  // namespace Morvane
