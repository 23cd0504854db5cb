// mvn-render: renders a project file to a video, a picture sequence or raw
// frames.
//
//   mvn-render PROJECT.json -o OUT [--frames A:B] [--profile NAME|WxH@FPS] [--quiet]
//
// Exit status: 0 done; 2 bad arguments, a bad project, a missing file or an
// unknown service; 1 the renderer or the output failed.
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "services/MVNFactory.h"
#include "core/MVNLog.h"
#include "timeline/MVNModule.h"
#include "MVNOutputSink.h"
#include "MVNProgress.h"
#include "timeline/MVNProjectLoader.h"
#include "services/MVNProperties.h"
#include "timeline/MVNRenderConsumer.h"
#include "services/MVNRenderSystem.h"
#include "timeline/MVNTractor.h"
#include "MVNToolSetup.h"
#include "MVNVirtualDisplay.h"

using namespace Morvane;
namespace fs = std::filesystem;

namespace {

constexpr int kExitFailed = 1;
constexpr int kExitBadInput = 2;

std::atomic<bool> gInterrupted{false};

void onSignal(int) { gInterrupted = true; }

struct Options {
    std::string project;
    std::string output;
    std::string profile;
    int first = -1;
    int last = -1;
    bool quiet = false;
    bool antiAliasing = true;
    bool async = true;
};

void usage(FILE* to) {
    std::fprintf(to,
                 "usage: mvn-render PROJECT.json -o OUT [--frames A:B] [--profile NAME|WxH@FPS] [--quiet]\n"
                 "                  [--no-antialias] [--sync]\n"
                 "  OUT: a .mp4 or .mkv file (H.264), a pattern like out/f%%05d.png (one PNG a frame),\n"
                 "       or - for raw RGBA frames on standard output\n"
                 "  --no-antialias  draw without multisampling: faster, rougher edges on rotated or scaled clips\n"
                 "  --sync          read each picture back before drawing the next (slower; no overlap)\n");
}

bool parseFrames(const std::string& text, int& first, int& last) {
    auto colon = text.find(':');
    if (colon == std::string::npos) return false;
    char* end = nullptr;
    long a = std::strtol(text.c_str(), &end, 10);
    if (end != text.c_str() + colon) return false;
    long b = std::strtol(text.c_str() + colon + 1, &end, 10);
    if (*end != '\0' || colon + 1 == text.size()) return false;
    if (a < 0 || b < a || b > 100000000) return false;
    first = static_cast<int>(a);
    last = static_cast<int>(b);
    return true;
}

int parseArgs(int argc, char** argv, Options& o) {
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        auto value = [&](const char* name) -> const char* {
            if (i + 1 >= argc) {
                std::fprintf(stderr, "mvn-render: %s needs a value\n", name);
                return nullptr;
            }
            return argv[++i];
        };
        if (a == "-o" || a == "--output") {
            const char* v = value("-o");
            if (!v) return -1;
            o.output = v;
        } else if (a == "--frames") {
            const char* v = value("--frames");
            if (!v) return -1;
            if (!parseFrames(v, o.first, o.last)) {
                std::fprintf(stderr, "mvn-render: --frames wants A:B with 0 <= A <= B, got \"%s\"\n", v);
                return -1;
            }
        } else if (a == "--profile") {
            const char* v = value("--profile");
            if (!v) return -1;
            o.profile = v;
        } else if (a == "--quiet" || a == "-q") {
            o.quiet = true;
        } else if (a == "--no-antialias") {
            o.antiAliasing = false;
        } else if (a == "--sync") {
            o.async = false;
        } else if (a == "-h" || a == "--help") {
            usage(stdout);
            std::exit(0);
        } else if (!a.empty() && a[0] == '-' && a != "-") {
            std::fprintf(stderr, "mvn-render: unknown option %s\n", a.c_str());
            return -1;
        } else if (o.project.empty()) {
            o.project = a;
        } else {
            std::fprintf(stderr, "mvn-render: more than one project given (%s)\n", a.c_str());
            return -1;
        }
    }
    if (o.project.empty() || o.output.empty()) {
        usage(stderr);
        return -1;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    if (parseArgs(argc, argv, opt) != 0) return kExitBadInput;
    MVNToolSetup::setUpLogging("mvn-render", opt.quiet);

    std::error_code ec;
    const std::string projectPath = fs::absolute(opt.project, ec).lexically_normal().string();
    std::string output = opt.output;
    if (output != "-") output = fs::absolute(output, ec).lexically_normal().string();
    if (!fs::is_regular_file(projectPath, ec)) {
        std::fprintf(stderr, "mvn-render: %s: no such project file\n", opt.project.c_str());
        return kExitBadInput;
    }
    if (output != "-") {
        fs::path parent = fs::path(output).parent_path();
        if (!parent.empty() && !fs::is_directory(parent, ec)) {
            std::fprintf(stderr, "mvn-render: %s: the output folder does not exist\n", parent.c_str());
            return kExitBadInput;
        }
    }

    if (!MVNToolSetup::enterStateFolder("mvn-render")) return kExitFailed;
    if (!MVNToolSetup::loadRenderModule("mvn-render")) return kExitFailed;

    MVNProjectLoader loader;
    MVNProject project;
    if (loader.read(projectPath, project, opt.profile) != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", loader.error().c_str());
        return kExitBadInput;
    }
    const int first = opt.first < 0 ? 0 : opt.first;

    // The length is known once the timeline is built; the frame range is
    // checked then.
    std::string sinkError;
    std::unique_ptr<MVNOutputSink> sink = MVNOutputSink::create(output, first, sinkError);
    if (!sink) {
        std::fprintf(stderr, "mvn-render: %s\n", sinkError.c_str());
        return kExitBadInput;
    }

    MVNVirtualDisplay display;
    const char* env = std::getenv("DISPLAY");
    if (!env || !*env) {
        if (display.start(project.profile.width(), project.profile.height()) != 0) {
            std::fprintf(stderr, "mvn-render: no DISPLAY and %s\n", display.error().c_str());
            return kExitFailed;
        }
        if (!opt.quiet) std::fprintf(stderr, "mvn-render: no DISPLAY, rendering on virtual display %s\n", display.name().c_str());
    }

    MVNProperties rsProps;
    rsProps.setString("resource_locations", MVNToolSetup::join(project.resourceLocations, ';'));
    rsProps.setBoolean("anti_aliasing", opt.antiAliasing);
    MVNRenderSystem* rs = createRenderSystem("ogreRenderSystem", project.profile, rsProps);
    if (!rs || rs->init() != 0) {
        std::fprintf(stderr, "mvn-render: the renderer could not start (run with MORVANE_LOG_LEVEL=info for details)\n");
        delete rs;
        return kExitFailed;
    }
    // Services that draw are built on the running renderer.
    if (loader.build(project) != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", loader.error().c_str());
        rs->release();
        delete rs;
        return kExitBadInput;
    }
    const int last = opt.last < 0 ? project.length - 1 : opt.last;
    if (last >= project.length) {
        std::fprintf(stderr, "mvn-render: --frames %d:%d lies past the project's end (%d frames)\n", first, last,
                     project.length);
        MVNProjectLoader::unload(project);
        rs->release();
        delete rs;
        return kExitBadInput;
    }

    struct sigaction sa{};
    sa.sa_handler = onSignal;
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);
    signal(SIGPIPE, SIG_IGN);

