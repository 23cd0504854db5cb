// A colour chunk is a plane of one colour that covers the pixels it was
// made for, and leaves nothing behind in the engine.
#include <gtest/gtest.h>

#include "GpuTestSupport.h"
#include "scene/MVNOgreColorChunk.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// Render thread only.
size_t meshCount() {
    size_t n = 0;
    for (auto it = Ogre::MeshManager::getSingleton().getResourceIterator(); it.hasMoreElements(); it.moveNext()) ++n;
    return n;
}

// A chunk writes and tests depth: the depth of the frame before must not
// hide it once it has moved away from the camera, so the composed frame's
// depth is cleared while a chunk lives, even though plain quads don't need it.
TEST(ColorChunk, CoversItsSizeInOneColourAtAnyDepthAndGoesAway) {
    const RGBA colour{10, 200, 30, 255};
    Marker windowed("not_full_screen");
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    TestScene::setBackground(kMagenta);
    MVNOgreColorChunk* chunk = nullptr;
    size_t meshesBefore = 0;
    onRenderThread([&]() {
        meshesBefore = meshCount();
        chunk = new MVNOgreColorChunk("MorvaneScene", W / 2, H / 2, 0, MVNColor4B(10, 200, 30, 255));
        // The chunk's centre at the centre of the window's top-left quarter.
        chunk->setPosition(-W / 4.0f, H / 4.0f, 1);
    });
    ASSERT_TRUE(chunk->isBuilt());
    {
        RenderImage image(W, H);
        ASSERT_TRUE(image.ok());
        EXPECT_EQ(image.at(0, 0), colour);
        EXPECT_EQ(image.at(W / 2 - 1, H / 2 - 1), colour);
        EXPECT_EQ(image.at(W / 2, H / 2), kMagenta);
        EXPECT_EQ(image.at(W - 1, H - 1), kMagenta);
    }
    for (float z : {300.0f, 100.0f}) {
        SCOPED_TRACE(z);
        onRenderThread([&]() { chunk->setPosition(-W / 4.0f, H / 4.0f, z); });
        RenderImage image(W, H);
        ASSERT_TRUE(image.ok());
        EXPECT_EQ(image.at(W / 4, H / 4), colour);
    }
    size_t meshesAfter = 0;
    onRenderThread([&]() {
        delete chunk;
        meshesAfter = meshCount();
    });
    EXPECT_EQ(meshesAfter, meshesBefore);
}

}  // namespace
