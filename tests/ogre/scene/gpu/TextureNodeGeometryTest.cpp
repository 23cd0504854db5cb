// A texture node moves its quad without building anything, builds a new
// mesh only for a new size (keeping the rotation), keeps its draw slot and
// place across z-order changes, and leaves nothing behind in the engine. A
// released render target comes back from the pool under its old name with
// GPU storage of the new size, which the engine really draws into.
#include <gtest/gtest.h>

#include <memory>

#include "LogCapture.h"
#include "scene/MVNOgreMaterialNormal.h"
#include "scene/MVNOgreRenderTexture.h"
#include "scene/MVNOgreResourceManager.h"
#include "scene/MVNOgreSceneNodePlane.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeRect2d.h"
#include "scene/MVNOgreTextureNodeThread.h"
#include "QuadTestSupport.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

using Plane = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;

// What the engine holds of one plane, read on the render thread.
struct PlaneState {
    MVNOgreSceneNodeImpl* sceneNode = nullptr;
    std::string meshName;
    bool meshExists = false;
    float meshWidth = 0;
    float meshHeight = 0;
    Ogre::Vector3 position = Ogre::Vector3::ZERO;
    int queueGroup = -1;
    std::string materialName;
};

PlaneState inspect(Plane& plane) {
    PlaneState s;
    onRenderThread([&]() {
        MVNOgreTextureNodePlane* node = plane.getNode();
        if (!node || !node->getSceneNode()) return;
        auto* sceneNode = static_cast<MVNOgreSceneNodePlane*>(node->getSceneNode());
        s.sceneNode = sceneNode;
        s.meshName = sceneNode->getMeshName();
        auto& meshes = Ogre::MeshManager::getSingleton();
        s.meshExists = meshes.resourceExists(s.meshName, Ogre::RGN_DEFAULT);
        if (s.meshExists) {
            // Bounds are padded on each side by the manager's factor.
            Ogre::Vector3 size = meshes.getByName(s.meshName, Ogre::RGN_DEFAULT)->getBounds().getSize() /
                                 (1 + 2 * meshes.getBoundsPaddingFactor());
            s.meshWidth = size.x;
            s.meshHeight = size.y;
        }
        s.position = sceneNode->getNode()->getPosition();
        Ogre::SceneManager* scene = Ogre::Root::getSingleton().getSceneManager("MorvaneScene");
        Ogre::Entity* entity = scene->getEntity(sceneNode->getEntityName());
        s.queueGroup = entity->getRenderQueueGroup();
        s.materialName = entity->getSubEntity(0)->getMaterialName();
    });
    return s;
}

bool meshExists(const std::string& name) {
    bool exists = false;
    onRenderThread([&]() { exists = Ogre::MeshManager::getSingleton().resourceExists(name, Ogre::RGN_DEFAULT); });
    return exists;
}

using TextureNodeGeometry = QuadEngineTest;

TEST_F(TextureNodeGeometry, MovingKeepsTheMeshAndANewSizeBuildsOneThatKeepsTheRotation) {
    BgraPicture picture(64, 32, kGreen);
    picture.paint(0, 0, 8, 8, kRed);  // top-left marker
    Plane plane(std::string(), 64, 32, W, H, 0, std::string());
    plane.updateTexture(picture.data(), 64, 32);
    plane.setGeometry(MVNRect(10, 10, 64, 32));
    PlaneState first = inspect(plane);
    ASSERT_NE(first.sceneNode, nullptr);

    plane.setGeometry(MVNRect(100, 60, 64, 32));
    PlaneState moved = inspect(plane);
    EXPECT_EQ(moved.sceneNode, first.sceneNode);
    EXPECT_EQ(moved.meshName, first.meshName);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.countWrong(100, 60, 64, 32, kGreen, kMagenta), 8 * 8);
        EXPECT_EQ(out.at(100, 91), kRed);
    }

    plane.setRotation(90);
    plane.setGeometry(MVNRect(100, 60, 128, 64));  // twice the size, same bottom-left
    PlaneState resized = inspect(plane);
    EXPECT_NE(resized.meshName, first.meshName);
    EXPECT_FALSE(meshExists(first.meshName));
    EXPECT_FLOAT_EQ(resized.meshWidth, 128);
    EXPECT_FLOAT_EQ(resized.meshHeight, 64);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("resized_rotated");
    // Turned about the centre (164, 92): 64 wide, 128 high, the marker
    // (now 16 x 16, its inner edge softened by the magnification) at the
    // bottom left.
    EXPECT_EQ(out.countOutside(132, 28, 64, 128, kMagenta, false), 0);
    EXPECT_EQ(out.countInside(132, 28, 64, 128, kMagenta, true), 0);
    EXPECT_EQ(out.at(133, 29), kRed);
    EXPECT_EQ(out.at(145, 41), kRed);
    EXPECT_EQ(out.at(150, 46), kGreen);
    EXPECT_EQ(out.at(194, 154), kGreen);
}

