#pragma once
#include <pthread.h>

namespace Morvane {

// A thread object on POSIX threads: start() runs the virtual run() on a new
// thread; join() waits for it. With enableAttach(false) the thread is started
// detached and join() returns at once.
class Thread {
public:
    Thread() = default;
    virtual ~Thread();
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    virtual int start();
    virtual int join();
    virtual void run() = 0;

    void enableAttach(bool attach) { mAttach = attach; }

private:
    static void* entry(void* self);

    bool mAttach = true;
    bool mStarted = false;
    pthread_t mThread{};
};

}  // namespace Morvane
