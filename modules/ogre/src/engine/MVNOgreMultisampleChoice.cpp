#include "engine/MVNOgreMultisampleChoice.h"

#include <Ogre.h>
#include <OgreRectangle2D.h>
#include <OgreOverlay.h>
#include <OgreOverlayManager.h>

#include <atomic>
#include <cmath>

namespace Morvane {

namespace {

// Set by the host's thread before the engine starts, read on the render
// thread.
std::atomic<bool> sAutomatic{false};

// The rasterizer snaps vertices to 1/256 of a pixel: corners nearer each
// other than half of that are one.
const float kSnap = 1.0f / 512.0f;
// The sample patterns of 4x and 8x multisampling keep every sample at least
// 1/16 of a pixel inside its pixel. An edge square to the frame nearer a
// pixel boundary than that, less the snap, leaves every sample of a pixel
// on the side of the pixel's centre: the pixel is covered as with one
// sample.
const float kNearBoundary = 1.0f / 16.0f - 1.0f / 256.0f;

bool same(float a, float b) { return std::fabs(a - b) < kSnap; }

// An edge at `v` of a frame `size` pixels across covers the pixels it
// touches as one sample would: outside the frame it touches none.
bool edgeHarmless(float v, float size) {
    if (v <= kNearBoundary || v >= size - kNearBoundary) return true;
    return std::fabs(v - std::round(v)) < kNearBoundary;
}

struct Frame {
    Ogre::Affine3 view;
    Ogre::Matrix4 projection;
    float width;
    float height;

    // A point of the world in frame pixels, top-left origin.
    bool project(const Ogre::Vector3& world, Ogre::Vector2& pixel) const {
        Ogre::Vector3 seen = view * world;
        Ogre::Vector4 clip = projection * Ogre::Vector4(seen.x, seen.y, seen.z, 1.0f);
        if (clip.w <= 0.0f) return false;
        pixel.x = (clip.x / clip.w + 1.0f) * 0.5f * width;
        pixel.y = (1.0f - clip.y / clip.w) * 0.5f * height;
        return true;
    }
};

// Four corners, in the order they go round the quad, make a rectangle
// square to the frame whose edges inside the frame lie on whole pixels.
bool squareOnPixels(const Ogre::Vector2 (&c)[4], float width, float height) {
    for (int i = 0; i < 4; ++i) {
        const Ogre::Vector2& a = c[i];
        const Ogre::Vector2& b = c[(i + 1) % 4];
        if (!edgeHarmless(a.x, width) || !edgeHarmless(a.y, height)) return false;
        if (!same(a.x, b.x) && !same(a.y, b.y)) return false;
    }
    return true;
}

// The corners of a flat single quad, the mesh of every clip's plane and
// colour chunk: a plane the engine made facing +z, centred on its origin.
// The engine pads a mesh's bounds on each side by a factor of their extent
// on that axis (none in depth for a flat one); taken off again, they give
// the corners. False for any other mesh.
bool quadCorners(const Ogre::Entity* entity, Ogre::Vector3 (&corners)[4]) {
    const Ogre::MeshPtr& mesh = entity->getMesh();
    if (!mesh || mesh->getNumSubMeshes() != 1) return false;
    const Ogre::VertexData* vertices =
        mesh->sharedVertexData ? mesh->sharedVertexData : mesh->getSubMesh(0)->vertexData;
    if (vertices == nullptr || vertices->vertexCount != 4) return false;
    const Ogre::AxisAlignedBox& box = mesh->getBounds();
    if (!box.isFinite()) return false;
    const Ogre::Vector3& lo = box.getMinimum();
    const Ogre::Vector3& hi = box.getMaximum();
    if (lo.x != -hi.x || lo.y != -hi.y || lo.z != hi.z) return false;
    float grow = 1.0f + 2.0f * Ogre::MeshManager::getSingleton().getBoundsPaddingFactor();
    float x = hi.x / grow;
    float y = hi.y / grow;
    float z = lo.z;
    corners[0] = Ogre::Vector3(-x, -y, z);
    corners[1] = Ogre::Vector3(x, -y, z);
    corners[2] = Ogre::Vector3(x, y, z);
    corners[3] = Ogre::Vector3(-x, y, z);
    return true;
}

bool entityNeeds(const Ogre::Entity* entity, const Frame& frame) {
    Ogre::Vector3 local[4];
    if (!quadCorners(entity, local)) return true;
    const Ogre::Affine3& world = entity->_getParentNodeFullTransform();
    Ogre::Vector2 corners[4];
    for (int i = 0; i < 4; ++i) {
        if (!frame.project(world * local[i], corners[i])) return true;
    }
    return !squareOnPixels(corners, frame.width, frame.height);
}

// A rectangle given in -1..1 of the frame; one spread over everything
// (no corners set) fills the frame.
bool rectangleNeeds(const Ogre::Rectangle2D* rectangle, const Frame& frame) {
    const Ogre::AxisAlignedBox& box = rectangle->getBoundingBox();
    if (box.isInfinite()) return false;
    if (box.isNull()) return false;
    const Ogre::Vector3& lo = box.getMinimum();
    const Ogre::Vector3& hi = box.getMaximum();
    for (float x : {lo.x, hi.x}) {
        if (!edgeHarmless((x + 1.0f) * 0.5f * frame.width, frame.width)) return true;
    }
    for (float y : {lo.y, hi.y}) {
        if (!edgeHarmless((1.0f - y) * 0.5f * frame.height, frame.height)) return true;
    }
    return false;
}

bool nodeNeeds(const Ogre::Node* node, const Frame& frame) {
    if (const auto* scene = dynamic_cast<const Ogre::SceneNode*>(node)) {
        for (const Ogre::MovableObject* object : scene->getAttachedObjects()) {
            if (!object->isVisible()) continue;
            if (const auto* entity = dynamic_cast<const Ogre::Entity*>(object)) {
                if (entityNeeds(entity, frame)) return true;
            } else if (const auto* rectangle = dynamic_cast<const Ogre::Rectangle2D*>(object)) {
                if (rectangleNeeds(rectangle, frame)) return true;
            } else if (dynamic_cast<const Ogre::Camera*>(object) == nullptr &&
                       dynamic_cast<const Ogre::Light*>(object) == nullptr) {
                return true;
            }
        }
    }
    for (const Ogre::Node* child : node->getChildren()) {
        if (nodeNeeds(child, frame)) return true;
    }
    return false;
}

bool overlayShown() {
    Ogre::OverlayManager* overlays = Ogre::OverlayManager::getSingletonPtr();
    if (overlays == nullptr) return false;
    auto it = overlays->getOverlayIterator();
    while (it.hasMoreElements()) {
        if (it.getNext()->isVisible()) return true;
    }
    return false;
}

}  // namespace

void MVNOgreMultisampleChoice::setAutomatic(bool automatic) { sAutomatic.store(automatic); }

bool MVNOgreMultisampleChoice::automatic() { return sAutomatic.load(); }

bool MVNOgreMultisampleChoice::needed(Ogre::SceneManager* scene, Ogre::Camera* camera, int width, int height) {
    if (scene == nullptr || camera == nullptr || width <= 0 || height <= 0) return true;
    if (overlayShown()) return true;
    Frame frame{camera->getViewMatrix(), camera->getProjectionMatrix(), static_cast<float>(width),
                static_cast<float>(height)};
    return nodeNeeds(scene->getRootSceneNode(), frame);
}

}  // namespace Morvane