TEST_F(TextureNodeGeometry, DeepPlaneIsBuiltSmallerInWorldUnits) {
    // At zOrder 2500 the quad stands at depth 5000, half way to the camera,
    // so the mesh is half the picture (at zOrder 0 it is the picture's size,
    // as the test above shows).
    Plane deep(std::string(), 100, 60, W, H, 2500, std::string());
    PlaneState d = inspect(deep);
    EXPECT_FLOAT_EQ(d.meshWidth, 50);
    EXPECT_FLOAT_EQ(d.meshHeight, 30);
}

TEST_F(TextureNodeGeometry, ZOrderChangeKeepsPlaceAndMaterialUntilTheNextGeometry) {
    Plane plane(std::string(), 64, 32, W, H, 2, std::string());
    plane.setGeometry(MVNRect(40, 20, 64, 32));
    PlaneState before = inspect(plane);
    plane.setZOrder(9);
    PlaneState after = inspect(plane);
    EXPECT_EQ(after.position, before.position);
    EXPECT_EQ(after.materialName, before.materialName);
    EXPECT_EQ(after.meshName, before.meshName);  // same name, mesh rebuilt at the new depth
    EXPECT_TRUE(after.meshExists);
    EXPECT_EQ(after.queueGroup, 50);
}

TEST_F(TextureNodeGeometry, DestroyingANodeTakesItsMeshMaterialAndTextureOutOfTheEngine) {
    size_t meshes = 0, materials = 0, textures = 0;
    auto count = [&]() {
        onRenderThread([&]() {
            meshes = resourceCount(Ogre::MeshManager::getSingleton());
            materials = resourceCount(Ogre::MaterialManager::getSingleton());
            textures = resourceCount(Ogre::TextureManager::getSingleton());
        });
    };
    count();
    size_t meshes0 = meshes, materials0 = materials, textures0 = textures;
    {
        auto plane = std::make_unique<Plane>(std::string(), 64, 32, W, H, 0, std::string());
        plane->setGeometry(MVNRect(0, 0, 100, 50));
        count();
        EXPECT_EQ(meshes, meshes0 + 1);
        EXPECT_EQ(materials, materials0 + 1);
        EXPECT_EQ(textures, textures0 + 1);
    }
    count();
    EXPECT_EQ(meshes, meshes0);
    EXPECT_EQ(materials, materials0);
    EXPECT_EQ(textures, textures0);
}

TEST_F(TextureNodeGeometry, NodeOnANamedTextureShowsItAndIgnoresUploads) {
    // A texture that another service would own, filled red.
    onRenderThread([]() {
        Ogre::TexturePtr t = Ogre::TextureManager::getSingleton().createManual(
            "ForeignPicture", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, 32, 32, 0, Ogre::PF_BYTE_BGRA);
        BgraPicture red(32, 32, kRed);
        t->getBuffer()->blitFromMemory(Ogre::PixelBox(32, 32, 1, Ogre::PF_BYTE_BGRA, red.data()));
    });
    {
        Plane plane(std::string("ForeignPicture"), 32, 32, W, H, 0, std::string());
        plane.setGeometry(MVNRect(20, 20, 32, 32));
        BgraPicture green(32, 32, kGreen);
        plane.updateTexture(green.data(), 32, 32);
        std::string textureName;
        onRenderThread([&]() {
            textureName = static_cast<MVNOgreMaterialNormal*>(plane.getNode()->getMaterial())->getTextureName();
        });
        EXPECT_EQ(textureName, "ForeignPicture");
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.countWrong(20, 20, 32, 32, kRed, kMagenta), 0);
    }
    // The texture belongs to its maker: the node leaves it.
    bool stillThere = false;
    onRenderThread([&]() {
        stillThere = Ogre::TextureManager::getSingleton().resourceExists("ForeignPicture", Ogre::RGN_DEFAULT);
        Ogre::TextureManager::getSingleton().remove("ForeignPicture", Ogre::RGN_DEFAULT);
    });
    EXPECT_TRUE(stillThere);
}

TEST_F(TextureNodeGeometry, UnknownMaterialScriptLeavesAnEmptyNodeThatAcceptsEveryCall) {
    LogCapture log;
    Plane plane(std::string(), 64, 32, W, H, 0, std::string("Morvane/NoSuchMaterial"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNOgreMaterialManager", "not find material Morvane/NoSuchMaterial"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "MVNOgreMaterialFilter", "not find material Morvane/NoSuchMaterial"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "MVNOgreTextureNodePlane", "MaterialImpl create error"));
    ASSERT_NE(plane.getNode(), nullptr);
    EXPECT_EQ(plane.getNode()->getMaterial(), nullptr);
    EXPECT_EQ(plane.getNode()->getSceneNode(), nullptr);
    BgraPicture picture(64, 32, kGreen);
    plane.updateTexture(picture.data(), 64, 32);
    plane.setGeometry(MVNRect(0, 0, 64, 32));
    plane.setRotation(90);
    plane.setZOrder(3);
    plane.setVisible(false);
    plane.setUniformFloat("ufmOpacity", 0.5f, true);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(10, 10), kMagenta);
}

struct CornerCase {
    const char* label;
    MVNRect rect;
    int x, y, w, h;  // the pixels it covers
};

class ScreenRectangle : public QuadEngineTest, public ::testing::WithParamInterface<CornerCase> {};

TEST_P(ScreenRectangle, CoversTheCanvasRectangleItIsGiven) {
    const CornerCase& c = GetParam();
    MVNOgreTextureNodeThread<MVNOgreTextureNodeRect2d> rect(std::string(), 16, 16, W, H, 0, std::string());
    BgraPicture picture(16, 16, kGreen);
    rect.updateTexture(picture.data(), 16, 16);
    rect.setGeometry(c.rect);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.countWrong(c.x, c.y, c.w, c.h, kGreen, kMagenta), 0);
}

