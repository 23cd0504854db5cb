// "ogre.transition.sample" as a host builds it: two clips with quads of
// their own, a transition connected between them, and the composed picture
// read back. The transitions are .glsl files of our own in the open
// transition format, written into the test's folder.
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "LogCapture.h"
#include "PictureClip.h"
#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "transitions/MVNOgreTransitionMaterialCanvas.h"
#include "transitions/MVNTransitionSample.h"

using namespace Morvane;
using namespace MorvaneTest;
namespace fs = std::filesystem;

namespace {

const char* const kFade = R"(// The clips mixed by progress.
vec4 transition(vec2 uv)
{
    return mix(getFromColor(uv), getToColor(uv), progress);
}
)";

// A picture of one colour with an 8 x 8 green marker in its top-left corner.
Image markedPicture(int w, int h, RGBA fill) {
    Image img{w, h, std::vector<uint8_t>(static_cast<size_t>(w) * h * 4)};
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) img.set(x, y, x < 8 && y < 8 ? kGreen : fill);
    }
    return img;
}

std::string writeFile(const std::string& name, const std::string& text) {
    std::ofstream(name) << text;
    return fs::absolute(name).string();
}

// Red clip A and blue clip B, each with its own quad in the shared scene,
// and a transition between them made through the host's factory.
class TransitionService : public QuadEngineTest {
protected:
    void SetUp() override {
        QuadEngineTest::SetUp();
        installModule();
    }
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        clipA_.reset();
        clipB_.reset();
        QuadEngineTest::TearDown();
    }

    MVNTransitionSample* make(const std::string& resource, int playtime, MVNProperties props = MVNProperties(),
                              Image a = markedPicture(W, H, kRed), Image b = markedPicture(W, H, kBlue)) {
        clipA_.reset(new PictureClip(a, true));
        clipB_.reset(new PictureClip(b, true));
        props.setString("service", "ogre.transition.sample");
        props.setString("resource", resource);
        std::string id = MVNFactory::getSingleton()->createTransition(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        auto* transition = dynamic_cast<MVNTransitionSample*>(MVNFactory::getSingleton()->getTransitionById(id));
        transition->setLength(playtime);
        transition->setInAndOut(0, playtime - 1);
        return transition;
    }
    MVNTransitionSample* makeFade(int playtime, MVNProperties props = MVNProperties()) {
        return make(writeFile("fade.glsl", kFade), playtime, props);
    }
    // The clips connected after the test has placed them.
    void connect(MVNTransitionSample* transition) { ASSERT_EQ(transition->connect(clipA_.get(), clipB_.get()), 0); }

    // Asks the transition for `position`, as the timeline does.
    static void show(MVNTransition* transition, int position) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(transition->getImage(position, &frame), 0);
        EXPECT_EQ(frame->colorFormat(), MVN_COLOR_BLANK);
        MVNFrame::pushBackPool(frame);
    }

    std::unique_ptr<PictureClip> clipA_, clipB_;
    std::vector<std::string> ids_;
};

struct ProgressCase {
    int playtime;
    int position;
    float progress;
};

class TransitionProgress : public TransitionService, public ::testing::WithParamInterface<ProgressCase> {};

// Progress is position over playtime and never reaches 1; the clips' own
// quads leave the scene, so only the mix shows, upright (the marker in the
// top-left corner while A still shows).
TEST_P(TransitionProgress, PictureIsTheMixAtPositionOverPlaytime) {
    const ProgressCase c = GetParam();
    MVNTransitionSample* transition = makeFade(c.playtime);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    EXPECT_FLOAT_EQ(transition->progressAt(c.position), c.progress);
    show(transition, c.position);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    RGBA centre = out.at(W / 2, H / 2);
    RGBA want{static_cast<uint8_t>(std::lround(255 * (1 - c.progress))), 0,
              static_cast<uint8_t>(std::lround(255 * c.progress)), 255};
    EXPECT_LE(maxColourDifference(centre, want), 2) << centre << " at progress " << c.progress;
    if (c.progress == 0.0f) {
        EXPECT_EQ(out.at(2, H - 3), kGreen) << "marker not in the top-left corner";
        EXPECT_EQ(out.at(W - 3, 2), kRed);
    }
}

INSTANTIATE_TEST_SUITE_P(Positions, TransitionProgress,
                         ::testing::Values(ProgressCase{4, 0, 0.0f}, ProgressCase{4, 2, 0.5f},
                                           ProgressCase{4, 3, 0.75f}, ProgressCase{1, 0, 0.0f}));

// A clip that covers the left half of the profile shows there, and the rest
// of its converted picture is transparent: the background shows through.
TEST_F(TransitionService, HalfClipShowsInItsPlaceAndTransparencyElsewhere) {
    MVNTransitionSample* transition =
        make(writeFile("fade.glsl", kFade), 4, MVNProperties(), markedPicture(W / 2, H, kRed));
    ASSERT_NE(transition, nullptr);
    clipA_->setGeometry(MVNRect(0, 0, W / 2, H));
    connect(transition);
    show(transition, 0);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("half_clip");
    EXPECT_EQ(out.countInside(2, 2, W / 2 - 4, H - 12, kRed, false), 0);
    EXPECT_EQ(out.at(2, H - 3), kGreen);
    EXPECT_EQ(out.countInside(W / 2 + 2, 2, W / 2 - 4, H - 4, kMagenta, false), 0);
}

