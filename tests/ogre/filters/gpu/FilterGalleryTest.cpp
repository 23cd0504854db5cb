// The filter gallery (make gallery): every catalogue filter through the real
// service on the bundled beach picture, one PNG each and an index.html
// grouped by family, in the folder MVN_GALLERY_DIR names. Without that
// variable there is nothing to do.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <memory>

#include "FilterMediaHarness.h"
#include "core/MVNByteBufferPool.h"
#include "filters/MVNFilterCanvas.h"
#include "filters/MVNFilterCatalogue.h"
#include "filters/MVNFilterSample.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "PictureClip.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 320;
constexpr int H = 180;

const std::map<std::string, std::string> kFamilyTitles = {
    {"adjust", "Colour adjustments"}, {"blur", "Blur, sharpen and mosaic"}, {"stylize", "Stylised pictures"},
    {"distort", "Distortions"},       {"motion", "Time-driven effects"},    {"look", "Colour looks"},
    {"animation", "Clip animations"}, {"mask", "Masks"},                    {"lut", "3D lookup table"},
    {"canvas", "Canvas backgrounds"}};

// A bundled picture at w x h, R,G,B,A; the test chart when the picture
// can't be read.
Image galleryPicture(const char* file = MVN_SOURCE_DIR "/examples/pictures/beach.png", int w = W, int h = H) {
    Image img;
    return loadPicture(file, w, h, &img) ? img : testChart(w, h);
}

// Settings that show what a filter does at one frame of a 100-frame clip.
int showcase(MVNFilterSample& f, const MVNFilterCatalogueEntry& entry) {
    std::string family = entry.family;
    if (family == "animation") {
        // The whole clip: an "ufmAnimOut" of 1 alone would read as one frame.
        f.setInt32("videoAnimeType", 1);
        f.setDouble("ufmAnimIsIn", 1.0);
        return 50;
    }
    if (family == "mask") {
        f.setDouble("ufmSmoothDiff", 0.02);
        f.setDouble("ufmHeartSize", 0.8);
        f.setDouble("ufmStarSize", 0.8);
        f.setDouble("ufmCircleRadius", 0.6);
        f.setDouble("ufmRectangleSizeX", 0.6);
        f.setDouble("ufmRectangleSizeY", 0.6);
        f.setDouble("ufmOrient", 20.0);
        return 0;
    }
    if (family == "lut") f.setString("ufmMVNLutPath", MVN_SOURCE_DIR "/media/luts/warm.cube");
    if (std::string(entry.name) == "FadeInOutFilter") return 10;
    if (std::string(entry.name) == "ZoomRestoreFilter") {
        f.setDouble("ufmZoomX", 0.3);
        f.setDouble("ufmZoomY", 0.3);
        f.setDouble("ufmZoomWidth", 0.4);
        f.setDouble("ufmZoomHeight", 0.4);
        return 30;
    }
    return family == "motion" ? 12 : 0;
}

