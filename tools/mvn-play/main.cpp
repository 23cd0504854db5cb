// mvn-play: shows a project in a window, in real time.
//
//   mvn-play PROJECT.json [--frames A:B] [--size WxH] [--profile NAME|WxH@FPS]
//                         [--screenshot DIR] [--no-timecode] [--no-antialias] [--quiet]
//
// Space pauses and plays, left and right step one frame, home and end jump
// to the first and last frame, escape or q (or closing the window) quits.
// Frames that come due while the previous one is still being drawn are
// skipped, and the title bar counts them. With --screenshot the frames A..B
// are shown one after the other and what the window showed is written to
// DIR/frame%05d.png; the tool then exits.
//
// Exit status: 0 done; 2 bad arguments or a bad project; 1 the renderer or
// the output failed.
#include <SDL.h>
#include <signal.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "MVNOutputSink.h"
#include "MVNPreviewKeys.h"
#include "MVNToolSetup.h"
#include "MVNVirtualDisplay.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNColorType.h"
#include "core/MVNFrame.h"
#include "engine/MVNOgreContextSDL.h"
#include "engine/MVNOgreLabel.h"
#include "engine/MVNOgreManager.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "timeline/MVNProjectLoader.h"
#include "MVNProjectCheck.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;
namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitBadInput = 2;
const char* const kTool = "mvn-play";

std::atomic<bool> gInterrupted{false};

void onSignal(int) { gInterrupted = true; }

struct Options {
    std::string project;
    std::string profile;
    std::string screenshots;
    int first = -1;
    int last = -1;
    int width = 0;
    int height = 0;
    bool timecode = true;
    bool antiAliasing = true;
    bool quiet = false;
};

void usage(FILE* to) {
    std::fprintf(to,
                 "usage: mvn-play PROJECT.json [--frames A:B] [--size WxH] [--profile NAME|WxH@FPS]\n"
                 "                [--screenshot DIR] [--no-timecode] [--no-antialias] [--quiet]\n"
                 "  keys: space play/pause, left/right one frame, home/end first/last frame, esc or q quit\n"
                 "  --size WxH        the window's size (even numbers); the profile's by default\n"
                 "  --screenshot DIR  show frames A..B once, write each as DIR/frame%%05d.png, exit\n"
                 "  --no-timecode     no timecode label over the picture\n");
}

bool parsePair(const std::string& text, char sep, long& a, long& b) {
    auto at = text.find(sep);
    if (at == std::string::npos || at == 0 || at + 1 == text.size()) return false;
    char* end = nullptr;
    a = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() + at) return false;
    b = std::strtol(text.c_str() + at + 1, &end, 10);
    return *end == '\0';
}

int parseArgs(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&]() -> const char* {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "mvn-play: %s needs a value\n", a.c_str());
                return nullptr;
            }
            return argv[++i];
        };
        long x = 0;
        long y = 0;
        if (a == "--frames") {
            const char* v = value();
            if (!v) return -1;
            if (!parsePair(v, ':', x, y) || x < 0 || y < x) {
                std::fprintf(stderr, "mvn-play: --frames wants A:B with 0 <= A <= B, got \"%s\"\n", v);
                return -1;
            }
            o.first = static_cast<int>(x);
            o.last = static_cast<int>(y);
        } else if (a == "--size") {
            const char* v = value();
            if (!v) return -1;
            if (!parsePair(v, 'x', x, y) || x < 2 || y < 2 || x > 16384 || y > 16384 || x % 2 || y % 2) {
                std::fprintf(stderr, "mvn-play: --size wants WxH, both even, got \"%s\"\n", v);
                return -1;
            }
            o.width = static_cast<int>(x);
            o.height = static_cast<int>(y);
        } else if (a == "--profile") {
            const char* v = value();
            if (!v) return -1;
            o.profile = v;
        } else if (a == "--screenshot") {
            const char* v = value();
            if (!v) return -1;
            o.screenshots = v;
        } else if (a == "--no-timecode") {
            o.timecode = false;
        } else if (a == "--no-antialias") {
            o.antiAliasing = false;
        } else if (a == "--quiet" || a == "-q") {
            o.quiet = true;
        } else if (a == "-h" || a == "--help") {
            usage(stdout);
            std::exit(0);
        } else if (!a.empty() && a[0] == '-') {
            std::fprintf(stderr, "mvn-play: unknown option %s\n", a.c_str());
            return -1;
        } else if (o.project.empty()) {
            o.project = a;
        } else {
            std::fprintf(stderr, "mvn-play: more than one project given (%s)\n", a.c_str());
            return -1;
        }
    }
    if (o.project.empty()) {
        usage(stderr);
        return -1;
    }
    return 0;
}

// HH:MM:SS:FF, frames counted at the profile's rate rounded to a whole one.
std::string timecode(int position, double fps) {
    int rate = std::max(1, static_cast<int>(std::lround(fps)));
    int seconds = position / rate;
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d:%02d", seconds / 3600, seconds / 60 % 60, seconds % 60,
                  position % rate);
    return text;
}

// Where the timecode sits, in profile pixels: the top-left corner.
const MVNRect kLabelGeometry(8, 8, 176, 44);

