// The module's front door: the two exported install functions and the three
// factories they register. Everything the host ever gets from this module
// starts from one of these factories.
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "filters/MVNFilterCanvas.h"
#include "filters/MVNFilterCatalogue.h"
#include "filters/MVNFilterSample.h"
#include "filters/MVNFilterSample2.h"
#include "core/MVNLog.h"
#include "MVNOgreExport.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreMultisampleChoice.h"
#include "engine/MVNOgreRenderSystem.h"
#include "readers/MVNOgreRenderReader.h"
#include "scene/MVNOgreRenderTexture.h"
#include "producers/MVNGrid.h"
#include "producers/MVNGroupSample.h"
#include "producers/MVNProducerColor.h"
#include "producers/MVNProducerImage.h"
#include "producers/MVNProducerPixelBuffer.h"
#include "core/MVNProfile.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "services/MVNRenderTexture.h"
#include "timeline/MVNRepository.h"
#include "services/MVNService.h"
#include "transitions/MVNTransitionNames.h"
#include "transitions/MVNTransitionSample.h"
#include "core/MVNTypes.h"
#include "text/MVNProducerText.h"

namespace Morvane {
namespace {

const char* const kTag = "ogre";

// The canvas filter is the one service that takes the creation properties
// over itself; its "id" stays its own.
template <typename Service>
MVNService* takeOverProperties(Service* service, const MVNProperties& properties) {
    std::vector<std::string> excluded{"id"};
    service->fromOther(properties, &excluded);
    return service;
}

// A factory's result; no exception may leave the module. Running out of
// memory gives null without a word, as the host expects of a failed `new`.
template <typename Result, typename Body>
Result* guarded(const char* what, Body body) {
    try {
        return body();
    } catch (const std::bad_alloc&) {
        return nullptr;
    } catch (const std::exception& e) {
        log_error(kTag, "%s failed: %s", what, e.what());
    } catch (...) {
        log_error(kTag, "%s failed: unknown exception", what);
    }
    return nullptr;
}

const MVNProperties& orEmpty(const MVNProperties* properties) {
    static const MVNProperties empty;
    return properties ? *properties : empty;
}

MVNRenderSystem* createOgreRenderSystem(const MVNProfile* profile, const MVNProperties* properties) {
    return guarded<MVNRenderSystem>("createRenderSystem", [&]() -> MVNRenderSystem* {
        if (!profile) {
            log_error(kTag, "createRenderSystem failed, profile is null");
            return nullptr;
        }
        const MVNProperties& props = orEmpty(properties);
        // 0 stands for the profile's size.
        int renderWinWidth = props.getInt32("render_win_width", 0);
        int renderWinHeight = props.getInt32("render_win_height", 0);
        // Multisampling stays on unless the host trades it for speed; unsaid,
        // each frame is multisampled only where it changes a pixel.
        MVNOgreManager::getSingleton()->setAntiAliasing(props.getBoolean("anti_aliasing", true));
        MVNOgreMultisampleChoice::setAutomatic(!props.has("anti_aliasing"));
        // How frames are read back where no marker file says: "rtt" (the
        // default), "rtt_sample", "direct" or "gl".
        std::string reader = props.getString("reader", "rtt");
        MVNOgreRenderReaderType readerType = MVN_READER_RTT;
        if (!MVNOgreRenderReader::typeFromName(reader, readerType)) {
            log_error(kTag, "createRenderSystem unknown reader:%s, rtt used", reader.c_str());
        }
        MVNOgreManager::getSingleton()->setReaderType(readerType);
        // "sdl": an on-screen window for previews instead of the hidden one.
        MVNOgreManager::getSingleton()->setOnScreenWindow(props.getString("window", "hidden") == "sdl");
        // Folders, separated by ';', whose files the engine finds by name.
        std::string locations = props.getString("resource_locations", "");
        for (size_t start = 0; start < locations.size();) {
            size_t end = locations.find(';', start);
            if (end == std::string::npos) end = locations.size();
            MVNOgreManager::getSingleton()->addResourceLocation(locations.substr(start, end - start));
            start = end + 1;
        }
        return new MVNOgreRenderSystem(*profile, renderWinWidth, renderWinHeight);
    });
}

MVNRenderTexture* createOgreRenderTexture(const MVNProfile* profile, const MVNProperties* properties) {
    return guarded<MVNRenderTexture>("createRenderTexture", [&]() -> MVNRenderTexture* {
        if (!profile) {
            log_error(kTag, "createRenderTexture failed, profile is null");
            return nullptr;
        }
        const MVNProperties& props = orEmpty(properties);
        int width = props.getInt32("width", 0);
        int height = props.getInt32("height", 0);
        int zOrder = props.getInt32("zOrder", 0);
        std::string resource = props.getString("resource", "");
        std::string groupName = props.getString("_groupName", "");
        if (width < 1) {
            log_error(kTag, "createRenderTexture failed, invalid width:%d", width);
            return nullptr;
        }
        if (height < 1) {
            log_error(kTag, "createRenderTexture failed, invalid height:%d", height);
            return nullptr;
        }
        if (zOrder < 0) {
            log_error(kTag, "createRenderTexture failed, invalid zOrder:%d", zOrder);
            return nullptr;
        }
        return new MVNOgreRenderTexture(resource, width, height, profile->width(), profile->height(), zOrder,
                                        groupName, props.getBoolean("_hidden", false));
    });
}

// How each service is built from its creation properties; `zOrder` is read
// for every service, whether it uses it or not.
using ServiceConstructor = MVNService* (*)(const MVNProfile& profile, const MVNProperties& props, int zOrder);

// A string property a service cannot be built without, and the error logged
// when it is empty.
struct Required {
    const char* key;
    const char* message;
};

// One row per service name, in the order of registration: its side of the
// registry (transitions and groups count as producers there), how it is
// built, and the properties it refuses to be built without, checked in
// order and stopping at the first. A null constructor is a name whose class
// this build doesn't have yet: it passes its refusals, then logs that it is
// not available. Adding a service is one row.
struct ServiceRow {
    const char* name;
    MVNServiceType type;
    ServiceConstructor construct;
    Required refusals[2];
};

MVNService* filterSample(const MVNProfile& profile, const MVNProperties& props, MVNFilterTypeUse defaultUse) {
    std::string resource = props.getString("resource", "");
    MVNFilterTypeUse typeUse = static_cast<MVNFilterTypeUse>(props.getInt32("typeUse", defaultUse));
    return new MVNFilterSample(profile, resource.c_str(), typeUse);
}

const ServiceRow kServices[] = {
    {"ogre.color", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties&, int zOrder) -> MVNService* {
         return new MVNProducerColor(profile, zOrder);
     },
     {}},
    {"ogre.pixelbuffer", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties&, int zOrder) -> MVNService* {
         return new MVNProducerPixelBuffer(profile, zOrder);
     },
     {}},
    {"ogre.image", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties& props, int zOrder) -> MVNService* {
         return new MVNProducerImage(profile, props.getString("resource", "").c_str(), zOrder);
     },
     {}},
    {"text", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties& props, int zOrder) -> MVNService* {
         return new MVNProducerText(profile, zOrder, props.getBoolean("textThree", false),
                                    props.getString("textFontFile", ""), props.getString("textBackupPath", ""),
                                    false);
     },
     {}},
    {"ogre.transition.sample", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties& props, int) -> MVNService* {
         return new MVNTransitionSample(profile, props.getString("resource", "").c_str());
     },
     {{"resource", "create transition sample failed, rsource is null"}}},
    {"ogre.filter.sample", MVN_SERVICE_FILTER,
     [](const MVNProfile& profile, const MVNProperties& props, int) {
         return filterSample(profile, props, MVN_FILTER_USE_NORMAL);
     },
     {{"resource", "create filter sample failed, rsource is null"}}},
    // The tool is the same filter, used as a helper pass that needs no
    // resource.
    {"ogre.tool", MVN_SERVICE_FILTER,
     [](const MVNProfile& profile, const MVNProperties& props, int) {
         return filterSample(profile, props, MVN_FILTER_USE_TOOL);
     },
     {}},
    {"ogre.filter.canvas", MVN_SERVICE_FILTER,
     [](const MVNProfile& profile, const MVNProperties& props, int) -> MVNService* {
         return takeOverProperties(new MVNFilterCanvas(profile, props.getInt32("canvasType", 0)), props);
     },
     {}},
    {"ogre.filter.sample2", MVN_SERVICE_FILTER,
     [](const MVNProfile& profile, const MVNProperties& props, int) -> MVNService* {
         return new MVNFilterSample2(profile, props.getString("resource_one", "").c_str(),
                                     props.getString("resource_two", "").c_str());
     },
     {{"resource_one", "create filter sample2 failed, rsource_one is null"},
      {"resource_two", "create filter sample2 failed, rsource_two is null"}}},
    {"ogre.group.sample", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties&, int) -> MVNService* { return new MVNGroupSample(profile); },
     {}},
    {"ogre.grid", MVN_SERVICE_PRODUCER,
     [](const MVNProfile& profile, const MVNProperties&, int) -> MVNService* { return new MVNGrid(profile); }, {}},
};

