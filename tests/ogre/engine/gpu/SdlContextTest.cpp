// The on-screen SDL context: same scene shape as the hidden one, its window
// drawn and read back, input events routed to listeners of its window only.
#include <gtest/gtest.h>

#include <Bites/OgreInput.h>
#include <SDL.h>

#include "GpuTestSupport.h"
#include "core/MVNByteBufferPool.h"
#include "engine/MVNOgreContextSDL.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

struct CountingListener : OgreBites::InputListener {
    int keys = 0;
    int touches = 0;
    bool keyPressed(const OgreBites::KeyboardEvent&) override {
        ++keys;
        return true;
    }
    bool touchMoved(const OgreBites::TouchFingerEvent&) override {
        ++touches;
        return false;
    }
    bool touchPressed(const OgreBites::TouchFingerEvent&) override {
        ++touches;
        return false;
    }
};

// The SDL context runs on the calling thread: no manager, no render queue.
TEST(SdlContext, DrawsItsSceneAndRoutesInputToItsWindow) {
    ASSERT_EQ(MVNOgreManager::getSingleton()->getOgreContext(), nullptr);
    MVNOgreContextSDL ctx("SdlTest", 64, 48);
    ASSERT_EQ(ctx.initApp(), 0);
    ASSERT_NE(ctx.getRenderWindow(), nullptr);
    EXPECT_FLOAT_EQ(ctx.getCamera()->getRealPosition().z, 10000.f);

    ctx.getRenderWindow()->getViewport(0)->setBackgroundColour(Ogre::ColourValue(1, 0, 1, 1));
    ctx.pollEvents();
    ctx.getRenderWindow()->update(false);
    MVNByteBuffer* image = ctx.getRenderImageWithGLReadPixels();
    ASSERT_NE(image, nullptr);
    Picture pic{image->ptr(), 64, 48};
    EXPECT_EQ(pic.at(0, 0), kMagenta);
    EXPECT_EQ(pic.at(63, 47), kMagenta);
    MVNByteBufferPool::sRelease(image);

    CountingListener listener;
    ctx.addInputListener(&listener);
    unsigned int id = SDL_GetWindowID(ctx.getWindows().front().native);
    ASSERT_NE(id, 0u);
    OgreBites::Event key;
    key.type = OgreBites::KEYDOWN;
    key.key.keysym.sym = 'a';
    ctx._fireInputEvent(key, id + 1);  // another window: not delivered
    EXPECT_EQ(listener.keys, 0);
    ctx._fireInputEvent(key, id);
    EXPECT_EQ(listener.keys, 1);
    // A finger that comes down is first moved there, then pressed.
    OgreBites::Event finger;
    finger.type = OgreBites::FINGERDOWN;
    ctx._fireInputEvent(finger, id);
    EXPECT_EQ(listener.touches, 2);
    ctx.removeInputListener(&listener);
    ctx.closeApp();
}

TEST(SdlContext, AddingAListenerBeforeAnyWindowThrows) {
    MVNOgreContextSDL ctx("SdlTest", 64, 48);
    CountingListener listener;
    try {
        ctx.addInputListener(&listener);
        FAIL() << "no exception";
    } catch (const Ogre::Exception& e) {
        EXPECT_EQ(e.getDescription(), "!mWindows.empty() failed. create a window first");
        EXPECT_EQ(e.getSource(), "Morvane::MVNOgreContextBase::addInputListener");
    }
}

}  // namespace
