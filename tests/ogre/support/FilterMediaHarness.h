#pragma once
// Draws one filter material of media/materials on a test picture through the
// real engine, into a private render texture, and brings the result back as
// R,G,B,A bytes (top row first). Independent of the filter service, so that
// the media are tested on their own: the picture sits in texture unit 0 of a
// private clone of the material, uniforms are set by name as the service
// sets them, and the engine's own log is watched for shader errors.
#include <gtest/gtest.h>

#include <Ogre.h>

#include <cmath>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "GpuTestSupport.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "scene/MVNOgreSceneManager.h"

namespace MorvaneTest {

using Uniforms = std::vector<std::pair<std::string, float>>;

// A picture of R,G,B,A bytes, top row first.
struct Image {
    int width = 0;
    int height = 0;
    std::vector<uint8_t> rgba;
    RGBA at(int x, int y) const {
        const uint8_t* p = rgba.data() + (static_cast<size_t>(y) * width + x) * 4;
        return {p[0], p[1], p[2], p[3]};
    }
    void set(int x, int y, RGBA c) {
        uint8_t* p = rgba.data() + (static_cast<size_t>(y) * width + x) * 4;
        p[0] = c.r;
        p[1] = c.g;
        p[2] = c.b;
        p[3] = c.a;
    }
    Picture picture() const { return Picture{rgba.data(), width, height}; }
};

// A picture file decoded at w x h into R,G,B,A bytes, opaque; false when it
// can't be read.
inline bool loadPicture(const std::string& file, int w, int h, Image* out) {
    Morvane::MVNFrame* frame = Morvane::MVNImage::loadFromFile(file, w, h);
    if (frame == nullptr || frame->buffer() == nullptr) return false;
    *out = Image{w, h, std::vector<uint8_t>(static_cast<size_t>(w) * h * 4)};
    const uint8_t* p = frame->buffer()->ptr();
    for (size_t i = 0; i < out->rgba.size(); i += 4) {
        out->rgba[i] = p[i + 2];
        out->rgba[i + 1] = p[i + 1];
        out->rgba[i + 2] = p[i];
        out->rgba[i + 3] = 255;
    }
    Morvane::MVNFrame::pushBackPool(frame);
    return true;
}

// Largest and mean absolute difference over the colour channels (and alpha
// when asked), in levels of 255.
struct Difference {
    int max = 0;
    double mean = 0;
};
inline Difference difference(const Image& a, const Image& b, bool withAlpha = true) {
    Difference d;
    double sum = 0;
    size_t n = 0;
    for (size_t i = 0; i < a.rgba.size() && i < b.rgba.size(); ++i) {
        if (!withAlpha && i % 4 == 3) continue;
        int diff = std::abs(int(a.rgba[i]) - int(b.rgba[i]));
        d.max = std::max(d.max, diff);
        sum += diff;
        ++n;
    }
    d.mean = n ? sum / n : 0;
    return d;
}

// The test chart: red rising to the right, green rising downwards, blue in
// a checker of 8-pixel squares, with a band of pure colours, greys and a
// skin tone along the bottom, and a white marker at the top left.
inline Image testChart(int w, int h) {
    Image img{w, h, std::vector<uint8_t>(static_cast<size_t>(w) * h * 4)};
    const RGBA band[] = {{255, 0, 0, 255},   {0, 255, 0, 255},     {0, 0, 255, 255},     {255, 255, 0, 255},
                         {0, 255, 255, 255}, {255, 0, 255, 255},   {32, 32, 32, 255},    {128, 128, 128, 255},
                         {224, 224, 224, 255}, {224, 172, 140, 255}, {40, 90, 160, 255}, {90, 150, 60, 255}};
    const int bands = sizeof(band) / sizeof(band[0]);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            RGBA c;
            if (y >= h - h / 5) {
                c = band[x * bands / w];
            } else {
                c = {uint8_t(x * 255 / (w - 1)), uint8_t(y * 255 / (h - 1)),
                     uint8_t(((x / 8) + (y / 8)) % 2 ? 200 : 40), 255};
            }
            img.set(x, y, c);
        }
    }
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) img.set(x, y, {255, 255, 255, 255});
    return img;
}

// Collects the engine's log lines that report shader or material trouble.
class EngineErrorLog : public Ogre::LogListener {
public:
    void messageLogged(const Ogre::String& message, Ogre::LogMessageLevel level, bool, const Ogre::String&,
                       bool&) override {
        std::lock_guard<std::mutex> guard(mLock);
        if (level >= Ogre::LML_CRITICAL || message.find("rror") != std::string::npos) mLines.push_back(message);
    }
    std::vector<std::string> take() {
        std::lock_guard<std::mutex> guard(mLock);
        std::vector<std::string> out;
        out.swap(mLines);
        return out;
    }

private:
    std::mutex mLock;
    std::vector<std::string> mLines;
};

