#include "AutoLock.h"

namespace but {

AutoLock::AutoLock(BaseLock& lock) : mLock(lock) { mLock.lock(); }

AutoLock::~AutoLock() { mLock.unlock(); }

}  // namespace but
