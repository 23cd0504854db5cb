#include "Mutex11.h"

namespace but {

Mutex11::Mutex11() = default;
Mutex11::~Mutex11() = default;

void Mutex11::lock() { mMutex.lock(); }

void Mutex11::unlock() { mMutex.unlock(); }

bool Mutex11::tryLock() { return mMutex.try_lock(); }

}  // namespace but
