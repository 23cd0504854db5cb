#include "timeline/MVNFactory.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <vector>

#include "services/MVNConsumer.h"
#include "services/MVNFilter.h"
#include "services/MVNGroup.h"
#include "core/MVNLog.h"
#include "timeline/MVNPlaylist.h"
#include "services/MVNProducer.h"
#include "services/MVNRegistryHooks.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"
#include "services/MVNTransition.h"
#include "services/MVNTransitionAudio.h"

namespace Morvane {

namespace {

const char* const kTag = "Morvane::MVNFactory";

template <class T>
bool isA(MVNService* s) {
    return dynamic_cast<T*>(s) != nullptr;
}

// Module code runs in release and the destructor; neither may throw past us.
void releaseAndDelete(MVNService* s, const std::string& id) {
    try {
        s->release();
    } catch (const std::exception& e) {
        log_error(kTag, "release of %s threw: %s", id.c_str(), e.what());
    } catch (...) {
        log_error(kTag, "release of %s threw", id.c_str());
    }
    try {
        delete s;
    } catch (...) {
        log_error(kTag, "destroy of %s threw", id.c_str());
    }
}

void deleteOnly(MVNService* s) {
    try {
        delete s;
    } catch (...) {
        log_error(kTag, "destroy of a refused service threw");
    }
}

// What a producer can assume of its properties when init runs: the picture
// size of the profile and, without timing of its own, ten seconds. Filters
// and timelines are left as they are.
void fillDefaults(MVNService* s, const MVNProfile& profile) {
    auto* p = dynamic_cast<MVNProducer*>(s);
    if (p == nullptr || isA<MVNPlaylist>(s) || isA<MVNMultitrack>(s)) return;
    p->block();
    if (!p->has("width")) p->setInt32("width", profile.width());
    if (!p->has("height")) p->setInt32("height", profile.height());
    if (!p->has("render.width")) p->setInt32("render.width", p->getInt32("width", profile.width()));
    if (!p->has("render.height")) p->setInt32("render.height", p->getInt32("height", profile.height()));
    if (!p->has("length") && !p->has("out")) {
        int length = std::max(1, static_cast<int>(std::lround(profile.fps() * 10.0)));
        int in = p->getIn();
        p->setIn(in);
        p->setLength(length);
        p->setOut(in + length - 1);
    }
    p->unblock();
}

}  // namespace

MVNFactory* MVNFactory::getSingleton() {
    // Never destroyed: services from modules must not be deleted by static
    // destructors after their module's code is gone. destroyAll is the
    // orderly way out.
    static MVNFactory* instance = new MVNFactory();
    return instance;
}

std::string MVNFactory::_create(int type, const char* what, const std::string& defaultService,
                                const MVNProfile& profile, const MVNProperties& properties,
                                bool (*isKind)(MVNService*), const char* prefix) {
    std::string name = properties.getString("service", "");
    // The host's own timelines are built whatever "service" says, unless it
    // names another service of their kind.
    if (!defaultService.empty() && MVNRepository::getSingleton()->serviceType(name) != type) name = defaultService;
    if (name.empty()) {
        log_error(kTag, "create %s failed, no service name", what);
        return std::string();
    }
    MVNService* s = MVNRepository::getSingleton()->createService(static_cast<MVNServiceType>(type), name, profile,
                                                                 properties);
    if (s == nullptr) {
        log_error(kTag, "create %s failed, service %s gave nothing", what, name.c_str());
        return std::string();
    }
    if (!isKind(s)) {
        log_error(kTag, "create %s failed, service %s is not a %s", what, name.c_str(), what);
        deleteOnly(s);
        return std::string();
    }
    std::vector<std::string> excluded{"id"};
    s->fromOther(properties, &excluded);
    fillDefaults(s, profile);
    if (s->getStringId().empty()) s->genStringId(prefix);
    int rc = -1;
    try {
        rc = s->init();
    } catch (const std::exception& e) {
        log_error(kTag, "init of %s threw: %s", name.c_str(), e.what());
    } catch (...) {
        log_error(kTag, "init of %s threw", name.c_str());
    }
    if (rc != 0) {
        log_error(kTag, "create %s failed, %s init returned %d", what, name.c_str(), rc);
        deleteOnly(s);
        return std::string();
    }
    std::string id = _addService(s, prefix);
    if (id.empty()) releaseAndDelete(s, name);
    return id;
}

std::string MVNFactory::createConsumer(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_CONSUMER, "consumer", "", profile, properties, &isA<MVNConsumer>, "consumer");
}

