#include "scene/MVNOgreRenderTexture.h"

#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"

namespace Morvane {

MVNOgreRenderTexture::MVNOgreRenderTexture(const std::string& textureName, int width, int height, int canvasWidth,
                                           int canvasHeight, int zOrder, const std::string& sceneName, bool hidden) {
    using Node = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;
    const std::string plainPicture;  // no material script
    if (hidden) {
        node = new Node(Node::StartHidden{}, textureName, width, height, canvasWidth, canvasHeight, zOrder,
                        plainPicture, sceneName);
    } else {
        node = new Node(textureName, width, height, canvasWidth, canvasHeight, zOrder, plainPicture, sceneName);
    }
}

MVNOgreRenderTexture::MVNOgreRenderTexture(const std::string& textureName, int width, int height, int canvasWidth,
                                           int canvasHeight, int zOrder, const std::string& sceneName)
    : MVNOgreRenderTexture(textureName, width, height, canvasWidth, canvasHeight, zOrder, sceneName, false) {}

MVNOgreRenderTexture::~MVNOgreRenderTexture() { delete node; }

void MVNOgreRenderTexture::updateTexture(uint8_t* data, int width, int height) {
    node->updateTexture(data, width, height);
}

void MVNOgreRenderTexture::setGeometry(const MVNRect& rect) { node->setGeometry(rect); }

void MVNOgreRenderTexture::setVisible(bool visible) { node->setVisible(visible); }

void MVNOgreRenderTexture::updateAnimation(int position) { node->updateAnimation(position); }

void MVNOgreRenderTexture::setAnimation(int type) { node->setAnimation(type); }

void MVNOgreRenderTexture::setRotation(int degrees) { node->setRotation(degrees); }

void MVNOgreRenderTexture::setZOrder(int zOrder) { node->setZOrder(zOrder); }

}  // namespace Morvane
