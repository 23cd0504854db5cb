// GPU paths beside a memcpy of the same bytes, measured in the same
// iteration so that the ratio holds on a noisy machine:
//   ReadBack/<reader>/<aa|noaa>/WxH   each reader's getRenderImage
//   Upload/WxH                        a picture through a texture node
// The engine is started once per size (default 1280x720 and 1920x1080;
// --sizes=WxH,... picks others) in a scratch working folder, on the display
// in DISPLAY. Times are medians of the iterations, in milliseconds.
//
// A read is the reader's whole getRenderImage: the scene (one full-frame
// picture) is drawn into the read target and copied out. render_ms is the
// draw alone (the target's update, or the window's for the window readers),
// so read_ms - render_ms is what the copy to memory costs.
//
// ReadBack/one_copy_{bgra,rgba}/noaa is no reader of the module: it draws
// the RTT reader's target and reads it with one glReadPixels, in the
// target's own byte order (B,G,R,A) or in the readers' (R,G,B,A), to show
// what a single copy costs here; draw and copy are timed apart on the
// render thread.
#include <benchmark/benchmark.h>

#include <GL/gl.h>
#include <Ogre.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "engine/MVNOgreContext.h"
#include "engine/MVNOgreManager.h"
#include "readers/MVNOgreRenderReader.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"

using namespace Morvane;

namespace MorvaneBench {
void composeFrames(benchmark::State& state, bool upload);
void buildTitle(benchmark::State& state, int mode);
void composeTitles(benchmark::State& state, bool three, bool multisampledTracks);
void animateTitle(benchmark::State& state, int type);
}

namespace {

using Clock = std::chrono::steady_clock;

double msSince(Clock::time_point begin) {
    return std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
}

double median(std::vector<double> v) {
    if (v.empty()) return 0;
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

MVNOgreContext* context() { return static_cast<MVNOgreContext*>(MVNOgreManager::getSingleton()->getOgreContext()); }

void onRenderThread(std::function<void()> f, const char* name) {
    MVNOgreManager::getSingleton()->callRenderableWait(std::move(f), name);
}

struct ReaderCase {
    const char* name;
    MVNOgreRenderReaderType type;
    bool antiAliasing;
    // The window readers ignore the flag: the window has its own
    // multisampling, chosen when the engine starts.
    bool windowReader;
};

const ReaderCase kReaders[] = {
    {"rtt", MVN_READER_RTT, true, false},
    {"rtt", MVN_READER_RTT, false, false},
    {"rtt_sample", MVN_READER_RTT_SAMPLE, true, false},
    {"rtt_sample", MVN_READER_RTT_SAMPLE, false, false},
    {"direct", MVN_READER_DIRECT, true, true},
    {"gl", MVN_READER_GL, true, true},
};

// The render texture of the RTT readers ("RttTex"); null with another reader.
Ogre::RenderTarget* readerTarget() {
    Ogre::TextureManager& tm = Ogre::TextureManager::getSingleton();
    if (!tm.resourceExists("RttTex", Ogre::RGN_DEFAULT)) return nullptr;
    return tm.getByName("RttTex", Ogre::RGN_DEFAULT)->getBuffer()->getRenderTarget();
}

// Draws the scene into the reader's target without reading anything. The
// software rasteriser draws only when something waits for the pixels, so
// the draw is waited for here with glFinish.
void renderOnly(const ReaderCase& c) {
    onRenderThread(
        [c] {
            if (c.windowReader) {
                context()->getRenderWindow()->update(true);
            } else if (Ogre::RenderTarget* target = readerTarget()) {
                target->update(true);
            }
            glFinish();
        },
        "benchRenderOnly");
}

// A full-frame picture in the scene, so that every read has a quad to draw.
class ScenePicture {
public:
    ScenePicture() {
        const int w = context()->getWidth();
        const int h = context()->getHeight();
        std::vector<unsigned char> bgra(static_cast<size_t>(w) * h * 4);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                unsigned char* p = &bgra[(static_cast<size_t>(y) * w + x) * 4];
                p[0] = static_cast<unsigned char>(x);
                p[1] = static_cast<unsigned char>(y);
                p[2] = static_cast<unsigned char>(x + y);
                p[3] = 255;
            }
        }
        node.reset(new MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>(std::string(), w, h, w, h, 0, std::string()));
        node->updateTexture(bgra.data(), w, h);
    }

private:
    std::unique_ptr<MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>> node;
};

