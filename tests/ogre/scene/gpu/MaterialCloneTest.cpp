// Every user of a material script draws with a private clone, so uniforms of
// one clip touch no other; generated materials make their programs once.
// The clones' uniforms are checked where they show: in read-back pixels.
#include <gtest/gtest.h>

#include <memory>

#include "LogCapture.h"
#include "scene/MVNOgreMaterialManager.h"
#include "scene/MVNOgreMaterialTransition.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"
#include "QuadTestSupport.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

const char* const kManagerTag = "Morvane::MVNOgreMaterialManager";
const char* const kOpacity = "Morvane/QuadOpacity";

using Plane = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;
using MaterialClones = QuadEngineTest;

// A plane of w x h in the middle of the shared scene drawn with `material`.
// Render thread only.
void showOnPlane(const Ogre::MaterialPtr& material, float w, float h) {
    Ogre::SceneManager* scene = Ogre::Root::getSingleton().getSceneManager("MorvaneScene");
    Ogre::MeshManager::getSingleton().createPlane("TestPlaneMesh", Ogre::RGN_DEFAULT,
                                                  Ogre::Plane(Ogre::Vector3::UNIT_Z, 0), w, h);
    Ogre::Entity* e = scene->createEntity("TestPlaneEntity", "TestPlaneMesh");
    e->setMaterial(material);
    scene->getRootSceneNode()->createChildSceneNode("TestPlaneNode")->attachObject(e);
}
void removePlane() {
    Ogre::SceneManager* scene = Ogre::Root::getSingleton().getSceneManager("MorvaneScene");
    scene->destroySceneNode("TestPlaneNode");
    scene->destroyEntity("TestPlaneEntity");
    Ogre::MeshManager::getSingleton().remove("TestPlaneMesh", Ogre::RGN_DEFAULT);
}

// An unknown script gives null with its name and counts nothing.
TEST_F(MaterialClones, EachRequestGetsADistinctCloneAndTheSourceIsCounted) {
    MVNOgreMaterialManager* manager = MVNOgreMaterialManager::getSingleton();
    int before = manager->getCloneCount(kOpacity);
    LogCapture log;
    std::string first, second;
    bool bothExist = false, missingIsNull = false;
    onRenderThread([&]() {
        first = manager->getByName(kOpacity)->getName();
        second = manager->getByName(kOpacity)->getName();
        auto& materials = Ogre::MaterialManager::getSingleton();
        bothExist = materials.resourceExists(first, Ogre::RGN_DEFAULT) &&
                    materials.resourceExists(second, Ogre::RGN_DEFAULT);
        materials.remove(first, Ogre::RGN_DEFAULT);
        materials.remove(second, Ogre::RGN_DEFAULT);
        missingIsNull = !manager->getByName("Morvane/Missing");
    });
    EXPECT_NE(first, second);
    EXPECT_NE(first, kOpacity);
    EXPECT_TRUE(bothExist);
    EXPECT_EQ(manager->getCloneCount(kOpacity), before + 2);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kManagerTag, "get clone " + second + " from " + kOpacity + ", count:1"));
    EXPECT_TRUE(missingIsNull);
    EXPECT_EQ(log.count(MVNLogLevel::Error, kManagerTag, "not find material Morvane/Missing"), 1);
    EXPECT_EQ(manager->getCloneCount("Morvane/Missing"), 0);
}

// Two quads of the same script side by side: a uniform set on one shows on
// that one only; a uniform its program lacks is skipped with a debug line.
TEST_F(MaterialClones, UniformsOfTwoClipsOfOneScriptStayApart) {
    BgraPicture green(32, 32, kGreen);
    Plane left(std::string(), 32, 32, W, H, 0, std::string(kOpacity));
    Plane right(std::string(), 32, 32, W, H, 0, std::string(kOpacity));
    for (Plane* p : {&left, &right}) p->updateTexture(green.data(), 32, 32);
    left.setGeometry(MVNRect(40, 40, 32, 32));
    right.setGeometry(MVNRect(200, 40, 32, 32));
    left.setUniformFloat("ufmOpacity", 0.25f, true);
    LogCapture log;
    right.setUniformFloat("ufmNoSuchUniform", 3.0f, true);
    EXPECT_EQ(log.count(MVNLogLevel::Debug, "MVNOgreTextureNodePlane", "setUniformFloat exception"), 1);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        out.save("uniforms_apart");
        // 25% green over magenta.
        EXPECT_LE(maxColourDifference(out.at(50, 50), RGBA{191, 64, 191, 255}), 2) << out.at(50, 50);
        EXPECT_EQ(out.at(210, 50), kGreen);
    }
    // From the render thread itself the call goes straight to the node.
    onRenderThread([&]() { right.setUniformFloat("ufmOpacity", 0.0f, false); });
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(210, 50), kMagenta);
}

