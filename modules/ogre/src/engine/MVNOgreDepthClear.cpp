#include "engine/MVNOgreDepthClear.h"

#include <Ogre.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>

namespace Morvane {

namespace {

class Policy : public Ogre::RenderTargetListener {
public:
    void preViewportUpdate(const Ogre::RenderTargetViewportEvent& evt) override {
        Ogre::Viewport* viewport = evt.source;
        if (!viewport->getClearEveryFrame()) return;
        std::lock_guard<std::mutex> guard(mLock);
        auto seen = mSeen.find(viewport);
        bool depth = mWriters > 0 || seen == mSeen.end() || seen->second != mGeneration;
        mSeen[viewport] = mGeneration;
        unsigned int buffers = viewport->getClearBuffers();
        buffers = depth ? (buffers | Ogre::FBT_DEPTH) : (buffers & ~unsigned(Ogre::FBT_DEPTH));
        if (buffers != viewport->getClearBuffers()) viewport->setClearEveryFrame(true, buffers);
    }
    // A new viewport at the address of a gone one must start with a clear.
    void viewportRemoved(const Ogre::RenderTargetViewportEvent& evt) override {
        std::lock_guard<std::mutex> guard(mLock);
        mSeen.erase(evt.source);
    }
    void changeWriters(int delta) {
        std::lock_guard<std::mutex> guard(mLock);
        mWriters += delta;
        ++mGeneration;
    }
    int writers() {
        std::lock_guard<std::mutex> guard(mLock);
        return mWriters;
    }

private:
    std::mutex mLock;
    int mWriters = 0;
    uint64_t mGeneration = 0;
    std::unordered_map<Ogre::Viewport*, uint64_t> mSeen;  // generation of the last depth clear
};

// Never destroyed: render targets may outlive static destruction order.
Policy& policy() {
    static Policy* instance = new Policy;
    return *instance;
}

}  // namespace

void MVNOgreDepthClear::watch(Ogre::RenderTarget* target) {
    if (target) target->addListener(&policy());
}

void MVNOgreDepthClear::addWriter() { policy().changeWriters(1); }

void MVNOgreDepthClear::removeWriter() { policy().changeWriters(-1); }

int MVNOgreDepthClear::writers() { return policy().writers(); }

}  // namespace Morvane
