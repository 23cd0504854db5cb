#pragma once

namespace Morvane {

class MVNService;

// Receives the events a service fires (MVNEventType numbers and the
// service's own). Returning false asks the service to stop what the event
// announces, where that makes sense; the default agrees.
class MVNEventListener {
public:
    virtual ~MVNEventListener() = default;
    virtual bool onEvent(MVNService* service, int type, int param, const char* message, void* data) { return true; }
};

}  // namespace Morvane
