#include "MVNOgreContextBase.h"

#include <OgreFileSystemLayer.h>

namespace Morvane {

class MVNOgreContextBase::FrameHooks {};
class MVNOgreContextBase::TechniqueResolver {};

void StaticPluginLoader::load() {}
void StaticPluginLoader::unload() {}

MVNOgreContextBase::MVNOgreContextBase(const std::string& appName, int width, int height)
    : mAppName(appName), mWidth(width), mHeight(height) {}
MVNOgreContextBase::~MVNOgreContextBase() = default;
bool MVNOgreContextBase::frameStarted(const Ogre::FrameEvent&) { return true; }
bool MVNOgreContextBase::frameRenderingQueued(const Ogre::FrameEvent&) { return true; }
bool MVNOgreContextBase::frameEnded(const Ogre::FrameEvent&) { return true; }
void MVNOgreContextBase::setup() {}
void MVNOgreContextBase::createRoot() {}
bool MVNOgreContextBase::oneTimeConfig() { return false; }
void MVNOgreContextBase::locateResources() {}
void MVNOgreContextBase::loadResources() {}
void MVNOgreContextBase::reconfigure(const std::string&, std::map<std::string, std::string>&) {}
void MVNOgreContextBase::shutdown() {}
void MVNOgreContextBase::pollEvents() {}
void MVNOgreContextBase::addInputListener(SDL_Window*, InputListener*) {}
void MVNOgreContextBase::removeInputListener(SDL_Window*, InputListener*) {}
NativeWindowPair MVNOgreContextBase::createWindow(const char*, int, int, std::map<std::string, std::string>) {
    return {};
}
void MVNOgreContextBase::renderOneFrame() {}
void MVNOgreContextBase::_destroyWindow(const NativeWindowPair&) {}
int MVNOgreContextBase::initApp() { return -1; }
void MVNOgreContextBase::closeApp() {}
Ogre::RenderWindow* MVNOgreContextBase::getRenderWindow() { return nullptr; }
int MVNOgreContextBase::getDisplayWidth() { return mWidth; }
int MVNOgreContextBase::getDisplayHeight() { return mHeight; }
void MVNOgreContextBase::addInputListener(InputListener*) {}
void MVNOgreContextBase::removeInputListener(InputListener*) {}
void MVNOgreContextBase::setWindowGrab(bool) {}
void MVNOgreContextBase::destroyWindow(const std::string&) {}
bool MVNOgreContextBase::initialiseRTShaderSystem() { return false; }
void MVNOgreContextBase::destroyRTShaderSystem() {}
void MVNOgreContextBase::setRTSSWriteShadersToDisk(bool) {}
void MVNOgreContextBase::enableShaderCache() const {}
void MVNOgreContextBase::createDummyScene() {}
void MVNOgreContextBase::destroyDummyScene() {}
int MVNOgreContextBase::chooseAntiAliasingLevel() { return 0; }
void MVNOgreContextBase::_fireInputEvent(const OgreBites::Event&, unsigned int) const {}
std::string MVNOgreContextBase::getDefaultMediaDir() { return "./Media"; }

}  // namespace Morvane
