#include "timeline/MVNRepository.h"

#include <exception>

#include "core/MVNLog.h"
#include "timeline/MVNPlaylist.h"
#include "core/MVNProfile.h"
#include "services/MVNProperties.h"
#include "timeline/MVNTractor.h"
#include "services/MVNTransitionAudio.h"

namespace Morvane {

namespace {

const char* const kTag = "Morvane::MVNRepository";

const char* typeName(MVNServiceType type) {
    switch (type) {
        case MVN_SERVICE_PRODUCER: return "producer";
        case MVN_SERVICE_CONSUMER: return "consumer";
        case MVN_SERVICE_PLAYLIST: return "playlist";
        case MVN_SERVICE_FILTER: return "filter";
        case MVN_SERVICE_TRACTOR: return "tractor";
        case MVN_SERVICE_TRANSITION_AUDIO: return "transition audio";
        default: return "unknown";
    }
}

// Runs a module's factory so that nothing it throws leaves this call.
template <class T, class F>
T* callFactory(const F& factory, const char* what, const std::string& name, const MVNProfile& profile,
               const MVNProperties& properties) {
    try {
        return factory(&profile, &properties);
    } catch (const std::exception& e) {
        log_error(kTag, "create %s %s failed, exception: %s", what, name.c_str(), e.what());
    } catch (...) {
        log_error(kTag, "create %s %s failed, unknown exception", what, name.c_str());
    }
    return nullptr;
}

}  // namespace

MVNRepository* MVNRepository::getSingleton() {
    // Never destroyed: factories and services of loaded modules outlive any
    // static destructor order.
    static MVNRepository* instance = [] {
        auto* r = new MVNRepository();
        r->registerBuiltins();
        return r;
    }();
    return instance;
}

MVNRepository::MVNRepository() = default;

int MVNRepository::registerRenderSystem(const char* name, MVNRenderSystemFactory factory) {
    if (name == nullptr || *name == '\0' || !factory) {
        log_error(kTag, "registerRenderSystem failed, empty name or factory");
        return -1;
    }
    std::lock_guard<std::mutex> guard(mLock);
    if (mRenderSystems.count(name)) log_warn(kTag, "render system %s registered again, replacing the previous factory", name);
    else log_debug(kTag, "render system %s registered", name);
    mRenderSystems[name] = std::move(factory);
    return 0;
}

int MVNRepository::registerRenderTexture(const char* name, MVNRenderTextureFactory factory) {
    if (name == nullptr || *name == '\0' || !factory) {
        log_error(kTag, "registerRenderTexture failed, empty name or factory");
        return -1;
    }
    std::lock_guard<std::mutex> guard(mLock);
    if (mRenderTextures.count(name)) log_warn(kTag, "render texture %s registered again, replacing the previous factory", name);
    else log_debug(kTag, "render texture %s registered", name);
    mRenderTextures[name] = std::move(factory);
    return 0;
}

int MVNRepository::registerService(MVNServiceType type, const char* name, MVNServiceFactory factory) {
    if (name == nullptr || *name == '\0' || !factory) {
        log_error(kTag, "registerService failed, empty name or factory");
        return -1;
    }
    std::lock_guard<std::mutex> guard(mLock);
    if (mServices.count(name)) log_warn(kTag, "service %s registered again, replacing the previous factory", name);
    else log_debug(kTag, "service %s registered as %s", name, typeName(type));
    mServices[name] = ServiceEntry{type, std::move(factory)};
    return 0;
}

int MVNRepository::unregisterService(const char* name) {
    if (name == nullptr) return -1;
    std::lock_guard<std::mutex> guard(mLock);
    return mServices.erase(name) > 0 ? 0 : -1;
}

bool MVNRepository::hasRenderSystem(const std::string& name) const {
    std::lock_guard<std::mutex> guard(mLock);
    return mRenderSystems.count(name) > 0;
}

bool MVNRepository::hasRenderTexture(const std::string& name) const {
    std::lock_guard<std::mutex> guard(mLock);
    return mRenderTextures.count(name) > 0;
}

bool MVNRepository::hasService(const std::string& name) const {
    std::lock_guard<std::mutex> guard(mLock);
    return mServices.count(name) > 0;
}

MVNServiceType MVNRepository::serviceType(const std::string& name) const {
    std::lock_guard<std::mutex> guard(mLock);
    auto it = mServices.find(name);
    return it == mServices.end() ? MVN_SERVICE_NONE : it->second.type;
}

std::vector<std::string> MVNRepository::serviceNames() const {
    std::lock_guard<std::mutex> guard(mLock);
    std::vector<std::string> out;
    for (auto& kv : mServices) out.push_back(kv.first);
    return out;
}

MVNRenderSystem* MVNRepository::createRenderSystem(const std::string& name, const MVNProfile& profile,
                                                   const MVNProperties& properties) {
    MVNRenderSystemFactory factory;
    {
        std::lock_guard<std::mutex> guard(mLock);
        auto it = mRenderSystems.find(name);
        if (it != mRenderSystems.end()) factory = it->second;
    }
    if (!factory) {
        log_error(kTag, "create render system failed, unknown name:%s", name.c_str());
        return nullptr;
    }
    return callFactory<MVNRenderSystem>(factory, "render system", name, profile, properties);
}

MVNRenderTexture* MVNRepository::createRenderTexture(const std::string& name, const MVNProfile& profile,
                                                     const MVNProperties& properties) {
    MVNRenderTextureFactory factory;
    {
        std::lock_guard<std::mutex> guard(mLock);
        auto it = mRenderTextures.find(name);
        if (it != mRenderTextures.end()) factory = it->second;
    }
    if (!factory) {
        log_error(kTag, "create render texture failed, unknown name:%s", name.c_str());
        return nullptr;
    }
    return callFactory<MVNRenderTexture>(factory, "render texture", name, profile, properties);
}

MVNService* MVNRepository::createService(MVNServiceType type, const std::string& name, const MVNProfile& profile,
                                         const MVNProperties& properties) {
    ServiceEntry entry{MVN_SERVICE_NONE, nullptr};
    {
        std::lock_guard<std::mutex> guard(mLock);
        auto it = mServices.find(name);
        if (it != mServices.end()) entry = it->second;
    }
    if (!entry.factory) {
        log_error(kTag, "create service failed, unknown service:%s", name.c_str());
        return nullptr;
    }
    if (entry.type != type) {
        log_error(kTag, "create service failed, %s is a %s, not a %s", name.c_str(), typeName(entry.type),
                  typeName(type));
        return nullptr;
    }
    return callFactory<MVNService>(entry.factory, "service", name, profile, properties);
}

void MVNRepository::addModule(const std::string& path, void* handle) {
    std::lock_guard<std::mutex> guard(mLock);
    mModules[path] = handle;
}

bool MVNRepository::hasModule(const std::string& path) const {
    std::lock_guard<std::mutex> guard(mLock);
    return mModules.count(path) > 0;
}

std::vector<std::string> MVNRepository::modules() const {
    std::lock_guard<std::mutex> guard(mLock);
    std::vector<std::string> out;
    for (auto& kv : mModules) out.push_back(kv.first);
    return out;
}

void MVNRepository::registerTransition(const std::string& name, const std::string& family) {
    if (name.empty()) return;
    std::lock_guard<std::mutex> guard(mLock);
    for (auto& entry : mTransitions) {
        if (entry.first == name) {
            entry.second = family;
            return;
        }
    }
    mTransitions.emplace_back(name, family);
}

bool MVNRepository::hasTransition(const std::string& name) const {
    std::lock_guard<std::mutex> guard(mLock);
    for (const auto& entry : mTransitions) {
        if (entry.first == name) return true;
    }
    return false;
}

std::vector<std::pair<std::string, std::string>> MVNRepository::transitions() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mTransitions;
}

void MVNRepository::registerResourceNames(const std::string& service, std::vector<std::string> names) {
    std::lock_guard<std::mutex> guard(mLock);
    mResourceNames[service] = std::move(names);
}

std::vector<std::string> MVNRepository::resourceNames(const std::string& service) const {
    std::lock_guard<std::mutex> guard(mLock);
    auto it = mResourceNames.find(service);
    return it == mResourceNames.end() ? std::vector<std::string>() : it->second;
}

bool MVNRepository::builtinsRegistered() const {
    std::lock_guard<std::mutex> guard(mLock);
    return mBuiltins;
}

void MVNRepository::registerBuiltins() {
    registerService(MVN_SERVICE_PLAYLIST, "playlist",
                    [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MVNPlaylist(*p); });
    registerService(MVN_SERVICE_TRACTOR, "tractor",
                    [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MVNTractor(*p); });
    registerService(MVN_SERVICE_TRANSITION_AUDIO, "transition_audio",
                    [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MVNTransitionAudio(*p); });
    std::lock_guard<std::mutex> guard(mLock);
    mBuiltins = true;
}

}  // namespace Morvane