std::string MVNFactory::createFilter(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_FILTER, "filter", "", profile, properties, &isA<MVNFilter>, "filter");
}

std::string MVNFactory::createGroup(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_PRODUCER, "group", "", profile, properties, &isA<MVNGroup>, "group");
}

std::string MVNFactory::createPlaylist(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_PLAYLIST, "playlist", "playlist", profile, properties, &isA<MVNPlaylist>, "playlist");
}

std::string MVNFactory::createProducer(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_PRODUCER, "producer", "", profile, properties, &isA<MVNProducer>, "producer");
}

std::string MVNFactory::createTractor(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_TRACTOR, "tractor", "tractor", profile, properties, &isA<MVNTractor>, "tractor");
}

std::string MVNFactory::createTransition(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_PRODUCER, "transition", "", profile, properties, &isA<MVNTransition>, "transition");
}

std::string MVNFactory::createTransitionAudio(const MVNProfile& profile, const MVNProperties& properties) {
    return _create(MVN_SERVICE_TRANSITION_AUDIO, "transition audio", "transition_audio", profile, properties,
                   &isA<MVNTransitionAudio>, "transition_audio");
}

std::string MVNFactory::_addService(MVNService* service, const char* prefix) {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    std::string id = service->getStringId();
    if (id.empty()) {
        service->genStringId(prefix);
        id = service->getStringId();
    }
    auto it = mServices.find(id);
    if (it != mServices.end()) {
        if (it->second == service) return id;
        log_error(kTag, "add service failed, id %s is taken", id.c_str());
        return std::string();
    }
    mServices[id] = service;
    mOrder[mNextOrder++] = id;
    if (dynamic_cast<MVNGroup*>(service) != nullptr || dynamic_cast<MVNConsumer*>(service) != nullptr) {
        mHolders.insert(service);
    }
    return id;
}

std::string MVNFactory::addService(MVNService* service) {
    if (service == nullptr) {
        log_error(kTag, "add service failed, service is null");
        return std::string();
    }
    return _addService(service, "service");
}

int MVNFactory::destroyService(const std::string& id) {
    MVNService* s = nullptr;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        auto it = mServices.find(id);
        if (it == mServices.end()) {
            log_error(kTag, "destroyService failed, no service %s", id.c_str());
            return -1;
        }
        s = it->second;
        mServices.erase(it);
        mHolders.erase(s);
        // Services go newest first (unload, destroyAll): search from the end.
        for (auto o = mOrder.rbegin(); o != mOrder.rend(); ++o) {
            if (o->second == id) {
                mOrder.erase(std::next(o).base());
                break;
            }
        }
    }
    // Unhook it everywhere first, so that nothing keeps a pointer to it.
    if (auto* filter = dynamic_cast<MVNFilter*>(s)) {
        if (MVNProducer* p = filter->connectedProducer()) p->detach(filter);
    }
    if (auto* transition = dynamic_cast<MVNTransition*>(s)) transition->disconnect();
    if (auto* group = dynamic_cast<MVNGroup*>(s)) group->disconnect();
    if (auto* producer = dynamic_cast<MVNProducer*>(s)) {
        producer->detachAll();
        // Walked under the lock: a service still in the map is not being
        // destroyed by another thread, which takes it out first.
        std::lock_guard<std::recursive_mutex> guard(mLock);
        for (MVNService* holder : mHolders) {
            if (auto* g = dynamic_cast<MVNGroup*>(holder)) {
                if (g->producer() == producer) g->disconnect();
            } else if (auto* c = dynamic_cast<MVNConsumer*>(holder)) {
                if (c->connectedProducer() == producer) c->disconnect();
            }
        }
    }
    releaseAndDelete(s, id);
    return 0;
}

