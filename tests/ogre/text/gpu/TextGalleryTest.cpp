// `make gallery`: a page of text clips (sizes, outline, bold, lean, columns,
// CJK, extruded at several angles and depths), one PNG each and a
// text/index.html, in the folder MVN_GALLERY_DIR names. Without that
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
    };
    std::ofstream html(dir + "/index.html");
    html << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Text gallery</title>\n"
         << "<style>body{font-family:sans-serif;background:#181818;color:#ddd}figure{display:inline-block;"
         << "margin:6px}figcaption{font-size:12px;text-align:center}img{display:block}</style></head><body>\n"
         << "<h1>Text gallery</h1>\n";
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

}  // namespace
