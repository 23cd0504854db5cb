#include "Thread11.h"

#include <system_error>

namespace Morvane {

Thread11::~Thread11() {
    if (mThread && mThread->joinable()) {
        // A running thread must not be destroyed joinable (std::terminate);
        // the owner should have joined. Detach rather than end the process.
        mThread->detach();
    }
    delete mThread;
}

void Thread11::loopFun(Thread11* self) { self->run(); }

void Thread11::start() {
    if (mThread && mThread->joinable()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                                "Thread11::start: thread already running");
    }
    delete mThread;
    mThread = new std::thread(&Thread11::loopFun, this);
}

void Thread11::join() {
    if (!mThread) {
        throw std::system_error(std::make_error_code(std::errc::no_such_process), "Thread11::join: not started");
    }
    mThread->join();  // throws std::system_error when called from the thread itself
}

}  // namespace Morvane
