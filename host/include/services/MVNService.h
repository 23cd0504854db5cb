#pragma once
#include <string>
#include <vector>

#include "core/MVNProfile.h"
#include "services/MVNProperties.h"
#include "core/MVNTypes.h"
#include "core/Mutex.h"

namespace Morvane {

class MVNFrame;
class MVNEventListener;

// A thing in the timeline: a property bag with a profile, a string id by
// which the registry finds it, a lock, and the render hooks that the host's
// timeline and consumers call by position.
class MVNService : public MVNProperties {
public:
    MVNService(const MVNProfile& profile, MVNServiceType type);
    ~MVNService() override;
    MVNService(const MVNService&) = delete;
    MVNService& operator=(const MVNService&) = delete;

    void _OnPropertyChanged(const char* key) override {}
    // Builds what the service needs to run; 0 on success, -1 on failure.
    virtual int init() { return 0; }
    virtual void release() {}
    virtual void preRender(int position) {}
    virtual void postRender(int position) {}
    virtual void render(int position) {}
    // The position is no longer shown: hide what was drawn for it.
    virtual void resetRender(int position) {}
    virtual void preAudio(int position) {}
    virtual int getAudio(int position, void* converter, MVNFrame** frame) { return -1; }
    // A picture for `position` in *frame (0), or -1 with *frame unchanged.
    virtual int getImage(int position, MVNFrame** frame) { return -1; }
    virtual int getImage2(int position, MVNFrame** frame) { return -1; }

    // Unique among live services once the registry holds it; empty before
    // genStringId. Also kept in the property "id".
    std::string getStringId() const;
    void genStringId(const std::string& prefix);
    void setStringId(const std::string& id);

    const MVNProfile& profile() const { return mProfile; }
    // Set before the service runs; not synchronised with render calls.
    void setProfile(const MVNProfile& profile) { mProfile = profile; }
    MVNServiceType serviceType() const { return mServiceType; }

    void lockService() { mServiceLock.lock(); }
    void unlockService() { mServiceLock.unlock(); }

    // Listeners are not owned. fireEvent returns false when a listener did.
    void addEventListener(MVNEventListener* listener);
    void removeEventListener(MVNEventListener* listener);
    bool fireEvent(int type, int param, const char* message, void* data);

protected:
    MVNProfile mProfile;

private:
    std::vector<MVNEventListener*> mEventListeners;
    MVNServiceType mServiceType;
    Mutex mServiceLock;
    // Guards the string id and the event listeners.
    mutable Mutex mStateLock;
    std::string mStringId;
};

}  // namespace Morvane
