// The transition library: the committed programs, materials and C++ table
// are what the generator makes of catalogue.py, and the table holds every
// name the processor's cross-fade filter offers.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "transitions/MVNTransitionCatalogue.h"
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

TEST(TransitionCatalogueGenerated, CommittedFilesAreWhatTheGeneratorWrites) {
    fs::path out = fs::temp_directory_path() / ("mvn-transition-generate-" + std::to_string(::getpid()));
    fs::remove_all(out);
    std::string command = "python3 '" MVN_SOURCE_DIR "/media/transitions/generate.py' --out '" + out.string() +
                          "' > '" + out.string() + ".log' 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0) << readFile(out.string() + ".log");
    std::set<std::string> generatedPrograms;
    int compared = 0;
    for (const auto& item : fs::recursive_directory_iterator(out)) {
        if (!item.is_regular_file()) continue;
        fs::path rel = fs::relative(item.path(), out);
        if (rel.parent_path() == fs::path("media/programs/transitions"))
            generatedPrograms.insert(rel.filename().string());
        EXPECT_EQ(readFile(item.path()), readFile(fs::path(MVN_SOURCE_DIR) / rel))
            << rel << " differs from the generator's output: run media/transitions/generate.py";
        ++compared;
    }
    EXPECT_EQ(compared, MVNTransitionCatalogue::count() + 3);
    // A transition that left the table leaves no stale program behind.
    for (const auto& item : fs::directory_iterator(fs::path(MVN_SOURCE_DIR) / "media/programs/transitions")) {
        std::string name = item.path().filename().string();
        if (name.size() > 8 && name.compare(name.size() - 8, 8, "_fp.glsl") == 0) {
            EXPECT_TRUE(generatedPrograms.count(name)) << name << " is no longer generated";
        }
    }
    fs::remove_all(out);
    fs::remove(out.string() + ".log");
}

TEST(TransitionCatalogue, HoldsEveryCrossFadeNameAndFindsNamesExactly) {
    const char* const crossFade[] = {
        "fade",       "wipeleft",   "wiperight",  "wipeup",     "wipedown",    "slideleft",  "slideright",
        "slideup",    "slidedown",  "circlecrop", "rectcrop",   "distance",    "fadeblack",  "fadewhite",
        "radial",     "smoothleft", "smoothright", "smoothup",  "smoothdown",  "circleopen", "circleclose",
        "vertopen",   "vertclose",  "horzopen",   "horzclose",  "dissolve",    "pixelize",   "diagtl",
        "diagtr",     "diagbl",     "diagbr",     "hlslice",    "hrslice",     "vuslice",    "vdslice",
        "hblur",      "fadegrays",  "wipetl",     "wipetr",     "wipebl",      "wipebr",     "squeezeh",
        "squeezev",   "zoomin",     "fadefast",   "fadeslow",   "hlwind",      "hrwind",     "vuwind",
        "vdwind",     "coverleft",  "coverright", "coverup",    "coverdown",   "revealleft", "revealright",
        "revealup",   "revealdown", "CircleScale"};
    for (const char* name : crossFade) EXPECT_NE(MVNTransitionCatalogue::find(name), nullptr) << name;
    EXPECT_EQ(MVNTransitionCatalogue::find("Fade"), nullptr);
    EXPECT_EQ(MVNTransitionCatalogue::find("circlescale"), nullptr);
    // Ours come on top of those.
    EXPECT_GE(MVNTransitionCatalogue::count(), int(sizeof(crossFade) / sizeof(crossFade[0])) + 20);
    const MVNTransitionCatalogueEntry* scale = MVNTransitionCatalogue::find("CircleScale");
    ASSERT_NE(scale, nullptr);
    EXPECT_NE(scale->uniform("ufmImageWidth"), nullptr);
    EXPECT_NE(scale->uniform("ufmImageHeight"), nullptr);
    EXPECT_EQ(scale->uniform("ufmImageDepth"), nullptr);
}

}  // namespace
