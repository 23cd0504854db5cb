#include "scene/MVNOgreTextureNodeStub.h"

namespace Morvane {

MVNOgreTextureNodeStub::MVNOgreTextureNodeStub(const std::string& textureName, int width, int height,
                                               int canvasWidth, int canvasHeight, int zOrder,
                                               const std::string& materialName) {}

MVNOgreTextureNodeStub::MVNOgreTextureNodeStub(const std::string& textureName, int width, int height,
                                               int canvasWidth, int canvasHeight, int zOrder,
                                               const std::string& materialName, const std::string& sceneName) {}

void MVNOgreTextureNodeStub::updateTexture(uint8_t* data, int width, int height) {}
void MVNOgreTextureNodeStub::setGeometry(const MVNRect& rect) {}
void MVNOgreTextureNodeStub::setVisible(bool visible) {}
void MVNOgreTextureNodeStub::updateAnimation(int position) {}
void MVNOgreTextureNodeStub::setAnimation(int type) {}
void MVNOgreTextureNodeStub::setRotation(int degrees) {}
void MVNOgreTextureNodeStub::setZOrder(int zOrder) {}
MVNOgreMaterialImpl* MVNOgreTextureNodeStub::getOgreMaterial() { return nullptr; }

}  // namespace Morvane
