#pragma once
#include <atomic>

#include "services/MVNProducer.h"

namespace Morvane {

// A two-input producer. connect() names the clips A and B (and where in each
// the transition starts); the host's own render-path operations then drive
// both inputs at the same offset and _getImage hands their frames to
// processImage(position, a, b). A transition's position runs from 0 over
// its playtime.
class MVNTransition : public MVNProducer {
public:
    explicit MVNTransition(const MVNProfile& profile);
    ~MVNTransition() override;

    void preRender(int position) override;
    void render(int position) override;
    void resetRender(int position) override;
    int seek(int position, int whence) override;
    void prepareVideo(int position) override;
    void prepareAudio(int position) override;
    std::string locate() override;
    void cleanCachedFrame(bool all) override;
    int start() override;
    void stop() override;
    void refreshRender(int position) override;
    void onClipEnd() override;
    int getRenderType(int position) override;
    void setActive(bool active, bool force, int position, int flags) override;
    bool containGroup() override;
    // An input going away leaves the transition unconnected.
    void _OnInputDestroyed(MVNProducer* input) override { disconnect(); }
    int _getAudio(int position, void* converter, MVNFrame** frame) override;
    // Frames of A and B (null where one fails) go to processImage. A null
    // result means the picture is drawn with the scene: *frame is then a
    // blank frame (colour type 10002).
    int _getImage(int position, MVNFrame** frame) override;

    // Takes both frames (either may be null). The default gives them back to
    // the pool and returns null.
    virtual MVNFrame* processImage(int position, MVNFrame* a, MVNFrame* b);
    virtual void reconfig() {}
    virtual void _OnConnected() {}
    virtual void _OnDisconnected() {}

    // Sets A and B, tells both with connectTransition and then calls
    // _OnConnected. startA and startB are the positions of A and B at the
    // transition's position 0. -1 when either clip is null or the same as
    // the other. A transition already connected is disconnected first.
    int connect(MVNProducer* a, MVNProducer* b, int startA = 0, int startB = 0);
    void disconnect();
    // Moves the starting positions without a reconnection (a playlist does
    // this when a clip's length changes).
    void setStarts(int startA, int startB);

    MVNProducer* producerA() const { return clipA; }
    MVNProducer* producerB() const { return clipB; }

protected:
    // Set by connect before _OnConnected; read by subclasses.
    MVNProducer* clipA = nullptr;
    MVNProducer* clipB = nullptr;

private:
    std::atomic<int> mStartA{0};
    std::atomic<int> mStartB{0};
};

}  // namespace Morvane
