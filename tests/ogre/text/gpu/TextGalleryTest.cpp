// `make gallery`: a page of text clips (sizes, outline, bold, lean, columns,
// CJK, extruded at several angles and depths, on title videos and
// pictures), one PNG each and a text/index.html, and every animation as a
// strip of moments (text/animations.html), in the folder MVN_GALLERY_DIR
// names. Without that
// variable the test is skipped.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

class TextGallery : public QuadEngineTest {};

TEST_F(TextGallery, WritesEveryTextStyleWithAnIndex) {
    const char* root = std::getenv("MVN_GALLERY_DIR");
    if (root == nullptr || *root == 0) GTEST_SKIP() << "MVN_GALLERY_DIR is not set";
    const std::string dir = std::string(root) + "/text";
    std::filesystem::create_directories(dir);
    TestScene::setBackground(RGBA{32, 40, 64, 255});
    // Title media, made here by the ffmpeg command: a test pattern seen
    // through a soft ellipse, and a still picture.
    const std::string ff = "ffmpeg -v error -y -f lavfi -i ";
    ASSERT_EQ(std::system((ff + "testsrc2=s=160x90:r=25:d=1 -pix_fmt yuv420p gallery-title.mp4").c_str()), 0);
    ASSERT_EQ(std::system((ff + "color=c=black:s=160x90:r=25:d=1,format=gray -vf "
                                "\"geq=lum='clip(255*(1-hypot((X-W/2)/(W/2),(Y-H/2)/(H/2)))*4,0,255)'\" "
                                "-pix_fmt yuv420p gallery-mask.mp4")
                               .c_str()),
              0);
    ASSERT_EQ(std::system((ff + "mandelbrot=s=160x90 -frames:v 1 gallery-title.png").c_str()), 0);
    auto titleVideo = [](MVNProperties& p) {
        p.setString("textTitleVideoPath", "gallery-title.mp4");
        p.setString("textTitleMaskVideoPath", "gallery-mask.mp4");
    };
    auto titleImage = [](MVNProperties& p) {
        p.setString("textTitleImagePath", ".");
        p.setString("textTitleImageName", "gallery-title.png");
    };
    struct Style {
        const char* name;
        std::function<void(MVNProperties&)> set;
    };
    auto three = [](double yaw, double pitch, int depth) {
        return [=](MVNProperties& p) {
            p.setBoolean("textThree", true);
            p.setDouble("textThreeYaw", yaw);
            p.setDouble("textThreePitch", pitch);
            p.setInt32("textDepth", depth);
        };
    };
    const Style styles[] = {
        {"size-24", [](MVNProperties& p) { p.setInt32("textSize", 24); }},
        {"size-48", [](MVNProperties& p) { p.setInt32("textSize", 48); }},
        {"size-96", [](MVNProperties& p) { p.setInt32("textSize", 96); p.setString("textString", "Bo8e"); }},
        {"outline", [](MVNProperties& p) { p.setDouble("textOutlineSize", 3); p.setColor("textColorOutline", MVNColor4B(200, 30, 30, 255)); }},
        {"bold", [](MVNProperties& p) { p.setBoolean("textBold", true); }},
        {"lean", [](MVNProperties& p) { p.setBoolean("textLean", true); }},
        {"rows", [](MVNProperties& p) { p.setString("textString", "Two rows\nof text"); p.setInt32("textAlignType", 0); }},
        {"vertical", [](MVNProperties& p) { p.setString("textString", "ABC\nxyz"); p.setBoolean("textVerticalAlign", true); p.setInt32("textSize", 32); }},
        {"cjk", [](MVNProperties& p) { p.setString("textString", "\xe4\xb8\xad\xe6\x96\x87\xe6\xa0\x87\xe9\xa2\x98 Title"); }},
        {"3d-yaw0-depth3", three(0, 0, 3)},
        {"3d-yaw25-depth6", three(25, 0, 6)},
        {"3d-yaw50-depth12", three(50, 0, 12)},
        {"3d-pitch30-depth8", three(0, 30, 8)},
        {"title-video", titleVideo},
        {"title-video-3d", [=](MVNProperties& p) { titleVideo(p); three(20, 0, 6)(p); }},
        {"title-image", titleImage},
        {"title-image-turned", [=](MVNProperties& p) {
             titleImage(p);
             p.setRect("textBgGeometry", MVNRect(60, 40, 200, 100));
             p.setDouble("textBgAngle", 12);
         }},
    };
    std::ofstream html(dir + "/index.html");
    html << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Text gallery</title>\n"
         << "<style>body{font-family:sans-serif;background:#181818;color:#ddd}figure{display:inline-block;"
         << "margin:6px}figcaption{font-size:12px;text-align:center}img{display:block}</style></head><body>\n"
         << "<h1>Text gallery</h1>\n<p><a href=\"animations.html\">Animations</a></p>\n";
    int zOrder = 2;
    for (const Style& style : styles) {
        SCOPED_TRACE(style.name);
        MVNProperties props;
        props.setString("service", "text");
        props.setString("textString", "Hello Bo8e");
        props.setInt32("textSize", 48);
        props.setColor("textColorBase", MVNColor4B(255, 204, 0, 255));
        props.setInt32("zOrder", zOrder++);
        style.set(props);
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        ASSERT_FALSE(id.empty());
        MVNProducer* clip = MVNFactory::getSingleton()->getProducerById(id);
        clip->setBoolean("_textNeedReBuild", true);
        MVNFrame* frame = nullptr;
        if (clip->getImage(0, &frame) == 0) MVNFrame::pushBackPool(frame);
        {
            RenderImage out(W, H);
            ASSERT_TRUE(out.ok());
            out.picture().save(dir + "/" + style.name + ".png");
        }
        MVNFactory::getSingleton()->destroyService(id);
        html << "<figure><img src=\"" << style.name << ".png\"><figcaption>" << style.name << "</figcaption></figure>\n";
    }
    html << "</body></html>\n";
}

