// The stress on the real engine: threads create the module's producers
// (colour, pixel buffer, picture, now and then text), change their
// properties, draw them through the render queue and destroy them, while a
// render consumer reads a shared timeline back asynchronously, in turn
// through the reader's hand-over and as its frame listener. The threads'
// own services draw in a strip along the bottom of the picture; above it
// every picture read must be the colour of the timeline's clip at the
// picture's position, to the byte: a picture of another position, one torn
// by a concurrent change, or a lost one fails the run. Every wait is
// bounded: a watchdog ends a run that stops making progress. With
// MVN_STRESS_KEEP=DIR a wrong picture is kept there as a PNG.
#include "EngineStress.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "MVNTestPaths.h"
#include "MVNVirtualDisplay.h"
#include "core/MVNColor4B.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "core/MVNProfile.h"
#include "core/MVNRect.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderSystem.h"
#include "services/MVNProducer.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNRenderConsumer.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

extern "C" int MVNOgre_module_install(Morvane::MVNRepository* repository);

using namespace Morvane;

namespace MorvaneStress {

namespace {

constexpr int kWidth = 160;
constexpr int kHeight = 90;
// Rows at the bottom where the threads' services draw, and the rows from the
// top that show the timeline alone (two rows spare for smoothed edges).
constexpr int kStrip = 16;
constexpr int kChecked = kHeight - kStrip - 2;
// The timeline: one track, red for positions 0..49, blue for 50..99.
constexpr int kClipLength = 50;
constexpr int kLength = 2 * kClipLength;
const MVNColor4B kClipColors[2] = {MVNColor4B(255, 0, 0, 255), MVNColor4B(0, 0, 255, 255)};
// A run that goes this long without a single call or picture is a hang.
constexpr auto kStall = std::chrono::seconds(120);

std::atomic<int> gFailures{0};

void failure(const char* what, long long detail) {
    if (gFailures++ < 20) std::fprintf(stderr, "stress: %s (%lld)\n", what, detail);
}

MVNProfile profile() { return MVNProfile(kWidth, kHeight, 25); }

// Counts progress; ends the process when none comes for kStall.
class Watchdog {
public:
    Watchdog() : mThread([this] { watch(); }) {}
    ~Watchdog() {
        {
            std::lock_guard<std::mutex> guard(mLock);
            mDone = true;
        }
        mWake.notify_all();
        mThread.join();
    }
    void tick() { ++mTicks; }

private:
    void watch() {
        std::unique_lock<std::mutex> guard(mLock);
        long long seen = -1;
        while (!mDone) {
            mWake.wait_for(guard, kStall);
            if (mDone) return;
            long long now = mTicks.load();
            if (now == seen) {
                std::fprintf(stderr, "stress: no call and no picture for %lld s, a hang\n",
                             static_cast<long long>(kStall.count()));
                std::fflush(stderr);
                std::_Exit(3);
            }
            seen = now;
        }
    }

