// The filter catalogue: the committed media and C++ table are what the
// generator makes of catalogue.py, and the table holds the names, defaults
// and quirks that hosts and saved projects rely on.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "MVNFilterCatalogue.h"

using namespace Morvane;
namespace fs = std::filesystem;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

TEST(FilterCatalogueGenerated, CommittedFilesAreWhatTheGeneratorWrites) {
    fs::path out = fs::temp_directory_path() / ("mvn-filter-generate-" + std::to_string(::getpid()));
    fs::remove_all(out);
    std::string command = "python3 '" MVN_SOURCE_DIR "/media/filters/generate.py' --out '" + out.string() +
                          "' > '" + out.string() + ".log' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << readFile(out.string() + ".log");
    int compared = 0;
    std::set<std::string> generatedMaterials;
    for (const auto& item : fs::recursive_directory_iterator(out)) {
        if (!item.is_regular_file()) continue;
        fs::path rel = fs::relative(item.path(), out);
        if (rel.parent_path() == fs::path("media/materials")) generatedMaterials.insert(rel.filename().string());
        EXPECT_EQ(readFile(item.path()), readFile(fs::path(MVN_SOURCE_DIR) / rel))
            << rel << " differs from the generator's output: run media/filters/generate.py";
        ++compared;
    }
    EXPECT_GE(compared, 3);
    // A family that left the table leaves no stale script behind.
    for (const auto& item : fs::directory_iterator(fs::path(MVN_SOURCE_DIR) / "media/materials")) {
        std::string name = item.path().filename().string();
        if (name.rfind("filters", 0) == 0) {
            EXPECT_TRUE(generatedMaterials.count(name)) << name << " is no longer generated";
        }
    }
    fs::remove_all(out);
    fs::remove(out.string() + ".log");
}

TEST(FilterCatalogueGenerated, BundledLookupTablesAreWhatTheirGeneratorWrites) {
    fs::path out = fs::temp_directory_path() / ("mvn-lut-generate-" + std::to_string(::getpid()));
    fs::remove_all(out);
    std::string command = "python3 '" MVN_SOURCE_DIR "/media/luts/generate.py' --out '" + out.string() + "' > /dev/null";
    ASSERT_EQ(std::system(command.c_str()), 0);
    int compared = 0;
    for (const auto& item : fs::directory_iterator(out)) {
        fs::path committed = fs::path(MVN_SOURCE_DIR) / "media/luts" / item.path().filename();
        EXPECT_TRUE(readFile(item.path()) == readFile(committed))
            << committed << " differs from the generator's output: run media/luts/generate.py";
        ++compared;
    }
    EXPECT_EQ(compared, 3);
    fs::remove_all(out);
}

TEST(FilterCatalogue, HoldsEveryNameOnceAndFindsItByName) {
    ASSERT_EQ(MVNFilterCatalogue::count(), 135);
    std::set<std::string> names;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& e = MVNFilterCatalogue::at(i);
        EXPECT_TRUE(names.insert(e.name).second) << e.name;
        EXPECT_EQ(MVNFilterCatalogue::find(e.name), &e);
    }
    EXPECT_EQ(MVNFilterCatalogue::find("NoSuchFilter"), nullptr);
    EXPECT_EQ(MVNFilterCatalogue::find(""), nullptr);
    // The keys keep their historic spelling.
    for (const char* key : {"FlashWhiteFliter", "ShadowsHgihlightsFilter", "WhiteBlanceFilter"}) {
        EXPECT_NE(MVNFilterCatalogue::find(key), nullptr) << key;
    }
}

struct FamilyCount {
    const char* family;
    int count;
};

class FilterCatalogueFamilies : public ::testing::TestWithParam<FamilyCount> {};

TEST_P(FilterCatalogueFamilies, HaveTheirMembers) {
    int n = 0;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) n += GetParam().family == std::string(MVNFilterCatalogue::at(i).family);
    EXPECT_EQ(n, GetParam().count);
}