// One factory for every name of the table: `service` names the row. Names
// are compared exactly, case included.
MVNService* createOgreService(const MVNProfile* profile, const MVNProperties* properties) {
    return guarded<MVNService>("createService", [&]() -> MVNService* {
        const MVNProperties& props = orEmpty(properties);
        std::string service = props.getString("service", "");
        int zOrder = props.getInt32("zOrder", 0);
        if (!profile) {
            log_error(kTag, "create service %s failed, profile is null", service.c_str());
            return nullptr;
        }
        for (const ServiceRow& row : kServices) {
            if (service != row.name) continue;
            for (const Required& required : row.refusals) {
                if (required.key && props.getString(required.key, "").empty()) {
                    log_error(kTag, "%s", required.message);
                    return nullptr;
                }
            }
            if (!row.construct) {
                log_error(kTag, "service not available yet:%s", row.name);
                return nullptr;
            }
            return row.construct(*profile, props, zOrder);
        }
        log_error(kTag, "error service name:%s", service.c_str());
        return nullptr;
    });
}

}  // namespace
}  // namespace Morvane

// Registers the render system, the render texture and every service of the
// table.
// What the repository makes of each registration is its own matter.
extern "C" MVN_OGRE_API int MVNOgre_module_install(Morvane::MVNRepository* repository) {
    using namespace Morvane;
    if (!repository) {
        log_error(kTag, "ogre module install failed, repository is null");
        return -1;
    }
    log_info(kTag, "ogre module install...");
    repository->registerRenderSystem("ogreRenderSystem", createOgreRenderSystem);
    repository->registerRenderTexture("ogreRenderTexture", createOgreRenderTexture);
    for (const ServiceRow& row : kServices) {
        repository->registerService(row.type, row.name, createOgreService);
    }
    MVNTransitionNames::registerLibrary(repository);
    // The filter names, for the tools' check of a project.
    std::vector<std::string> filters;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) filters.emplace_back(MVNFilterCatalogue::at(i).name);
    for (const char* service : {"ogre.filter.sample", "ogre.tool"}) repository->registerResourceNames(service, filters);
    log_info(kTag, "ogre module install done");
    return 0;
}

// The entry point that the host's module loader looks for.
extern "C" MVN_OGRE_API int MorvaneModuleInstall(Morvane::MVNRepository* repository) {
    return MVNOgre_module_install(repository);
}
