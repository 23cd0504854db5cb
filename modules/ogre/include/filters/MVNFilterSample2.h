#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "core/Mutex.h"
#include "services/MVNFilter.h"

namespace Morvane {

class MVNOgreSceneManager;
class MVNOgreTextureNodeImpl;
class MVNProducer;

// The service "ogre.filter.sample2": two materials one after the other, the
// second reading the first one's render texture. Meant for separable
// effects ("GaussianBlurX" then "GaussianBlurY"): two one-dimensional
// passes cost far less than one two-dimensional one.
//
// Pass one draws the input into mSceneOne. With output kind 1 pass two is
// the quad in the shared scene; with the other kinds it draws into mSceneTwo,
// whose texture is the filter's output (and is also shown in the group's
// scene for kind 4). Every "ufm" property goes to every node.
//
// mLock orders _Config, the release of the scenes and processImage.
class MVN_OGRE_API MVNFilterSample2 : public MVNFilter {
public:
    MVNFilterSample2(const MVNProfile& profile, const char* resourceOne, const char* resourceTwo);
    ~MVNFilterSample2() override;
    MVNFilterSample2(const MVNFilterSample2&) = delete;
    MVNFilterSample2& operator=(const MVNFilterSample2&) = delete;

    void _OnPropertyChanged(const char* key) override;
    int init() override;
    void release() override;
    void resetRender(int position) override;
    void reconfig() override;
    MVNFrame* processImage(int position, MVNFrame* frame) override;
    void setGeometry(const MVNRect& rect) override;
    void _OnConnected(MVNService* service) override;
    void _OnDisconnected(MVNService* service) override;
    MVNFilter* _alloc() override;
    void _OnVisibleChanged(bool visible) override;
    void _OnRotationChanged(int rotation) override;

    // For tests: the render textures of the two passes.
    const std::string& rttOne() const { return mRttOne; }
    const std::string& rttTwo() const { return mRttTwo; }
    bool hasSceneTwo() const { return mSceneTwo != nullptr; }

private:
    void _Config();
    void _SetDefaultParameters(int width, int height);
    void _SetUniformFloat(const std::string& name, float value);
    void _SetZOrder(int zOrder);
    // mLock held.
    void _releaseFilterNode();
    MVNFrame* _fail(MVNFrame* frame);

    MVNOgreSceneManager* mSceneOne = nullptr;  // owned; render thread builds and deletes it
    MVNOgreSceneManager* mSceneTwo = nullptr;  // owned; only for output kinds 2 to 4
    MVNOgreTextureNodeImpl* mNodeOne = nullptr;  // pass one, in mSceneOne
    MVNOgreTextureNodeImpl* mNodeTwo = nullptr;  // pass two, in mSceneTwo
    MVNOgreTextureNodeImpl* mNodeOut = nullptr;  // what the shared or group scene shows
    std::string mRttOne;                       // from "CanvasRttPass"
    std::string mRttTwo;                       // from "CanvasRttPass2"
    Mutex mLock;
    bool mInited = false;                      // set by init, cleared by release
    float mFrameDuration = 0;                  // microseconds per frame of the profile
};

}  // namespace Morvane
