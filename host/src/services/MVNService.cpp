#include "services/MVNService.h"

#include <algorithm>

#include "core/AutoLock.h"
#include "services/MVNEventListener.h"
#include "core/MVNGeneratorStringId.h"

namespace Morvane {

MVNService::MVNService(const MVNProfile& profile, MVNServiceType type) : mProfile(profile), mServiceType(type) {}

MVNService::~MVNService() = default;

std::string MVNService::getStringId() const {
    AutoLock guard(mStateLock);
    return mStringId;
}

void MVNService::genStringId(const std::string& prefix) {
    setStringId(MVNGeneratorStringId::getSingleton()->genStringId(prefix));
}

void MVNService::setStringId(const std::string& id) {
    {
        AutoLock guard(mStateLock);
        mStringId = id;
    }
    // Mirrored for project files and property dumps; not a change anyone
    // reacts to.
    block();
    setString("id", id);
    unblock();
}

void MVNService::addEventListener(MVNEventListener* listener) {
    if (listener == nullptr) return;
    AutoLock guard(mStateLock);
    if (std::find(mEventListeners.begin(), mEventListeners.end(), listener) == mEventListeners.end())
        mEventListeners.push_back(listener);
}

void MVNService::removeEventListener(MVNEventListener* listener) {
    AutoLock guard(mStateLock);
    mEventListeners.erase(std::remove(mEventListeners.begin(), mEventListeners.end(), listener),
                          mEventListeners.end());
}

bool MVNService::fireEvent(int type, int param, const char* message, void* data) {
    std::vector<MVNEventListener*> listeners;
    {
        AutoLock guard(mStateLock);
        if (mEventListeners.empty()) return true;
        listeners = mEventListeners;
    }
    bool all = true;
    for (MVNEventListener* l : listeners) {
        if (!l->onEvent(this, type, param, message, data)) all = false;
    }
    return all;
}

}  // namespace Morvane
