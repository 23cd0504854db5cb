// Titles behind text clips, read back from the composed picture: a title
// video shows through its mask video and follows the clip's frames (or
// stands on the chosen frame while editing), a title image fills its
// geometry, and a title that does not open leaves the text alone.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

// The title's two colours: red for its first half second, blue after.
constexpr RGBA kEarly{192, 0, 0, 255};
constexpr RGBA kLate{0, 0, 192, 255};
// Decoding and the conversion to B,G,R,A move a flat colour by a few steps.
constexpr int kVideoTolerance = 12;

// Runs the ffmpeg command quietly in the test's working folder.
bool ffmpeg(const std::string& args) {
    return std::system(("ffmpeg -v error -y " + args + " > ffmpeg.log 2>&1").c_str()) == 0;
}

// White text: all three channels high. The title colours and magenta keep
// at least one channel low.
bool isText(RGBA c) { return c.r > 200 && c.g > 200 && c.b > 200; }

class TextTitles : public QuadEngineTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        QuadEngineTest::TearDown();
    }

    MVNProducer* make(MVNProperties props, int zOrder = 2) {
        props.setString("service", "text");
        props.setInt32("zOrder", zOrder);
        props.setString("textString", "HHHHHH");
        props.setInt32("textSize", 60);
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        MVNProducer* p = MVNFactory::getSingleton()->getProducerById(id);
        p->setBoolean("_textNeedReBuild", true);
        return p;
    }

    static void show(MVNProducer* p, int position) {
        MVNFrame* frame = nullptr;
        if (p->getImage(position, &frame) == 0) MVNFrame::pushBackPool(frame);
    }

    // Text pixels in the left and right halves of the picture.
    static std::pair<int, int> textHalves(const Composition& out) {
        int left = 0, right = 0;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                if (isText(out.at(x, y))) (x < W / 2 ? left : right)++;
        return {left, right};
    }

    std::vector<std::string> ids_;
};

// Which picture of the title video stands at a clip frame, playing or
// while editing (where "textTitleEditImage" picks it); past the video's end
// its last picture stands, without a decoder error each frame.
struct TitleFrame {
    int position;
    bool editing;
    RGBA expected;
};

class TextTitleVideo : public TextTitles, public ::testing::WithParamInterface<TitleFrame> {};

TEST_P(TextTitleVideo, TextStandsOnTheVideoWhereTheMaskIsWhiteAndOnWhatIsBelowWhereItIsBlack) {
    // 64x36 pictures stretched over the box: half a second red, then blue;
    // the mask white on its left half, black on its right.
    ASSERT_TRUE(ffmpeg("-f lavfi -i color=c=0xc00000:s=64x36:r=25:d=0.48 -f lavfi -i color=c=0x0000c0:s=64x36:r=25:d=0.52"
                       " -filter_complex '[0][1]concat=n=2:v=1' -pix_fmt yuv420p -c:v libx264 title.mp4"));
    ASSERT_TRUE(ffmpeg("-f lavfi -i color=c=black:s=64x36:r=25:d=1 -vf drawbox=x=0:y=0:w=32:h=36:color=white:t=fill"
                       " -pix_fmt yuv420p -c:v libx264 mask.mp4"));
    MVNProperties props;
    props.setString("textTitleVideoPath", "title.mp4");
    props.setString("textTitleMaskVideoPath", "mask.mp4");
    props.setDouble("textTitleEditImage", 0.2);
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    clip->setBoolean("_textEditStatus", GetParam().editing);
    LogCapture log;
    show(clip, GetParam().position);
    for (const MVNLogLine& line : log.lines()) EXPECT_NE(line.level, MVNLogLevel::Error) << line.message;
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("title");
    // Away from the text and from the mask's soft middle.
    for (int y : {10, H - 10}) {
        for (int x : {10, W / 2 - 30}) {
            EXPECT_LE(maxColourDifference(out.at(x, y), GetParam().expected), kVideoTolerance)
                << "(" << x << "," << y << ") " << out.at(x, y);
        }
        for (int x : {W / 2 + 30, W - 10}) EXPECT_EQ(out.at(x, y), kMagenta) << "(" << x << "," << y << ")";
    }
    // The text covers both halves, over the video and over the background.
    std::pair<int, int> text = textHalves(out);
    EXPECT_GT(text.first, 300);
    EXPECT_GT(text.second, 300);
}

