// The render consumer lets the producer draw each position and collects the
// picture of that very position, in order, in each read mode; every buffer
// and frame goes back to its pool.
#include <gtest/gtest.h>

#include <vector>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "core/MVNFrame.h"
#include "engine/MVNOgreRenderSystem.h"
#include "services/MVNProducer.h"
#include "timeline/MVNRenderConsumer.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// Draws a red 4x4 block whose column follows the position: a picture that
// belongs to another position fails the check at once.
class MovingBlockProducer : public MVNProducer {
public:
    explicit MovingBlockProducer(const MVNProfile& profile) : MVNProducer(profile) {}
    int _getImage(int position, MVNFrame** frame) override {
        TestScene::clear();
        TestScene::addRect("block" + std::to_string(position), position * 4, 0, 4, 4, kRed);
        *frame = MVNFrame::pullFromPool(1);
        if (!*frame) return -1;
        (*frame)->setColorFormat(MVN_COLOR_BLANK);
        return 0;
    }
};

struct ModeCase {
    const char* name;
    const char* marker;
    MVNRenderConsumer::ReadMode mode;
};

class RenderConsumerModes : public ::testing::TestWithParam<ModeCase> {
protected:
    void SetUp() override {
        rs.reset(new MVNOgreRenderSystem(MVNProfile(W, H, 25), 0, 0));
        ASSERT_EQ(rs->init(), 0);
        TestScene::setBackground(kMagenta);
    }
    void TearDown() override {
        TestScene::clear();
        rs->release();
    }
    Marker windowed{"not_full_screen"};
    Marker reader{GetParam().marker};
    std::unique_ptr<MVNOgreRenderSystem> rs;
};

TEST_P(RenderConsumerModes, EachPositionComesBackWithItsOwnPictureInOrder) {
    MovingBlockProducer producer(MVNProfile(W, H, 25));
    MVNRenderConsumer consumer(MVNProfile(W, H, 25), rs.get(), GetParam().mode);
    ASSERT_EQ(consumer.connect(&producer), 0);
    std::vector<int> positions;
    consumer.setPictureSink([&](const MVNRenderConsumer::Picture& p) {
        positions.push_back(p.position);
        EXPECT_EQ(p.width, W);
        EXPECT_EQ(p.height, H);
        EXPECT_EQ(p.colorType, MVN_COLOR_RGBA);
        Picture pic{p.pixels, p.width, p.height};
        int x = p.position * 4;
        EXPECT_EQ(pic.at(x, 0), kRed) << "position " << p.position;
        EXPECT_EQ(pic.at(x + 3, 3), kRed) << "position " << p.position;
        if (x > 0) EXPECT_EQ(pic.at(x - 1, 0), kMagenta) << "position " << p.position;
        EXPECT_EQ(pic.at(x + 4, 0), kMagenta) << "position " << p.position;
        return 0;
    });
    int framesOut = MVNFrame::poolOutstandingCount();
    EXPECT_EQ(consumer.renderRange(0, 9), 10);
    EXPECT_EQ(positions, (std::vector<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(consumer.lost(), 0);
    EXPECT_EQ(MVNFrame::poolOutstandingCount(), framesOut);
}

TEST_P(RenderConsumerModes, SinkThatRefusesStopsTheRun) {
    MovingBlockProducer producer(MVNProfile(W, H, 25));
    MVNRenderConsumer consumer(MVNProfile(W, H, 25), rs.get(), GetParam().mode);
    consumer.connect(&producer);
    int calls = 0;
    consumer.setPictureSink([&](const MVNRenderConsumer::Picture& p) { return ++calls == 3 ? 1 : 0; });
    EXPECT_EQ(consumer.renderRange(0, 9), -1);
    EXPECT_EQ(calls, 3);
}

INSTANTIATE_TEST_SUITE_P(Modes, RenderConsumerModes,
                         ::testing::Values(ModeCase{"sync_rtt_sample", "read_use_rtt_sample",
                                                    MVNRenderConsumer::READ_SYNC},
                                           ModeCase{"async_direct", "read_use_direct", MVNRenderConsumer::READ_ASYNC},
                                           ModeCase{"listener_rtt", "read_use_rtt", MVNRenderConsumer::READ_LISTENER}),
                         [](const ::testing::TestParamInfo<ModeCase>& info) { return info.param.name; });

TEST(RenderConsumer, WithoutAProducerNothingRunsAndTheReasonIsLogged) {
    MVNRenderConsumer consumer(MVNProfile(W, H, 25), nullptr);
    LogCapture log;
    EXPECT_EQ(consumer.renderRange(0, 3), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNRenderConsumer", "renderRange failed, no producer connected"));
    EXPECT_EQ(consumer.start(), -1);
}

TEST(RenderConsumer, StartedRunCoversTheProducersPositions) {
    Marker windowed("not_full_screen");
    {
        MVNOgreRenderSystem rs(MVNProfile(W, H, 25), 0, 0);
        ASSERT_EQ(rs.init(), 0);
        TestScene::setBackground(kMagenta);
        MovingBlockProducer producer(MVNProfile(W, H, 25));
        producer.setInAndOut(0, 4);
        MVNRenderConsumer consumer(MVNProfile(W, H, 25), &rs, MVNRenderConsumer::READ_ASYNC);
        consumer.connect(&producer);
        std::vector<int> positions;
        consumer.setPictureSink([&](const MVNRenderConsumer::Picture& p) {
            positions.push_back(p.position);
            return 0;
        });
        ASSERT_EQ(consumer.start(), 0);
        consumer.waitWorkEnd();
        EXPECT_TRUE(consumer.isStopped());
        EXPECT_EQ(positions, (std::vector<int>{0, 1, 2, 3, 4}));
        TestScene::clear();
        rs.release();
    }
}

}  // namespace
