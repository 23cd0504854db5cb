// Many threads on the host's services and the render queue at once, as an
// editor's UI, decoder and render threads use them: each thread creates,
// changes, renders and destroys services of its own, changes and renders a
// timeline all threads share, and posts work to the render queue with and
// without waiting. Run under ThreadSanitizer (make check-tsan) it proves the
// locking; in any build it checks that nothing is lost: every posted call
// ran, every frame and service went back, every picture carries the mark of
// the producer that drew it.
//
//   mvn-stress [--threads N] [--calls N]     (16 threads, 10000 calls each)
//   mvn-stress --engine [--threads N] [--calls N]
//                                   the same on the real engine (EngineStress)
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "EngineStress.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "core/MVNProfile.h"
#include "engine/MVNOgreManager.h"
#include "timeline/MVNFactory.h"
#include "services/MVNFilter.h"
#include "services/MVNProducer.h"
#include "timeline/MVNActiveClip.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;

namespace {

std::atomic<int> gFailures{0};

void failure(const char* what, long long detail) {
    if (gFailures++ < 20) std::fprintf(stderr, "stress: %s (%lld)\n", what, detail);
}

// Pictures of 4x2 BGRA pixels whose first byte is the "mark" property and
// whose id is the position: a picture from another producer or position is
// caught by the renderer's check.
class MarkedProducer : public MVNProducer {
public:
    explicit MarkedProducer(const MVNProfile& profile) : MVNProducer(profile) {}
    int init() override { return 0; }
    void release() override {}
    int _getImage(int position, MVNFrame** frame) override {
        MVNFrame* f = MVNFrame::pullFromPool(1, 4 * 2 * 4);
        if (f == nullptr) return -1;
        f->setColorFormat(MVN_COLOR_BGRA);
        f->setWidth(4);
        f->setHeight(2);
        f->setSize(4 * 2 * 4);
        f->setId(position);
        // Pool buffers come back with old bytes: every byte is written.
        std::memset(f->buffer()->ptr(), 0, 4 * 2 * 4);
        f->buffer()->ptr()[0] = static_cast<uint8_t>(getInt32("mark", 0));
        *frame = f;
        return 0;
    }
};

// Adds its "step" to the second byte of every picture it sees.
class StepFilter : public MVNFilter {
public:
    explicit StepFilter(const MVNProfile& profile) : MVNFilter(profile, MVN_FILTER_VIDEO, MVN_FILTER_USE_NORMAL) {}
    MVNFrame* processImage(int, MVNFrame* frame) override {
        frame->buffer()->ptr()[1] = static_cast<uint8_t>(frame->buffer()->ptr()[1] + getInt32("step", 1));
        return frame;
    }
};

struct Shared {
    MVNProfile profile{320, 180, 25};
    std::string tractorId;
    std::vector<std::string> playlistIds;
    std::vector<std::string> clipIds;  // two a track, marks 1..4
    int length = 0;
};

// Two tracks of two clips each; every clip's mark is its index + 1.
Shared buildShared() {
    Shared s;
    MVNFactory* factory = MVNFactory::getSingleton();
    MVNProperties none;
    s.tractorId = factory->createTractor(s.profile, none);
    MVNTractor* tractor = factory->getTractorById(s.tractorId);
    for (int t = 0; t < 2; ++t) {
        std::string playlistId = factory->createPlaylist(s.profile, none);
        MVNPlaylist* playlist = factory->getPlaylistById(playlistId);
        s.playlistIds.push_back(playlistId);
        for (int c = 0; c < 2; ++c) {
            MVNProperties p;
            p.setString("service", "stress.clip");
            p.setInt32("mark", static_cast<int>(s.clipIds.size()) + 1);
            std::string id = factory->createProducer(s.profile, p);
            MVNProducer* producer = factory->getProducerById(id);
            producer->setInAndOut(0, 49);
            playlist->append(id);
            s.clipIds.push_back(id);
        }
        tractor->setTrack(playlistId, -1);
    }
    tractor->refresh();
    s.length = 100;
    return s;
}

// One thread's share of the calls.
void worker(int index, int calls, const Shared& shared, std::atomic<long long>& posted,
            std::atomic<long long>& ran) {
    MVNFactory* factory = MVNFactory::getSingleton();
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    std::mt19937 random(static_cast<unsigned>(index) * 7919u + 1);
    MVNTractor* tractor = factory->getTractorById(shared.tractorId);
    std::vector<MVNActiveClip> active;
    for (int call = 0; call < calls; ++call) {
        switch (random() % 6) {
        case 0: {  // a service of its own: create, change, render, destroy
            MVNProperties p;
            p.setString("service", "stress.clip");
            p.setInt32("mark", 200 + index);
            std::string id = factory->createProducer(shared.profile, p);
            MVNProducer* producer = factory->getProducerById(id);
            if (producer == nullptr) {
                failure("a producer was refused", call);
                break;
            }
            MVNProperties fp;
            fp.setString("service", "stress.filter");
            fp.setInt32("step", 3);
            std::string filterId = factory->createFilter(shared.profile, fp);
            producer->attach(factory->getFilterById(filterId));
            producer->setRect("geometry", MVNRect(1, 2, 3, 4));
            MVNFrame* frame = nullptr;
            if (producer->getImage(call, &frame) != 0 || frame == nullptr) {
                failure("a private producer drew nothing", call);
            } else {
                if (frame->buffer()->ptr()[0] != 200 + index || frame->buffer()->ptr()[1] != 3) {
                    failure("a private picture lost its mark or its filter", frame->buffer()->ptr()[0]);
                }
                MVNFrame::pushBackPool(frame);
            }
            producer->detach(factory->getFilterById(filterId));
            factory->destroyService(filterId);
            factory->destroyService(id);
            break;
        }
        case 1: {  // change the shared clips while others draw them
            const std::string& id = shared.clipIds[random() % shared.clipIds.size()];
            MVNProducer* producer = factory->getProducerById(id);
            producer->setString("title", "thread " + std::to_string(index) + " call " + std::to_string(call));
            producer->setDouble("volume", (call % 10) / 10.0);
            producer->setColor("tint", MVNColor4B(static_cast<uint8_t>(index), 1, 2, 255));
            if (producer->getString("title", "").rfind("thread ", 0) != 0) failure("a title came back torn", call);
            break;
        }
        case 2:
        case 3: {  // render a position of the shared timeline
            int position = static_cast<int>(random() % shared.length);
            active.clear();
            tractor->activeAt(position, active);
            if (active.size() != 2) failure("the shared timeline lost a track", position);
            for (const MVNActiveClip& clip : active) {
                MVNFrame* frame = nullptr;
                if (clip.producer->getImage(clip.position, &frame) != 0 || frame == nullptr) {
                    failure("a shared clip drew nothing", position);
                    continue;
                }
                int mark = frame->buffer()->ptr()[0];
                // Track t holds marks 2t+1 (first 50 positions) and 2t+2.
                int expected = clip.track * 2 + (position < 50 ? 1 : 2);
                if (mark != expected || frame->id() != clip.position) failure("a picture of another clip", mark);
                MVNFrame::pushBackPool(frame);
            }
            break;
        }
        case 4:  // fire and forget to the render thread
            ++posted;
            manager->callRenderable([&ran] { ++ran; }, "stressPost");
            break;
        case 5: {  // post and wait: the work has run when the call returns
            int seen = -1;
            ++posted;
            manager->callRenderableWait([&ran, &seen, call] { ++ran; seen = call; }, "stressWait");
            if (seen != call) failure("a waited call had not run", call);
            break;
        }
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    int threads = 16;
    int calls = 10000;
    bool engine = false;
    bool usage = false;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--engine") == 0) engine = true;
        else if (std::strcmp(argv[i], "--threads") == 0 && i + 1 < argc) threads = std::atoi(argv[++i]);
        else if (std::strcmp(argv[i], "--calls") == 0 && i + 1 < argc) calls = std::atoi(argv[++i]);
        else usage = true;
    }
    if (usage || threads < 1 || calls < 1) {
        std::fprintf(stderr, "usage: mvn-stress [--engine] [--threads N] [--calls N]\n");
        return 2;
    }
    if (engine) return MorvaneStress::runEngineStress(threads, calls);
    MVNRepository* repo = MVNRepository::getSingleton();
    if (!repo->builtinsRegistered()) repo->registerBuiltins();
    repo->registerService(MVN_SERVICE_PRODUCER, "stress.clip",
                          [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MarkedProducer(*p); });
    repo->registerService(MVN_SERVICE_FILTER, "stress.filter",
                          [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new StepFilter(*p); });

    MVNFactory* factory = MVNFactory::getSingleton();
    const int servicesBefore = factory->count();
    const int framesBefore = MVNFrame::poolOutstandingCount();
    Shared shared = buildShared();
    MVNOgreManager::getSingleton()->startQueueOnly(shared.profile);

    std::atomic<long long> posted{0};
    std::atomic<long long> ran{0};
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back(worker, t, calls, std::cref(shared), std::ref(posted), std::ref(ran));
    }
    for (std::thread& w : workers) w.join();
    // The last posts have run once a waited call behind them has.
    MVNOgreManager::getSingleton()->callRenderableWait([] {}, "stressDrain");
    if (ran != posted) failure("posted calls that never ran", posted - ran);
    MVNOgreManager::getSingleton()->release();

    for (auto it = shared.clipIds.rbegin(); it != shared.clipIds.rend(); ++it) factory->destroyService(*it);
    factory->destroyService(shared.tractorId);
    for (const std::string& id : shared.playlistIds) factory->destroyService(id);
    if (factory->count() != servicesBefore) failure("services left behind", factory->count() - servicesBefore);
    if (MVNFrame::poolOutstandingCount() != framesBefore) {
        failure("frames not given back", MVNFrame::poolOutstandingCount() - framesBefore);
    }
    std::printf("mvn-stress: %d threads x %d calls, %lld posted to the render queue, %d failures\n", threads,
                calls, static_cast<long long>(posted), gFailures.load());
    return gFailures == 0 ? 0 : 1;
}
