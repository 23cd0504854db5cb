// The two back-ends that no service builds yet, drawn on their own: the
// plain material form and the compositor form with its test material. Both
// must mix their two pictures by progress where they stand.
#include <gtest/gtest.h>

#include "QuadTestSupport.h"
#include "transitions/MVNOgreTransitionCompositor.h"
#include "transitions/MVNOgreTransitionMaterial.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

class TransitionBackends : public QuadEngineTest {};

TEST_F(TransitionBackends, MaterialFormMixesItsInputsOnAQuad) {
    MVNOgreTransitionMaterial node("Morvane/Material/MorvaneTest", 64, 64, 64, 64, 1, "", "");
    ASSERT_EQ(node.init(), 0);
    BgraPicture a(64, 64, kRed), b(64, 64, kBlue);
    node.updateTextureA(a.data(), 64, 64);
    node.updateTextureB(b.data(), 64, 64);
    node.setGeometry(MVNRect(20, 20, 64, 64));
    node.process(0.25f);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_LE(maxColourDifference(out.at(52, 52), RGBA{191, 0, 64, 255}), 2) << out.at(52, 52);
        EXPECT_EQ(out.at(10, 10), kMagenta);
        EXPECT_EQ(out.at(90, 52), kMagenta);
    }
    node.setVisible(false);
    Composition hidden(W, H);
    ASSERT_TRUE(hidden.ok());
    EXPECT_EQ(hidden.at(52, 52), kMagenta);
    node.release();
}

TEST_F(TransitionBackends, CompositorFormMixesItsPicturesAtTheCentre) {
    MVNOgreTransitionCompositor node("glslCompositor", 64, 64);
    ASSERT_EQ(node.init(), 0);
    BgraPicture a(64, 64, kRed), b(64, 64, kBlue);
    node.updateTextureA(a.data());
    node.updateTextureB(b.data());
    node.process(0.75f);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_LE(maxColourDifference(out.at(W / 2, H / 2), RGBA{64, 0, 191, 255}), 2) << out.at(W / 2, H / 2);
    EXPECT_EQ(out.at(5, 5), kMagenta);
    node.release();
}

TEST_F(TransitionBackends, CompositorWithoutSuchCompositorFailsToInit) {
    MVNOgreTransitionCompositor node("noSuchCompositor", 64, 64);
    EXPECT_EQ(node.init(), -1);
}

}  // namespace
