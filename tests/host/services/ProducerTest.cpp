// A producer's frame path: its filters in chain order, the chain properties
// the host sets on them, the render texture it drives, transitions and
// groups.
#include <gtest/gtest.h>

#include <memory>

#include "FakeServices.h"
#include "LogCapture.h"
#include "timeline/MVNFactory.h"
#include "services/MVNGroup.h"
#include "timeline/MVNRepository.h"

using namespace Morvane;
using MorvaneTest::FakeProducer;
using MorvaneTest::LogCapture;
using MorvaneTest::RecordingRenderTexture;
using MorvaneTest::RecordingTransition;
using MorvaneTest::StampFilter;

namespace {

class ProducerChain : public ::testing::Test {
protected:
    MVNProfile profile{"hd_720_25p"};
    FakeProducer producer{profile};
    StampFilter f1{profile, 1};
    StampFilter f2{profile, 2};
    StampFilter f3{profile, 3};

    int imageId(int position) {
        MVNFrame* frame = nullptr;
        EXPECT_EQ(producer.getImage(position, &frame), 0);
        if (frame == nullptr) return -1;
        int id = frame->id();
        MVNFrame::pushBackPool(frame);
        return id;
    }
};

}  // namespace

TEST_F(ProducerChain, GetImageRunsFiltersInAttachOrder) {
    EXPECT_EQ(imageId(5), 5);
    ASSERT_EQ(producer.attach(&f1), 0);
    ASSERT_EQ(producer.attach(&f2), 0);
    ASSERT_EQ(producer.attach(&f3), 0);
    EXPECT_EQ(imageId(5), 5123);
    producer.detach(&f2);
    EXPECT_EQ(imageId(5), 513);
    EXPECT_EQ(producer.hooks, (std::vector<std::string>{"attach", "attach", "attach", "detach"}));
}

TEST_F(ProducerChain, FilterDeletedWhileAttachedLeavesTheChain) {
    auto* doomed = new StampFilter(profile, 7);
    producer.attach(&f1);
    producer.attach(doomed);
    producer.attach(&f3);
    delete doomed;
    EXPECT_EQ(producer.filterCount(), 2);
    EXPECT_EQ(imageId(5), 513);
    EXPECT_EQ(f3.getInt32("_inputType", 0), MVN_INPUT_RTT);
    EXPECT_EQ(producer.hooks.back(), "detach");
}

TEST_F(ProducerChain, FailingFilterIsLoggedAndItsInputGoesOn) {
    producer.genStringId("clip");
    f2.genStringId("stamp");
    producer.attach(&f1);
    producer.attach(&f2);
    producer.attach(&f3);
    f2.setBoolean("fail", true);
    LogCapture log;
    EXPECT_EQ(imageId(5), 513);
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, "Morvane::MVNProducer",
                        producer.getStringId() + " filter " + f2.getStringId() + " failed at 5, passing its input on"));
}

TEST_F(ProducerChain, CpuFiltersRunBeforeGpuFilters) {
    StampFilter cpu(profile, 9, MVN_FILTER_USE_CPU);
    producer.attach(&f1);
    producer.attach(&cpu);
    EXPECT_EQ(imageId(4), 491);
    std::vector<std::string> ids;
    f1.genStringId("gpu");
    producer.getVideoFilters(ids);
    EXPECT_EQ(ids, (std::vector<std::string>{f1.getStringId()})) << "the CPU filter is no video filter of the chain";
}

