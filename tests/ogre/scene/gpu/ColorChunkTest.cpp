// A colour chunk is a plane of one colour that covers the pixels it was
// made for, and leaves nothing behind in the engine.
#include <gtest/gtest.h>

#include "GpuTestSupport.h"
#include "core/MVNByteBufferPool.h"
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

TEST(ColorChunk, CoversItsSizeInOneColourAndGoesAway) {
    touchMarker("not_full_screen");
    {
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
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        ASSERT_NE(image, nullptr);
        Picture pic{image->ptr(), W, H};
        EXPECT_EQ(pic.at(0, 0), (RGBA{10, 200, 30, 255}));
        EXPECT_EQ(pic.at(W / 2 - 1, H / 2 - 1), (RGBA{10, 200, 30, 255}));
        EXPECT_EQ(pic.at(W / 2, H / 2), kMagenta);
        EXPECT_EQ(pic.at(W - 1, H - 1), kMagenta);
        MVNByteBufferPool::sRelease(image);
        size_t meshesAfter = 0;
        onRenderThread([&]() {
            delete chunk;
            meshesAfter = meshCount();
        });
        EXPECT_EQ(meshesAfter, meshesBefore);
    }
    removeMarker("not_full_screen");
}

// A chunk writes and tests depth: the depth of the frame before must not
// hide it once it has moved away from the camera, so the composed frame's
// depth is cleared while a chunk lives, even though plain quads don't need it.
TEST(ColorChunk, MovedAwayFromTheCameraItStillShows) {
    touchMarker("not_full_screen");
    {
        EngineRun run(W, H);
        ASSERT_EQ(run.rc, 0);
        TestScene::setBackground(kMagenta);
        MVNOgreColorChunk* chunk = nullptr;
        onRenderThread([&]() {
            chunk = new MVNOgreColorChunk("MorvaneScene", W, H, 0, MVNColor4B(10, 200, 30, 255));
            chunk->setPosition(0, 0, 300);
        });
        ASSERT_TRUE(chunk->isBuilt());
        for (float z : {300.0f, 100.0f}) {
            SCOPED_TRACE(z);
            onRenderThread([&]() { chunk->setPosition(0, 0, z); });
            MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
            ASSERT_NE(image, nullptr);
            EXPECT_EQ((Picture{image->ptr(), W, H}.at(W / 2, H / 2)), (RGBA{10, 200, 30, 255}));
            MVNByteBufferPool::sRelease(image);
        }
        onRenderThread([&]() { delete chunk; });
    }
    removeMarker("not_full_screen");
}

}  // namespace