// Everything the window shows besides the timeline: the label and the title.
class Preview {
public:
    Preview(const MVNProject& project, bool withTimecode) : mProject(project) {
        mTractor = MVNFactory::getSingleton()->getTractorById(project.tractorId);
        if (withTimecode) {
            mLabel.reset(new MVNOgreLabel());
            mLabel->setProfile(project.profile);
            mLabel->setGeometry(kLabelGeometry);
            // White text reads on any picture; the colour is set on the
            // render thread, where the label's engine objects live.
            MVNOgreLabel* label = mLabel.get();
            MVNOgreManager::getSingleton()->callRenderableWait([label]() { label->setColor(1, 1, 1, 0.9f); },
                                                               "previewLabelColor");
        }
    }

    // Lets the timeline draw `position` into the window's scene.
    void prepare(int position) {
        if (mLabel) mLabel->setText(timecode(position, mProject.profile.fps()));
        MVNFrame* frame = nullptr;
        if (mTractor->getImage(position, &frame) == 0 && frame) MVNFrame::pushBackPool(frame);
    }

    void setTitle(const std::string& title) {
        if (title == mTitle) return;
        mTitle = title;
        MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
        if (!context || context->getWindows().empty()) return;
        SDL_Window* window = context->getWindows().front().native;
        MVNOgreManager::getSingleton()->callRenderable([window, title]() { SDL_SetWindowTitle(window, title.c_str()); },
                                                       "previewTitle");
    }

private:
    const MVNProject& mProject;
    MVNTractor* mTractor = nullptr;
    std::unique_ptr<MVNOgreLabel> mLabel;
    std::string mTitle;
};

// --screenshot: frames first..last shown once each and written as seen.
int writeScreenshots(Preview& preview, MVNRenderSystem* rs, const MVNProject& project, int first, int last,
                     const std::string& dir) {
    std::string error;
    std::unique_ptr<MVNOutputSink> sink = MVNOutputSink::create(dir + "/frame%05d.png", first, error);
    if (!sink) {
        std::fprintf(stderr, "mvn-play: %s\n", error.c_str());
        return kExitBadInput;
    }
    const int w = rs->getRenderWindowWidth();
    const int h = rs->getRenderWindowHeight();
    if (sink->open(w, h, project.profile.fpsNum(), project.profile.fpsDen(), MVN_COLOR_RGBA) != 0) {
        std::fprintf(stderr, "mvn-play: %s\n", sink->error().c_str());
        return kExitFailed;
    }
    for (int position = first; position <= last; ++position) {
        preview.prepare(position);
        MVNByteBuffer* image = rs->getRenderImage();
        if (!image) {
            std::fprintf(stderr, "mvn-play: frame %d could not be read back from the window\n", position);
            sink->abort();
            return kExitFailed;
        }
        int rc = sink->write(image->ptr(), w * 4);
        MVNByteBufferPool::sRelease(image);
        if (rc != 0) {
            std::fprintf(stderr, "mvn-play: %s\n", sink->error().c_str());
            sink->abort();
            return kExitFailed;
        }
    }
    if (sink->finish() != 0) {
        std::fprintf(stderr, "mvn-play: %s\n", sink->error().c_str());
        return kExitFailed;
    }
    return 0;
}

