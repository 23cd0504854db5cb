#pragma once
#include <functional>
#include <string>

#include "MVNOgreExport.h"
#include "core/Mutex.h"
#include "services/MVNFilter.h"

namespace Morvane {

class MVNProducer;

// The life cycle the GPU filter services share: configuration when the
// chain properties change, the release of the engine objects, and the frame
// hop of processImage (input kind checks, upload of a frame with pixels,
// the render-texture frame handed on). A service fills in what it draws:
// _Config builds its engine objects, _releaseFilterNode drops them, and the
// per-frame hooks feed and draw them.
//
// mLock orders _Config, the release of the engine objects and processImage;
// property and geometry changes run without it unless a service says so.
// Log lines carry the tag the service passes in.
class MVN_OGRE_API MVNOgreFilterService : public MVNFilter {
public:
    MVNOgreFilterService(const MVNProfile& profile, MVNFilterTypeUse use, const char* tag);
    ~MVNOgreFilterService() override = default;
    MVNOgreFilterService(const MVNOgreFilterService&) = delete;
    MVNOgreFilterService& operator=(const MVNOgreFilterService&) = delete;

    void _OnPropertyChanged(const char* key) override;
    int init() override;
    void release() override;
    void reconfig() override;
    MVNFrame* processImage(int position, MVNFrame* frame) override;
    void _OnConnected(MVNService* service) override;
    void _OnDisconnected(MVNService* service) override;

protected:
    // Builds the engine objects for the chain properties; takes mLock.
    virtual void _Config() = 0;
    // Drops the engine objects; mLock held.
    virtual void _releaseFilterNode() = 0;
    // Extra work of init and release, mLock held.
    virtual void _onInit() {}
    virtual void _onRelease() {}
    // Extra work of reconfig before _Config, mLock held.
    virtual void _onReconfig() {}
    // A "ufm" property changed.
    virtual void _SetUniform(const std::string& name) = 0;
    virtual void _SetZOrder(int zOrder) = 0;
    // Any other property.
    virtual void _OnOtherPropertyChanged(const char* key) {}

    // processImage's steps, mLock held. Before the input is looked at:
    // false fails the frame.
    virtual bool _beforeInput(int position) { return true; }
    // A frame with pixels (possibly none this time) for input kind 1;
    // false fails the frame.
    virtual bool _takeFrame(MVNFrame* frame) = 0;
    // True when the filter stands aside and the input goes on unchanged.
    virtual bool _standsAside() const { return false; }
    // Draws whatever the filter draws off the shared scene this frame.
    virtual void _render(int position, int inputType, int outputType) = 0;
    // The render texture handed on for output kinds 2 to 4.
    virtual const std::string& _outputRtt() const = 0;

    // The texture a private scene reads for the input kind: the picture
    // file of an image clip (shown until the first upload), or "_inputRtt".
    // False, logged, when the input kind can't be served.
    bool _inputTexture(MVNProducer* producer, int inputType, std::string& texture);
    // Hands a frame's pixels to `upload` as B, G, R, A, converting when the
    // frame holds another layout; false, logged with `failure` (one %s, the
    // string id), when it could not be converted. Blank and render-texture
    // frames carry nothing to upload.
    bool _uploadPixels(MVNFrame* frame, const std::function<void(unsigned char*, int, int)>& upload,
                       const char* failure);
    static MVNFrame* _fail(MVNFrame* frame);
    // The chain is applied at once only while editing or previewing; the
    // render modes configure when they are told to.
    static bool _configuresAtOnce();

    const char* mTag;
    Mutex mLock;
    bool mInited = false;       // set by init, cleared by release
    float mFrameDuration = 0;   // microseconds per frame of the profile
};

}  // namespace Morvane
