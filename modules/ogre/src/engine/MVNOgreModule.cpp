// The module's front door: the two exported install functions and the three
// factories they register. Everything the host ever gets from this module
// starts from one of these factories.
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "filters/MVNFilterSample.h"
#include "core/MVNLog.h"
#include "MVNOgreExport.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderSystem.h"
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
#include "core/MVNTypes.h"

namespace Morvane {
namespace {

const char* const kTag = "ogre";

// A name that passes its checks but whose class this build doesn't have
// yet. The arguments it would be built from are taken and ignored, so that
// the call reads like the construction that will stand in its place.
template <typename Result = MVNService, typename... Args>
Result* serviceNotAvailable(const char* name, const Args&...) {
    log_error(kTag, "service not available yet:%s", name);
    return nullptr;
}

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
        // Multisampling stays on unless the host trades it for speed.
        MVNOgreManager::getSingleton()->setAntiAliasing(props.getBoolean("anti_aliasing", true));
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
                                        groupName);
    });
}

// One factory for all eleven service names: `service` names what to build.
// The names are compared exactly, case included, in the order below.
MVNService* createOgreService(const MVNProfile* profile, const MVNProperties* properties) {
    return guarded<MVNService>("createService", [&]() -> MVNService* {
        const MVNProperties& props = orEmpty(properties);
        std::string service = props.getString("service", "");
        int zOrder = props.getInt32("zOrder", 0);
        if (!profile) {
            log_error(kTag, "create service %s failed, profile is null", service.c_str());
            return nullptr;
        }
        const char* name = service.c_str();

        if (service == "ogre.color") {
            return new MVNProducerColor(*profile, zOrder);
        }
        if (service == "ogre.pixelbuffer") {
            return new MVNProducerPixelBuffer(*profile, zOrder);
        }
        if (service == "ogre.image") {
            std::string resource = props.getString("resource", "");
            return new MVNProducerImage(*profile, resource.c_str(), zOrder);
        }
        if (service == "text") {
            bool textThree = props.getBoolean("textThree", false);
            std::string textFontFile = props.getString("textFontFile", "");
            std::string textBackupPath = props.getString("textBackupPath", "");
            return serviceNotAvailable(name, *profile, zOrder, textThree, textFontFile, textBackupPath);
        }
        if (service == "ogre.transition.sample") {
            std::string resource = props.getString("resource", "");
            if (resource.empty()) {
                log_error(kTag, "create transition sample failed, rsource is null");
                return nullptr;
            }
            return serviceNotAvailable(name, *profile, resource);
        }
        if (service == "ogre.filter.sample") {
            std::string resource = props.getString("resource", "");
            MVNFilterTypeUse typeUse = static_cast<MVNFilterTypeUse>(props.getInt32("typeUse", MVN_FILTER_USE_NORMAL));
            if (resource.empty()) {
                log_error(kTag, "create filter sample failed, rsource is null");
                return nullptr;
            }
            return new MVNFilterSample(*profile, resource.c_str(), typeUse);
        }
        if (service == "ogre.tool") {
            // The tool is the same filter, used as a helper pass that needs
            // no resource.
            std::string resource = props.getString("resource", "");
            MVNFilterTypeUse typeUse = static_cast<MVNFilterTypeUse>(props.getInt32("typeUse", MVN_FILTER_USE_TOOL));
            return new MVNFilterSample(*profile, resource.c_str(), typeUse);
        }
        if (service == "ogre.filter.canvas") {
            int canvasType = props.getInt32("canvasType", 0);
            return serviceNotAvailable(name, *profile, canvasType, props);
        }
        if (service == "ogre.filter.sample2") {
            std::string resourceOne = props.getString("resource_one", "");
            std::string resourceTwo = props.getString("resource_two", "");
            if (resourceOne.empty()) {
                log_error(kTag, "create filter sample2 failed, rsource_one is null");
                return nullptr;
            }
            if (resourceTwo.empty()) {
                log_error(kTag, "create filter sample2 failed, rsource_two is null");
                return nullptr;
            }
            return serviceNotAvailable(name, *profile, resourceOne, resourceTwo);
        }
        if (service == "ogre.group.sample") {
            return new MVNGroupSample(*profile);
        }
        if (service == "ogre.grid") {
            return new MVNGrid(*profile);
        }
        log_error(kTag, "error service name:%s", name);
        return nullptr;
    });
}

// The service names in the order of registration, with their side of the
// registry. Transitions and groups count as producers there.
struct ServiceRow {
    MVNServiceType type;
    const char* name;
};

const ServiceRow kServices[] = {
    {MVN_SERVICE_PRODUCER, "ogre.color"},
    {MVN_SERVICE_PRODUCER, "ogre.pixelbuffer"},
    {MVN_SERVICE_PRODUCER, "ogre.image"},
    {MVN_SERVICE_PRODUCER, "text"},
    {MVN_SERVICE_PRODUCER, "ogre.transition.sample"},
    {MVN_SERVICE_FILTER, "ogre.filter.sample"},
    {MVN_SERVICE_FILTER, "ogre.tool"},
    {MVN_SERVICE_FILTER, "ogre.filter.canvas"},
    {MVN_SERVICE_FILTER, "ogre.filter.sample2"},
    {MVN_SERVICE_PRODUCER, "ogre.group.sample"},
    {MVN_SERVICE_PRODUCER, "ogre.grid"},
};

}  // namespace
}  // namespace Morvane

// Registers the render system, the render texture and the eleven services.
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
    log_info(kTag, "ogre module install done");
    return 0;
}

// The entry point that the host's module loader looks for.
extern "C" MVN_OGRE_API int MorvaneModuleInstall(Morvane::MVNRepository* repository) {
    return MVNOgre_module_install(repository);
}
