#pragma once
#include <map>
#include <mutex>
#include <set>
#include <string>

#include "core/MVNProfile.h"
#include "services/MVNProperties.h"

namespace Morvane {

class MVNConsumer;
class MVNFilter;
class MVNGroup;
class MVNPlaylist;
class MVNProducer;
class MVNRenderSystem;
class MVNRenderTexture;
class MVNRepository;
class MVNService;
class MVNTractor;
class MVNTransition;
class MVNTransitionAudio;

// Creates services through the process repository and keeps them by string
// id until destroyService. create... looks the factory up by the "service"
// property, checks that the result is of the asked class, copies the
// creation properties into it (all but "id"), gives it a string id if it has
// none, fills a producer's "width", "height", "render.width" and
// "render.height" with the profile's size and its timing with ten seconds
// where they are unset, and runs init(). Each returns the new id, or an empty string (with
// a logged reason) when anything fails; nothing is kept then. Thread-safe.
class MVNFactory {
public:
    static MVNFactory* getSingleton();

    std::string createConsumer(const MVNProfile& profile, const MVNProperties& properties);
    std::string createFilter(const MVNProfile& profile, const MVNProperties& properties);
    std::string createGroup(const MVNProfile& profile, const MVNProperties& properties);
    // "service" defaults to "playlist", "tractor", "transition_audio".
    std::string createPlaylist(const MVNProfile& profile, const MVNProperties& properties);
    std::string createProducer(const MVNProfile& profile, const MVNProperties& properties);
    std::string createTractor(const MVNProfile& profile, const MVNProperties& properties);
    std::string createTransition(const MVNProfile& profile, const MVNProperties& properties);
    std::string createTransitionAudio(const MVNProfile& profile, const MVNProperties& properties);

    // Takes over a service built elsewhere (it is initialised already);
    // gives it an id if it has none. Empty when null or the id is taken.
    std::string addService(MVNService* service);
    // Unhooks the service from whatever it is attached or connected to,
    // releases and deletes it. 0, or -1 for an unknown id.
    int destroyService(const std::string& id);
    // Destroys every service, newest first.
    void destroyAll();
    int count() const;

    MVNService* getServiceById(const std::string& id) const;
    MVNConsumer* getConsumerById(const std::string& id) const;
    MVNFilter* getFilterById(const std::string& id) const;
    MVNGroup* getGroupById(const std::string& id) const;
    MVNPlaylist* getPlaylistById(const std::string& id) const;
    MVNProducer* getProducerById(const std::string& id) const;
    MVNTractor* getTractorById(const std::string& id) const;
    MVNTransition* getTransitionById(const std::string& id) const;
    MVNTransitionAudio* getTransitionAudioById(const std::string& id) const;

private:
    MVNFactory() = default;

    // Builds, checks, prepares and keeps one service; "" on failure.
    std::string _create(int type, const char* what, const std::string& defaultService, const MVNProfile& profile,
                        const MVNProperties& properties, bool (*isKind)(MVNService*), const char* prefix);
    std::string _addService(MVNService* service, const char* prefix);

    std::map<std::string, MVNService*> mServices;
    // Creation order, for destroyAll.
    std::map<unsigned long long, std::string> mOrder;
    unsigned long long mNextOrder = 0;
    // Groups and consumers: the services that may hold a producer which is
    // being destroyed, so that destroying one costs the same however many
    // services there are.
    std::set<MVNService*> mHolders;
    mutable std::recursive_mutex mLock;
};

// The host's free functions, all on MVNFactory::getSingleton() and the
// process repository.
std::string createConsumer(const MVNProfile& profile, const MVNProperties& properties);
std::string createFilter(const MVNProfile& profile, const MVNProperties& properties);
std::string createGroup(const MVNProfile& profile, const MVNProperties& properties);
std::string createPlaylist(const MVNProfile& profile, const MVNProperties& properties);
std::string createProducer(const MVNProfile& profile, const MVNProperties& properties);
std::string createTractor(const MVNProfile& profile, const MVNProperties& properties);
std::string createTransition(const MVNProfile& profile, const MVNProperties& properties);
std::string createTransitionAudio(const MVNProfile& profile, const MVNProperties& properties);
int destroyService(const std::string& id);
MVNService* getServiceById(const std::string& id);
MVNConsumer* getConsumerById(const std::string& id);
MVNFilter* getFilterById(const std::string& id);
MVNGroup* getGroupById(const std::string& id);
MVNPlaylist* getPlaylistById(const std::string& id);
MVNProducer* getProducerById(const std::string& id);
MVNTractor* getTractorById(const std::string& id);
MVNTransition* getTransitionById(const std::string& id);
MVNTransitionAudio* getTransitionAudioById(const std::string& id);

// A render system or render texture from the factory registered as `name`
// ("ogreRenderSystem", "ogreRenderTexture"); the caller owns it. Null for an
// unknown name (logged) or a refusal.
MVNRenderSystem* createRenderSystem(const std::string& name, const MVNProfile& profile,
                                    const MVNProperties& properties);
MVNRenderTexture* createRenderTexture(const std::string& name, const MVNProfile& profile,
                                      const MVNProperties& properties);

}  // namespace Morvane
