// libMVNMedia.so: the host's media producers, pictures and sound decoded on
// the processor, installed into the repository like any module. One row per
// service.
#include <new>

#include "core/MVNLog.h"
#include "producers/MVNProducerGif.h"
#include "producers/MVNProducerStill.h"
#include "producers/MVNProducerVideo.h"
#include "timeline/MVNRepository.h"

using namespace Morvane;

namespace {

template <class T>
MVNService* make(const MVNProfile* profile, const MVNProperties*) {
    return profile != nullptr ? new (std::nothrow) T(*profile) : nullptr;
}

struct MediaService {
    const char* name;
    MVNServiceFactory factory;
};

const MediaService kServices[] = {
    {"codec.video", make<MVNProducerVideo>},
    {"codec.gif", make<MVNProducerGif>},
    {"stb_image", make<MVNProducerStill>},
};

}  // namespace

extern "C" __attribute__((visibility("default"))) int MVNMedia_module_install(MVNRepository* repository) {
    if (repository == nullptr) return -1;
    log_info("media", "media module install...");
    for (const MediaService& service : kServices)
        repository->registerService(MVN_SERVICE_PRODUCER, service.name, service.factory);
    log_info("media", "media module install done");
    return 0;
}

extern "C" __attribute__((visibility("default"))) int MorvaneModuleInstall(MVNRepository* repository) {
    return MVNMedia_module_install(repository);
}
