// A released render target comes back from the pool under its old name with
// GPU storage of the new size, which the engine really draws into.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "scene/MVNOgreResourceManager.h"
#include "QuadTestSupport.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

// Clears `texture` to `c` through a viewport of the shared camera and reads
// it back: the size of the storage that was drawn and its first pixel.
struct Drawn {
    int width = 0;
    int height = 0;
    RGBA first{0, 0, 0, 0};
};

Drawn drawInto(const Ogre::TexturePtr& texture, RGBA c) {
    Drawn d;
    Ogre::RenderTarget* target = texture->getBuffer()->getRenderTarget();
    Ogre::Camera* camera = MVNOgreManager::getSingleton()->getOgreContext()->getCamera();
    Ogre::Viewport* viewport = target->addViewport(camera);
    viewport->setBackgroundColour(Ogre::ColourValue(c.r / 255.f, c.g / 255.f, c.b / 255.f, 1));
    viewport->setOverlaysEnabled(false);
    target->update();
    d.width = static_cast<int>(target->getWidth());
    d.height = static_cast<int>(target->getHeight());
    std::vector<uint8_t> bytes(static_cast<size_t>(d.width) * d.height * 4);
    texture->getBuffer()->blitToMemory(Ogre::PixelBox(d.width, d.height, 1, Ogre::PF_BYTE_BGRA, bytes.data()));
    d.first = RGBA{bytes[2], bytes[1], bytes[0], bytes[3]};
    target->removeAllViewports();
    return d;
}

using ResourceRecycling = QuadEngineTest;

TEST_F(ResourceRecycling, ReleasedRenderTargetComesBackResizedUnderItsName) {
    MVNOgreResourceManager* pool = MVNOgreResourceManager::getSingleton();
    LogCapture log;
    std::string firstName, secondName;
    Drawn small, large;
    Ogre::Texture* firstObject = nullptr;
    Ogre::Texture* secondObject = nullptr;
    onRenderThread([&]() {
        Ogre::TexturePtr rtt = pool->getRTT("tester", 64, 32);
        firstName = rtt->getName();
        firstObject = rtt.get();
        small = drawInto(rtt, kRed);
        pool->releaseRTT(firstName, rtt);
        rtt = pool->getRTT("tester", 200, 120);
        secondName = rtt->getName();
        secondObject = rtt.get();
        large = drawInto(rtt, kGreen);
        pool->releaseRTT(secondName, rtt);
    });
    EXPECT_EQ(firstName.rfind("RTT_", 0), 0u) << firstName;
    EXPECT_EQ(secondName, firstName);
    EXPECT_EQ(secondObject, firstObject);
    EXPECT_EQ(small.width, 64);
    EXPECT_EQ(small.height, 32);
    EXPECT_EQ(small.first, kRed);
    EXPECT_EQ(large.width, 200);
    EXPECT_EQ(large.height, 120);
    EXPECT_EQ(large.first, kGreen);
    EXPECT_EQ(log.count(MVNLogLevel::Debug, "Morvane::MVNOgreResourceManager", "tester reuse " + firstName), 1);

    // clean() takes the pooled target out of the engine.
    bool known = true;
    onRenderThread([&]() {
        pool->clean();
        known = Ogre::TextureManager::getSingleton().resourceExists(firstName, Ogre::RGN_DEFAULT);
    });
    EXPECT_FALSE(known);
    EXPECT_EQ(pool->idleRttCount(), 0u);
}

TEST_F(ResourceRecycling, DynamicTexturesAreRemovedNotPooled) {
    MVNOgreResourceManager* pool = MVNOgreResourceManager::getSingleton();
    std::string name;
    bool afterRelease = true;
    onRenderThread([&]() {
        Ogre::TexturePtr texture = pool->getTexture("tester", 32, 16);
        name = texture->getName();
        // A name the engine doesn't know: nothing happens.
        pool->releaseTexture("NoSuchTexture", texture);
        pool->releaseTexture(name, texture);
        afterRelease = Ogre::TextureManager::getSingleton().resourceExists(name, Ogre::RGN_DEFAULT);
    });
    EXPECT_EQ(name.rfind("texture_", 0), 0u) << name;
    EXPECT_FALSE(afterRelease);
    EXPECT_EQ(pool->idleTextureCount(), 0u);
}

}  // namespace
