// mvn-soak: renders a project for many frames (its positions over and over)
// and prints, every N frames, what a long render could leak: the process's
// resident memory, its open file descriptors, and the engine's textures,
// render targets and materials. All should stay flat after the first
// thousand frames.
//
//   mvn-soak [--frames N] [--every N] [--profile WxH@FPS] PROJECT
#include <dirent.h>
#include <unistd.h>

#include <Ogre.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "MVNToolSetup.h"
#include "core/MVNProfile.h"
#include "engine/MVNOgreManager.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "timeline/MVNModule.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRenderConsumer.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;

namespace {

long residentKiB() {
    std::ifstream statm("/proc/self/statm");
    long pages = 0, resident = 0;
    statm >> pages >> resident;
    return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

int openDescriptors() {
    int n = 0;
    if (DIR* dir = opendir("/proc/self/fd")) {
        while (dirent* e = readdir(dir)) {
            if (e->d_name[0] != '.') ++n;
        }
        closedir(dir);
    }
    return n - 1;  // the listing's own descriptor
}

struct EngineCounts {
    size_t textures = 0;
    size_t renderTargets = 0;
    size_t materials = 0;
};

// Counted on the render thread, where the engine's lists live.
EngineCounts engineCounts() {
    EngineCounts c;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&c] {
            for (auto it = Ogre::TextureManager::getSingleton().getResourceIterator(); it.hasMoreElements(); it.moveNext())
                ++c.textures;
            for (auto it = Ogre::MaterialManager::getSingleton().getResourceIterator(); it.hasMoreElements();
                 it.moveNext())
                ++c.materials;
            if (Ogre::RenderSystem* rs = Ogre::Root::getSingleton().getRenderSystem()) {
                for (auto it = rs->getRenderTargetIterator(); it.hasMoreElements(); it.moveNext()) ++c.renderTargets;
            }
        },
        "soakCounts");
    return c;
}

int usage() {
    std::fprintf(stderr, "usage: mvn-soak [--frames N] [--every N] [--profile WxH@FPS] PROJECT\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    int frames = 10000;
    int every = 1000;
    std::string profile = "1920x1080@25";
    std::string project;
    for (int i = 1; i < argc; ++i) {
        std::string a = argv[i];
        if ((a == "--frames" || a == "--every" || a == "--profile") && i + 1 < argc) {
            std::string v = argv[++i];
            if (a == "--frames") frames = std::atoi(v.c_str());
            else if (a == "--every") every = std::atoi(v.c_str());
            else profile = v;
        } else if (!a.empty() && a[0] != '-' && project.empty()) {
            project = a;
        } else {
            return usage();
        }
    }
    if (project.empty() || frames < 1 || every < 1) return usage();
    const std::string path = std::filesystem::absolute(project).lexically_normal().string();

    MVNToolSetup::setUpLogging("mvn-soak", false);
    if (!MVNToolSetup::enterStateFolder("mvn-soak") || !MVNToolSetup::loadRenderModule("mvn-soak")) return 1;
    std::string media = findModule("libMVNMedia.so");
    if (media.empty() || loadModule(media) != 0) {
        std::fprintf(stderr, "mvn-soak: the media module could not be loaded\n");
        return 1;
    }
    MVNProjectLoader loader;
    MVNProject show;
    if (loader.read(path, show, profile) != 0) {
        std::fprintf(stderr, "mvn-soak: %s\n", loader.error().c_str());
        return 2;
    }
    MVNProperties rsProps;
    rsProps.setString("resource_locations", MVNToolSetup::join(show.resourceLocations, ';'));
    MVNRenderSystem* rs = createRenderSystem("ogreRenderSystem", show.profile, rsProps);
    if (rs == nullptr || rs->init() != 0 || loader.build(show) != 0) {
        std::fprintf(stderr, "mvn-soak: the project could not be rendered: %s\n", loader.error().c_str());
        return 1;
    }

    std::printf("%s at %dx%d, %d positions, %d frames\n", path.c_str(), show.profile.width(), show.profile.height(),
                show.length, frames);
    std::printf("%8s %10s %6s %9s %14s %10s %8s\n", "frame", "RSS MiB", "fds", "textures", "render targets",
                "materials", "fps");
    std::fflush(stdout);
    MVNRenderConsumer consumer(show.profile, rs, MVNRenderConsumer::READ_ASYNC);
    consumer.connect(MVNFactory::getSingleton()->getTractorById(show.tractorId));
    unsigned long long checksum = 0;
    consumer.setPictureSink([&](const MVNRenderConsumer::Picture& p) {
        checksum += p.pixels[(static_cast<size_t>(p.height / 2) * p.stride) + p.width * 2];
        return 0;
    });
    int done = 0;
    int status = 0;
    auto start = std::chrono::steady_clock::now();
    while (done < frames) {
        // Whole passes over the project, cut at the next report.
        int first = done % show.length;
        int count = std::min({show.length - first, every - done % every, frames - done});
        if (consumer.renderRange(first, first + count - 1) != count) {
            std::fprintf(stderr, "mvn-soak: frames %d to %d did not all come back\n", first, first + count - 1);
            status = 1;
            break;
        }
        done += count;
        if (done % every == 0 || done == frames) {
            double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
            EngineCounts c = engineCounts();
            std::printf("%8d %10.1f %6d %9zu %14zu %10zu %8.1f\n", done, residentKiB() / 1024.0, openDescriptors(),
                        c.textures, c.renderTargets, c.materials, done / seconds);
            std::fflush(stdout);
        }
    }
    consumer.disconnect();
    std::printf("checksum %llu\n", checksum);
    MVNProjectLoader::unload(show);
    rs->release();
    delete rs;
    return status;
}