// A library shape centres on the clips, not on the frame: "rectcrop" a
// quarter of the way shows clip A in a box around the centre of the left
// half, black around it within the clips, and nothing over the right half.
TEST_F(TransitionService, LibraryShapeCentresOnClipsSmallerThanTheFrame) {
    MVNTransitionSample* transition =
        make("rectcrop", 4, MVNProperties(), markedPicture(W / 2, H, kRed), markedPicture(W / 2, H, kBlue));
    ASSERT_NE(transition, nullptr);
    clipA_->setGeometry(MVNRect(0, 0, W / 2, H));
    clipB_->setGeometry(MVNRect(0, 0, W / 2, H));
    connect(transition);
    show(transition, 1);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("library_shape_half_clip");
    const RGBA black{0, 0, 0, 255};
    // The box is a quarter of the clip each way from its centre (W / 4, H / 2).
    EXPECT_EQ(out.countInside(W / 4 - W / 8 + 2, H / 2 - H / 4 + 2, W / 4 - 4, H / 2 - 4, kRed, false), 0);
    EXPECT_EQ(out.at(W / 2 - 3, H / 2), black);
    EXPECT_EQ(out.at(W / 4, 2), black);
    EXPECT_EQ(out.at(W / 4, H - 3), black);
    EXPECT_EQ(out.countInside(W / 2 + 2, 2, W / 2 - 4, H - 4, kMagenta, false), 0);
}

// An image clip gives blank frames: the transition samples the texture the
// engine holds under the clip's resource.
TEST_F(TransitionService, ImageClipShowsThroughItsTexture) {
    onRenderThread([]() {
        Ogre::TexturePtr t = Ogre::TextureManager::getSingleton().createManual(
            "TransitionStill", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, 64, 32, 0, Ogre::PF_BYTE_BGRA);
        BgraPicture picture(64, 32, kRed);
        picture.paint(0, 0, 8, 8, kGreen);
        t->getBuffer()->blitFromMemory(Ogre::PixelBox(64, 32, 1, Ogre::PF_BYTE_BGRA, picture.data()));
    });
    MVNProperties image;
    image.setString("service", "ogre.image");
    image.setString("resource", "TransitionStill");
    std::string imageId = MVNFactory::getSingleton()->createProducer(profile(), image);
    ASSERT_FALSE(imageId.empty());
    ids_.push_back(imageId);
    MVNProducer* still = MVNFactory::getSingleton()->getProducerById(imageId);
    still->setGeometry(MVNRect(0, 0, W, H));
    MVNTransitionSample* transition = makeFade(4);
    ASSERT_NE(transition, nullptr);
    ASSERT_EQ(transition->connect(still, clipB_.get()), 0);
    show(transition, 0);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(W / 2, H / 2), kRed);
    EXPECT_EQ(out.at(5, H - 6), kGreen);  // the marker, scaled to the frame's top-left
}

// A frame that names a render texture has no pixels: nothing is uploaded
// and the last picture stays.
TEST_F(TransitionService, RenderTextureFrameIsNotUploaded) {
    MVNTransitionSample* transition = makeFade(4);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    show(transition, 0);
    LogCapture log;
    MVNFrame* rtt = MVNFrame::pullFromPool(1);
    rtt->setColorFormat(MVN_COLOR_RTT);
    rtt->setRtt("SomeonesRtt");
    rtt->setWidth(0);
    rtt->setHeight(0);
    EXPECT_EQ(transition->processImage(0, rtt, nullptr), nullptr);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(W / 2, H / 2), kRed);
    EXPECT_EQ(log.countContaining("convert frameA color failed"), 0);
}

// setResource with the present name returns without a step: while the
// render thread is held up, a step would wait until it gave up ("run too
// long time"), and the quad would be rebuilt.
TEST_F(TransitionService, SameResourceMakesNoRenderThreadCall) {
    MVNTransitionSample* transition = makeFade(4);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    auto* canvas = dynamic_cast<MVNOgreTransitionMaterialCanvas*>(transition->getNode());
    ASSERT_NE(canvas, nullptr);
    void* material = canvas->getMaterial();
    LogCapture log;
    std::atomic<bool> release{false};
    MVNOgreManager::getSingleton()->callRenderable(
        [&release]() {
            while (!release.load()) std::this_thread::yield();
        },
        "testHoldRenderThread");
    canvas->setResource(canvas->getResource());
    release = true;
    // The held step reads `release` on the render thread: it must be done
    // before this frame ends.
    MVNOgreManager::getSingleton()->callRenderableWait([]() {}, "testDrainRenderThread");
    EXPECT_EQ(log.countContaining("run too long time"), 0);
    EXPECT_EQ(canvas->getMaterial(), material);
}