TEST_F(ProducerChain, ChainPropertiesFollowTheOrder) {
    producer.attach(&f1);
    EXPECT_EQ(f1.connectedTo, &producer);
    EXPECT_EQ(f1.connectedProducer(), &producer);
    EXPECT_EQ(f1.inputAtConnect, MVN_INPUT_FRAME);
    EXPECT_EQ(f1.outputAtConnect, MVN_OUTPUT_SCENE);
    // A configured filter names its render texture when it draws into one.
    f1.block();
    f1.setString("_outputRtt", "rttOne");
    f1.unblock();
    f1.changes.clear();

    producer.attach(&f2);
    EXPECT_EQ(f1.getInt32("_outputType", 0), MVN_OUTPUT_RTT);
    EXPECT_EQ(f1.changes, (std::vector<std::string>{"_outputType"})) << "told, so that it rebuilds itself";
    EXPECT_EQ(f2.inputAtConnect, MVN_INPUT_RTT);
    EXPECT_EQ(f2.outputAtConnect, MVN_OUTPUT_SCENE);
    EXPECT_EQ(f2.getString("_inputRtt", ""), "rttOne");

    f2.changes.clear();
    producer.detach(&f1);
    EXPECT_EQ(f1.connectedService(), nullptr);
    EXPECT_EQ(f1.disconnects, 1);
    EXPECT_EQ(f2.getInt32("_inputType", 0), MVN_INPUT_FRAME);
    EXPECT_EQ(f2.getString("_inputRtt", "x"), "");
    EXPECT_EQ(f2.changes, (std::vector<std::string>{"_inputType"}));
}

TEST_F(ProducerChain, AttachRefusesNullAndAFilterAttachedElsewhere) {
    producer.genStringId("clip");
    FakeProducer other(profile);
    other.attach(&f1);
    LogCapture log;
    EXPECT_EQ(producer.attach(nullptr), -1);
    EXPECT_EQ(producer.attach(&f1), -1);
    EXPECT_EQ(producer.detach(&f2), -1);
    EXPECT_EQ(log.countContaining("attach failed"), 2);
    EXPECT_EQ(log.countContaining("detach failed"), 1);
    EXPECT_EQ(f1.connectedTo, &other);
}

TEST_F(ProducerChain, GeometryAnimationAndRotationReachTheFilters) {
    producer.attach(&f1);
    producer.setGeometry(MVNRect(10, 20, 30, 40));
    EXPECT_TRUE(f1.geometry.equals(MVNRect(10, 20, 30, 40)));
    producer.setAnimation(3);
    producer.setRotation(90);
    producer.setInt32("zOrder", 6);
    EXPECT_EQ(f1.getInt32("_zOrder", 0), 6);
    EXPECT_EQ(producer.hooks, (std::vector<std::string>{"attach", "geometry", "anim 3", "rotation 90"}));
}

TEST(Producer, TimingLivesInProperties) {
    FakeProducer p{MVNProfile("hd_720_25p")};
    p.setLength(100);
    EXPECT_EQ(p.getOut(), 99) << "out follows the length until it is set";
    p.setInAndOut(10, 19);
    EXPECT_EQ(p.getPlaytime(), 10);
    p.setOut(5);
    EXPECT_EQ(p.getPlaytime(), 0) << "never negative";
    p.setDefaultGeometry();
    EXPECT_TRUE(p.getGeometry().equals(MVNRect(0, 0, 1280, 720)));
    p.setDefaultGeometryPIP();
    EXPECT_TRUE(p.getGeometry().equals(MVNRect(576, 324, 640, 360)));
}

// The producer's render texture, built through the registered
// "ogreRenderTexture" factory, follows the producer.
class ProducerTexture : public ::testing::Test {
protected:
    void SetUp() override {
        MVNRepository::getSingleton()->registerRenderTexture(
            "ogreRenderTexture", [this](const MVNProfile*, const MVNProperties* q) -> MVNRenderTexture* {
                calls.push_back("factory " + std::to_string(q->getInt32("width", 0)) + "x" +
                                std::to_string(q->getInt32("height", 0)) + " z" + std::to_string(q->getInt32("zOrder", -1)) +
                                " group '" + q->getString("_groupName", "?") + "' resource '" +
                                q->getString("resource", "?") + "'" + (q->getBoolean("_hidden", false) ? " hidden" : ""));
                return new RecordingRenderTexture(&calls);
            });
    }
    void TearDown() override {
        producer.reset();
        MVNRepository::getSingleton()->registerRenderTexture(
            "ogreRenderTexture", [](const MVNProfile*, const MVNProperties*) -> MVNRenderTexture* { return nullptr; });
    }
    MVNProfile profile{"hd_720_25p"};
    std::vector<std::string> calls;
    std::unique_ptr<FakeProducer> producer = std::make_unique<FakeProducer>(profile);
};

