#pragma once
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "core/MVNTypes.h"

namespace Morvane {

class MVNProfile;
class MVNProperties;
class MVNRenderSystem;
class MVNRenderTexture;
class MVNService;

using MVNRenderSystemFactory = std::function<MVNRenderSystem*(const MVNProfile*, const MVNProperties*)>;
using MVNRenderTextureFactory = std::function<MVNRenderTexture*(const MVNProfile*, const MVNProperties*)>;
using MVNServiceFactory = std::function<MVNService*(const MVNProfile*, const MVNProperties*)>;

// What modules register: factories of render systems, render textures and
// services by name, and the modules loaded into the process. A second
// registration of a name replaces the first (logged), so a module can be
// installed again. A factory that returns null refuses; one that throws is
// logged and counts as a refusal. Thread-safe; factories run without the
// repository's lock, so they may register or create in turn.
class MVNRepository {
public:
    // The process repository, which loadModule installs into and the
    // host's free functions create from. The host's own services
    // ("playlist", "tractor", "transition_audio") are registered in it.
    static MVNRepository* getSingleton();

    MVNRepository();
    MVNRepository(const MVNRepository&) = delete;
    MVNRepository& operator=(const MVNRepository&) = delete;

    // 0, or -1 for a null or empty name or an empty factory.
    int registerRenderSystem(const char* name, MVNRenderSystemFactory factory);
    int registerRenderTexture(const char* name, MVNRenderTextureFactory factory);
    int registerService(MVNServiceType type, const char* name, MVNServiceFactory factory);
    // 0 when the name was registered.
    int unregisterService(const char* name);

    bool hasRenderSystem(const std::string& name) const;
    bool hasRenderTexture(const std::string& name) const;
    bool hasService(const std::string& name) const;
    // MVN_SERVICE_NONE for an unknown name.
    MVNServiceType serviceType(const std::string& name) const;
    std::vector<std::string> serviceNames() const;

    // Null for an unknown name (logged) or a refusal.
    MVNRenderSystem* createRenderSystem(const std::string& name, const MVNProfile& profile,
                                        const MVNProperties& properties);
    MVNRenderTexture* createRenderTexture(const std::string& name, const MVNProfile& profile,
                                          const MVNProperties& properties);
    // Null for an unknown name or one registered with another type (both
    // logged), or a refusal.
    MVNService* createService(MVNServiceType type, const std::string& name, const MVNProfile& profile,
                              const MVNProperties& properties);

    // Modules loaded by loadModule, by path, with their dlopen handles.
    void addModule(const std::string& path, void* handle);
    bool hasModule(const std::string& path) const;
    std::vector<std::string> modules() const;

    // Named transitions a module offers, each with its family ("wipe",
    // "fade", ...), so that a project can be checked and a tool can list
    // them without starting a renderer. A second registration of a name
    // replaces its family.
    void registerTransition(const std::string& name, const std::string& family);
    bool hasTransition(const std::string& name) const;
    // (name, family) in the order of registration.
    std::vector<std::pair<std::string, std::string>> transitions() const;

    // The names a service takes as its "resource" (a filter service: the
    // names of its catalogue), so that a project's names are checked before
    // a renderer runs. A later registration for the service replaces the
    // list; a service without one takes any name.
    void registerResourceNames(const std::string& service, std::vector<std::string> names);
    // Empty when the service registered no list.
    std::vector<std::string> resourceNames(const std::string& service) const;

    // Set once the host's own services are registered.
    bool builtinsRegistered() const;
    // Registers "playlist", "tractor" and "transition_audio".
    void registerBuiltins();

private:
    struct ServiceEntry {
        MVNServiceType type;
        MVNServiceFactory factory;
    };

    std::map<std::string, MVNRenderSystemFactory> mRenderSystems;
    std::map<std::string, MVNRenderTextureFactory> mRenderTextures;
    std::map<std::string, ServiceEntry> mServices;
    std::map<std::string, void*> mModules;
    std::vector<std::pair<std::string, std::string>> mTransitions;
    std::map<std::string, std::vector<std::string>> mResourceNames;
    bool mBuiltins = false;
    mutable std::mutex mLock;
};

}  // namespace Morvane