// The engine at the size a benchmark asks for, with its picture: started
// again only when the size changes, so benchmarks of one size share it.
struct Engine {
    int width = 0;
    int height = 0;
    bool running = false;
    std::unique_ptr<ScenePicture> picture;

    void stop() {
        picture.reset();
        if (running) MVNOgreManager::getSingleton()->release();
        running = false;
        width = height = 0;
    }
    bool at(int w, int h) {
        if (running && w == width && h == height) return true;
        stop();
        if (MVNOgreManager::getSingleton()->init(MVNProfile(w, h, 25), 0, 0) != 0) {
            MVNOgreManager::getSingleton()->release();
            return false;
        }
        running = true;
        width = w;
        height = h;
        picture.reset(new ScenePicture());
        return true;
    }
};

Engine gEngine;

bool engineAt(benchmark::State& state, int w, int h) {
    if (gEngine.at(w, h)) return true;
    state.SkipWithError("the engine did not start");
    return false;
}

void BM_ReadBack(benchmark::State& state, ReaderCase c, int width, int height) {
    if (!engineAt(state, width, height)) return;
    bool ok = false;
    onRenderThread([&] { ok = context()->resetRenderReader(c.type, c.antiAliasing); }, "benchResetReader");
    if (!ok) {
        state.SkipWithError("reader could not start");
        return;
    }
    const int w = context()->getWidth();
    const int h = context()->getHeight();
    const size_t bytes = static_cast<size_t>(w) * h * 4;
    std::vector<unsigned char> copy(bytes, 1);
    std::vector<double> read, render, mem;
    for (auto _ : state) {
        // The GL reader reads what the last draw left in the window.
        if (c.type == MVN_READER_GL) MVNOgreManager::getSingleton()->renderOneFrame();
        auto t0 = Clock::now();
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        read.push_back(msSince(t0));
        if (!image) {
            state.SkipWithError("getRenderImage gave nothing");
            return;
        }
        auto t1 = Clock::now();
        std::memcpy(copy.data(), image->ptr(), bytes);
        benchmark::ClobberMemory();
        mem.push_back(msSince(t1));
        MVNByteBufferPool::sRelease(image);
        auto t2 = Clock::now();
        renderOnly(c);
        render.push_back(msSince(t2));
    }
    double r = median(read), d = median(render), m = median(mem);
    state.counters["read_ms"] = r;
    state.counters["render_ms"] = d;
    state.counters["memcpy_ms"] = m;
    state.counters["x_memcpy"] = m > 0 ? r / m : 0;
    // The copy alone; for the GL reader nothing is drawn inside the read.
    double copyOnly = c.type == MVN_READER_GL ? r : std::max(0.0, r - d);
    state.counters["copy_x_memcpy"] = m > 0 ? copyOnly / m : 0;
}

// The RTT reader's target without multisampling, drawn and read with one
// glReadPixels. The engine leaves the target's frame buffer bound after
// the update.
// Rows equal when `bgra` holds the same pixels as the reader's `rgba` row.
bool sameRow(const unsigned char* got, const unsigned char* rgba, int width, bool gotIsBgra) {
    for (int x = 0; x < width; ++x, got += 4, rgba += 4) {
        unsigned char r = gotIsBgra ? got[2] : got[0];
        unsigned char b = gotIsBgra ? got[0] : got[2];
        if (r != rgba[0] || got[1] != rgba[1] || b != rgba[2] || got[3] != rgba[3]) return false;
    }
    return true;
}

