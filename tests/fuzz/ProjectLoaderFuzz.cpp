// Project files from an untrusted source: reading and building must end in a
// project or in one error line, never in a crash, a leak or a hang. The
// services are stand-ins under the module's names, so the loader's own paths
// (groups, grids, transitions, filters with their checks) are all reachable
// without a renderer.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

#include "FuzzSupport.h"
#include "timeline/MVNFactory.h"
#include "services/MVNFilter.h"
#include "services/MVNGroup.h"
#include "services/MVNProducer.h"
#include "services/MVNTransition.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRepository.h"

using namespace Morvane;
namespace fs = std::filesystem;

namespace {

class StandInProducer : public MVNProducer {
public:
    explicit StandInProducer(const MVNProfile& profile) : MVNProducer(profile) {}
    int init() override { return 0; }
    void release() override {}
};

class StandInFilter : public MVNFilter {
public:
    explicit StandInFilter(const MVNProfile& profile) : MVNFilter(profile, MVN_FILTER_VIDEO, MVN_FILTER_USE_NORMAL) {}
};

class StandInTransition : public MVNTransition {
public:
    explicit StandInTransition(const MVNProfile& profile) : MVNTransition(profile) {}
};

std::string gFolder;

void setUp() {
    MVNRepository* repo = MVNRepository::getSingleton();
    if (!repo->builtinsRegistered()) repo->registerBuiltins();
    auto producer = [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new StandInProducer(*p); };
    auto filter = [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new StandInFilter(*p); };
    for (const char* name : {"ogre.image", "ogre.color", "ogre.pixelbuffer", "codec.video", "codec.gif", "stb_image",
                             "text"}) {
        repo->registerService(MVN_SERVICE_PRODUCER, name, producer);
    }
    // The group connects its tracks for real; the grid makes no cells, so
    // the loader's refusal of a grid without them is reached as well.
    for (const char* name : {"ogre.group.sample", "ogre.grid"}) {
        repo->registerService(MVN_SERVICE_PRODUCER, name, [](const MVNProfile* p, const MVNProperties*) -> MVNService* {
            return new MVNGroup(*p);
        });
    }
    for (const char* name : {"ogre.filter.sample", "ogre.filter.sample2", "ogre.filter.canvas", "ogre.tool"}) {
        repo->registerService(MVN_SERVICE_FILTER, name, filter);
    }
    repo->registerService(MVN_SERVICE_PRODUCER, "ogre.transition.sample",
                          [](const MVNProfile* p, const MVNProperties*) -> MVNService* {
                              return new StandInTransition(*p);
                          });
    for (const char* name : {"fade", "wipeleft", "circleopen"}) repo->registerTransition(name, "fuzz");

    // Files a project may name beside itself; none is a real picture or
    // video, so the probes' refusals are exercised too.
    const char* tmp = std::getenv("TMPDIR");
    fs::path folder = fs::path(tmp != nullptr ? tmp : "/tmp") / ("mvn-fuzz-project-" + std::to_string(::getpid()));
    fs::create_directories(folder);
    for (const char* name : {"a.png", "b.jpg", "c.mp4", "d.gif", "e.cube", "f.glsl"}) {
        std::ofstream(folder / name) << "not what the name says";
    }
    gFolder = folder.string();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MorvaneFuzz::quietLog();
    setUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    MVNProjectLoader loader;
    MVNProject project;
    const int before = MVNFactory::getSingleton()->count();
    if (loader.loadFromString(text, gFolder + "/show.json", project) == 0) {
        MorvaneFuzz::check(project.length > 0, "a project that loads has frames");
        MVNProjectLoader::unload(project);
    } else {
        MorvaneFuzz::check(!loader.error().empty(), "a refusal says why");
        MorvaneFuzz::check(loader.error().find('\n') == std::string::npos, "a refusal is one line");
    }
    MorvaneFuzz::check(MVNFactory::getSingleton()->count() == before, "nothing is left built");
    return 0;
}