// The real-time loop. The picture due is the one of the time since play
// started; when drawing falls behind, the positions passed over are dropped.
int play(Preview& preview, MVNRenderSystem* rs, const MVNProject& project, int first, int last) {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    auto* context = dynamic_cast<MVNOgreContextSDL*>(manager->getOgreContext());
    if (!context) return kExitFailed;
    MVNPreviewKeys keys;
    manager->callRenderableWait([context, &keys]() { context->addInputListener(&keys); }, "previewAddKeys");

    const double fps = project.profile.fps() > 0 ? project.profile.fps() : 25.0;
    const std::string name = fs::path(project.path).filename().string();
    bool playing = true;
    int position = first;
    int shown = -1;
    long dropped = 0;
    Clock::time_point clockStart = Clock::now();
    int clockPosition = first;
    Clock::time_point lastDraw = Clock::now();
    auto restartClock = [&]() {
        clockStart = Clock::now();
        clockPosition = position;
    };

    while (!context->isQuitRequested() && !gInterrupted) {
        for (int key = keys.take(); key != 0; key = keys.take()) {
            if (key == SDLK_ESCAPE || key == 'q') {
                playing = false;
                position = -1;
                break;
            }
            if (key == SDLK_SPACE) {
                if (!playing && position >= last) position = first;  // play again from the start
                playing = !playing;
            } else if (key == SDLK_LEFT) {
                playing = false;
                position = std::max(first, position - 1);
            } else if (key == SDLK_RIGHT) {
                playing = false;
                position = std::min(last, position + 1);
            } else if (key == SDLK_HOME) {
                position = first;
            } else if (key == SDLK_END) {
                position = last;
            }
            restartClock();
        }
        if (position < 0) break;

        if (playing) {
            double elapsed = std::chrono::duration<double>(Clock::now() - clockStart).count();
            int due = std::min(last, clockPosition + static_cast<int>(elapsed * fps));
            if (shown >= 0 && due > shown + 1) dropped += due - shown - 1;
            position = due;
        }
        bool stale = !playing && Clock::now() - lastDraw > std::chrono::milliseconds(250);
        if (position != shown || stale) {
            preview.prepare(position);
            rs->renderOneFrame();
            shown = position;
            lastDraw = Clock::now();
            if (playing && position >= last) playing = false;
        } else {
            // Nothing to draw: the window's events still need reading.
            manager->callRenderableWait([context]() { context->pollEvents(); }, "previewPollEvents");
        }
        preview.setTitle("mvn-play - " + name + " - " + timecode(position, fps) + " (" + std::to_string(position) +
                         "/" + std::to_string(last) + ")" + (playing ? "" : " - paused") +
                         (dropped ? " - " + std::to_string(dropped) + " dropped" : ""));

        if (playing) {
            auto next = clockStart + std::chrono::duration_cast<Clock::duration>(
                                         std::chrono::duration<double>((position + 1 - clockPosition) / fps));
            std::this_thread::sleep_until(std::min(next, Clock::now() + std::chrono::milliseconds(20)));
        } else {
            std::this_thread::sleep_for(std::chrono::milliseconds(15));
        }
    }
    manager->callRenderableWait([context, &keys]() { context->removeInputListener(&keys); }, "previewRemoveKeys");
    if (dropped > 0) std::fprintf(stderr, "mvn-play: %ld frames dropped\n", dropped);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    if (parseArgs(argc, argv, opt) != 0) return kExitBadInput;
    MVNToolSetup::setUpLogging(kTool, opt.quiet);

    std::error_code ec;
    const std::string projectPath = fs::absolute(opt.project, ec).lexically_normal().string();
    if (!fs::is_regular_file(projectPath, ec)) {
        std::fprintf(stderr, "mvn-play: %s: no such project file\n", opt.project.c_str());
        return kExitBadInput;
    }
    std::string shots;
    if (!opt.screenshots.empty()) {
        shots = fs::absolute(opt.screenshots, ec).lexically_normal().string();
        if (!fs::is_directory(shots, ec)) {
            std::fprintf(stderr, "mvn-play: %s: no such folder\n", opt.screenshots.c_str());
            return kExitBadInput;
        }
    }
    if (!MVNToolSetup::enterStateFolder(kTool)) return kExitFailed;
    if (!MVNToolSetup::loadRenderModule(kTool)) return kExitFailed;
    if (!MVNToolSetup::loadMediaModule(kTool)) return kExitFailed;

    MVNProjectLoader loader;
    MVNProject project;
    if (readCheckedProject(kTool, loader, projectPath, opt.profile, project) != 0) return kExitBadInput;
    const int width = opt.width ? opt.width : project.profile.width();
    const int height = opt.height ? opt.height : project.profile.height();

    // Screenshots can be taken without a display, on a private one; a
    // window to look at needs the user's.
    MVNVirtualDisplay display;
    const char* env = std::getenv("DISPLAY");
    if (!env || !*env) {
        if (shots.empty()) {
            std::fprintf(stderr, "mvn-play: no DISPLAY to open a window on\n");
            return kExitFailed;
        }
        if (display.start(width, height) != 0) {
            std::fprintf(stderr, "mvn-play: no DISPLAY and %s\n", display.error().c_str());
            return kExitFailed;
        }
    }

    MVNProperties rsProps;
    rsProps.setString("resource_locations", MVNToolSetup::join(project.resourceLocations, ';'));
    rsProps.setBoolean("anti_aliasing", opt.antiAliasing);
    rsProps.setString("window", "sdl");
    rsProps.setInt32("render_win_width", width);
    rsProps.setInt32("render_win_height", height);
    MVNRenderSystem* rs = createRenderSystem("ogreRenderSystem", project.profile, rsProps);
    if (!rs || rs->init() != 0) {
        std::fprintf(stderr, "mvn-play: the window could not be opened (run with MORVANE_LOG_LEVEL=info for details)\n");
        delete rs;
        return kExitFailed;
    }
    int status = 0;
    if (loader.build(project) != 0) {
        std::fprintf(stderr, "mvn-play: %s\n", loader.error().c_str());
        status = kExitBadInput;
    } else {
        const int first = opt.first < 0 ? 0 : opt.first;
        const int last = opt.last < 0 ? project.length - 1 : opt.last;
        if (last >= project.length) {
            std::fprintf(stderr, "mvn-play: --frames %d:%d lies past the project's end (%d frames)\n", first, last,
                         project.length);
            status = kExitBadInput;
        } else {
            struct sigaction sa {};
            sa.sa_handler = onSignal;
            sigaction(SIGINT, &sa, nullptr);
            sigaction(SIGTERM, &sa, nullptr);
            Preview preview(project, opt.timecode);
            status = shots.empty() ? play(preview, rs, project, first, last)
                                   : writeScreenshots(preview, rs, project, first, last, shots);
        }
        MVNProjectLoader::unload(project);
    }
    rs->release();
    delete rs;
    return status;
}
