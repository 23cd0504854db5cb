#pragma once
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "core/MVNRect.h"
#include "services/MVNService.h"

namespace Morvane {

class MVNDecoder;
class MVNFilter;
class MVNRenderTexture;

// A source of frames in the timeline.
//
// The host keeps a producer's timing and placement in properties: "in",
// "out" and "length" (frames; playtime = out - in + 1), "geometry" (a rect
// in profile pixels, bottom-left origin; all zero means the whole profile),
// "anim", "rotation" (degrees, -1 for none) and "visible". Changing one of
// these through a setter or the property calls the matching _On...Changed
// hook and moves the producer's render texture and its video filters along.
//
// getImage(position) asks _getImage for the picture, then runs it through
// the CPU filters and the video filters in the order they were attached, and
// finally uploads a picture that still holds pixels to the producer's render
// texture, if it has one.
class MVNProducer : public MVNService {
public:
    explicit MVNProducer(const MVNProfile& profile);
    ~MVNProducer() override;

    void _OnPropertyChanged(const char* key) override;
    int getImage(int position, MVNFrame** frame) override;
    // The sound of `position` as _getAudio gives it (an MVNAudioBlock),
    // scaled by "volume" (default 1.0), then through the audio filters.
    int getAudio(int position, void* converter, MVNFrame** frame) override;

    // Hides the render texture until the next getImage.
    void resetRender(int position) override;

    // Stores the position; 0.
    virtual int seek(int position, int whence);
    virtual int getImageOrigin(int position, MVNFrame** frame) { return -1; }
    // _getCacheImage's frame, or null.
    virtual MVNFrame* getCacheImage(int position);
    virtual void prepareVideo(int position) {}
    virtual void prepareAudio(int position) {}
    // Where the media comes from: the "resource" property.
    virtual std::string locate();
    virtual void cleanCachedFrame(bool all) {}
    virtual int start() { return -1; }
    virtual void stop() {}
    // Geometry of the whole profile.
    virtual void setDefaultGeometry();
    // Half the profile's size in its top-right corner, 5% from the edges.
    virtual void setDefaultGeometryPIP();
    // Shows `position` again after a change of the chain: getImage and give
    // the frame back.
    virtual void refreshRender(int position);
    virtual void setDecoder(std::shared_ptr<MVNDecoder> decoder);
    virtual std::shared_ptr<MVNDecoder> getDecoder();
    virtual int reconfigDecoder() { return -1; }
    virtual bool isExistsDecoder() { return false; }
    // The timeline has left the clip: hide it and tell the listeners
    // (MVN_EVENT_CLIP_END).
    virtual void onClipEnd();
    // 0: the consumer composes the frame's pixels; 1: the producer draws on
    // the GPU itself.
    virtual int getRenderType(int position) { return 0; }
    // Stores the first argument in "_active".
    virtual void setActive(bool active, bool force, int position, int flags);
    virtual void updateActive(int position) {}
    // Moves the producer into the scene of the group `name` (its render
    // texture is rebuilt there). -1 for an empty name.
    virtual int connectGroup(const std::string& name);
    // Back to the shared scene; -1 when not connected to `name`.
    virtual int disconnectGroup(const std::string& name);
    virtual bool containGroup() { return false; }
    // A transition (itself a producer) that takes this one as an input.
    virtual int connectTransition(MVNProducer* transition);
    virtual int disconnectTransition(MVNProducer* transition);
    virtual void _OnGeometryChanged(const MVNRect& rect) {}
    virtual void _OnVisibleChanged(bool visible) {}
    virtual int _getAudio(int position, void* converter, MVNFrame** frame) { return -1; }
    virtual int _getImage(int position, MVNFrame** frame) { return -1; }
    virtual int _getCacheImage(int position, MVNFrame** frame) { return -1; }
    // A number that stands for the picture _getImage gives at `position`:
    // equal numbers, equal pictures. 0, the default, says nothing and every
    // picture is uploaded; a producer whose picture seldom changes returns
    // one, and the render texture isn't given the same picture twice.
    virtual uint64_t _pictureKey(int position) { return 0; }
    virtual MVNProducer* _alloc() { return nullptr; }
    virtual void _OnAnimationChanged(int animation) {}
    virtual void _OnRotationChanged(int rotation) {}
    virtual void _OnAttach(const MVNFilter* filter) {}
    virtual void _OnDetach(const MVNFilter* filter) {}
    virtual void _OnTransitionConnected(MVNProducer* transition) {}
    virtual void _OnTransitionDisconnected(MVNProducer* transition) {}
    // `input`, connected to this producer as a transition's input, is being
    // destroyed: whatever points at it must let go now.
    virtual void _OnInputDestroyed(MVNProducer* input) {}
    // A group runs its video filters itself while it draws, and its first
    // filter reads the group's render texture instead of a frame.
    virtual bool _drawsOwnFilters() const { return false; }
    virtual void _OnGroupConnected(const std::string& name) {}
    virtual void _OnGroupDisconnected(const std::string& name) {}
    // Builds the producer's render texture through the registered
    // "ogreRenderTexture" factory: texture `name` (empty: pixels are
    // uploaded), "render.width" x "render.height", "zOrder", in the scene of
    // the producer's group. With `apply`, the producer's geometry, animation
    // and rotation are put on it at once. A failure is logged and leaves
    // renderTexture() null.
    virtual void _createTextureNode(const std::string& name, bool apply);
    virtual void _destroyTextureNode();
    // Rebuilds the render texture as it was last built (used when the
    // producer changes scene); subclasses with their own way override it.
    virtual void _createTextureNode();