void MVNFactory::destroyAll() {
    for (;;) {
        std::string id;
        {
            std::lock_guard<std::recursive_mutex> guard(mLock);
            if (mOrder.empty()) break;
            id = mOrder.rbegin()->second;
        }
        destroyService(id);
    }
}

int MVNFactory::count() const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return static_cast<int>(mServices.size());
}

MVNService* MVNFactory::getServiceById(const std::string& id) const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    auto it = mServices.find(id);
    return it == mServices.end() ? nullptr : it->second;
}

MVNConsumer* MVNFactory::getConsumerById(const std::string& id) const {
    return dynamic_cast<MVNConsumer*>(getServiceById(id));
}
MVNFilter* MVNFactory::getFilterById(const std::string& id) const { return dynamic_cast<MVNFilter*>(getServiceById(id)); }
MVNGroup* MVNFactory::getGroupById(const std::string& id) const { return dynamic_cast<MVNGroup*>(getServiceById(id)); }
MVNPlaylist* MVNFactory::getPlaylistById(const std::string& id) const {
    return dynamic_cast<MVNPlaylist*>(getServiceById(id));
}
MVNProducer* MVNFactory::getProducerById(const std::string& id) const {
    return dynamic_cast<MVNProducer*>(getServiceById(id));
}
MVNTractor* MVNFactory::getTractorById(const std::string& id) const {
    return dynamic_cast<MVNTractor*>(getServiceById(id));
}
MVNTransition* MVNFactory::getTransitionById(const std::string& id) const {
    return dynamic_cast<MVNTransition*>(getServiceById(id));
}
MVNTransitionAudio* MVNFactory::getTransitionAudioById(const std::string& id) const {
    return dynamic_cast<MVNTransitionAudio*>(getServiceById(id));
}

std::string createConsumer(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createConsumer(p, q); }
std::string createFilter(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createFilter(p, q); }
std::string createGroup(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createGroup(p, q); }
std::string createPlaylist(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createPlaylist(p, q); }
std::string createProducer(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createProducer(p, q); }
std::string createTractor(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createTractor(p, q); }
std::string createTransition(const MVNProfile& p, const MVNProperties& q) { return MVNFactory::getSingleton()->createTransition(p, q); }
std::string createTransitionAudio(const MVNProfile& p, const MVNProperties& q) {
    return MVNFactory::getSingleton()->createTransitionAudio(p, q);
}
int destroyService(const std::string& id) { return MVNFactory::getSingleton()->destroyService(id); }
MVNService* getServiceById(const std::string& id) { return MVNFactory::getSingleton()->getServiceById(id); }
MVNConsumer* getConsumerById(const std::string& id) { return MVNFactory::getSingleton()->getConsumerById(id); }
MVNFilter* getFilterById(const std::string& id) { return MVNFactory::getSingleton()->getFilterById(id); }
MVNGroup* getGroupById(const std::string& id) { return MVNFactory::getSingleton()->getGroupById(id); }
MVNPlaylist* getPlaylistById(const std::string& id) { return MVNFactory::getSingleton()->getPlaylistById(id); }
MVNProducer* getProducerById(const std::string& id) { return MVNFactory::getSingleton()->getProducerById(id); }
MVNTractor* getTractorById(const std::string& id) { return MVNFactory::getSingleton()->getTractorById(id); }
MVNTransition* getTransitionById(const std::string& id) { return MVNFactory::getSingleton()->getTransitionById(id); }
MVNTransitionAudio* getTransitionAudioById(const std::string& id) {
    return MVNFactory::getSingleton()->getTransitionAudioById(id);
}

MVNRenderSystem* createRenderSystem(const std::string& name, const MVNProfile& profile,
                                    const MVNProperties& properties) {
    return MVNRepository::getSingleton()->createRenderSystem(name, profile, properties);
}

MVNRenderTexture* createRenderTexture(const std::string& name, const MVNProfile& profile,
                                      const MVNProperties& properties) {
    return MVNRepository::getSingleton()->createRenderTexture(name, profile, properties);
}

namespace {
// The services below reach the registry through these look-ups, installed
// as the library loads.
[[maybe_unused]] const bool kHooksInstalled = (MVNRegistryHooks::install(&createRenderTexture, &getProducerById), true);
}  // namespace

}  // namespace Morvane
