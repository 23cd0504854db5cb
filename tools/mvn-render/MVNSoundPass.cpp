#include "MVNSoundPass.h"

#include <signal.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <string>

#include "MVNProgress.h"
#include "MVNProjectOpen.h"
#include "MVNToolSetup.h"
#include "MVNVirtualDisplay.h"
#include "MVNWaveFile.h"
#include "core/MVNAudioBlock.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNModule.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRenderConsumer.h"
#include "timeline/MVNTractor.h"

namespace Morvane {
namespace {

namespace fs = std::filesystem;

constexpr int kExitFailed = 1;
constexpr int kExitBadInput = 2;

std::atomic<bool> gStop{false};

void onSignal(int) { gStop = true; }

bool endsWithWav(const std::string& path) {
    std::string ext = fs::path(path).extension().string();
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".wav";
}

// The renderer the services are built on, and the services of the built
// project, given back in that order however the pass ends.
struct Renderer {
    MVNRenderSystem* system = nullptr;
    ~Renderer() {
        if (system) system->release();
        delete system;
    }
};
struct BuiltProject {
    MVNProject& project;
    ~BuiltProject() { MVNProjectLoader::unload(project); }
};

}  // namespace

int MVNSoundPass::run(const MVNSoundPassRequest& request) {
    std::error_code ec;
    if (!endsWithWav(request.output)) {
        std::fprintf(stderr, "mvn-render: --audio-only writes a WAV file: the output must end in .wav, got %s\n",
                     request.output.c_str());
        return kExitBadInput;
    }
    const std::string projectPath = fs::absolute(request.project, ec).lexically_normal().string();
    const std::string output = fs::absolute(request.output, ec).lexically_normal().string();
    MVNProjectLoader loader;
    MVNProject project;
    if (int status = openProjectForRender(loader, request.project, projectPath, output, request.profile, project))
        return status;
    // Filters, transitions and text make their GPU resources when they are
    // built, so the renderer runs; it is never asked for a picture. Its
    // window is the smallest there is: nothing is drawn into it.
    MVNVirtualDisplay display;
    const char* env = std::getenv("DISPLAY");
    if ((!env || !*env) && display.start(64, 64) != 0) {
        std::fprintf(stderr, "mvn-render: no DISPLAY and %s\n", display.error().c_str());
        return kExitFailed;
    }
    Renderer renderer;
    MVNProperties rsProps;
    rsProps.setString("resource_locations", MVNToolSetup::join(project.resourceLocations, ';'));
    rsProps.setInt32("render_win_width", 2);
    rsProps.setInt32("render_win_height", 2);
    rsProps.setBoolean("anti_aliasing", false);
    renderer.system = createRenderSystem("ogreRenderSystem", project.profile, rsProps);
    if (!renderer.system || renderer.system->init() != 0) {
        std::fprintf(stderr, "mvn-render: the renderer could not start (run with MORVANE_LOG_LEVEL=info for details)\n");
        return kExitFailed;
    }
    if (loader.build(project) != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", loader.error().c_str());
        return kExitBadInput;
    }
    BuiltProject built{project};
    const int first = request.first < 0 ? 0 : request.first;
    const int last = request.last < 0 ? project.length - 1 : request.last;
    if (last >= project.length) {
        std::fprintf(stderr, "mvn-render: --frames %d:%d lies past the project's end (%d frames)\n", first, last,
                     project.length);
        return kExitBadInput;
    }
    // A film of a silent project has no sound track: nothing to write.
    if (!project.sound) {
        if (!request.quiet) std::fprintf(stderr, "mvn-render: nothing in %s sounds; no sound written\n", request.project.c_str());
        return 0;
    }

    MVNWaveFile wave(output);
    if (wave.open(MVNAudioBlock::kRate, MVNAudioBlock::kChannels) != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", wave.error().c_str());
        return kExitBadInput;
    }

    struct sigaction sa{};
    sa.sa_handler = onSignal;
    sigaction(SIGINT, &sa, nullptr);
    sigaction(SIGTERM, &sa, nullptr);

    const int total = last - first + 1;
    MVNProgress progress(total, request.quiet);
    int written = 0;
    bool failed = false;
    MVNRenderConsumer consumer(project.profile, nullptr);
    consumer.connect(MVNFactory::getSingleton()->getTractorById(project.tractorId));
    consumer.setSoundSink([&](const MVNRenderConsumer::Sound& sound) {
        if (gStop) return 1;
        if (wave.write(sound.samples, sound.count) != 0) {
            failed = true;
            return 1;
        }
        progress.update(++written);
        return 0;
    });
    int delivered = consumer.renderSoundRange(first, last);
    consumer.disconnect();

    if (gStop) {
        std::fprintf(stderr, "\nmvn-render: interrupted; nothing was kept\n");
        wave.abort();
        return 130;
    }
    if (failed || delivered != total) {
        std::string why = !wave.error().empty() ? wave.error()
                                                : "the sound of " + std::to_string(total - std::max(delivered, 0)) +
                                                      " of " + std::to_string(total) + " frames could not be made";
        std::fprintf(stderr, "\nmvn-render: %s\n", why.c_str());
        wave.abort();
        return kExitFailed;
    }
    if (wave.finish() != 0) {
        std::fprintf(stderr, "mvn-render: %s\n", wave.error().c_str());
        return kExitFailed;
    }
    progress.finish(written, output);
    return 0;
}

}  // namespace Morvane