// A private scene of w x h on the render thread of a running engine: input
// textures to draw from, a quad that fills the scene, and the engine's error
// lines watched. The harnesses below draw media materials with it.
class MediaQuadScene {
protected:
    MediaQuadScene(int w, int h, const std::string& name, int inputs) : mWidth(w), mHeight(h) {
        onRenderThread([&]() {
            Ogre::LogManager::getSingleton().getDefaultLog()->addListener(&mErrors);
            mScene = new Morvane::MVNOgreSceneManager(mWidth, mHeight, name + "Rtt", "");
            for (int i = 0; i < inputs; ++i) {
                mInputs.push_back(Ogre::TextureManager::getSingleton().createManual(
                    name + "Input" + std::to_string(i), Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, mWidth, mHeight, 0,
                    Ogre::PF_BYTE_RGBA, Ogre::TU_DYNAMIC_WRITE_ONLY));
            }
        });
    }
    ~MediaQuadScene() {
        onRenderThread([this]() {
            for (auto& input : mInputs) Ogre::TextureManager::getSingleton().remove(input);
            mInputs.clear();
            delete mScene;
            Ogre::LogManager::getSingleton().getDefaultLog()->removeListener(&mErrors);
        });
    }

    void upload(int input, const Image& img) {
        onRenderThread([&]() {
            Ogre::PixelBox box(img.width, img.height, 1, Ogre::PF_BYTE_RGBA, const_cast<uint8_t*>(img.rgba.data()));
            mInputs[input]->getBuffer()->blitFromMemory(box);
        });
    }

    // Render thread: draws `material` on a quad of the scene's size, texture
    // coordinates (0, 0) at the top left as on the module's planes, and reads
    // the result back.
    Image drawAndRead(const std::string& material) {
        Ogre::SceneManager* sm = mScene->getSceneManager();
        Ogre::ManualObject* quad = sm->createManualObject();
        float w = mWidth / 2.0f;
        float h = mHeight / 2.0f;
        quad->begin(material, Ogre::RenderOperation::OT_TRIANGLE_LIST, Ogre::RGN_DEFAULT);
        quad->position(-w, -h, 0);
        quad->textureCoord(0, 1);
        quad->position(w, -h, 0);
        quad->textureCoord(1, 1);
        quad->position(w, h, 0);
        quad->textureCoord(1, 0);
        quad->position(-w, h, 0);
        quad->textureCoord(0, 0);
        quad->quad(0, 1, 2, 3);
        quad->end();
        Ogre::SceneNode* node = sm->getRootSceneNode()->createChildSceneNode();
        node->attachObject(quad);
        Image out{mWidth, mHeight, std::vector<uint8_t>(static_cast<size_t>(mWidth) * mHeight * 4)};
        mScene->getRenderTarget()->update(true);
        Ogre::PixelBox box(mWidth, mHeight, 1, Ogre::PF_BYTE_RGBA, out.rgba.data());
        Ogre::TexturePtr rtt = Ogre::TextureManager::getSingleton().getByName(mScene->getRttName(), Ogre::RGN_DEFAULT);
        rtt->getBuffer()->blitToMemory(box);
        sm->destroySceneNode(node);
        sm->destroyManualObject(quad);
        return out;
    }

    int mWidth;
    int mHeight;
    Morvane::MVNOgreSceneManager* mScene = nullptr;
    std::vector<Ogre::TexturePtr> mInputs;
    EngineErrorLog mErrors;
};

// One filter material drawn on one input picture.
class FilterMediaHarness : public MediaQuadScene {
public:
    FilterMediaHarness(int w, int h) : MediaQuadScene(w, h, "FilterMedia", 1) {}

    void setInput(const Image& img) { upload(0, img); }

    // Draws `material` (a clone of it) with the uniforms set; errors gets
    // what the engine reported, and the result is empty when the material
    // doesn't exist or couldn't be used. `inspect` sees the loaded pass.
    Image render(const std::string& material, const Uniforms& uniforms, std::vector<std::string>* errors = nullptr,
                 const std::function<void(Ogre::Pass*)>& inspect = nullptr) {
        Image out{mWidth, mHeight, {}};
        onRenderThread([&]() {
            mErrors.take();
            Ogre::MaterialPtr source = Ogre::MaterialManager::getSingleton().getByName(material, Ogre::RGN_DEFAULT);
            if (!source) return;
            Ogre::MaterialPtr clone = source->clone("FilterMediaClone/" + material + "/" + std::to_string(++mCount));
            Ogre::Pass* pass = clone->getTechnique(0)->getPass(0);
            pass->getTextureUnitState(0)->setTextureName(mInputs[0]->getName());
            clone->load();
            if (clone->getNumSupportedTechniques() == 0) {
                mErrors.messageLogged("no supported technique: " + clone->getUnsupportedTechniquesExplanation(),
                                      Ogre::LML_CRITICAL, false, "", mSkip);
            } else {
                if (inspect) inspect(clone->getBestTechnique()->getPass(0));
                Ogre::GpuProgramParametersSharedPtr params =
                    clone->getBestTechnique()->getPass(0)->getFragmentProgramParameters();
                for (const auto& u : uniforms) {
                    if (params->_findNamedConstantDefinition(u.first)) params->setNamedConstant(u.first, u.second);
                }
                out = drawAndRead(clone->getName());
            }
            Ogre::MaterialManager::getSingleton().remove(clone);
        }, "filterMediaRender");
        if (errors) *errors = mErrors.take();
        return out;
    }

private:
    int mCount = 0;
    bool mSkip = false;
};

}  // namespace MorvaneTest
