#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreExport.h"
#include "filters/MVNOgreFilterService.h"

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
class MVN_OGRE_API MVNFilterSample : public MVNOgreFilterService {
public:
    MVNFilterSample(const MVNProfile& profile, const char* resource, MVNFilterTypeUse use);
    ~MVNFilterSample() override;
    MVNFilterSample(const MVNFilterSample&) = delete;
    MVNFilterSample& operator=(const MVNFilterSample&) = delete;

    void resetRender(int position) override;
    void setGeometry(const MVNRect& rect) override;
    MVNFilter* _alloc() override;
    void _OnVisibleChanged(bool visible) override;
    bool drawsPicture() override;
    void _OnAnimationChanged(int animation) override;
    void _OnRotationChanged(int rotation) override;

    // For tests and tools: the back-end, null until configured.
    MVNOgreFilterBase* filterNode() const { return mFilterNode; }
    const std::string& rttName() const { return mFilterRtt; }
    const std::string& lutTextureName() const { return mLutTextureName; }
    // The texture between the two passes of a separable filter.
    const std::string& passRttName() const { return mPassRtt; }
    // Seconds of played filter time so far.
    float playedTime() const { return mTime; }

protected:
    void _Config() override;
    void _releaseFilterNode() override;
    void _SetUniform(const std::string& name) override;
    void _SetZOrder(int zOrder) override;
    bool _beforeInput(int position) override;
    bool _takeFrame(MVNFrame* frame) override;
    bool _standsAside() const override { return mFilterNode == nullptr; }
    void _render(int position, int inputType, int outputType) override;
    const std::string& _outputRtt() const override { return mFilterRtt; }

private:
    void _PropertiesInit(const std::string& resource);
    void _SetupParameters();
    void _processUniform(int position);
    // mLock held.
    void _releaseLutTexture();
    MVNProducer* _producer() const;

    MVNOgreFilterBase* mFilterNode = nullptr;  // owned; null until configured
    std::string mFilterRtt;                    // this filter's render texture, from "FilterRtt"
    std::string mLutTextureName;               // its lookup-table texture, from "LutFilterTexture"
    std::string mPassRtt;                      // between the passes of a two-pass filter, from "FilterRttPass"
    uint32_t mLastFrame = 0xFFFFFFFFu;         // position last seen by _processUniform; all ones: none
    float mTime = 0;                           // accumulated seconds of played filter time
};

}  // namespace Morvane