TEST_F(ProducerTexture, BuiltWithTheProducersStateAndMovedByItsProperties) {
    producer->setInt32("render.width", 320);
    producer->setInt32("render.height", 180);
    producer->setInt32("zOrder", 2);
    producer->setRotation(45);
    producer->_createTextureNode("", true);
    ASSERT_NE(producer->renderTexture(), nullptr);
    // Asked hidden and shown once placed: a frame drawn in between by
    // another thread must not see the quad at the profile's size.
    EXPECT_EQ(calls, (std::vector<std::string>{"factory 320x180 z2 group '' resource '' hidden", "built",
                                               "geometry [0.000000:0.000000 1280.000000x720.000000]", "anim 0",
                                               "rotation 45", "visible"}));
    calls.clear();
    producer->setGeometry(MVNRect(1, 2, 3, 4));
    producer->setAnimation(5);
    producer->setInt32("zOrder", 7);
    producer->setVisible(false);
    EXPECT_EQ(calls, (std::vector<std::string>{"geometry [1.000000:2.000000 3.000000x4.000000]", "anim 5", "zOrder 7",
                                               "hidden"}));
}

TEST_F(ProducerTexture, PixelsAreUploadedAndAHiddenNodeComesBackOnTheNextFrame) {
    producer->setInt32("mark", 99);
    producer->_createTextureNode("", false);
    calls.clear();
    MVNFrame* frame = nullptr;
    ASSERT_EQ(producer->getImage(5, &frame), 0);
    MVNFrame::pushBackPool(frame);
    EXPECT_EQ(calls, (std::vector<std::string>{"upload 4x2 first 99"}));
    calls.clear();
    producer->resetRender(5);
    producer->resetRender(5);
    producer->setAnimation(1);
    ASSERT_EQ(producer->getImage(6, &frame), 0);
    MVNFrame::pushBackPool(frame);
    EXPECT_EQ(calls, (std::vector<std::string>{"hidden", "anim 1", "visible", "upload 4x2 first 99", "animate 6"}));
}

TEST_F(ProducerTexture, AFilteredClipHidesItsOwnQuadUntilTheFiltersGo) {
    producer->_createTextureNode("", false);
    StampFilter filter(profile, 1);
    struct BrokenFilter : StampFilter {
        using StampFilter::StampFilter;
        bool drawsPicture() override { return false; }
    } broken(profile, 2);
    ASSERT_EQ(producer->attach(&filter), 0);
    calls.clear();
    MVNFrame* frame = nullptr;
    for (int position : {5, 6}) {
        ASSERT_EQ(producer->getImage(position, &frame), 0);
        MVNFrame::pushBackPool(frame);
    }
    EXPECT_EQ(calls, (std::vector<std::string>{"hidden"})) << "the filter draws the picture; no upload, no second quad";
    calls.clear();
    ASSERT_EQ(producer->detach(&filter), 0);
    ASSERT_EQ(producer->attach(&broken), 0);
    ASSERT_EQ(producer->getImage(7, &frame), 0);
    MVNFrame::pushBackPool(frame);
    EXPECT_EQ(calls, (std::vector<std::string>{"visible", "upload 4x2 first 7"}))
        << "a filter that cannot draw leaves the clip drawn";
}

