#include "timeline/MVNManager.h"

#include <cstdlib>

#include "core/AutoLock.h"

namespace Morvane {

MVNManager* MVNManager::getSingleton() {
    static MVNManager* instance = new MVNManager();  // never destroyed: services read it until exit
    return instance;
}

MVNManager::MVNManager() {
    const char* home = std::getenv("HOME");
    if (home != nullptr) mUserHome = home;
}

std::string MVNManager::getInvalidResource() const {
    AutoLock guard(mLock);
    return mInvalidResource;
}

void MVNManager::setInvalidResource(const std::string& path) {
    AutoLock guard(mLock);
    mInvalidResource = path;
}

std::string MVNManager::getUserHome() const {
    AutoLock guard(mLock);
    return mUserHome;
}

void MVNManager::setUserHome(const std::string& path) {
    AutoLock guard(mLock);
    mUserHome = path;
}

}  // namespace Morvane
