#pragma once
#include <atomic>

#include "services/MVNService.h"

namespace Morvane {

class MVNProducer;

// The end of a chain: pulls frames from the producer it is connected to.
// The base keeps the connection and the current position; a concrete
// consumer adds the pacing and where the pictures go.
class MVNConsumer : public MVNService {
public:
    explicit MVNConsumer(const MVNProfile& profile);
    ~MVNConsumer() override;

    // 0 when running; the base can't run and returns -1.
    virtual int start() { return -1; }
    virtual void stop() {}
    virtual bool isStopped() { return true; }
    // Moves the current position; 0.
    virtual int seek(int position);
    // Drops frames prepared ahead of time.
    virtual void purge() {}
    // Connects the producer to pull from and calls _OnConnected; -1 for null.
    virtual int connect(MVNProducer* producer);
    virtual void disconnect();
    virtual void forward(int frames);
    virtual void backward(int frames);
    virtual void synchronize() {}
    virtual void refresh() {}
    virtual void waitAsyncQueueEmpty() {}
    virtual void waitWorkEnd() {}
    virtual void _OnConnected(MVNProducer* producer) {}

    // The current position.
    int frame() const { return mFrame.load(); }
    MVNProducer* connectedProducer() const { return mProducer.load(); }

protected:
    void setFrame(int position) { mFrame.store(position); }

private:
    std::atomic<MVNProducer*> mProducer{nullptr};
    std::atomic<int> mFrame{0};
};

}  // namespace Morvane