// A producer that tells what its picture is ("mark") isn't uploaded the same
// picture twice: not while it stays, but again when it changes, when a CPU
// filter made it, and on a texture built anew.
TEST_F(ProducerTexture, AKnownPictureGoesUpOncePerTexture) {
    struct KeyedProducer : FakeProducer {
        using FakeProducer::FakeProducer;
        uint64_t _pictureKey(int) override { return static_cast<uint64_t>(getInt32("mark", 7)); }
    };
    producer = std::make_unique<KeyedProducer>(profile);
    producer->_createTextureNode("", false);
    calls.clear();
    auto draw = [&](int position) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(producer->getImage(position, &frame), 0);
        MVNFrame::pushBackPool(frame);
    };
    draw(1);
    draw(2);
    producer->setInt32("mark", 8);
    draw(3);
    draw(4);
    EXPECT_EQ(calls, (std::vector<std::string>{"upload 4x2 first 7", "upload 4x2 first 8"}));
    calls.clear();
    StampFilter cpu(profile, 9, MVN_FILTER_USE_CPU);
    ASSERT_EQ(producer->attach(&cpu), 0);
    draw(5);
    draw(6);
    ASSERT_EQ(producer->detach(&cpu), 0);
    draw(7);
    draw(8);
    EXPECT_EQ(calls, (std::vector<std::string>{"upload 4x2 first 8", "upload 4x2 first 8", "upload 4x2 first 8"}))
        << "each filtered picture, then the plain one once";
    calls.clear();
    producer->_destroyTextureNode();
    producer->_createTextureNode("", false);
    calls.clear();
    draw(9);
    draw(10);
    EXPECT_EQ(calls, (std::vector<std::string>{"upload 4x2 first 8"}));
}

TEST_F(ProducerTexture, GroupMovesTheTextureIntoItsScene) {
    producer->_createTextureNode("pic.png", false);
    calls.clear();
    EXPECT_EQ(producer->connectGroup("GroupA"), 0);
    EXPECT_EQ(producer->getGroup(), "GroupA");
    EXPECT_EQ(calls, (std::vector<std::string>{"destroyed", "factory 1280x720 z0 group 'GroupA' resource 'pic.png'",
                                               "built"}));
    calls.clear();
    EXPECT_EQ(producer->connectGroup("GroupA"), 0);
    EXPECT_TRUE(calls.empty()) << "the same group again changes nothing";
    EXPECT_EQ(producer->disconnectGroup("Other"), -1);
    EXPECT_EQ(producer->disconnectGroup("GroupA"), 0);
    EXPECT_EQ(calls, (std::vector<std::string>{"destroyed", "factory 1280x720 z0 group '' resource 'pic.png'", "built"}));
}

TEST_F(ProducerTexture, RefusedTextureIsLoggedAndLeavesNone) {
    MVNRepository::getSingleton()->registerRenderTexture(
        "ogreRenderTexture", [](const MVNProfile*, const MVNProperties*) -> MVNRenderTexture* { return nullptr; });
    producer->genStringId("clip");
    LogCapture log;
    producer->_createTextureNode("", true);
    EXPECT_EQ(producer->renderTexture(), nullptr);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNProducer",
                        producer->getStringId() + " _createTextureNode failed, no render texture"));
}

TEST(Transition, DrivesBothClipsAtTheirOffsetsThenProcessImage) {
    MVNProfile profile("hd_720_25p");
    FakeProducer a(profile), b(profile);
    RecordingTransition t(profile);
    EXPECT_EQ(t.connect(&a, &a), -1);
    ASSERT_EQ(t.connect(&a, &b, 100, 0), 0);
    EXPECT_EQ(t.connects, 1);
    StampFilter onA(profile, 4);
    a.attach(&onA);
    MVNFrame* frame = nullptr;
    ASSERT_EQ(t.getImage(3, &frame), 0);
    ASSERT_EQ(t.seen.size(), 1u);
    EXPECT_EQ(t.seen[0].position, 3);
    EXPECT_EQ(t.seen[0].a, 1034) << "clip A at 100 + 3, through its own filter";
    EXPECT_EQ(t.seen[0].b, 3);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_BLANK) << "the picture is drawn with the scene";
    MVNFrame::pushBackPool(frame);
    t.setActive(true, false, 3, 0);
    EXPECT_TRUE(a.getBoolean("_active", false));
    EXPECT_TRUE(b.getBoolean("_active", false));
    t.disconnect();
    EXPECT_EQ(t.disconnects, 1);
    EXPECT_EQ(t.producerA(), nullptr);
}