INSTANTIATE_TEST_SUITE_P(Corners, ScreenRectangle,
                         ::testing::Values(CornerCase{"WholeCanvas", MVNRect(0, 0, 320, 180), 0, 0, 320, 180},
                                           CornerCase{"Inner", MVNRect(32, 18, 64, 36), 32, 18, 64, 36}),
                         [](const ::testing::TestParamInfo<CornerCase>& info) { return info.param.label; });

// Clears `texture` to `c` through a viewport of the shared camera and reads
// it back: the size of the storage that was drawn and its first pixel.
struct Drawn {
    int width = 0;
    int height = 0;
    RGBA first{0, 0, 0, 0};
};

Drawn drawInto(const Ogre::TexturePtr& texture, RGBA c) {
    Drawn d;
    Ogre::RenderTarget* target = texture->getBuffer()->getRenderTarget();
    Ogre::Camera* camera = MVNOgreManager::getSingleton()->getOgreContext()->getCamera();
    Ogre::Viewport* viewport = target->addViewport(camera);
    viewport->setBackgroundColour(Ogre::ColourValue(c.r / 255.f, c.g / 255.f, c.b / 255.f, 1));
    viewport->setOverlaysEnabled(false);
    target->update();
    d.width = static_cast<int>(target->getWidth());
    d.height = static_cast<int>(target->getHeight());
    std::vector<uint8_t> bytes(static_cast<size_t>(d.width) * d.height * 4);
    texture->getBuffer()->blitToMemory(Ogre::PixelBox(d.width, d.height, 1, Ogre::PF_BYTE_BGRA, bytes.data()));
    d.first = RGBA{bytes[2], bytes[1], bytes[0], bytes[3]};
    target->removeAllViewports();
    return d;
}

using ResourceRecycling = QuadEngineTest;

TEST_F(ResourceRecycling, ReleasedRenderTargetComesBackResizedUnderItsName) {
    MVNOgreResourceManager* pool = MVNOgreResourceManager::getSingleton();
    LogCapture log;
    std::string firstName, secondName;
    Drawn small, large;
    Ogre::Texture* firstObject = nullptr;
    Ogre::Texture* secondObject = nullptr;
    onRenderThread([&]() {
        Ogre::TexturePtr rtt = pool->getRTT("tester", 64, 32);
        firstName = rtt->getName();
        firstObject = rtt.get();
        small = drawInto(rtt, kRed);
        pool->releaseRTT(firstName, rtt);
        rtt = pool->getRTT("tester", 200, 120);
        secondName = rtt->getName();
        secondObject = rtt.get();
        large = drawInto(rtt, kGreen);
        pool->releaseRTT(secondName, rtt);
    });
    EXPECT_EQ(firstName.rfind("RTT_", 0), 0u) << firstName;
    EXPECT_EQ(secondName, firstName);
    EXPECT_EQ(secondObject, firstObject);
    EXPECT_EQ(small.width, 64);
    EXPECT_EQ(small.height, 32);
    EXPECT_EQ(small.first, kRed);
    EXPECT_EQ(large.width, 200);
    EXPECT_EQ(large.height, 120);
    EXPECT_EQ(large.first, kGreen);
    EXPECT_EQ(log.count(MVNLogLevel::Debug, "Morvane::MVNOgreResourceManager", "tester reuse " + firstName), 1);

    // clean() takes the pooled target out of the engine.
    bool known = true;
    onRenderThread([&]() {
        pool->clean();
        known = Ogre::TextureManager::getSingleton().resourceExists(firstName, Ogre::RGN_DEFAULT);
    });
    EXPECT_FALSE(known);
    EXPECT_EQ(pool->idleRttCount(), 0u);
}

TEST_F(ResourceRecycling, DynamicTexturesAreRemovedNotPooled) {
    MVNOgreResourceManager* pool = MVNOgreResourceManager::getSingleton();
    std::string name;
    bool afterRelease = true;
    onRenderThread([&]() {
        Ogre::TexturePtr texture = pool->getTexture("tester", 32, 16);
        name = texture->getName();
        // A name the engine doesn't know: nothing happens.
        pool->releaseTexture("NoSuchTexture", texture);
        pool->releaseTexture(name, texture);
        afterRelease = Ogre::TextureManager::getSingleton().resourceExists(name, Ogre::RGN_DEFAULT);
    });
    EXPECT_EQ(name.rfind("texture_", 0), 0u) << name;
    EXPECT_FALSE(afterRelease);
    EXPECT_EQ(pool->idleTextureCount(), 0u);
}

}  // namespace