void BM_ReadBackOneCopy(benchmark::State& state, bool bgra, int width, int height) {
    if (!engineAt(state, width, height)) return;
    bool ok = false;
    onRenderThread([&] { ok = context()->resetRenderReader(MVN_READER_RTT, false); }, "benchResetReader");
    if (!ok) {
        state.SkipWithError("reader could not start");
        return;
    }
    const int w = context()->getWidth();
    const int h = context()->getHeight();
    const size_t bytes = static_cast<size_t>(w) * h * 4;
    std::vector<unsigned char> copy(bytes, 1);
    // The reader's picture of the same scene, top row first, to check that
    // the single copy reads the same pixels, and in which row order.
    MVNByteBuffer* reference = MVNOgreManager::getSingleton()->getRenderImage();
    std::vector<double> draw, read, mem;
    bool topFirst = reference != nullptr;
    bool bottomFirst = reference != nullptr;
    for (auto _ : state) {
        MVNByteBuffer* image = nullptr;
        double drawMs = 0, readMs = 0;
        onRenderThread(
            [&] {
                Ogre::RenderTarget* target = readerTarget();
                image = MVNByteBufferPool::sAlloc(static_cast<int>(bytes));
                if (!target || !image) return;
                auto t0 = Clock::now();
                target->update(true);
                glFinish();
                drawMs = msSince(t0);
                auto t1 = Clock::now();
                glPixelStorei(GL_PACK_ALIGNMENT, 4);
                if (bgra) {
                    glReadPixels(0, 0, w, h, GL_BGRA, GL_UNSIGNED_INT_8_8_8_8_REV, image->ptr());
                } else {
                    glReadPixels(0, 0, w, h, GL_RGBA, GL_UNSIGNED_BYTE, image->ptr());
                }
                readMs = msSince(t1);
            },
            "benchOneCopyRead");
        if (!image) {
            state.SkipWithError("no buffer");
            return;
        }
        draw.push_back(drawMs);
        read.push_back(readMs);
        const size_t row = static_cast<size_t>(w) * 4;
        for (int y = 0; reference && y < h; y += h / 8) {
            const unsigned char* want = reference->ptr() + static_cast<size_t>(y) * row;
            topFirst = topFirst && sameRow(image->ptr() + static_cast<size_t>(y) * row, want, w, bgra);
            bottomFirst = bottomFirst && sameRow(image->ptr() + static_cast<size_t>(h - 1 - y) * row, want, w, bgra);
        }
        auto t2 = Clock::now();
        std::memcpy(copy.data(), image->ptr(), bytes);
        benchmark::ClobberMemory();
        mem.push_back(msSince(t2));
        MVNByteBufferPool::sRelease(image);
    }
    MVNByteBufferPool::sRelease(reference);
    double r = median(read), d = median(draw), m = median(mem);
    state.counters["read_ms"] = d + r;
    state.counters["render_ms"] = d;
    state.counters["memcpy_ms"] = m;
    state.counters["x_memcpy"] = m > 0 ? (d + r) / m : 0;
    state.counters["copy_x_memcpy"] = m > 0 ? r / m : 0;
    // 1 when the rows are the reader's, in the reader's order (top first)
    // or upside down.
    state.counters["same_top_first"] = topFirst ? 1 : 0;
    state.counters["same_bottom_first"] = bottomFirst ? 1 : 0;
}

void BM_Upload(benchmark::State& state, int width, int height) {
    if (!engineAt(state, width, height)) return;
    const int w = context()->getWidth();
    const int h = context()->getHeight();
    const size_t bytes = static_cast<size_t>(w) * h * 4;
    std::vector<unsigned char> picture(bytes);
    for (size_t i = 0; i < bytes; ++i) picture[i] = static_cast<unsigned char>(i * 7);
    std::vector<unsigned char> copy(bytes, 1);
    std::vector<double> upload, mem;
    {
        MVNOgreTextureNodeThread<MVNOgreTextureNodePlane> node(std::string(), w, h, w, h, 0, std::string());
        node.updateTexture(picture.data(), w, h);  // the texture is made by the first upload
        for (auto _ : state) {
            auto t0 = Clock::now();
            node.updateTexture(picture.data(), w, h);
            upload.push_back(msSince(t0));
            auto t1 = Clock::now();
            std::memcpy(copy.data(), picture.data(), bytes);
            benchmark::ClobberMemory();
            mem.push_back(msSince(t1));
        }
    }
    double u = median(upload), m = median(mem);
    state.counters["upload_ms"] = u;
    state.counters["memcpy_ms"] = m;
    state.counters["x_memcpy"] = m > 0 ? u / m : 0;
}

std::vector<std::pair<int, int>> parseSizes(const std::string& text) {
    std::vector<std::pair<int, int>> sizes;
    size_t start = 0;
    while (start < text.size()) {
        size_t end = text.find(',', start);
        if (end == std::string::npos) end = text.size();
        int w = 0, h = 0;
        if (std::sscanf(text.substr(start, end - start).c_str(), "%dx%d", &w, &h) == 2 && w > 0 && h > 0) {
            sizes.emplace_back(w, h);
        }
        start = end + 1;
    }
    return sizes;
}