INSTANTIATE_TEST_SUITE_P(All, FilterCatalogueFamilies,
                         ::testing::Values(FamilyCount{"look", 58}, FamilyCount{"animation", 25},
                                           FamilyCount{"mask", 6}, FamilyCount{"lut", 1}, FamilyCount{"adjust", 12},
                                           FamilyCount{"blur", 7}, FamilyCount{"stylize", 10},
                                           FamilyCount{"distort", 5}, FamilyCount{"motion", 11}),
                         [](const ::testing::TestParamInfo<FamilyCount>& info) { return info.param.family; });

TEST(FilterCatalogue, LooksShareOneProgramAndWriteIntensityOne) {
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& e = MVNFilterCatalogue::at(i);
        if (std::string(e.family) != "look") continue;
        SCOPED_TRACE(e.name);
        EXPECT_STREQ(e.program, "look_fp.glsl");
        EXPECT_TRUE(e.propertiesInit);
        ASSERT_EQ(e.uniformCount, 1);
        EXPECT_STREQ(e.uniforms[0].name, "ufmIntensity");
        EXPECT_EQ(e.uniforms[0].initValue, 1.0);
        EXPECT_STREQ(e.uniforms[0].liveKey, "ufmIntensity");
    }
}

// The deliberate differences between what the constructor writes and what
// configuration falls back to.
TEST(FilterCatalogue, KeepsTheConstructorAndFallbackQuirks) {
    const MVNFilterUniform* minimum = MVNFilterCatalogue::find("ColorLevelFilter")->uniform("ufmLevelMinimum");
    ASSERT_NE(minimum, nullptr);
    EXPECT_EQ(minimum->initValue, 0.2);
    EXPECT_EQ(minimum->fallback, 0.0);

    for (const char* name : {"LightMixFilter", "ZoomRestoreFilter", "ImageColorFixFilter", "GaussianBlur",
                             "ApplyDynamicLutFilter", "MaskHeartFilter", "AnimCube"}) {
        EXPECT_FALSE(MVNFilterCatalogue::find(name)->propertiesInit) << name;
    }
    int withInitRow = 0;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& e = MVNFilterCatalogue::at(i);
        if (e.propertiesInit && std::string(e.family) != "look") ++withInitRow;
    }
    EXPECT_EQ(withInitRow, 39);

    EXPECT_EQ(MVNFilterCatalogue::find("PrewittEdgeFilter")->special, MVNFilterSpecial::ResetEdgeStrength);
    EXPECT_EQ(MVNFilterCatalogue::find("SketchFilter")->special, MVNFilterSpecial::ResetEdgeStrength);
    EXPECT_EQ(MVNFilterCatalogue::find("SobelEdgeFilter")->special, MVNFilterSpecial::None);
}

// Which property changes reach the GPU at once.
TEST(FilterCatalogue, LiveKeysFollowTheirSources) {
    auto key = [](const char* filter, const char* uniform) {
        const MVNFilterUniform* u = MVNFilterCatalogue::find(filter)->uniform(uniform);
        return u && u->liveKey ? std::string(u->liveKey) : std::string();
    };
    EXPECT_EQ(key("BlurFilter", "ufmBlurSize"), "ufmBlurSize");
    EXPECT_EQ(key("BlurFilter", "ufmImageW"), "");
    EXPECT_EQ(key("ShowMachineFilter", "ufmVideoTime"), "");
    EXPECT_EQ(key("ShakeFourFilter", "ufmVideoTime"), "ufmVideoTime");
    EXPECT_EQ(key("FadeInOutFilter", "ufmFPS"), "");
    EXPECT_EQ(key("LightMixFilter", "ufmSecondColorA"), "ufmSecondColorA");
    EXPECT_EQ(key("GreenCutOutFilter", "ufmColorG"), "ufmColor");
    EXPECT_EQ(key("AnimSwirl", "ufmAnimIsIn"), "ufmAnimIsIn");
    EXPECT_EQ(key("MaskStarShapeFilter", "ufmStarSize"), "ufmStarSize");
}

}  // namespace
