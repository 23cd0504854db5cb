#pragma once
#include <string>

#include "services/MVNProducer.h"

namespace Morvane {

// A producer whose content is a timeline of its own: the producer connected
// by connect(id), usually a tractor or playlist.
class MVNGroup : public MVNProducer {
public:
    explicit MVNGroup(const MVNProfile& profile);
    ~MVNGroup() override;

    virtual MVNFrame* processImage(int position, MVNFrame* frame) { return nullptr; }
    // A group sounds like its sub-timeline at the same position.
    int _getAudio(int position, void* converter, MVNFrame** frame) override;
    bool _drawsOwnFilters() const override { return true; }
    virtual void reconfig() {}
    virtual void _OnConnected() {}
    virtual void _OnDisconnected() {}

    // Connects the registered producer `id` as the sub-timeline, replacing
    // one connected before, then calls _OnConnected. -1 when there is no
    // producer of that id (a logged error) or it is the group itself.
    int connect(const std::string& id);
    // Calls _OnDisconnected and drops the sub-timeline; nothing without one.
    void disconnect();
    // The sub-timeline, null while none is connected.
    MVNProducer* producer() const;
    std::string producerId() const;

private:
    MVNProducer* mChild = nullptr;
    std::string mChildId;
    mutable Mutex mGroupLock;
};

}  // namespace Morvane
