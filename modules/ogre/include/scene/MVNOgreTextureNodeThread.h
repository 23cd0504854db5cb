#pragma once
#include <mutex>
#include <string>

#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreTextureNodeImpl.h"

namespace Morvane {

// A texture node for any thread: it has the node's operations and runs each
// of them on the render thread, under a fixed step name, and waits until it
// is done. Services hold this rather than a concrete node, since engine
// objects may only be touched on the render thread.
//
// The arguments of a call travel in fields and each step captures only
// `this`, so that a frame's upload or move allocates nothing on the way.
// Calls of one wrapper are serialised by its own lock. The inner node stays
// null when the engine isn't running or its constructor threw (the queue
// logs that); every operation is then skipped.
template <class T>
class MVNOgreTextureNodeThread : public MVNOgreTextureNodeImpl {
public:
    // Builds `new T(args...)` on the render thread.
    template <typename... Args>
    explicit MVNOgreTextureNodeThread(const Args&... args) {
        MVNOgreManager::getSingleton()->callRenderableWait([&]() { node = new T(args...); }, "textureNodeInit");
    }

    // The same, hidden in the same step: no frame shows the node before its
    // owner has placed it and called setVisible(true).
    struct StartHidden {};
    template <typename... Args>
    explicit MVNOgreTextureNodeThread(StartHidden, const Args&... args) {
        MVNOgreManager::getSingleton()->callRenderableWait(
            [&]() {
                node = new T(args...);
                node->setVisible(false);
            },
            "textureNodeInit");
    }

    ~MVNOgreTextureNodeThread() override {
        std::lock_guard<std::mutex> guard(lock);
        // Without a running queue the engine is gone and so is everything
        // the node referred to; the node itself is then left behind.
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                delete node;
                node = nullptr;
            },
            "textureNodeRelease");
    }

    MVNOgreTextureNodeThread(const MVNOgreTextureNodeThread&) = delete;
    MVNOgreTextureNodeThread& operator=(const MVNOgreTextureNodeThread&) = delete;

    void updateTexture(uint8_t* data, int width, int height) override {
        std::lock_guard<std::mutex> guard(lock);
        argData = data;
        argWidth = width;
        argHeight = height;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->updateTexture(argData, argWidth, argHeight);
            },
            "textureNodeUpdate");
    }

    void setGeometry(const MVNRect& rect) override {
        std::lock_guard<std::mutex> guard(lock);
        argRect = rect;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setGeometry(argRect);
            },
            "textureNodeSetGeo");
    }

    void setVisible(bool visible) override {
        std::lock_guard<std::mutex> guard(lock);
        argBool = visible;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setVisible(argBool);
            },
            "textureNodeSetVisible");
    }

    void updateAnimation(int position) override {
        std::lock_guard<std::mutex> guard(lock);
        argInt = position;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->updateAnimation(argInt);
            },
            "textureNodeUpdateAnim");
    }

    void setAnimation(int type) override {
        std::lock_guard<std::mutex> guard(lock);
        argInt = type;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setAnimation(argInt);
            },
            "textureNodeSetAnim");
    }

    void setRotation(int degrees) override {
        std::lock_guard<std::mutex> guard(lock);
        argInt = degrees;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setRotation(argInt);
            },
            "textureNodeSetRotation");
    }

    void setZOrder(int zOrder) override {
        std::lock_guard<std::mutex> guard(lock);
        argInt = zOrder;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setZOrder(argInt);
            },
            "textureNodesetZOrder");
    }

    // With `wait` false the caller is on the render thread already: the node
    // is called at once, without the queue.
    void setUniformFloat(const std::string& name, float value, bool wait) override {
        if (!wait) {
            if (node) node->setUniformFloat(name, value, false);
            return;
        }
        std::lock_guard<std::mutex> guard(lock);
        argName = &name;
        argFloat = value;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setUniformFloat(*argName, argFloat, true);
            },
            "textureNodeSetUniformFloat");
    }

    void setSceneBlending(int source, int destination) override {
        std::lock_guard<std::mutex> guard(lock);
        argInt = source;
        argInt2 = destination;
        MVNOgreManager::getSingleton()->callRenderableWait(
            [this]() {
                if (node) node->setSceneBlending(argInt, argInt2);
            },
            "textureNodeSetSceneBlending");
    }

    // The inner node, for code that runs on the render thread; null when it
    // could not be built.
    T* getNode() const { return node; }

private:
    T* node = nullptr;  // owned; built and deleted on the render thread
    std::mutex lock;    // one call of this wrapper at a time
    // Arguments of the call in flight; valid while its caller waits.
    uint8_t* argData = nullptr;
    int argWidth = 0;
    int argHeight = 0;
    int argInt = 0;
    int argInt2 = 0;
    bool argBool = false;
    float argFloat = 0.0f;
    const std::string* argName = nullptr;
    MVNRect argRect;
};

}  // namespace Morvane