    const int total = last - first + 1;
    MVNProgress progress(total, opt.quiet);
    int written = 0;
    bool opened = false;
    bool failed = false;
    // The asynchronous read overlaps the read-back of one picture with the
    // drawing of the next.
    MVNRenderConsumer consumer(project.profile, rs,
                               opt.async ? MVNRenderConsumer::READ_ASYNC : MVNRenderConsumer::READ_SYNC);
    consumer.connect(MVNFactory::getSingleton()->getTractorById(project.tractorId));
    consumer.setPictureSink([&](const MVNRenderConsumer::Picture& pic) {
        if (gInterrupted) return 1;
        if (!opened) {
            if (sink->open(pic.width, pic.height, project.profile.fpsNum(), project.profile.fpsDen(), pic.colorType) != 0) {
                failed = true;
                return 1;
            }
            opened = true;
        }
        if (sink->write(pic.pixels, pic.stride) != 0) {
            failed = true;
            return 1;
        }
        progress.update(++written);
        return 0;
    });
    int delivered = consumer.renderRange(first, last);
    consumer.disconnect();

    int status = 0;
    if (gInterrupted) {
        std::fprintf(stderr, "\nmvn-render: interrupted; nothing was kept\n");
        sink->abort();
        status = 130;
    } else if (failed || delivered != total || !opened) {
        std::fprintf(stderr, "\nmvn-render: %s\n",
                     !sink->error().empty() ? sink->error().c_str()
                                            : ("only " + std::to_string(std::max(delivered, 0)) + " of " +
                                               std::to_string(total) + " frames came back from the renderer")
                                                  .c_str());
        sink->abort();
        status = kExitFailed;
    } else if (sink->finish() != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", sink->error().c_str());
        sink->abort();
        status = kExitFailed;
    } else {
        progress.finish(written, output == "-" ? "standard output" : output);
    }

    MVNProjectLoader::unload(project);
    rs->release();
    delete rs;
    return status;
}
