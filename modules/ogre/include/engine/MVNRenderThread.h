#pragma once
#include "MVNOgreExport.h"
#include "core/Thread11.h"

namespace Morvane {

class MVNOgreRenderQueue;

// The render thread: it owns the GL context from engine bring-up to
// shut-down and does nothing but run its queue's loop.
class MVN_OGRE_API MVNRenderThread : public Thread11 {
public:
    explicit MVNRenderThread(MVNOgreRenderQueue* queue);
    ~MVNRenderThread() override;

    void start() override;
    void join() override;
    void run() override;

private:
    MVNOgreRenderQueue* mQueue;  // not owned; the queue owns this thread
};

}  // namespace Morvane
