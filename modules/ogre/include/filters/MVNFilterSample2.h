#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "filters/MVNOgreFilterService.h"

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
class MVN_OGRE_API MVNFilterSample2 : public MVNOgreFilterService {
public:
    MVNFilterSample2(const MVNProfile& profile, const char* resourceOne, const char* resourceTwo);
    ~MVNFilterSample2() override;
    MVNFilterSample2(const MVNFilterSample2&) = delete;
    MVNFilterSample2& operator=(const MVNFilterSample2&) = delete;

    void resetRender(int position) override;
    void setGeometry(const MVNRect& rect) override;
    MVNFilter* _alloc() override;
    void _OnVisibleChanged(bool visible) override;
    void _OnRotationChanged(int rotation) override;

    // For tests: the render textures of the two passes.
    const std::string& rttOne() const { return mRttOne; }
    const std::string& rttTwo() const { return mRttTwo; }
    bool hasSceneTwo() const { return mSceneTwo != nullptr; }

protected:
    void _Config() override;
    void _releaseFilterNode() override;
    void _SetUniform(const std::string& name) override;
    void _SetZOrder(int zOrder) override;
    bool _beforeInput(int position) override;
    bool _takeFrame(MVNFrame* frame) override;
    void _render(int position, int inputType, int outputType) override;
    const std::string& _outputRtt() const override { return mRttTwo; }

private:
    void _SetDefaultParameters(int width, int height);

    MVNOgreSceneManager* mSceneOne = nullptr;  // owned; render thread builds and deletes it
    MVNOgreSceneManager* mSceneTwo = nullptr;  // owned; only for output kinds 2 to 4
    MVNOgreTextureNodeImpl* mNodeOne = nullptr;  // pass one, in mSceneOne
    MVNOgreTextureNodeImpl* mNodeTwo = nullptr;  // pass two, in mSceneTwo
    MVNOgreTextureNodeImpl* mNodeOut = nullptr;  // what the shared or group scene shows
    std::string mRttOne;                       // from "CanvasRttPass"
    std::string mRttTwo;                       // from "CanvasRttPass2"
};

}  // namespace Morvane
