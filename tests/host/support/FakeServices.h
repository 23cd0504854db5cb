#pragma once
// Small services for driving the host's timelines and registry without a
// renderer: a producer of numbered pixel frames, a filter that stamps the
// frames it sees, a transition that records its inputs, and a render
// texture that records its calls.
#include <atomic>
#include <string>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "services/MVNFilter.h"
#include "core/MVNFrame.h"
#include "services/MVNProducer.h"
#include "services/MVNRenderTexture.h"
#include "services/MVNTransition.h"

namespace MorvaneTest {

// Counts over every instance, so that tests can see construction, init,
// release and destruction through the registry.
struct FakeCounters {
    std::atomic<int> built{0};
    std::atomic<int> inits{0};
    std::atomic<int> releases{0};
    std::atomic<int> destroyed{0};
    void reset() { built = inits = releases = destroyed = 0; }
};

inline FakeCounters& fakeCounters() {
    static FakeCounters c;
    return c;
}

// Frames of BGRA pixels, w x h, whose id is the position asked for and
// whose first byte is the producer's "mark".
class FakeProducer : public Morvane::MVNProducer {
public:
    explicit FakeProducer(const Morvane::MVNProfile& profile, int initResult = 0)
        : MVNProducer(profile), mInitResult(initResult) {
        ++fakeCounters().built;
    }
    ~FakeProducer() override { ++fakeCounters().destroyed; }
    int init() override {
        ++fakeCounters().inits;
        return mInitResult;
    }
    void release() override { ++fakeCounters().releases; }
    int _getImage(int position, Morvane::MVNFrame** frame) override {
        const int w = 4, h = 2;
        Morvane::MVNFrame* f = Morvane::MVNFrame::pullFromPool(1, w * h * 4);
        if (f == nullptr) return -1;
        f->setColorFormat(Morvane::MVN_COLOR_BGRA);
        f->setWidth(w);
        f->setHeight(h);
        f->setSize(w * h * 4);
        f->setId(position);
        f->buffer()->ptr()[0] = static_cast<uint8_t>(getInt32("mark", 7));
        asked.push_back(position);
        *frame = f;
        return 0;
    }
    std::vector<int> asked;
    std::vector<std::string> hooks;
    void _OnGeometryChanged(const Morvane::MVNRect&) override { hooks.push_back("geometry"); }
    void _OnAnimationChanged(int a) override { hooks.push_back("anim " + std::to_string(a)); }
    void _OnRotationChanged(int r) override { hooks.push_back("rotation " + std::to_string(r)); }
    void _OnAttach(const Morvane::MVNFilter*) override { hooks.push_back("attach"); }
    void _OnDetach(const Morvane::MVNFilter*) override { hooks.push_back("detach"); }
    void setActive(bool active, bool force, int position, int flags) override {
        MVNProducer::setActive(active, force, position, flags);
        hooks.push_back(std::string(active ? "active " : "inactive ") + std::to_string(position));
    }
    void onClipEnd() override {
        MVNProducer::onClipEnd();
        hooks.push_back("end");
    }

private:
    int mInitResult;
};

// Multiplies the frame id by 10 and adds its tag, so the id spells the
// order of the filters: 5 through tags 1, 2, 3 becomes 5123. With "fail"
// set it returns null and leaves the frame alone.
class StampFilter : public Morvane::MVNFilter {
public:
    StampFilter(const Morvane::MVNProfile& profile, int tag,
                Morvane::MVNFilterTypeUse use = Morvane::MVN_FILTER_USE_NORMAL)
        : MVNFilter(profile, Morvane::MVN_FILTER_VIDEO, use), mTag(tag) {}
    Morvane::MVNFrame* processImage(int position, Morvane::MVNFrame* frame) override {
        if (getBoolean("fail", false)) return nullptr;
        frame->setId(frame->id() * 10 + mTag);
        return frame;
    }
    void _OnConnected(Morvane::MVNService* service) override {
        connectedTo = service;
        inputAtConnect = getInt32("_inputType", -1);
        outputAtConnect = getInt32("_outputType", -1);
    }
    void _OnDisconnected(Morvane::MVNService*) override { ++disconnects; }
    void _OnPropertyChanged(const char* key) override { changes.push_back(key); }
    void setGeometry(const Morvane::MVNRect& rect) override { geometry = rect; }

    Morvane::MVNService* connectedTo = nullptr;
    int inputAtConnect = -1;
    int outputAtConnect = -1;
    int disconnects = 0;
    std::vector<std::string> changes;
    Morvane::MVNRect geometry;

private:
    int mTag;
};

// Records the frames it was given; the picture is "drawn with the scene".
class RecordingTransition : public Morvane::MVNTransition {
public:
    explicit RecordingTransition(const Morvane::MVNProfile& profile) : MVNTransition(profile) {}
    Morvane::MVNFrame* processImage(int position, Morvane::MVNFrame* a, Morvane::MVNFrame* b) override {
        seen.push_back({position, a != nullptr ? a->id() : -1, b != nullptr ? b->id() : -1});
        return MVNTransition::processImage(position, a, b);
    }
    void _OnConnected() override { ++connects; }
    void _OnDisconnected() override { ++disconnects; }
    struct Call {
        int position, a, b;
    };
    std::vector<Call> seen;
    int connects = 0;
    int disconnects = 0;
};

class RecordingRenderTexture : public Morvane::MVNRenderTexture {
public:
    explicit RecordingRenderTexture(std::vector<std::string>* log) : mLog(log) { add("built"); }
    ~RecordingRenderTexture() override { add("destroyed"); }
    void updateTexture(uint8_t* data, int width, int height) override {
        add("upload " + std::to_string(width) + "x" + std::to_string(height) + " first " + std::to_string(data[0]));
    }
    void setGeometry(const Morvane::MVNRect& r) override { add("geometry " + r.toString()); }
    void setVisible(bool v) override { add(v ? "visible" : "hidden"); }
    void updateAnimation(int position) override { add("animate " + std::to_string(position)); }
    void setAnimation(int type) override { add("anim " + std::to_string(type)); }
    void setRotation(int degrees) override { add("rotation " + std::to_string(degrees)); }
    void setZOrder(int z) override { add("zOrder " + std::to_string(z)); }

private:
    void add(const std::string& s) {
        if (mLog != nullptr) mLog->push_back(s);
    }
    std::vector<std::string>* mLog;
};

}  // namespace MorvaneTest
