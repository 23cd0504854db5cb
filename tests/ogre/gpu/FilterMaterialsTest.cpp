// Every catalogue name has a material of that name whose programs compile,
// link and draw; every uniform the processor may send is declared as a float
// in its fragment program; neutral settings leave the picture as it is.
#include <gtest/gtest.h>

#include <cstdlib>

#include "FilterMediaHarness.h"
#include "MVNFilterCatalogue.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// One engine and one harness for every test of a process.
class FilterMedia : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        touchMarker("not_full_screen");
        sRun = new EngineRun(W, H);
        if (sRun->rc == 0) {
            sHarness = new FilterMediaHarness(W, H);
            sChart = testChart(W, H);
            sHarness->setInput(sChart);
        }
    }
    static void TearDownTestSuite() {
        delete sHarness;
        sHarness = nullptr;
        delete sRun;
        sRun = nullptr;
        removeMarker("not_full_screen");
    }
    void SetUp() override { ASSERT_EQ(sRun->rc, 0) << "the engine did not start"; }

    static EngineRun* sRun;
    static FilterMediaHarness* sHarness;
    static Image sChart;
};
EngineRun* FilterMedia::sRun = nullptr;
FilterMediaHarness* FilterMedia::sHarness = nullptr;
Image FilterMedia::sChart;

std::vector<std::string> families() {
    std::vector<std::string> out;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        std::string family = MVNFilterCatalogue::at(i).family;
        if (std::find(out.begin(), out.end(), family) == out.end()) out.push_back(family);
    }
    return out;
}

class FilterFamily : public FilterMedia, public ::testing::WithParamInterface<std::string> {};

TEST_P(FilterFamily, EveryMaterialCompilesDrawsAndDeclaresItsUniformsAsFloats) {
    int members = 0;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& entry = MVNFilterCatalogue::at(i);
        if (GetParam() != entry.family) continue;
        ++members;
        SCOPED_TRACE(entry.name);
        std::vector<std::string> errors;
        std::vector<std::string> badUniforms;
        Image out = sHarness->render(entry.name, {}, &errors, nullptr, [&](Ogre::Pass* pass) {
            ASSERT_TRUE(pass->hasFragmentProgram());
            Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
            for (int u = 0; u < entry.sentUniformCount; ++u) {
                const Ogre::GpuConstantDefinition* def = params->_findNamedConstantDefinition(entry.sentUniforms[u]);
                if (!def || def->constType != Ogre::GCT_FLOAT1) badUniforms.push_back(entry.sentUniforms[u]);
            }
            EXPECT_NE(params->_findNamedConstantDefinition("inputImageTexture"), nullptr);
        });
        ASSERT_FALSE(out.rgba.empty()) << "no material " << entry.name;
        // For a look by eye: MVN_FILTER_PICTURES=folder keeps every result.
        if (const char* dir = std::getenv("MVN_FILTER_PICTURES")) {
            out.picture().save(std::string(dir) + "/" + entry.name + ".png");
        }
        for (const std::string& e : errors) ADD_FAILURE() << "engine: " << e;
        EXPECT_TRUE(badUniforms.empty()) << "not declared as float: " << ::testing::PrintToString(badUniforms);
    }
    EXPECT_GT(members, 0);
}

INSTANTIATE_TEST_SUITE_P(Catalogue, FilterFamily, ::testing::ValuesIn(families()),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

}  // namespace
