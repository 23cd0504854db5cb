// mvn-render: renders a project file to a video, a picture sequence or raw
// frames.
//
//   mvn-render PROJECT.json -o OUT [--frames A:B] [--profile NAME|WxH@FPS] [--quiet]
//              [--no-audio] [--audio-out FILE.wav]
//   mvn-render --list-transitions
//
// Exit status: 0 done; 2 bad arguments, a bad project, a missing file or an
// unknown service; 1 the renderer or the output failed.
//
// A render shared out in pieces (mvn-farm runs these on a cluster):
//   mvn-render PROJECT.json -o OUT.mp4 --chunk K/N     (one piece of the range)
//   mvn-render --join OUT.mp4 [--sound FILE] SEGMENTS...
//   mvn-render PROJECT.json --audio-only -o SOUND.wav   (the sound alone, for --sound)
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "timeline/MVNFactory.h"
#include "core/MVNLog.h"
#include "timeline/MVNModule.h"
#include "MVNOutputSink.h"
#include "MVNProgress.h"
#include "MVNProjectOpen.h"
#include "MVNChunkPlan.h"
#include "MVNSegmentJoin.h"
#include "MVNSoundPass.h"
#include "MVNVideoFileSink.h"
#include "timeline/MVNProjectLoader.h"
#include "services/MVNProperties.h"
#include "timeline/MVNRenderConsumer.h"
#include "timeline/MVNRepository.h"
#include "services/MVNRenderSystem.h"
#include "timeline/MVNTractor.h"
#include "MVNToolSetup.h"
#include "MVNVirtualDisplay.h"
#include "MVNWaveFile.h"
#include "core/MVNAudioBlock.h"

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
    bool chunked = false;
    MVNChunkPlan chunk;
    std::string joinOutput;
    std::vector<std::string> segments;
    std::string sound;
    bool quiet = false;
    int antiAliasing = -1;  // 1 forced on, 0 off, -1 where it changes a pixel
    bool async = true;
    bool listTransitions = false;
    bool audio = true;
    std::string audioOut;
    bool audioOnly = false;
};

void usage(FILE* to) {
    std::fprintf(to,
                 "usage: mvn-render PROJECT.json -o OUT [--frames A:B] [--profile NAME|WxH@FPS] [--quiet]\n"
                 "                  [--antialias|--no-antialias] [--sync]\n"
                 "  OUT: a .mp4 or .mkv file (H.264), a pattern like out/f%%05d.png (one PNG a frame),\n"
                 "       or - for raw RGBA frames on standard output\n"
                 "  --chunk K/N     render the K-th of N pieces of the range (cut on key frames) to\n"
                 "                  OUT's name with .chunk-K-of-N before the extension\n"
                 "  --join OUT [--sound FILE] SEGMENTS...\n"
                 "                  instead of rendering: join the pieces without re-encoding, with\n"
                 "                  sound rendered once for the whole range\n"
                 "  --no-antialias  draw without multisampling: faster, rougher edges on rotated or scaled clips\n"
                 "  --antialias     multisample every frame (by default only frames where it changes a pixel)\n"
                 "  --sync          read each picture back before drawing the next (slower; no overlap)\n"
                 "  --no-audio      leave the sound out of a video file\n"
                 "  --audio-out F   write the sound to the WAV file F as well (48 kHz stereo float)\n"
                 "  --audio-only    write only the sound, to OUT ending in .wav: no picture is drawn\n"
                 "usage: mvn-render --list-transitions\n"
                 "  prints the named transitions of the render module by family\n");
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
        } else if (a == "--chunk") {
            const char* v = value("--chunk");
            if (!v) return -1;
            std::string error;
            if (!MVNChunkPlan::parse(v, o.chunk, error)) {
                std::fprintf(stderr, "mvn-render: %s\n", error.c_str());
                return -1;
            }
            o.chunked = true;
        } else if (a == "--join") {
            const char* v = value("--join");
            if (!v) return -1;
            o.joinOutput = v;
        } else if (a == "--sound") {
            const char* v = value("--sound");
            if (!v) return -1;
            o.sound = v;
        } else if (a == "--profile") {
            const char* v = value("--profile");
            if (!v) return -1;
            o.profile = v;
        } else if (a == "--quiet" || a == "-q") {
            o.quiet = true;
        } else if (a == "--no-antialias") {
            o.antiAliasing = 0;
        } else if (a == "--antialias") {
            o.antiAliasing = 1;
        } else if (a == "--sync") {
            o.async = false;
        } else if (a == "--list-transitions") {
            o.listTransitions = true;
        } else if (a == "--audio-only") {
            o.audioOnly = true;
        } else if (a == "--no-audio") {
            o.audio = false;
        } else if (a == "--audio-out") {
            const char* v = value("--audio-out");
            if (!v) return -1;
            o.audioOut = v;
        } else if (a == "-h" || a == "--help") {
            usage(stdout);
            std::exit(0);
        } else if (!a.empty() && a[0] == '-' && a != "-") {
            std::fprintf(stderr, "mvn-render: unknown option %s\n", a.c_str());
            return -1;
        } else if (!o.joinOutput.empty()) {
            o.segments.push_back(a);
        } else if (o.project.empty()) {
            o.project = a;
        } else {
            std::fprintf(stderr, "mvn-render: more than one project given (%s)\n", a.c_str());
            return -1;
        }
    }
    if (!o.joinOutput.empty()) {
        if (!o.project.empty()) o.segments.insert(o.segments.begin(), o.project);
        if (o.chunked || !o.output.empty()) {
            std::fprintf(stderr, "mvn-render: --join takes its output and segments only\n");
            return -1;
        }
        return 0;
    }
    if (!o.sound.empty()) {
        std::fprintf(stderr, "mvn-render: --sound goes with --join\n");
        return -1;
    }
    if (o.audioOnly && (o.chunked || !o.audio || !o.audioOut.empty())) {
        std::fprintf(stderr, "mvn-render: --audio-only writes the whole sound to -o alone\n");
        return -1;
    }
    if (!o.listTransitions && (o.project.empty() || o.output.empty())) {
        usage(stderr);
        return -1;
    }
    return 0;
}

