// Every read strategy brings back the picture that the engine drew: the
// background, a marker in the top-left corner and one in the bottom-right,
// at their exact pixels and with their exact bytes (R,G,B,A, top row first).
// The strategy is chosen three ways: by its marker file, by the render
// system's "reader" property, and by a marker file where the property names
// another strategy (the marker wins).
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <tuple>

#include "GpuTestSupport.h"
#include "core/MVNProfile.h"
#include "engine/MVNOgreContext.h"
#include "readers/MVNOgreRenderReader.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "timeline/MVNModule.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

struct ReaderCase {
    const char* name;  // the "reader" property's value
    const char* marker;
    MVNOgreRenderReaderType type;
    bool renderFirst;  // the GL reader reads what renderOneFrame left
    const char* other;  // a different strategy, for the property a marker overrules
};

enum class ChosenBy { Marker, Property, MarkerOverProperty };

std::ostream& operator<<(std::ostream& os, const ReaderCase& c) { return os << c.name; }

constexpr int W = 160;
constexpr int H = 90;

class ReaderRoundTrip : public ::testing::TestWithParam<std::tuple<ReaderCase, ChosenBy>> {
protected:
    const ReaderCase& reader() const { return std::get<0>(GetParam()); }
    ChosenBy chosenBy() const { return std::get<1>(GetParam()); }

    // Starts the engine as the case says: through the manager with a marker
    // file, or through the module's render system with its properties.
    int start() {
        if (chosenBy() != ChosenBy::Property) marker_.emplace(reader().marker);
        if (chosenBy() == ChosenBy::Marker) {
            engine_.emplace(W, H);
            return engine_->rc;
        }
        if (loadModule(MVN_TEST_MODULE_PATH) != 0) return -1;
        MVNProperties props;
        props.setString("reader", chosenBy() == ChosenBy::Property ? reader().name : reader().other);
        system_.reset(createRenderSystem("ogreRenderSystem", MVNProfile(W, H, 25), props));
        if (!system_) return -1;
        int rc = system_->init();
        if (rc == 0) started_ = true;
        return rc;
    }

    void TearDown() override {
        if (started_) {
            TestScene::clear();
            system_->release();
        }
        system_.reset();
        engine_.reset();
        // The manager outlives the test's render system: leave it as found.
        MVNOgreManager::getSingleton()->setReaderType(MVN_READER_RTT);
    }

private:
    Marker windowed_{"not_full_screen"};
    std::optional<Marker> marker_;
    std::optional<EngineRun> engine_;
    std::unique_ptr<MVNRenderSystem> system_;
    bool started_ = false;
};

TEST_P(ReaderRoundTrip, MarkersComeBackAtTheirPixelsWithExactBytes) {
    ASSERT_EQ(start(), 0);
    auto* ctx = static_cast<MVNOgreContext*>(MVNOgreManager::getSingleton()->getOgreContext());
    ASSERT_NE(ctx->getRenderReader(), nullptr);
    EXPECT_EQ(ctx->getRenderReader()->type(), reader().type);

    TestScene::setBackground(kMagenta);
    TestScene::addRect("topLeft", 0, 0, 8, 6, kRed);
    TestScene::addRect("bottomRight", W - 10, H - 4, 10, 4, kGreen);
    TestScene::addRect("inner", 40, 20, 16, 16, kBlue);
    if (reader().renderFirst) MVNOgreManager::getSingleton()->renderOneFrame();

    RenderImage image(W, H);
    ASSERT_TRUE(image.ok());
    Picture pic = image.picture();
    pic.save(std::string("reader_") + reader().name + ".png");

    // Each marker's two opposite corners and the background just past them.
    EXPECT_EQ(pic.at(0, 0), kRed);
    EXPECT_EQ(pic.at(7, 5), kRed);
    EXPECT_EQ(pic.at(8, 0), kMagenta);
    EXPECT_EQ(pic.at(0, 6), kMagenta);
    EXPECT_EQ(pic.at(W - 1, H - 1), kGreen);
    EXPECT_EQ(pic.at(W - 10, H - 4), kGreen);
    EXPECT_EQ(pic.at(W - 11, H - 1), kMagenta);
    EXPECT_EQ(pic.at(W - 1, H - 5), kMagenta);
    EXPECT_EQ(pic.at(40, 20), kBlue);
    EXPECT_EQ(pic.at(55, 35), kBlue);
    EXPECT_EQ(pic.at(56, 35), kMagenta);
    EXPECT_EQ(pic.at(0, H - 1), kMagenta);
    EXPECT_EQ(pic.at(W - 1, 0), kMagenta);
}

std::string caseName(const ::testing::TestParamInfo<std::tuple<ReaderCase, ChosenBy>>& info) {
    static const char* const kBy[] = {"Marker", "Property", "MarkerOverProperty"};
    return std::string(std::get<0>(info.param).name) + "_" + kBy[static_cast<int>(std::get<1>(info.param))];
}

INSTANTIATE_TEST_SUITE_P(
    AllReaders, ReaderRoundTrip,
    ::testing::Combine(
        ::testing::Values(ReaderCase{"rtt", "read_use_rtt", MVN_READER_RTT, false, "gl"},
                          ReaderCase{"rtt_sample", "read_use_rtt_sample", MVN_READER_RTT_SAMPLE, false, "direct"},
                          ReaderCase{"direct", "read_use_direct", MVN_READER_DIRECT, false, "rtt"},
                          ReaderCase{"gl", "read_use_gl", MVN_READER_GL, true, "rtt_sample"}),
        ::testing::Values(ChosenBy::Marker, ChosenBy::Property, ChosenBy::MarkerOverProperty)),
    caseName);

}  // namespace
