#include "engine/MVNCoordUtils.h"

#include <OgreCamera.h>
#include <OgreMatrix4.h>
#include <OgreVector.h>

#include <sstream>

#include "core/MVNLog.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNCoordUtils";

// The matrices and intermediate vectors go to the debug log rather than to
// the standard output of the host.
template <typename T>
static void trace(const char* prefix, const T& value) {
    std::ostringstream os;
    os << value;
    log_debug(TAG, "%s%s", prefix, os.str().c_str());
}

// Towards zero for positive values, half a unit further down for negative ones.
static int toPixel(float v) { return v >= 0 ? static_cast<int>(v) : static_cast<int>(v - 0.5f); }

bool MVNCoordUtils::worldCoordToScreen(Ogre::Vector3 objPos, Ogre::Camera* camera, Ogre::Vector2 screenSize,
                                       Ogre::Vector2& out) {
    if (!camera) return false;
    const Ogre::Affine3& view = camera->getViewMatrix();
    const Ogre::Matrix4& proj = camera->getProjectionMatrix();
    trace("viewMatrix:", Ogre::Matrix4(view));
    trace("projMatrix:", proj);
    Ogre::Vector4 p = proj * (Ogre::Matrix4(view) * Ogre::Vector4(objPos.x, objPos.y, objPos.z, 1));
    trace("out:", p);
    if (!(p.w > 0)) {
        log_error(TAG, "objPos not in camera view range");
        return false;
    }
    Ogre::Vector3 ndc(p.x / p.w, p.y / p.w, p.z / p.w);
    ndc = ndc * 0.5f + Ogre::Vector3(0.5f);
    trace("out:", ndc);
    out.x = static_cast<float>(toPixel(ndc.x * screenSize.x));
    out.y = static_cast<float>(toPixel(ndc.y * screenSize.y));
    return true;
}

bool MVNCoordUtils::screenCoordToWorld(Ogre::Vector2 screenPos, Ogre::Camera* camera, Ogre::Vector2 screenSize,
                                       Ogre::Vector3& out) {
    if (!camera) return false;
    Ogre::Vector3 camPos = camera->getRealPosition();
    trace("camPos:", camPos);
    Ogre::Matrix4 view(camera->getViewMatrix());
    const Ogre::Matrix4& proj = camera->getProjectionMatrix();
    trace("viewMatrix:", view);
    trace("projMatrix:", proj);
    // Clip coordinates of the pixel at the camera's distance from z = 0.
    float w = camPos.z;
    Ogre::Vector4 v(screenPos.x / screenSize.x, screenPos.y / screenSize.y, 10000, w);
    v.x = (v.x - 0.5f) / 0.5f * w;
    v.y = (v.y - 0.5f) / 0.5f * w;
    v.z = (v.z - 0.5f) / 0.5f * w;
    Ogre::Vector4 world = view.inverse() * (proj.inverse() * v);
    out.x = static_cast<float>(toPixel(world.x));
    out.y = static_cast<float>(toPixel(world.y));
    out.z = static_cast<float>(toPixel(world.z));
    return false;
}

}  // namespace Morvane
