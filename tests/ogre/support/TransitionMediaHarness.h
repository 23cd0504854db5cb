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

class TransitionMediaHarness : public MediaQuadScene {
public:
    TransitionMediaHarness(int w, int h) : MediaQuadScene(w, h, "TransitionMedia", 2) {}

    // Clip A ("from") and clip B ("to"), both of the harness's size.
    void setPictures(const Image& a, const Image& b) {
        upload(0, a);
        upload(1, b);
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
                out = drawAndRead(clone->getName());
            },
            "transitionMediaRender");
        if (errors) *errors = mErrors.take();
        return out;
    }
};

}  // namespace MorvaneTest
