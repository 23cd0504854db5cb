#pragma once
// Draws one transition material of media/materials between two test
// pictures through the real engine, as the transition service draws it: a
// full-frame quad with an MVNOgreMaterialTransition whose units 0 and 1 name
// two uploaded pictures. Independent of the service, so that the library is
// tested on its own. The result comes back as R,G,B,A bytes, top row first.
#include <gtest/gtest.h>

#include <Ogre.h>

#include <memory>
#include <string>
#include <vector>

#include "FilterMediaHarness.h"
#include "scene/MVNOgreMaterialTransition.h"
#include "scene/MVNOgreSceneManager.h"

namespace MorvaneTest {

class TransitionMediaHarness {
public:
    TransitionMediaHarness(int w, int h) : mWidth(w), mHeight(h) {
        onRenderThread([this]() {
            Ogre::LogManager::getSingleton().getDefaultLog()->addListener(&mErrors);
            mScene = new Morvane::MVNOgreSceneManager(mWidth, mHeight, "TransitionMediaRtt", "");
            for (int i = 0; i < 2; ++i) {
                mInputs[i] = Ogre::TextureManager::getSingleton().createManual(
                    "TransitionMediaInput" + std::to_string(i), Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, mWidth,
                    mHeight, 0, Ogre::PF_BYTE_RGBA, Ogre::TU_DYNAMIC_WRITE_ONLY);
            }
        });
    }
    ~TransitionMediaHarness() {
        onRenderThread([this]() {
            clearQuad();
            for (auto& input : mInputs) {
                Ogre::TextureManager::getSingleton().remove(input);
                input.reset();
            }
            delete mScene;
            Ogre::LogManager::getSingleton().getDefaultLog()->removeListener(&mErrors);
        });
    }

    // Clip A ("from") and clip B ("to"), both of the harness's size.
    void setPictures(const Image& a, const Image& b) {
        onRenderThread([&]() {
            const Image* images[] = {&a, &b};
            for (int i = 0; i < 2; ++i) {
                Ogre::PixelBox box(mWidth, mHeight, 1, Ogre::PF_BYTE_RGBA,
                                   const_cast<uint8_t*>(images[i]->rgba.data()));
                mInputs[i]->getBuffer()->blitFromMemory(box);
            }
        });
    }

    // Draws the transition `material` at `progress` with "ratio" set as the
    // service sets it, then `uniforms`. Empty when the material is unknown;
    // errors gets the engine's error lines.
    Image render(const std::string& material, float progress, const Uniforms& uniforms = {},
                 std::vector<std::string>* errors = nullptr) {
        Image out{mWidth, mHeight, {}};
        onRenderThread(
            [&]() {
                mErrors.take();
                if (!Ogre::MaterialManager::getSingleton().resourceExists(material, Ogre::RGN_DEFAULT)) return;
                auto transition = std::make_unique<Morvane::MVNOgreMaterialTransition>(
                    material, mWidth, mHeight, mWidth, mHeight, mInputs[0]->getName(), mInputs[1]->getName());
                Ogre::MaterialPtr clone = transition->getMaterial();
                if (!clone || clone->getNumSupportedTechniques() == 0) return;
                transition->process(progress);
                transition->setUniformFloat("ratio", float(mWidth) / float(mHeight));
                for (const auto& u : uniforms) transition->setUniformFloat(u.first, u.second);
                drawQuad(clone->getName());
                out.rgba.resize(static_cast<size_t>(mWidth) * mHeight * 4);
                Ogre::TexturePtr rtt =
                    Ogre::TextureManager::getSingleton().getByName(mScene->getRttName(), Ogre::RGN_DEFAULT);
                mScene->getRenderTarget()->update(true);
                Ogre::PixelBox box(mWidth, mHeight, 1, Ogre::PF_BYTE_RGBA, out.rgba.data());
                rtt->getBuffer()->blitToMemory(box);
                clearQuad();
            },
            "transitionMediaRender");
        if (errors) *errors = mErrors.take();
        return out;
    }

private:
    // A quad of the frame's size, texture coordinates (0, 0) at the top left
    // as on the module's planes.
    void drawQuad(const std::string& material) {
        Ogre::SceneManager* sm = mScene->getSceneManager();
        mQuad = sm->createManualObject();
        float w = mWidth / 2.0f;
        float h = mHeight / 2.0f;
        mQuad->begin(material, Ogre::RenderOperation::OT_TRIANGLE_LIST, Ogre::RGN_DEFAULT);
        mQuad->position(-w, -h, 0);
        mQuad->textureCoord(0, 1);
        mQuad->position(w, -h, 0);
        mQuad->textureCoord(1, 1);
        mQuad->position(w, h, 0);
        mQuad->textureCoord(1, 0);
        mQuad->position(-w, h, 0);
        mQuad->textureCoord(0, 0);
        mQuad->quad(0, 1, 2, 3);
        mQuad->end();
        mNode = sm->getRootSceneNode()->createChildSceneNode();
        mNode->attachObject(mQuad);
    }
    void clearQuad() {
        if (!mQuad) return;
        Ogre::SceneManager* sm = mScene->getSceneManager();
        sm->destroySceneNode(mNode);
        sm->destroyManualObject(mQuad);
        mQuad = nullptr;
        mNode = nullptr;
    }

    int mWidth;
    int mHeight;
    Morvane::MVNOgreSceneManager* mScene = nullptr;
    Ogre::TexturePtr mInputs[2];
    Ogre::ManualObject* mQuad = nullptr;
    Ogre::SceneNode* mNode = nullptr;
    EngineErrorLog mErrors;
};

}  // namespace MorvaneTest
