#include "core/Thread.h"

namespace Morvane {

Thread::~Thread() = default;

void* Thread::entry(void* self) {
    static_cast<Thread*>(self)->run();
    return nullptr;
}

int Thread::start() {
    pthread_attr_t attr;
    pthread_attr_init(&attr);
    pthread_attr_setdetachstate(&attr, mAttach ? PTHREAD_CREATE_JOINABLE : PTHREAD_CREATE_DETACHED);
    int rc = pthread_create(&mThread, &attr, &Thread::entry, this);
    pthread_attr_destroy(&attr);
    mStarted = rc == 0;
    return rc == 0 ? 0 : -1;
}

int Thread::join() {
    if (!mStarted || !mAttach) {
        return -1;
    }
    mStarted = false;
    return pthread_join(mThread, nullptr) == 0 ? 0 : -1;
}

}  // namespace Morvane
