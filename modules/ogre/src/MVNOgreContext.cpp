#include "MVNOgreContext.h"

namespace Morvane {

MVNOgreContext::MVNOgreContext(const std::string& name, int width, int height)
    : MVNOgreContextBase(name, width, height) {}
MVNOgreContext::~MVNOgreContext() = default;
void MVNOgreContext::setup() {}
NativeWindowPair MVNOgreContext::createWindow(const char*, int, int, std::map<std::string, std::string>) {
    return {};
}
void MVNOgreContext::createScene() {}
void MVNOgreContext::destroyScene() {}
void MVNOgreContext::shutdown() {}
void MVNOgreContext::preGetRenderImage() {}
MVNByteBuffer* MVNOgreContext::getRenderImage() { return nullptr; }
MVNFrame* MVNOgreContext::getRenderFrame() { return nullptr; }
bool MVNOgreContext::supportAsync() { return false; }
void MVNOgreContext::postGetRenderImage() {}
void MVNOgreContext::updateRenderImage(int) {}
void MVNOgreContext::updateRenderTime(int) {}
void MVNOgreContext::registerFrameListener(MVNFrameListener*) {}
void MVNOgreContext::unregisterFrameListener(MVNFrameListener*) {}
MVNByteBuffer* MVNOgreContext::getRenderImageWithGLReadPixels() { return nullptr; }
void MVNOgreContext::_destroyWindow(const NativeWindowPair& win) { MVNOgreContextBase::_destroyWindow(win); }
bool MVNOgreContext::checkFullScreen(int, int, int, int) { return false; }
int MVNOgreContext::readerTypeFromMarkers() { return 1; }
bool MVNOgreContext::_checkFullScreen(int, int) { return false; }

}  // namespace Morvane