INSTANTIATE_TEST_SUITE_P(PlayingAndEditing, TextTitleVideo,
                         ::testing::Values(TitleFrame{2, false, kEarly}, TitleFrame{20, false, kLate},
                                           TitleFrame{20, true, kEarly}, TitleFrame{40, false, kLate}));

// On every track, the first one included: the title and the box behind it
// stay in front of the camera's far plane.
class TextTitleImage : public TextTitles, public ::testing::WithParamInterface<int> {};

TEST_P(TextTitleImage, TitleImageFillsItsGeometryAndGoesWithTheClip) {
    // Green above, yellow below: a flipped picture fails.
    ASSERT_TRUE(ffmpeg("-f lavfi -i color=c=0x00c000:s=32x18 -vf drawbox=x=0:y=9:w=32:h=9:color=0xc0c000:t=fill"
                       " -frames:v 1 title.png"));
    MVNProperties props;
    props.setString("textTitleImagePath", ".");
    props.setString("textTitleImageName", "title.png");
    props.setRect("textBgGeometry", MVNRect(0, 0, W / 2, H));
    MVNProducer* clip = make(props, GetParam());
    ASSERT_NE(clip, nullptr);
    show(clip, 0);
    const RGBA top{0, 192, 0, 255}, bottom{192, 192, 0, 255};
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        out.save("image");
        EXPECT_LE(maxColourDifference(out.at(10, H - 10), top), 2) << out.at(10, H - 10);
        EXPECT_LE(maxColourDifference(out.at(10, 10), bottom), 2) << out.at(10, 10);
        // To the pixel: its last column is the picture's, the next one not.
        EXPECT_LE(maxColourDifference(out.at(W / 2 - 1, 10), bottom), 2) << out.at(W / 2 - 1, 10);
        EXPECT_EQ(out.at(W / 2, 10), kMagenta);
        EXPECT_EQ(out.at(W - 10, H - 10), kMagenta);
        EXPECT_EQ(out.at(W - 10, 10), kMagenta);
        EXPECT_GT(textHalves(out).second, 300);
    }
    // The box behind the title fills the text's geometry, the whole picture.
    clip->setColor("textBgColor", MVNColor4B(0, 0, 255, 255));
    show(clip, 0);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.at(W - 10, 10), (RGBA{0, 0, 255, 255}));
        EXPECT_LE(maxColourDifference(out.at(10, 10), bottom), 2) << out.at(10, 10);
    }
    auto titleObjects = [] {
        int n = 0;
        onRenderThread([&] {
            for (Ogre::ResourceManager* m : std::initializer_list<Ogre::ResourceManager*>{
                     &Ogre::MeshManager::getSingleton(), &Ogre::MaterialManager::getSingleton(),
                     &Ogre::TextureManager::getSingleton()})
                for (auto it = m->getResourceIterator(); it.hasMoreElements(); it.moveNext()) {
                    const std::string& name = it.peekNextValue()->getName();
                    n += name.rfind("mOutTitle", 0) == 0 || name.rfind("titleImageTexture", 0) == 0;
                }
        });
        return n;
    };
    EXPECT_EQ(titleObjects(), 3);  // plane, material, picture
    for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
    ids_.clear();
    EXPECT_EQ(titleObjects(), 0);
}

INSTANTIATE_TEST_SUITE_P(Tracks, TextTitleImage, ::testing::Values(1, 2, 7),
                         [](const ::testing::TestParamInfo<int>& info) { return "zOrder" + std::to_string(info.param); });

TEST_F(TextTitles, TitleVideoThatDoesNotOpenLogsOnceAndTheTextStillDraws) {
    LogCapture log;
    MVNProperties props;
    props.setString("textTitleVideoPath", "missing.mp4");
    props.setString("textTitleMaskVideoPath", "missing-mask.mp4");
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    show(clip, 0);
    show(clip, 1);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNText::MVNTextBgDecodec", "_create video decoder failed"), 1);
    EXPECT_EQ(out.at(10, 10), kMagenta);
    std::pair<int, int> text = textHalves(out);
    EXPECT_GT(text.first + text.second, 600);
}

}  // namespace
