// The transition gallery (make gallery): every name of the library as a
// strip of five moments, from the beach picture to the card, one PNG each and
// transitions/index.html grouped by family, in the folder MVN_GALLERY_DIR
// names. Without that variable there is nothing to do.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "TransitionMediaHarness.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "transitions/MVNTransitionCatalogue.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 160;
constexpr int H = 90;
constexpr int kGap = 4;
const float kMoments[] = {0.0f, 0.25f, 0.5f, 0.75f, 0.95f};

// A bundled picture at the gallery's size, R,G,B,A; `fallback` when it
// can't be read.
Image bundledPicture(const char* file, const Image& fallback) {
    Image img;
    return loadPicture(std::string(MVN_SOURCE_DIR "/examples/pictures/") + file, W, H, &img) ? img : fallback;
}

// The moments side by side on a dark ground.
Image strip(const std::vector<Image>& moments) {
    const int width = int(moments.size()) * (W + kGap) - kGap;
    Image out{width, H, std::vector<uint8_t>(size_t(width) * H * 4)};
    for (size_t i = 0; i < out.rgba.size(); i += 4) {
        out.rgba[i] = out.rgba[i + 1] = out.rgba[i + 2] = 24;
        out.rgba[i + 3] = 255;
    }
    for (size_t m = 0; m < moments.size(); ++m) {
        for (int y = 0; y < H; ++y) {
            for (int x = 0; x < W; ++x) out.set(int(m) * (W + kGap) + x, y, moments[m].at(x, y));
        }
    }
    return out;
}

TEST(TransitionGallery, WritesEveryTransitionAsAStripWithAnIndex) {
    const char* root = std::getenv("MVN_GALLERY_DIR");
    if (root == nullptr || *root == 0) GTEST_SKIP() << "MVN_GALLERY_DIR is not set";
    const std::string dir = std::string(root) + "/transitions";
    std::filesystem::create_directories(dir);
    Marker windowed("not_full_screen");
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    Image a = bundledPicture("beach.png", testChart(W, H));
    Image b = bundledPicture("card.png", testChart(W, H));
    TransitionMediaHarness harness(W, H);
    harness.setPictures(a, b);

    std::map<std::string, std::vector<std::string>> byFamily;
    for (int i = 0; i < MVNTransitionCatalogue::count(); ++i) {
        const MVNTransitionCatalogueEntry& entry = MVNTransitionCatalogue::at(i);
        SCOPED_TRACE(entry.name);
        std::vector<Image> moments;
        for (float progress : kMoments) {
            std::vector<std::string> errors;
            Image moment = harness.render(entry.name, progress, {}, &errors);
            ASSERT_FALSE(moment.rgba.empty()) << entry.name << " did not draw";
            for (const auto& line : errors) ADD_FAILURE() << entry.name << ": " << line;
            // Transparent pixels show as the dark ground.
            for (size_t p = 0; p < moment.rgba.size(); p += 4) {
                float alpha = moment.rgba[p + 3] / 255.0f;
                for (int c = 0; c < 3; ++c)
                    moment.rgba[p + c] = uint8_t(moment.rgba[p + c] * alpha + 24 * (1 - alpha) + 0.5f);
                moment.rgba[p + 3] = 255;
            }
            moments.push_back(std::move(moment));
        }
        strip(moments).picture().save(dir + "/" + entry.name + ".png");
        byFamily[entry.family].push_back(entry.name);
    }

    std::ofstream html(dir + "/index.html");
    html << "<!DOCTYPE html>\n<html><head><meta charset=\"utf-8\"><title>Transition gallery</title>\n"
         << "<style>body{font-family:sans-serif;background:#181818;color:#ddd}figure{margin:8px 6px}"
         << "figcaption{font-size:12px}img{display:block}</style></head><body>\n"
         << "<h1>Transition gallery</h1>\n<p>Each strip shows progress";
    for (float progress : kMoments) html << " " << progress;
    html << ", from the beach picture to the card.</p>\n";
    for (int f = 0; f < MVNTransitionCatalogue::familyCount(); ++f) {
        const MVNTransitionFamily& family = MVNTransitionCatalogue::family(f);
        html << "<h2>" << family.title << "</h2>\n";
        for (const std::string& name : byFamily[family.name]) {
            html << "<figure><img src=\"" << name << ".png\"><figcaption>" << name << "</figcaption></figure>\n";
        }
    }
    html << "</body></html>\n";
}

}  // namespace