    void setIn(int in);
    void setOut(int out);
    void setInAndOut(int in, int out);
    int getIn() const;
    // "out", or length - 1 while "out" was never set.
    int getOut() const;
    void setLength(int length);
    int getLength() const;
    // out - in + 1, never below 0.
    int getPlaytime() const;

    MVNRect getGeometry() const;
    void setGeometry(const MVNRect& rect);
    int getAnimation() const;
    void setAnimation(int animation);
    int getRotation() const;  // 0 when unset
    void setRotation(int degrees);
    bool isVisible() const;
    void setVisible(bool visible);

    // Attaches a filter at the end of its chain (video, CPU or audio by the
    // filter's kinds), tells it with _OnConnected, sets the chain properties
    // "_inputType", "_inputRtt" and "_outputType" of the video filters, and
    // calls _OnAttach. -1 for null or a filter already attached somewhere.
    int attach(MVNFilter* filter);
    // -1 when the filter isn't attached here.
    int detach(MVNFilter* filter);
    // Detaches every filter, last first.
    void detachAll();
    // Forgets a filter that is being destroyed while attached: no hooks of
    // the filter run, the chain closes up and _OnDetach is told.
    void _dropFilter(MVNFilter* filter);
    // The string ids of the video filters, in chain order.
    void getVideoFilters(std::vector<std::string>& ids);
    int filterCount();

    // Name of the group scene the producer draws into, empty for the shared
    // scene.
    std::string getGroup() const;
    bool isBlank() const { return mType == MVN_PRODUCER_BLANK; }
    // Tells the canvas filters and the event listeners that the picture
    // around the clip must be drawn again.
    void fireCanvasChanged();
    void setType(MVNProducerType type) { mType = type; }
    MVNProducerType getType() const { return mType; }
    int lastPosition() const { return mPosition.load(); }

    void _createAudioConverter();
    void _destroyAudioConverter();

    MVNRenderTexture* renderTexture() const { return mRenderTexture; }

protected:
    MVNProducer(const MVNProfile& profile, MVNServiceType type);

    // The chains; hold filtersLock() while walking them from outside
    // getImage.
    std::vector<MVNFilter*>& videoFilters() { return mVideoFilters; }
    std::vector<MVNFilter*>& videoFiltersCPU() { return mVideoFiltersCPU; }
    std::vector<MVNFilter*>& audioFilters() { return mAudioFilters; }
    std::recursive_mutex& filtersLock() { return mFiltersLock; }

    // Sets the chain properties of the video filters from their order; a
    // changed value is set with notification so that a configured filter
    // rebuilds itself.
    void _updateFilterChain();

    // Owned; built by _createTextureNode, null while there is none.
    MVNRenderTexture* mRenderTexture = nullptr;

private:
    MVNRect _effectiveGeometry() const;
    MVNFrame* _runChain(std::vector<MVNFilter*>& chain, int position, MVNFrame* frame);

    std::vector<MVNFilter*> mVideoFilters;
    std::vector<MVNFilter*> mVideoFiltersCPU;
    std::vector<MVNFilter*> mAudioFilters;
    // Recursive: a filter's hook may ask the producer for a refresh while
    // the chain is being changed.
    std::recursive_mutex mFiltersLock;
    std::vector<MVNProducer*> mTransitions;
    std::shared_ptr<MVNDecoder> mDecoder;
    std::string mGroup;
    std::string mTextureNodeName;
    bool mTextureNodeApply = true;
    // The clip was hidden by resetRender (the timeline left it); getImage
    // shows it again, its filters' pictures included.
    std::atomic<bool> mNodeHidden{false};
    // Video filters draw the clip's picture, so its own quad stays hidden.
    bool mQuadSuppressed = false;
    // _pictureKey of what the render texture holds, 0 when unknown; under
    // mStateLock.
    uint64_t mUploadedKey = 0;
    // What the render texture was last told; under mStateLock.
    bool mQuadVisible = true;
    bool mAudioConverter = false;
    MVNProducerType mType = MVN_PRODUCER_NONE;
    std::atomic<int> mPosition{0};
    // Guards the group, decoder, transitions and the render texture.
    mutable std::recursive_mutex mStateLock;

    // Shows or hides the render texture as visibility, the timeline and the
    // filters want it; under mStateLock.
    void _syncQuad();
    // After a change of group: the video filters rebuild in the new scene.
    void _moveFiltersToGroup();
};

}  // namespace Morvane
