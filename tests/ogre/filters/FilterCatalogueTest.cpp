// The filter catalogue: the committed media and C++ table are what the
// generator makes of catalogue.py, and the table finds every name, in the
// spelling that saved projects use. What the entries hold is checked by
// their effect, in FilterParametersTest.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "filters/MVNFilterCatalogue.h"
#include "MVNTestPaths.h"

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
    std::set<std::string> names;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& e = MVNFilterCatalogue::at(i);
        EXPECT_TRUE(names.insert(e.name).second) << e.name;
        EXPECT_EQ(MVNFilterCatalogue::find(e.name), &e);
        // Only the separable Gaussian runs in two passes, and a pass's
        // material is not itself a filter name.
        bool twoPass = std::string(e.name) == "GaussianBlur";
        EXPECT_EQ(e.passOne != nullptr, twoPass) << e.name;
        EXPECT_EQ(e.passTwo != nullptr, twoPass) << e.name;
        if (twoPass) {
            EXPECT_EQ(MVNFilterCatalogue::find(e.passOne), nullptr);
            EXPECT_EQ(MVNFilterCatalogue::find(e.passTwo), nullptr);
        }
    }
    EXPECT_EQ(MVNFilterCatalogue::find("NoSuchFilter"), nullptr);
    EXPECT_EQ(MVNFilterCatalogue::find(""), nullptr);
    // The keys keep their historic spelling.
    for (const char* key : {"FlashWhiteFliter", "ShadowsHgihlightsFilter", "WhiteBlanceFilter"}) {
        EXPECT_NE(MVNFilterCatalogue::find(key), nullptr) << key;
    }
}

}  // namespace