TEST(FilterGallery, WritesEveryFilterWithAnIndex) {
    const char* dir = std::getenv("MVN_GALLERY_DIR");
    if (dir == nullptr || *dir == 0) GTEST_SKIP() << "MVN_GALLERY_DIR is not set";
    std::filesystem::create_directories(dir);
    touchMarker("not_full_screen");
    installModule();
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    TestScene::setBackground(RGBA{32, 32, 32, 255});
    Image picture = galleryPicture();
    picture.picture().save(std::string(dir) + "/_original.png");

    std::map<std::string, std::vector<std::string>> byFamily;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& entry = MVNFilterCatalogue::at(i);
        SCOPED_TRACE(entry.name);
        PictureClip clip(picture, false);
        MVNFilterSample filter(MVNProfile(W, H, 25), entry.name, MVN_FILTER_USE_NORMAL);
        filter.init();
        int position = showcase(filter, entry);
        ASSERT_EQ(clip.attach(&filter), 0);
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip.getImage(position, &frame), 0);
        MVNFrame::pushBackPool(frame);
        Image out = composedImage(W, H);
        ASSERT_FALSE(out.rgba.empty());
        out.picture().save(std::string(dir) + "/" + entry.name + ".png");
        byFamily[entry.family].push_back(entry.name);
        clip.detachAll();
    }

    // Every table of media/luts through the LUT filter, named after its file.
    std::vector<std::filesystem::path> luts;
    for (const auto& e : std::filesystem::directory_iterator(MVN_SOURCE_DIR "/media/luts")) {
        if (e.path().extension() == ".cube") luts.push_back(e.path());
    }
    std::sort(luts.begin(), luts.end());
    for (const auto& lut : luts) {
        SCOPED_TRACE(lut.string());
        PictureClip clip(picture, false);
        MVNFilterSample filter(MVNProfile(W, H, 25), "ApplyDynamicLutFilter", MVN_FILTER_USE_NORMAL);
        filter.init();
        filter.setString("ufmMVNLutPath", lut.string());
        ASSERT_EQ(clip.attach(&filter), 0);
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip.getImage(0, &frame), 0);
        MVNFrame::pushBackPool(frame);
        Image out = composedImage(W, H);
        ASSERT_FALSE(out.rgba.empty());
        const std::string name = "lut-" + lut.stem().string();
        out.picture().save(std::string(dir) + "/" + name + ".png");
        byFamily["lut"].push_back(name);
        clip.detachAll();
    }

    // The canvas kinds: a portrait picture on its own blur, on the blurred
    // beach picture, and on a colour.
    Image portrait = galleryPicture(MVN_SOURCE_DIR "/examples/pictures/portrait.png", 100, 180);
    const std::pair<const char*, std::function<void(MVNFilterCanvas&)>> kinds[] = {
        {"canvas-self-blur", [](MVNFilterCanvas&) {}},
        {"canvas-picture-file",
         [](MVNFilterCanvas& f) { f.setString("resource", MVN_SOURCE_DIR "/examples/pictures/beach.png"); }},
        {"canvas-colour", [](MVNFilterCanvas& f) { f.setColor("color", MVNColor4B(40, 60, 90, 255)); }},
    };
    for (int type = 0; type < 3; ++type) {
        SCOPED_TRACE(kinds[type].first);
        PictureClip clip(portrait, false);
        MVNFilterCanvas filter(MVNProfile(W, H, 25), type);
        kinds[type].second(filter);
        filter.init();
        ASSERT_EQ(clip.attach(&filter), 0);
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip.getImage(0, &frame), 0);
        MVNFrame::pushBackPool(frame);
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        ASSERT_NE(image, nullptr);
        Picture{image->ptr(), W, H}.save(std::string(dir) + "/" + kinds[type].first + ".png");
        MVNByteBufferPool::sRelease(image);
        byFamily["canvas"].push_back(kinds[type].first);
        clip.detachAll();
    }

    std::ofstream html(std::string(dir) + "/index.html");
    html << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Filter gallery</title>\n"
         << "<style>body{font-family:sans-serif;background:#181818;color:#ddd}figure{display:inline-block;"
         << "margin:6px}figcaption{font-size:12px;text-align:center}img{display:block}</style></head><body>\n"
         << "<h1>Filter gallery</h1>\n"
         << "<p><a href=\"transitions/index.html\">Transitions</a> &middot; <a href=\"text/index.html\">Text</a></p>\n"
         << "<figure><img src=\"_original.png\"><figcaption>original</figcaption></figure>\n";
    for (const auto& family : byFamily) {
        auto title = kFamilyTitles.find(family.first);
        html << "<h2>" << (title != kFamilyTitles.end() ? title->second : family.first) << "</h2>\n";
        for (const std::string& name : family.second) {
            html << "<figure><img src=\"" << name << ".png\"><figcaption>" << name << "</figcaption></figure>\n";
        }
    }
    html << "</body></html>\n";
    removeMarker("not_full_screen");
}

}  // namespace
