#include "services/MVNGroup.h"

#include "core/AutoLock.h"
#include "services/MVNRegistryHooks.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNGroup";
}  // namespace

MVNGroup::MVNGroup(const MVNProfile& profile) : MVNProducer(profile) { setType(MVN_PRODUCER_GROUP); }

MVNGroup::~MVNGroup() = default;

int MVNGroup::connect(const std::string& id) {
    MVNProducer* child = MVNRegistryHooks::getProducerById(id);
    if (child == nullptr) {
        log_error(kTag, "%s connect failed, no producer %s", getStringId().c_str(), id.c_str());
        return -1;
    }
    if (child == this) {
        log_error(kTag, "%s connect failed, a group can't hold itself", getStringId().c_str());
        return -1;
    }
    disconnect();
    {
        AutoLock guard(mGroupLock);
        mChild = child;
        mChildId = id;
    }
    _OnConnected();
    return 0;
}

void MVNGroup::disconnect() {
    {
        AutoLock guard(mGroupLock);
        if (mChild == nullptr) return;
    }
    _OnDisconnected();
    AutoLock guard(mGroupLock);
    mChild = nullptr;
    mChildId.clear();
}

MVNProducer* MVNGroup::producer() const {
    AutoLock guard(mGroupLock);
    return mChild;
}

std::string MVNGroup::producerId() const {
    AutoLock guard(mGroupLock);
    return mChildId;
}

int MVNGroup::_getAudio(int position, void* converter, MVNFrame** frame) {
    MVNProducer* child = producer();
    return child != nullptr ? child->getAudio(child->getIn() + position, converter, frame) : -1;
}

}  // namespace Morvane