// The engine writes its configuration, log and caches into the working
// folder: give it a scratch one.
bool enterScratchFolder() {
    char dir[] = "/tmp/mvn-bench-gpu-XXXXXX";
    if (!::mkdtemp(dir) || ::chdir(dir) != 0) return false;
    if (FILE* marker = std::fopen("not_full_screen", "w")) std::fclose(marker);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string sizesArg = "1280x720,1920x1080";
    std::vector<char*> rest;
    for (int i = 0; i < argc; ++i) {
        if (std::strncmp(argv[i], "--sizes=", 8) == 0) {
            sizesArg = argv[i] + 8;
        } else {
            rest.push_back(argv[i]);
        }
    }
    int restCount = static_cast<int>(rest.size());
    benchmark::Initialize(&restCount, rest.data());
    if (benchmark::ReportUnrecognizedArguments(restCount, rest.data())) return 2;
    if (!std::getenv("DISPLAY")) {
        std::fprintf(stderr, "mvn-bench-gpu: needs an X display (run under xvfb-run)\n");
        return 2;
    }
    if (!enterScratchFolder()) {
        std::fprintf(stderr, "mvn-bench-gpu: no scratch folder\n");
        return 1;
    }
    for (const auto& size : parseSizes(sizesArg)) {
        const int w = size.first, h = size.second;
        const std::string suffix = "/" + std::to_string(w) + "x" + std::to_string(h);
        for (const ReaderCase& c : kReaders) {
            std::string name = std::string("ReadBack/") + c.name +
                               (c.windowReader ? "/window_aa" : c.antiAliasing ? "/aa" : "/noaa") + suffix;
            benchmark::RegisterBenchmark(name.c_str(), BM_ReadBack, c, w, h)
                ->Iterations(20)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
        for (bool upload : {true, false}) {
            std::string name = std::string("ComposeFourPictureClips/") + (upload ? "upload" : "no_upload") + suffix;
            benchmark::RegisterBenchmark(name.c_str(), [w, h, upload](benchmark::State& state) {
                if (engineAt(state, w, h)) MorvaneBench::composeFrames(state, upload);
            })->Iterations(30)->Unit(benchmark::kMillisecond)->UseRealTime();
        }
        for (bool bgra : {true, false}) {
            std::string name = std::string("ReadBack/one_copy_") + (bgra ? "bgra" : "rgba") + "/noaa" + suffix;
            benchmark::RegisterBenchmark(name.c_str(), BM_ReadBackOneCopy, bgra, w, h)
                ->Iterations(20)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
        for (int mode : {0, 1}) {
            std::string name = std::string("TextTitle20/") + (mode == 0 ? "cold" : "from_cache") + suffix;
            benchmark::RegisterBenchmark(name.c_str(), [w, h, mode](benchmark::State& state) {
                if (engineAt(state, w, h)) MorvaneBench::buildTitle(state, mode);
            })->Iterations(20)->Unit(benchmark::kMillisecond)->UseRealTime();
        }
        for (bool three : {false, true}) {
            std::string name = std::string("ComposeTenTextClips/") + (three ? "extruded" : "flat") + suffix;
            benchmark::RegisterBenchmark(name.c_str(), [w, h, three](benchmark::State& state) {
                if (engineAt(state, w, h)) MorvaneBench::composeTitles(state, three, true);
            })->Iterations(20)->Unit(benchmark::kMillisecond)->UseRealTime();
        }
        // Beside the row above: what multisampling the track textures costs.
        benchmark::RegisterBenchmark(("ComposeTenTextClips/extruded_one_sample" + suffix).c_str(),
                                     [w, h](benchmark::State& state) {
                                         if (engineAt(state, w, h)) MorvaneBench::composeTitles(state, true, false);
                                     })
            ->Iterations(20)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
        // Still (0), moving (1), fading (9) and wiped by a program (25).
        for (int type : {0, 1, 9, 25}) {
            std::string name = "AnimatedTextTitle/type" + std::to_string(type) + suffix;
            benchmark::RegisterBenchmark(name.c_str(), [w, h, type](benchmark::State& state) {
                if (engineAt(state, w, h)) MorvaneBench::animateTitle(state, type);
            })->Iterations(50)->Unit(benchmark::kMillisecond)->UseRealTime();
        }
        benchmark::RegisterBenchmark(("Upload" + suffix).c_str(), BM_Upload, w, h)
            ->Iterations(20)
            ->Unit(benchmark::kMillisecond)
            ->UseRealTime();
    }
    benchmark::RunSpecifiedBenchmarks();
    gEngine.stop();
    benchmark::Shutdown();
    return 0;
}
