#pragma once
// Shared helpers of the engine tests: marker files, a scene of flat colour
// rectangles drawn through the real engine, and pixel access to read-back
// pictures (R,G,B,A bytes, top row first).
#include <gtest/gtest.h>

#include <Ogre.h>
#include <OgreRTShaderSystem.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNImage.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"

namespace MorvaneTest {

struct RGBA {
    uint8_t r, g, b, a;
};

// Magenta: no correct picture of these tests contains it outside the
// background, so a misplaced or missing rectangle shows at once.
constexpr RGBA kMagenta{255, 0, 255, 255};
constexpr RGBA kRed{255, 0, 0, 255};
constexpr RGBA kGreen{0, 255, 0, 255};
constexpr RGBA kBlue{0, 0, 255, 255};
constexpr RGBA kBlack{0, 0, 0, 255};

inline bool operator==(const RGBA& a, const RGBA& b) { return a.r == b.r && a.g == b.g && a.b == b.b && a.a == b.a; }
inline std::ostream& operator<<(std::ostream& os, const RGBA& c) {
    return os << "(" << int(c.r) << "," << int(c.g) << "," << int(c.b) << "," << int(c.a) << ")";
}

inline void touchMarker(const char* name) { std::ofstream(name).put('\n'); }
inline void removeMarker(const char* name) { std::remove(name); }

// A marker file that exists as long as the object does.
class Marker {
public:
    explicit Marker(const char* name) : name_(name) { touchMarker(name); }
    ~Marker() { removeMarker(name_); }
    Marker(const Marker&) = delete;
    Marker& operator=(const Marker&) = delete;

private:
    const char* name_;
};

// A w x h picture of R,G,B,A bytes with the first row at the top.
struct Picture {
    const uint8_t* data;
    int width;
    int height;
    RGBA at(int x, int y) const {
        const uint8_t* p = data + (static_cast<size_t>(y) * width + x) * 4;
        return {p[0], p[1], p[2], p[3]};
    }
    // Writes a PNG beside the test's working folder for a look by eye
    // (kept with MVN_KEEP_TEST_DIRS=1).
    void save(const std::string& path) const {
        std::vector<uint8_t> bgra(static_cast<size_t>(width) * height * 4);
        for (size_t i = 0; i < bgra.size(); i += 4) {
            bgra[i] = data[i + 2];
            bgra[i + 1] = data[i + 1];
            bgra[i + 2] = data[i];
            bgra[i + 3] = data[i + 3];
        }
        Morvane::MVNImage::saveToFile(path, bgra.data(), width, height);
    }
};

// The picture the running engine composes now, w x h, read once and given
// back to its pool at the end of the scope.
class RenderImage {
public:
    RenderImage(int w, int h) : width_(w), height_(h) {
        image_ = Morvane::MVNOgreManager::getSingleton()->getRenderImage();
    }
    ~RenderImage() {
        if (image_) Morvane::MVNByteBufferPool::sRelease(image_);
    }
    RenderImage(const RenderImage&) = delete;
    RenderImage& operator=(const RenderImage&) = delete;

    bool ok() const { return image_ != nullptr && image_->size() == width_ * height_ * 4; }
    Picture picture() const { return Picture{image_->ptr(), width_, height_}; }
    RGBA at(int x, int y) const { return picture().at(x, y); }

protected:
    int width_;
    int height_;
    Morvane::MVNByteBuffer* image_ = nullptr;
};

// Runs `f` on the render thread and waits.
template <typename F>
void onRenderThread(F f, const char* name = "testStep") {
    Morvane::MVNOgreManager::getSingleton()->callRenderableWait(std::function<void()>(f), name);
}

// Flat colour rectangles in the shared scene, placed in window pixels with
// the origin at the top left; everything else shows the background colour.
class TestScene {
public:
    // Sets the clear colour of every viewport that a reader may draw: the
    // window's and the render texture's.
    static void setBackground(RGBA c) {
        onRenderThread([c]() {
            Ogre::ColourValue colour(c.r / 255.f, c.g / 255.f, c.b / 255.f, c.a / 255.f);
            auto* ctx = Morvane::MVNOgreManager::getSingleton()->getOgreContext();
            if (ctx && ctx->getRenderWindow()) {
                for (unsigned short i = 0; i < ctx->getRenderWindow()->getNumViewports(); ++i) {
                    ctx->getRenderWindow()->getViewport(i)->setBackgroundColour(colour);
                }
            }
            auto& tm = Ogre::TextureManager::getSingleton();
            if (tm.resourceExists("RttTex", Ogre::RGN_DEFAULT)) {
                Ogre::RenderTarget* rt = tm.getByName("RttTex", Ogre::RGN_DEFAULT)->getBuffer()->getRenderTarget();
                for (unsigned short i = 0; i < rt->getNumViewports(); ++i) {
                    rt->getViewport(i)->setBackgroundColour(colour);
                }
            }
        });
    }