// Every "textAnimationType" as a strip of five moments of a two-second clip
// (a tenth, three tenths, the middle, seven tenths and nine tenths of it)
// in a title box, each at half size: text/animations.html.
TEST_F(TextGallery, WritesEveryAnimationAsAStripOfFiveMoments) {
    const char* root = std::getenv("MVN_GALLERY_DIR");
    if (root == nullptr || *root == 0) GTEST_SKIP() << "MVN_GALLERY_DIR is not set";
    const std::string dir = std::string(root) + "/text";
    std::filesystem::create_directories(dir);
    TestScene::setBackground(RGBA{32, 40, 64, 255});
    const char* names[] = {"",
                           "left, pause, right", "right, pause, left", "top, pause, down", "down, pause, top",
                           "left to right", "right to left", "down to top", "top to down", "fade in and out",
                           "print", "scale rebound", "drop and rebound", "linear zoom", "zoom from larger",
                           "drop with buffer", "window slices", "pixels", "pin wheel", "spin clock",
                           "scale and clear", "star wars", "spin and clear", "print", "zoom left and right",
                           "vertical wipe", "horizontal wipe", "horizontal wipe from the middle",
                           "horizontal move", "karaoke", "vertical wipe from the middle"};
    constexpr int kFrames = 50, kMoments = 5, kW = W / 2, kH = H / 2;
    std::ofstream html(dir + "/animations.html");
    html << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Text animations</title>\n"
         << "<style>body{font-family:sans-serif;background:#181818;color:#ddd}figure{margin:6px}"
         << "figcaption{font-size:12px}img{display:block}</style></head><body>\n"
         << "<h1>Text animations</h1>\n<p>Moments at 0.1, 0.3, 0.5, 0.7 and 0.9 of the clip.</p>\n";
    for (int type = 1; type <= 30; ++type) {
        SCOPED_TRACE(type);
        MVNProperties props;
        props.setString("service", "text");
        props.setString("textString", "Morvane");
        props.setInt32("textSize", 56);
        props.setColor("textColorBase", MVNColor4B(255, 204, 0, 255));
        props.setDouble("textOutlineSize", 2);
        props.setColor("textColorOutline", MVNColor4B(160, 30, 30, 255));
        props.setInt32("zOrder", 2);
        props.setInt32("out", kFrames - 1);
        props.setInt32("textAnimationType", type);
        props.setColor("AnimTextKaLaOkCol", MVNColor4B(40, 200, 255, 255));
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        ASSERT_FALSE(id.empty());
        MVNProducer* clip = MVNFactory::getSingleton()->getProducerById(id);
        clip->setBoolean("_textNeedReBuild", true);
        // A title box a little larger than the word, as titles usually have:
        // moves start and end at its edges, wipes run across it.
        clip->setGeometry(MVNRect(10, 55, 300, 70));
        // B,G,R,A, five half-size pictures side by side.
        std::vector<uint8_t> strip(static_cast<size_t>(kW) * kMoments * kH * 4);
        for (int m = 0; m < kMoments; ++m) {
            const int frame = (2 * m + 1) * kFrames / 10;
            MVNFrame* f = nullptr;
            if (clip->getImage(frame, &f) == 0) MVNFrame::pushBackPool(f);
            RenderImage out(W, H);
            ASSERT_TRUE(out.ok());
            Picture pic = out.picture();
            for (int y = 0; y < kH; ++y)
                for (int x = 0; x < kW; ++x) {
                    int sum[3] = {0, 0, 0};
                    for (int dy = 0; dy < 2; ++dy)
                        for (int dx = 0; dx < 2; ++dx) {
                            RGBA c = pic.at(2 * x + dx, 2 * y + dy);
                            sum[0] += c.b, sum[1] += c.g, sum[2] += c.r;
                        }
                    uint8_t* p = &strip[(static_cast<size_t>(y) * kW * kMoments + m * kW + x) * 4];
                    p[0] = static_cast<uint8_t>(sum[0] / 4), p[1] = static_cast<uint8_t>(sum[1] / 4);
                    p[2] = static_cast<uint8_t>(sum[2] / 4), p[3] = 255;
                }
        }
        const std::string file = "animation-" + std::to_string(type) + ".png";
        MVNImage::saveToFile(dir + "/" + file, strip.data(), kW * kMoments, kH);
        MVNFactory::getSingleton()->destroyService(id);
        html << "<figure><img src=\"" << file << "\"><figcaption>" << type << ": " << names[type]
             << "</figcaption></figure>\n";
    }
    html << "</body></html>\n";
}

}  // namespace