TEST(Transition, DestroyedClipLeavesTheTransitionUnconnected) {
    MVNProfile profile("hd_720_25p");
    RecordingTransition t(profile);
    FakeProducer b(profile);
    {
        FakeProducer a(profile);
        t.connect(&a, &b);
    }
    EXPECT_EQ(t.producerA(), nullptr);
    EXPECT_EQ(t.disconnects, 1);
    MVNFrame* frame = nullptr;
    ASSERT_EQ(t.getImage(0, &frame), 0) << "an unconnected transition still answers";
    MVNFrame::pushBackPool(frame);
}

TEST(Group, ConnectsARegisteredProducerAsItsTimeline) {
    MVNProfile profile("hd_720_25p");
    struct CountingGroup : MVNGroup {
        using MVNGroup::MVNGroup;
        void _OnConnected() override { ++connected; }
        void _OnDisconnected() override { ++disconnected; }
        int connected = 0, disconnected = 0;
    };
    auto* group = new CountingGroup(profile);
    std::string groupId = MVNFactory::getSingleton()->addService(group);
    LogCapture log;
    EXPECT_EQ(group->connect("no_such_producer"), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNGroup", groupId + " connect failed, no producer no_such_producer"));
    EXPECT_EQ(group->connect(groupId), -1) << "a group can't hold itself";
    auto* child = new FakeProducer(profile);
    std::string id = MVNFactory::getSingleton()->addService(child);
    ASSERT_EQ(group->connect(id), 0);
    EXPECT_EQ(group->producer(), child);
    EXPECT_EQ(group->connected, 1);
    destroyService(id);
    EXPECT_EQ(group->producer(), nullptr) << "a destroyed timeline is disconnected first";
    EXPECT_EQ(group->disconnected, 1);
    destroyService(groupId);
}

TEST(Group, ItsFiltersReadItsTextureAndRunOnlyWhereTheGroupRunsThem) {
    MVNProfile profile("hd_720_25p");
    // A group whose picture (frame id 7) goes through its filters while it
    // draws, as groups do, and whose frame comes out as it was.
    struct DrawingGroup : MVNGroup {
        explicit DrawingGroup(const MVNProfile& p) : MVNGroup(p) { setString("_groupOutRtt", "GroupRtt_1"); }
        int _getImage(int position, MVNFrame** frame) override {
            MVNFrame* inside = MVNFrame::pullFromPool(1);
            inside->setId(7);
            for (MVNFilter* f : videoFilters()) inside = f->processImage(position, inside);
            drawn = inside->id();
            MVNFrame::pushBackPool(inside);
            *frame = MVNFrame::pullFromPool(1);
            (*frame)->setId(7);
            return 0;
        }
        int drawn = 0;
    };
    DrawingGroup group(profile);
    StampFilter first(profile, 1), second(profile, 2);
    ASSERT_EQ(group.attach(&first), 0);
    ASSERT_EQ(group.attach(&second), 0);
    EXPECT_EQ(first.inputAtConnect, MVN_INPUT_GROUP_RTT);
    EXPECT_EQ(first.getString("_inputRtt", ""), "GroupRtt_1");
    MVNFrame* frame = nullptr;
    ASSERT_EQ(group.getImage(3, &frame), 0);
    EXPECT_EQ(group.drawn, 712);
    EXPECT_EQ(frame->id(), 7) << "the chain ran once, inside the group";
    MVNFrame::pushBackPool(frame);
    group.detachAll();
}