TEST_F(MaterialClones, GeneratedMaterialIsMadeOnceAndClonedAfterwards) {
    MVNOgreMaterialManager* manager = MVNOgreMaterialManager::getSingleton();
    LogCapture log;
    std::string first, second;
    bool programsExist = false;
    onRenderThread([&]() {
        first = manager->genByName("MorvaneGrid")->getName();
        second = manager->genByName("MorvaneGrid")->getName();
        auto& programs = Ogre::HighLevelGpuProgramManager::getSingleton();
        programsExist = programs.resourceExists("MorvaneGrid_VP", Ogre::RGN_DEFAULT) &&
                        programs.resourceExists("MorvaneGrid_FP", Ogre::RGN_DEFAULT);
    });
    EXPECT_NE(first, second);
    EXPECT_TRUE(programsExist);
    EXPECT_EQ(log.count(MVNLogLevel::Debug, "Morvane::MVNOgreMaterialGenerator", "genMaterial MorvaneGrid "), 1);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kManagerTag, "gen and clone MorvaneGrid -> " + first));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kManagerTag, "gen clone MorvaneGrid -> " + second));

    // removeAll takes the template out of the engine, not the clones.
    bool templateGone = false, clonesStay = false;
    onRenderThread([&]() {
        manager->removeAll();
        auto& materials = Ogre::MaterialManager::getSingleton();
        templateGone = !materials.resourceExists("MorvaneGrid", Ogre::RGN_DEFAULT);
        clonesStay = materials.resourceExists(first, Ogre::RGN_DEFAULT) &&
                     materials.resourceExists(second, Ogre::RGN_DEFAULT);
        materials.remove(first, Ogre::RGN_DEFAULT);
        materials.remove(second, Ogre::RGN_DEFAULT);
    });
    EXPECT_TRUE(templateGone);
    EXPECT_TRUE(clonesStay);
    EXPECT_FALSE(manager->hasTemplate("MorvaneGrid"));
}

TEST_F(MaterialClones, GridMaterialDrawsBlueLinesOverThePicture) {
    // The grid's clone on a full-frame quad of a green picture.
    std::string materialName;
    onRenderThread([&]() {
        Ogre::MaterialPtr grid = MVNOgreMaterialManager::getSingleton()->genByName("MorvaneGridDraw");
        Ogre::Pass* pass = grid->getTechnique(0)->getPass(0);
        Ogre::TexturePtr t = Ogre::TextureManager::getSingleton().createManual(
            "GridPicture", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, 4, 4, 0, Ogre::PF_BYTE_BGRA);
        std::vector<uint8_t> green(4 * 4 * 4, 0);
        for (size_t i = 0; i < green.size(); i += 4) green[i + 1] = green[i + 3] = 255;
        t->getBuffer()->blitFromMemory(Ogre::PixelBox(4, 4, 1, Ogre::PF_BYTE_BGRA, green.data()));
        pass->createTextureUnitState("GridPicture");
        pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
        pass->setDepthWriteEnabled(false);
        showOnPlane(grid, W, H);
        materialName = grid->getName();
    });
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("grid_material");
    // Whole rows of line blue where the clip-space y (before the division
    // by w) in hundredths is a multiple of 50; the picture at alpha 0.2 over
    // magenta everywhere else.
    const RGBA lineBlue{0, 51, 255, 255};
    const RGBA faint{204, 51, 204, 255};
    int lineRows = 0, faintRows = 0, mixedRows = 0;
    for (int y = 0; y < H; ++y) {
        int blue = 0, picture = 0;
        for (int x = 0; x < W; ++x) {
            if (maxColourDifference(out.at(x, y), lineBlue) <= 1) ++blue;
            if (maxColourDifference(out.at(x, y), faint) <= 2) ++picture;
        }
        if (blue == W) {
            ++lineRows;
        } else if (picture == W) {
            ++faintRows;
        } else {
            ++mixedRows;
        }
    }
    EXPECT_GT(lineRows, 2);
    EXPECT_GT(faintRows, lineRows);
    EXPECT_EQ(mixedRows, 0);
    onRenderThread([&]() {
        removePlane();
        Ogre::MaterialManager::getSingleton().remove(materialName, Ogre::RGN_DEFAULT);
        Ogre::TextureManager::getSingleton().remove("GridPicture", Ogre::RGN_DEFAULT);
    });
}

TEST_F(MaterialClones, TransitionMaterialMixesItsTwoPicturesByProgress) {
    std::unique_ptr<MVNOgreMaterialTransition> mix;
    onRenderThread([&]() {
        mix.reset(new MVNOgreMaterialTransition("Morvane/QuadMix", 16, 16, 16, 16, "", ""));
        BgraPicture red(16, 16, kRed), green(16, 16, kGreen);
        mix->updateTextureA(red.data(), 16, 16);
        mix->updateTextureB(green.data(), 16, 16);
        mix->process(0.25f);
        mix->setUniformFloat("ufmNotInTheProgram", 1.0f);  // skipped without a word
        showOnPlane(mix->getMaterial(), 64, 64);
    });
    ASSERT_TRUE(mix->getMaterial());
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_LE(maxColourDifference(out.at(W / 2, H / 2), RGBA{191, 64, 0, 255}), 2) << out.at(W / 2, H / 2);
    EXPECT_EQ(out.at(10, 10), kMagenta);

    // A script without "progress" can't take one: that throws.
    bool threw = false;
    onRenderThread([&]() {
        MVNOgreMaterialTransition noProgress(kOpacity, 16, 16, 16, 16, "", "");
        try {
            noProgress.process(0.5f);
        } catch (const std::exception&) {
            threw = true;
        }
        removePlane();
        mix.reset();
    });
    EXPECT_TRUE(threw);
}

}  // namespace
