#pragma once
#include <cstdint>
#include <string>

#include "services/MVNFilter.h"
#include "MVNOgreExport.h"
#include "core/Mutex.h"

namespace Morvane {

class MVNOgreFilterBase;
class MVNProducer;

// The service "ogre.filter.sample" (and "ogre.tool"): a one-input GPU
// filter. "resource" names the filter in the catalogue and the material
// that does the work. Each frame the input goes into the render back-end,
// the time-dependent uniforms are computed, and the frame handed on either
// still lies in the shared scene (output kind 1) or names the render
// texture the back-end drew into (kinds 2 to 4). No pixel is touched on the
// processor.
//
// Input kinds (property "_inputType"): 1 a frame with pixels; 2 and 3 a
// frame naming the render texture "_inputRtt". Output kinds
// ("_outputType"): 1 the shared scene; 2 and 3 the filter's own render
// texture; 4 the same, also shown in the scene of the producer's group.
// The host's chain builder sets these; a change rebuilds the back-end.
//
// mLock orders _Config, the release of the back-end and processImage;
// property and geometry changes run without it.
class MVN_OGRE_API MVNFilterSample : public MVNFilter {
public:
    MVNFilterSample(const MVNProfile& profile, const char* resource, MVNFilterTypeUse use);
    ~MVNFilterSample() override;
    MVNFilterSample(const MVNFilterSample&) = delete;
    MVNFilterSample& operator=(const MVNFilterSample&) = delete;

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
    bool drawsPicture() override;
    void _OnAnimationChanged(int animation) override;
    void _OnRotationChanged(int rotation) override;

    // For tests and tools: the back-end, null until configured.
    MVNOgreFilterBase* filterNode() const { return mFilterNode; }
    const std::string& rttName() const { return mFilterRtt; }
    const std::string& lutTextureName() const { return mLutTextureName; }
    // Seconds of played filter time so far.
    float playedTime() const { return mTime; }

private:
    // Builds the back-end for the chain properties; needs no lock held.
    void _Config();
    void _PropertiesInit(const std::string& resource);
    void _SetupParameters();
    void _SetUniform(const std::string& name);
    void _SetZOrder(int zOrder);
    void _processUniform(int position);
    // mLock held.
    void _releaseFilterNode();
    void _releaseLutTexture();
    MVNProducer* _producer() const;
    MVNFrame* _fail(MVNFrame* frame);

    MVNOgreFilterBase* mFilterNode = nullptr;  // owned; null until configured
    std::string mFilterRtt;                    // this filter's render texture, from "FilterRtt"
    std::string mLutTextureName;               // its lookup-table texture, from "LutFilterTexture"
    Mutex mLock;
    uint32_t mLastFrame = 0xFFFFFFFFu;         // position last seen by _processUniform; all ones: none
    float mFrameDuration = 0;                  // microseconds per frame of the profile
    float mTime = 0;                           // accumulated seconds of played filter time
    bool mInited = false;                      // set by init, cleared by release
};

}  // namespace Morvane