// "transitionEasing" reaches the picture: ease-in at the half shows 31.5%
// of B; an unknown curve is one error and linear.
TEST_F(TransitionService, EasingReshapesProgressInThePicture) {
    MVNProperties props;
    props.setString("transitionEasing", "ease-in");
    MVNTransitionSample* transition = makeFade(4, props);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    show(transition, 2);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_LE(maxColourDifference(out.at(W / 2, H / 2), RGBA{175, 0, 80, 255}), 2) << out.at(W / 2, H / 2);
    }
    LogCapture log;
    transition->setString("transitionEasing", "wobbly");
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNTransitionSample",
                        transition->getStringId() + " unknown transitionEasing \"wobbly\", linear used"),
              1);
    EXPECT_FLOAT_EQ(transition->progressAt(2), 0.5f);
}

// "transitionInvert" swaps the clips: at progress 0 the fade shows B.
TEST_F(TransitionService, InvertStartsFromTheClipAfter) {
    MVNTransitionSample* transition = makeFade(4);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    transition->setBoolean("transitionInvert", true);
    show(transition, 0);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(W / 2, H / 2), kBlue);
}

// "rotationA" turns clip A in its converted picture: a wide clip stands
// upright about its centre, and the frame around it stays transparent.
TEST_F(TransitionService, RotationATurnsClipAInPlace) {
    MVNTransitionSample* transition =
        make(writeFile("fade.glsl", kFade), 4, MVNProperties(), markedPicture(120, 40, kRed));
    ASSERT_NE(transition, nullptr);
    clipA_->setGeometry(MVNRect(100, 70, 120, 40));
    connect(transition);
    transition->setInt32("rotationA", 90);
    show(transition, 0);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("rotation_a");
    EXPECT_EQ(out.at(160, 140), kRed);      // 50 above the centre: inside only when upright
    EXPECT_EQ(out.at(200, 90), kMagenta);   // 40 right of it: inside only when lying
    EXPECT_EQ(out.at(160, 90), kRed);
}

struct FileCase {
    const char* name;
    const char* source;
    double amount;  // "ufmamount", or negative for none
    RGBA top;       // at the top of the picture
    RGBA bottom;
};

class TransitionFile : public TransitionService, public ::testing::WithParamInterface<FileCase> {};

// A .glsl file becomes a material: uv (0, 0) is the bottom left as seen, a
// uniform starts at its comment's default, and "ufm" + its name sets it.
TEST_P(TransitionFile, DrawsWhatTheFunctionSays) {
    const FileCase c = GetParam();
    MVNProperties props;
    if (c.amount >= 0) props.setDouble("ufmamount", c.amount);
    LogCapture log;
    MVNTransitionSample* transition = make(writeFile(std::string(c.name) + ".glsl", c.source), 4, props);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    show(transition, 0);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_LE(maxColourDifference(out.at(W / 2, H - 20), c.top), 2) << out.at(W / 2, H - 20);
    EXPECT_LE(maxColourDifference(out.at(W / 2, 20), c.bottom), 2) << out.at(W / 2, 20);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNTransitionGlslFile", ""), 0);
    for (const auto& line : log.lines()) EXPECT_NE(line.level, MVNLogLevel::Error) << line.message;
}

const char* const kSplit = R"(// A above the middle, B below it.
vec4 transition(vec2 uv)
{
    return uv.y > 0.5 ? getFromColor(uv) : getToColor(uv);
}
)";

const char* const kAmount = R"(// A fixed share of B, whatever the progress.
uniform float amount; // = 0.25
vec4 transition(vec2 uv)
{
    return mix(getFromColor(uv), getToColor(uv), amount);
}
)";

INSTANTIATE_TEST_SUITE_P(Files, TransitionFile,
                         ::testing::Values(FileCase{"split", kSplit, -1, kRed, kBlue},
                                           FileCase{"amountDefault", kAmount, -1, RGBA{191, 0, 64, 255},
                                                    RGBA{191, 0, 64, 255}},
                                           FileCase{"amountSet", kAmount, 0.75, RGBA{64, 0, 191, 255},
                                                    RGBA{64, 0, 191, 255}}));

// A file that doesn't compile: one error line with the file and the
// compiler's message, and the transition draws clip B.
TEST_F(TransitionService, BrokenFileLogsTheCompilerAndDrawsClipB) {
    std::string path = writeFile("broken.glsl", "vec4 transition(vec2 uv)\n{\n    return notDeclared;\n}\n");
    LogCapture log;
    MVNTransitionSample* transition = make(path, 4);
    ASSERT_NE(transition, nullptr);
    connect(transition);
    show(transition, 0);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(W / 2, H / 2), kBlue);
    int errors = 0;
    for (const auto& line : log.lines()) errors += line.level == MVNLogLevel::Error;
    EXPECT_EQ(errors, 1);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNTransitionGlslFile",
                        path + ": 0:3(9): error: `notDeclared' undeclared; 0:3(2): error: `return' with wrong type "
                               "error, in function `transition' returning vec4"),
              1);
}

}  // namespace
