#pragma once
#include <pthread.h>

namespace Morvane {

class Mutex;

// A condition variable on POSIX threads, paired with the Mutex given at
// construction. timedWait keeps its historical deadline, built from the
// process clock: that deadline lies in the past, so the call returns at once.
// Nothing waits on it; new code uses Condition11.
class Condition {
public:
    explicit Condition(Mutex* mutex);
    ~Condition();
    Condition(const Condition&) = delete;
    Condition& operator=(const Condition&) = delete;

    void wait();
    void timedWait(int ms);
    void signal();
    void signal_all();

private:
    Mutex* mMutex;
    pthread_cond_t mCond;
};

}  // namespace Morvane
