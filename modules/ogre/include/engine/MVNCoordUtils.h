#pragma once
// Conversions between the camera's world and screen pixels, for the host's
// tools. Engine types by value: include OGRE's math headers before use.
#include "MVNOgreExport.h"

namespace Ogre {
class Camera;
template <int dims, typename T>
class Vector;
typedef Vector<2, float> Vector2;
typedef Vector<3, float> Vector3;
}  // namespace Ogre

namespace Morvane {

class MVN_OGRE_API MVNCoordUtils {
public:
    // Projects a world point to pixels of a screenSize screen (origin at the
    // bottom left, as GL counts). False, logged, when the point is behind
    // the camera.
    static bool worldCoordToScreen(Ogre::Vector3 objPos, Ogre::Camera* camera, Ogre::Vector2 screenSize,
                                   Ogre::Vector2& out);
    // The world point under a screen pixel on the camera's depth of the
    // plane z = 0. Always false: callers read `out`.
    static bool screenCoordToWorld(Ogre::Vector2 screenPos, Ogre::Camera* camera, Ogre::Vector2 screenSize,
                                   Ogre::Vector3& out);
};

}  // namespace Morvane
