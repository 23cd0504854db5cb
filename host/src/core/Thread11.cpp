#include "core/Thread11.h"

#include <system_error>

namespace Morvane {

Thread11::~Thread11() {
    std::thread* thread = mThread.load();
    if (thread && thread->joinable()) {
        // A running thread must not be destroyed joinable (std::terminate);
        // the owner should have joined. Detach rather than end the process.
        thread->detach();
    }
    delete thread;
}

void Thread11::loopFun(Thread11* self) { self->run(); }

void Thread11::start() {
    std::thread* old = mThread.load();
    if (old && old->joinable()) {
        throw std::system_error(std::make_error_code(std::errc::resource_deadlock_would_occur),
                                "Thread11::start: thread already running");
    }
    mThread.store(nullptr);
    delete old;
    mThread.store(new std::thread(&Thread11::loopFun, this));
}

void Thread11::join() {
    std::thread* thread = mThread.load();
    if (!thread) {
        throw std::system_error(std::make_error_code(std::errc::no_such_process), "Thread11::join: not started");
    }
    thread->join();  // throws std::system_error when called from the thread itself
}

}  // namespace Morvane
