#include "core/Mutex.h"

namespace Morvane {

Mutex::Mutex() { pthread_mutex_init(&mMutex, nullptr); }
Mutex::~Mutex() { pthread_mutex_destroy(&mMutex); }
void Mutex::lock() { pthread_mutex_lock(&mMutex); }
void Mutex::unlock() { pthread_mutex_unlock(&mMutex); }

}  // namespace Morvane