// The transition library the module registered, one family a line:
//   Wipes: wipeleft wiperight ...
// The engine's other material scripts (mostly filters) are left out.
void listTransitions() {
    std::vector<std::pair<std::string, std::vector<std::string>>> families;
    for (const auto& [name, family] : MVNRepository::getSingleton()->transitions()) {
        if (family == "material") continue;
        auto it = std::find_if(families.begin(), families.end(), [&](const auto& f) { return f.first == family; });
        if (it == families.end()) it = families.insert(families.end(), {family, {}});
        it->second.push_back(name);
    }
    size_t count = 0;
    for (const auto& [family, names] : families) {
        std::printf("%s:", family.c_str());
        for (const std::string& name : names) std::printf(" %s", name.c_str());
        std::printf("\n");
        count += names.size();
    }
    std::printf("%zu transitions; a .glsl file in the open transition format is taken as well\n", count);
}

// Joins chunk segments; no renderer is started.
int joinSegments(const Options& o) {
    MVNSegmentJoin joiner;
    MVNSegmentJoin::Result r = joiner.join(o.joinOutput, o.segments, o.sound);
    if (r != MVNSegmentJoin::Joined) {
        std::fprintf(stderr, "mvn-render: %s\n", joiner.error().c_str());
        return r == MVNSegmentJoin::BadInput ? kExitBadInput : kExitFailed;
    }
    if (!o.quiet) std::fprintf(stderr, "mvn-render: %d frames joined into %s\n", joiner.frames(), o.joinOutput.c_str());
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options opt;
    if (parseArgs(argc, argv, opt) != 0) return kExitBadInput;
    MVNToolSetup::setUpLogging("mvn-render", opt.quiet);
    if (opt.listTransitions) {
        if (!MVNToolSetup::loadRenderModule("mvn-render")) return kExitFailed;
        listTransitions();
        return 0;
    }
    if (!opt.joinOutput.empty()) return joinSegments(opt);
    if (opt.audioOnly) return MVNSoundPass::run({opt.project, opt.output, opt.profile, opt.first, opt.last, opt.quiet});

    std::error_code ec;
    std::string audioOut = opt.audioOut;
    if (!audioOut.empty()) audioOut = fs::absolute(audioOut, ec).lexically_normal().string();
    const std::string projectPath = fs::absolute(opt.project, ec).lexically_normal().string();
    std::string output = opt.chunked ? opt.chunk.segmentPath(opt.output) : opt.output;
    if (output != "-") output = fs::absolute(output, ec).lexically_normal().string();
    MVNProjectLoader loader;
    MVNProject project;
    if (int status = openProjectForRender(loader, opt.project, projectPath, output, opt.profile, project))
        return status;
    int first = opt.first < 0 ? 0 : opt.first;

    // The length is known once the timeline is built; the frame range is
    // checked then.
    std::string sinkError;
    std::unique_ptr<MVNOutputSink> sink = MVNOutputSink::create(output, first, sinkError);
    if (!sink) {
        std::fprintf(stderr, "mvn-render: %s\n", sinkError.c_str());
        return kExitBadInput;
    }
    auto* video = dynamic_cast<MVNVideoFileSink*>(sink.get());
    if (opt.chunked && !video) {
        std::fprintf(stderr, "mvn-render: --chunk writes a video: the output must end in .mp4 or .mkv\n");
        return kExitBadInput;
    }

    // Sound goes into a video file unless --no-audio, and to --audio-out.
    std::unique_ptr<MVNWaveFile> wave;
    if (!audioOut.empty()) {
        wave = std::make_unique<MVNWaveFile>(audioOut);
        if (wave->open(MVNAudioBlock::kRate, MVNAudioBlock::kChannels) != 0) {
            std::fprintf(stderr, "mvn-render: %s\n", wave->error().c_str());
            return kExitBadInput;
        }
    }
    // A project where nothing sounds gets no silent track.
    const bool soundInOutput = opt.audio && sink->keepsSound() && project.sound;
    if (soundInOutput) sink->enableSound(MVNAudioBlock::kRate, MVNAudioBlock::kChannels);

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
    if (opt.antiAliasing >= 0) rsProps.setBoolean("anti_aliasing", opt.antiAliasing == 1);
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
    int last = opt.last < 0 ? project.length - 1 : opt.last;
    if (last >= project.length) {
        std::fprintf(stderr, "mvn-render: --frames %d:%d lies past the project's end (%d frames)\n", first, last,
                     project.length);
        MVNProjectLoader::unload(project);
        rs->release();
        delete rs;
        return kExitBadInput;
    }
    if (opt.chunked) {
        const int whole = first;
        std::string chunkError;
        if (!opt.chunk.range(whole, last, MVNVideoFileSink::kKeyFrameInterval, first, last, chunkError)) {
            std::fprintf(stderr, "mvn-render: %s\n", chunkError.c_str());
            MVNProjectLoader::unload(project);
            rs->release();
            delete rs;
            return kExitBadInput;
        }
        // The join reads which piece this is and which frames it holds.
        video->setTags({{MVNSegmentJoin::kChunkTag, std::to_string(opt.chunk.index()) + "/" + std::to_string(opt.chunk.count())},
                        {MVNSegmentJoin::kFramesTag, std::to_string(first - whole) + ":" + std::to_string(last - whole)}});
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
    if (soundInOutput || wave) {
        consumer.setSoundSink([&](const MVNRenderConsumer::Sound& sound) {
            if (gInterrupted) return 1;
            if (soundInOutput && sink->writeSound(sound.samples, sound.count) != 0) {
                failed = true;
                return 1;
            }
            if (wave && wave->write(sound.samples, sound.count) != 0) {
                failed = true;
                return 1;
            }
            return 0;
        });
    }
    int delivered = consumer.renderRange(first, last);
    consumer.disconnect();

    int status = 0;
    if (gInterrupted) {
        std::fprintf(stderr, "\nmvn-render: interrupted; nothing was kept\n");
        sink->abort();
        if (wave) wave->abort();
        status = 130;
    } else if (failed || delivered != total || !opened) {
        std::string why = !sink->error().empty()            ? sink->error()
                          : wave && !wave->error().empty() ? wave->error()
                                                           : "only " + std::to_string(std::max(delivered, 0)) + " of " +
                                                                 std::to_string(total) +
                                                                 " frames came back from the renderer";
        // The new line ends the progress line; without one it would leave a blank line.
        std::fprintf(stderr, "%smvn-render: %s\n", opt.quiet ? "" : "\n", why.c_str());
        sink->abort();
        if (wave) wave->abort();
        status = kExitFailed;
    } else if (sink->finish() != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", sink->error().c_str());
        sink->abort();
        if (wave) wave->abort();
        status = kExitFailed;
    } else if (wave && wave->finish() != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", wave->error().c_str());
        status = kExitFailed;
    } else {
        progress.finish(written, output == "-" ? "standard output" : output);
    }

    MVNProjectLoader::unload(project);
    rs->release();
    delete rs;
    return status;
}