    std::atomic<long long> mTicks{0};
    std::mutex mLock;
    std::condition_variable mWake;
    bool mDone = false;
    std::thread mThread;
};

// A folder of its own for the engine's files and marker files, the working
// folder and HOME while it lives.
class WorkFolder {
public:
    WorkFolder() {
        char tmpl[] = "/tmp/mvn-stress-XXXXXX";
        if (const char* dir = ::mkdtemp(tmpl)) {
            mPath = dir;
            std::filesystem::create_directories(mPath + "/home");
            ::setenv("HOME", (mPath + "/home").c_str(), 1);
            std::filesystem::current_path(mPath);
            std::ofstream("not_full_screen").put('\n');
        }
    }
    ~WorkFolder() {
        if (mPath.empty()) return;
        std::error_code ec;
        std::filesystem::current_path("/", ec);
        std::filesystem::remove_all(mPath, ec);
    }
    bool ok() const { return !mPath.empty(); }

private:
    std::string mPath;
};

std::string create(const char* service, MVNProperties p) {
    p.setString("service", service);
    return MVNFactory::getSingleton()->createProducer(profile(), p);
}

// Somewhere in the strip, in the host's bottom-left convention.
MVNRect stripPlace(std::mt19937& random) {
    float w = static_cast<float>(8 + random() % 24);
    float x = static_cast<float>(random() % (kWidth - static_cast<int>(w)));
    return MVNRect(x, 0, w, static_cast<float>(4 + random() % (kStrip - 4)));
}

MVNColor4B anyColor(std::mt19937& random) {
    uint32_t v = random();
    return MVNColor4B(v & 0xff, (v >> 8) & 0xff, (v >> 16) & 0xff, 255);
}

void show(MVNProducer* producer, int position) {
    MVNFrame* frame = nullptr;
    if (producer->getImage(position, &frame) == 0) MVNFrame::pushBackPool(frame);
}

// One thread's calls: short-lived services of every kind, a service of its
// own that it keeps changing, and bare posts to the render queue.
void worker(int index, int calls, Watchdog& watchdog, std::atomic<long long>& posted, std::atomic<long long>& ran) {
    MVNFactory* factory = MVNFactory::getSingleton();
    std::mt19937 random(static_cast<unsigned>(index) * 104729u + 17);
    MVNProperties ownProps;
    ownProps.setColor("color", anyColor(random));
    ownProps.setInt32("zOrder", 10 + index);
    ownProps.setRect("geometry", stripPlace(random));
    std::string ownId = create("ogre.color", ownProps);
    MVNProducer* own = factory->getProducerById(ownId);
    if (own == nullptr) failure("a thread's own colour was refused", index);
    for (int call = 0; call < calls; ++call) {
        watchdog.tick();
        const int kind = static_cast<int>(random() % 8);
        switch (kind) {
        case 0:
        case 1:
        case 2:
        case 3: {  // a service made, changed, drawn and destroyed
            MVNProperties p;
            p.setInt32("zOrder", 10 + index);
            // Placed from the start: a service shows once it is made.
            p.setRect("geometry", stripPlace(random));
            const char* service = "ogre.color";
            if (kind == 1) {
                service = "ogre.pixelbuffer";
            } else if (kind == 2) {
                service = "ogre.image";
                p.setString("resource", MVN_TEST_DATA_DIR "/host/blue-32x16.jpg");
            } else if (kind == 3 && call % 4 == 0) {
                service = "text";
                p.setString("textString", "T" + std::to_string(index));
                p.setInt32("textSize", 10);
            } else {
                p.setColor("color", anyColor(random));
            }
            std::string id = create(service, p);
            MVNProducer* producer = factory->getProducerById(id);
            if (producer == nullptr) {
                failure("a service was refused", kind);
                break;
            }
            show(producer, call);
            producer->setColor("color", anyColor(random));
            producer->setGeometry(stripPlace(random));
            producer->setGeometry(stripPlace(random));
            show(producer, call + 1);
            if (factory->destroyService(id) != 0) failure("a service could not be destroyed", kind);
            break;
        }
        case 4:
        case 5:  // the thread's own service, changed and drawn
            if (own == nullptr) break;
            own->setColor("color", anyColor(random));
            own->setGeometry(stripPlace(random));
            show(own, call);
            break;
        case 6:
            ++posted;
            MVNOgreManager::getSingleton()->callRenderable([&ran] { ++ran; }, "stressPost");
            break;
        case 7: {
            // The flag lives as long as the process: a wait that gives up
            // must not leave the render thread a dead stack slot to write.
            auto seen = std::make_shared<std::atomic<int>>(-1);
            ++posted;
            MVNOgreManager::getSingleton()->callRenderableWait(
                [&ran, seen, call] {
                    ++ran;
                    *seen = call;
                },
                "stressWait");
            if (*seen != call) failure("a waited call had not run", call);
            break;
        }
        }
    }
    if (!ownId.empty()) factory->destroyService(ownId);
}

// Reads the timeline back pass after pass until the threads are done (and
// for two passes at least), each pass a stretch of positions across the
// cut between the two clips, alternately through the hand-over and as the
// frame listener. Returns the pictures checked.
long long consume(MVNOgreRenderSystem* renderSystem, MVNProducer* timeline, const std::atomic<bool>& workersDone,
                  Watchdog& watchdog) {
    long long checked = 0;
    for (int pass = 0; !workersDone || pass < 2; ++pass) {
        auto mode = pass % 2 == 0 ? MVNRenderConsumer::READ_ASYNC : MVNRenderConsumer::READ_LISTENER;
        MVNRenderConsumer consumer(profile(), renderSystem, mode);
        consumer.connect(timeline);
        consumer.setPictureSink([&](const MVNRenderConsumer::Picture& p) {
            watchdog.tick();
            ++checked;
            if (p.width != kWidth || p.height != kHeight || p.colorType != MVN_COLOR_RGBA) {
                failure("a picture of another size or kind", p.position);
                return 0;
            }
            const MVNColor4B& c = kClipColors[p.position / kClipLength];
            for (int y = 0; y < kChecked; ++y) {
                const uint8_t* row = p.pixels + static_cast<size_t>(y) * p.stride;
                for (int x = 0; x < kWidth; ++x) {
                    const uint8_t* px = row + x * 4;
                    if (px[0] != c.r || px[1] != c.g || px[2] != c.b || px[3] != c.a) {
                        std::fprintf(stderr, "stress: position %d, pixel %d,%d is %d,%d,%d,%d\n", p.position, x, y,
                                     px[0], px[1], px[2], px[3]);
                        failure("a picture the timeline could not have produced", p.position);
                        if (const char* keep = std::getenv("MVN_STRESS_KEEP")) {
                            std::vector<uint8_t> bgra(static_cast<size_t>(kWidth) * kHeight * 4);
                            for (size_t i = 0; i < bgra.size(); i += 4) {
                                bgra[i] = p.pixels[i + 2];
                                bgra[i + 1] = p.pixels[i + 1];
                                bgra[i + 2] = p.pixels[i];
                                bgra[i + 3] = p.pixels[i + 3];
                            }
                            MVNImage::saveToFile(std::string(keep) + "/position-" + std::to_string(p.position) + ".png",
                                                 bgra.data(), kWidth, kHeight);
                        }
                        return 0;
                    }
                }
            }
            return 0;
        });
        const int first = (pass * 17) % (kLength - 20);
        const int last = first + 19;
        const int delivered = consumer.renderRange(first, last);
        if (delivered != last - first + 1 || consumer.lost() != 0) {
            failure("pictures lost in a pass", static_cast<long long>(last - first + 1) - delivered);
        }
    }
    return checked;
}

}  // namespace

int runEngineStress(int threads, int calls) {
    WorkFolder folder;
    if (!folder.ok()) {
        std::fprintf(stderr, "mvn-stress: no working folder in /tmp\n");
        return 2;
    }
    MVNVirtualDisplay display;
    const char* existing = std::getenv("DISPLAY");
    if ((existing == nullptr || *existing == '\0') && display.start(kWidth, kHeight) != 0) {
        std::fprintf(stderr, "mvn-stress: %s\n", display.error().c_str());
        return 2;
    }
    MVNRepository* repository = MVNRepository::getSingleton();
    if (!repository->builtinsRegistered()) repository->registerBuiltins();
    if (!repository->hasRenderTexture("ogreRenderTexture")) MVNOgre_module_install(repository);

    MVNFactory* factory = MVNFactory::getSingleton();
    const int servicesBefore = factory->count();
    const int framesBefore = MVNFrame::poolOutstandingCount();
    MVNOgreRenderSystem renderSystem(profile(), 0, 0);
    if (renderSystem.init() != 0) {
        std::fprintf(stderr, "mvn-stress: the engine did not start\n");
        return 2;
    }

    // The shared timeline: two colour clips in a row filling the picture.
    MVNProperties none;
    std::string tractorId = factory->createTractor(profile(), none);
    std::string playlistId = factory->createPlaylist(profile(), none);
    MVNTractor* tractor = factory->getTractorById(tractorId);
    MVNPlaylist* playlist = factory->getPlaylistById(playlistId);
    std::vector<std::string> clipIds;
    for (const MVNColor4B& color : kClipColors) {
        MVNProperties p;
        p.setColor("color", color);
        std::string id = create("ogre.color", p);
        MVNProducer* clip = factory->getProducerById(id);
        if (clip == nullptr) {
            std::fprintf(stderr, "mvn-stress: the timeline's colour clip was refused\n");
            renderSystem.release();
            return 2;
        }
        clip->setInAndOut(0, kClipLength - 1);
        playlist->append(id);
        clipIds.push_back(id);
    }
    tractor->setTrack(playlistId, -1);
    tractor->refresh();

    std::atomic<long long> posted{0};
    std::atomic<long long> ran{0};
    std::atomic<bool> workersDone{false};
    long long checked = 0;
    const auto started = std::chrono::steady_clock::now();
    {
        Watchdog watchdog;
        std::thread reader([&] { checked = consume(&renderSystem, tractor, workersDone, watchdog); });
        std::vector<std::thread> workers;
        for (int t = 0; t < threads; ++t) {
            workers.emplace_back(worker, t, calls, std::ref(watchdog), std::ref(posted), std::ref(ran));
        }
        for (std::thread& w : workers) w.join();
        workersDone = true;
        reader.join();
        MVNOgreManager::getSingleton()->callRenderableWait([] {}, "stressDrain");
    }
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    if (ran != posted) failure("posted calls that never ran", posted - ran);

    for (auto it = clipIds.rbegin(); it != clipIds.rend(); ++it) factory->destroyService(*it);
    factory->destroyService(tractorId);
    factory->destroyService(playlistId);
    renderSystem.release();
    if (factory->count() != servicesBefore) failure("services left behind", factory->count() - servicesBefore);
    if (MVNFrame::poolOutstandingCount() != framesBefore) {
        failure("frames not given back", MVNFrame::poolOutstandingCount() - framesBefore);
    }
    std::printf("mvn-stress --engine: %d threads x %d calls, %lld pictures checked, %lld posted to the render queue, "
                "%.1f s, %d failures\n",
                threads, calls, checked, static_cast<long long>(posted), seconds, gFailures.load());
    return gFailures == 0 ? 0 : 1;
}

}  // namespace MorvaneStress