    // An axis-aligned rectangle at pixel (x, y) of size w x h, in the plane
    // z = 0 where one world unit is one pixel.
    static void addRect(const std::string& name, int x, int y, int w, int h, RGBA c) {
        onRenderThread([=]() {
            auto* ctx = Morvane::MVNOgreManager::getSingleton()->getOgreContext();
            Ogre::SceneManager* sm = ctx->getSceneManager();
            float W = static_cast<float>(ctx->getWidth());
            float H = static_cast<float>(ctx->getHeight());
            std::string matName = "TestMat/" + name;
            Ogre::MaterialPtr mat =
                Ogre::MaterialManager::getSingleton().create(matName, Ogre::RGN_DEFAULT);
            Ogre::Pass* pass = mat->getTechnique(0)->getPass(0);
            pass->setLightingEnabled(false);
            pass->setDepthCheckEnabled(false);
            pass->setDepthWriteEnabled(false);
            pass->setCullingMode(Ogre::CULL_NONE);
            Ogre::TextureUnitState* tus = pass->createTextureUnitState();
            tus->setColourOperationEx(Ogre::LBX_SOURCE1, Ogre::LBS_MANUAL, Ogre::LBS_CURRENT,
                                      Ogre::ColourValue(c.r / 255.f, c.g / 255.f, c.b / 255.f));
            mat.reset();
            Ogre::ManualObject* mo = sm->createManualObject("TestRect/" + name);
            float left = x - W / 2, right = x + w - W / 2;
            float top = H / 2 - y, bottom = H / 2 - y - h;
            mo->begin(matName, Ogre::RenderOperation::OT_TRIANGLE_LIST, Ogre::RGN_DEFAULT);
            mo->position(left, bottom, 0);
            mo->position(right, bottom, 0);
            mo->position(right, top, 0);
            mo->position(left, top, 0);
            mo->quad(0, 1, 2, 3);
            mo->end();
            sm->getRootSceneNode()->createChildSceneNode("TestNode/" + name)->attachObject(mo);
        });
    }

    // Removes every rectangle and its material.
    static void clear() {
        onRenderThread([]() {
            auto* ctx = Morvane::MVNOgreManager::getSingleton()->getOgreContext();
            if (!ctx || !ctx->getSceneManager()) return;
            Ogre::SceneManager* sm = ctx->getSceneManager();
            std::vector<std::string> names;
            for (const auto& kv : sm->getMovableObjects("ManualObject")) names.push_back(kv.first);
            for (const std::string& n : names) {
                std::string base = n.substr(std::string("TestRect/").size());
                sm->destroySceneNode("TestNode/" + base);
                sm->destroyManualObject(n);
                Ogre::MaterialManager::getSingleton().remove("TestMat/" + base, Ogre::RGN_DEFAULT);
            }
        });
    }
};

// Starts the engine through the manager for a profile of w x h in a window of
// the same size (or winW x winH), and stops it at the end of the scope.
class EngineRun {
public:
    EngineRun(int w, int h, int winW = 0, int winH = 0) {
        rc = Morvane::MVNOgreManager::getSingleton()->init(Morvane::MVNProfile(w, h, 25), winW, winH);
    }
    ~EngineRun() {
        if (rc == 0) TestScene::clear();
        Morvane::MVNOgreManager::getSingleton()->release();
    }
    int rc;
};

}  // namespace MorvaneTest
