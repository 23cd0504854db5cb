#pragma once
#include <atomic>
#include <thread>

namespace Morvane {

// A thread object on the standard library: start() runs the virtual run() on
// a new thread; join() waits for it. Joining from the thread itself, or
// before start, throws std::system_error.
class Thread11 {
public:
    Thread11() = default;
    virtual ~Thread11();
    Thread11(const Thread11&) = delete;
    Thread11& operator=(const Thread11&) = delete;

    virtual void start();
    virtual void join();
    virtual void run() = 0;

private:
    static void loopFun(Thread11* self);

    // Atomic: run() may call join() (an error it is told about) while
    // start() is still storing the pointer.
    std::atomic<std::thread*> mThread{nullptr};
};

}  // namespace Morvane
