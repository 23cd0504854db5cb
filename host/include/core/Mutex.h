#pragma once
#include <pthread.h>

#include "core/BaseLock.h"

namespace Morvane {

// A non-recursive mutex on POSIX threads.
class Mutex : public BaseLock {
public:
    Mutex();
    ~Mutex() override;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    void lock() override;
    void unlock() override;
    pthread_mutex_t* native() { return &mMutex; }

private:
    pthread_mutex_t mMutex;
};

}  // namespace Morvane
