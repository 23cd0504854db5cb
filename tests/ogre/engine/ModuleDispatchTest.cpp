// The module's front door through the real, dlopen'ed library: the install
// sequence and every refusal of the three factories, with their exact texts.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogCapture.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNModule.h"
#include "engine/MVNOgreManager.h"
#include "core/MVNProfile.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "services/MVNRenderTexture.h"
#include "timeline/MVNRepository.h"
#include "services/MVNService.h"
#include "MVNTestPaths.h"

extern "C" int MVNOgre_module_install(Morvane::MVNRepository* repository);
extern "C" int MorvaneModuleInstall(Morvane::MVNRepository* repository);

using Morvane::MVNLogLevel;
using Morvane::MVNProfile;
using Morvane::MVNProperties;
using Morvane::MVNRepository;
using Morvane::MVNServiceType;
using MorvaneTest::LogCapture;

namespace {

const char* const kTag = "ogre";

// The registrations as the repository reports them, in the order made.
std::vector<std::string> registrationLines(const LogCapture& log) {
    std::vector<std::string> out;
    for (const auto& line : log.lines()) {
        const std::string& m = line.message;
        if ((line.tag == kTag && m.rfind("ogre module install", 0) == 0) ||
            (line.tag == "Morvane::MVNRepository" && m.find(" registered") != std::string::npos)) {
            out.push_back(m);
        }
    }
    return out;
}

class ModuleDispatch : public ::testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(Morvane::loadModule(MVN_TEST_MODULE_PATH), 0); }

    MVNProfile profile{"hd_1080_30p"};
};

}  // namespace

TEST(ModuleInstall, RegistersEverythingInOrderBetweenItsTwoLogLines) {
    MVNRepository repository;
    LogCapture log;
    EXPECT_EQ(MVNOgre_module_install(&repository), 0);

    std::vector<std::string> expected = {
        "ogre module install...",
        "render system ogreRenderSystem registered",
        "render texture ogreRenderTexture registered",
        "service ogre.color registered as producer",
        "service ogre.pixelbuffer registered as producer",
        "service ogre.image registered as producer",
        "service text registered as producer",
        "service ogre.transition.sample registered as producer",
        "service ogre.filter.sample registered as filter",
        "service ogre.tool registered as filter",
        "service ogre.filter.canvas registered as filter",
        "service ogre.filter.sample2 registered as filter",
        "service ogre.group.sample registered as producer",
        "service ogre.grid registered as producer",
        "ogre module install done",
    };
    EXPECT_EQ(registrationLines(log), expected);
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "ogre module install done"));
    EXPECT_EQ(repository.serviceNames().size(), 11u);
}

TEST(ModuleInstall, HostEntryPointInstallsTheSameAgainAndANullRepositoryIsRefused) {
    MVNRepository repository;
    ASSERT_EQ(MVNOgre_module_install(&repository), 0);
    LogCapture log;
    EXPECT_EQ(MorvaneModuleInstall(&repository), 0);
    EXPECT_EQ(log.countContaining("registered again"), 13);
    EXPECT_EQ(repository.serviceNames().size(), 11u);
    EXPECT_EQ(MVNOgre_module_install(nullptr), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "ogre module install failed, repository is null"));
}

struct RefusalCase {
    const char* label;
    MVNServiceType type;
    const char* registered;  // the factory the repository calls
    std::vector<std::pair<const char*, const char*>> properties;
    const char* error;
};

class ServiceRefusal : public ModuleDispatch, public ::testing::WithParamInterface<RefusalCase> {};

// The dispatch function itself, called through the repository under a
// registered name, so that a "service" property the registry wouldn't
// route (missing, wrong case) still reaches it.
TEST_P(ServiceRefusal, DispatchReturnsNullWithItsExactReason) {
    const RefusalCase& c = GetParam();
    MVNProperties properties;
    for (const auto& kv : c.properties) {
        properties.setString(kv.first, kv.second);
    }
    LogCapture log;
    Morvane::MVNService* service =
        MVNRepository::getSingleton()->createService(c.type, c.registered, profile, properties);
    EXPECT_EQ(service, nullptr);
    EXPECT_EQ(log.count(MVNLogLevel::Error, kTag, c.error), 1);
    // Refused before anything was built.
    EXPECT_EQ(log.countContaining("service not available yet"), 0);
    delete service;
}

INSTANTIATE_TEST_SUITE_P(
    Dispatch, ServiceRefusal,
    ::testing::Values(
        RefusalCase{"MissingName", Morvane::MVN_SERVICE_PRODUCER, "ogre.color", {}, "error service name:"},
        RefusalCase{"NameInOtherCase", Morvane::MVN_SERVICE_PRODUCER, "ogre.color", {{"service", "Ogre.Color"}},
                    "error service name:Ogre.Color"},
        RefusalCase{"FilterNameInCapitals", Morvane::MVN_SERVICE_FILTER, "ogre.tool", {{"service", "OGRE.TOOL"}},
                    "error service name:OGRE.TOOL"},
        RefusalCase{"TransitionWithoutResource", Morvane::MVN_SERVICE_PRODUCER, "ogre.transition.sample",
                    {{"service", "ogre.transition.sample"}}, "create transition sample failed, rsource is null"},
        RefusalCase{"FilterWithEmptyResource", Morvane::MVN_SERVICE_FILTER, "ogre.filter.sample",
                    {{"service", "ogre.filter.sample"}, {"resource", ""}},
                    "create filter sample failed, rsource is null"},
        RefusalCase{"Sample2WithoutFirst", Morvane::MVN_SERVICE_FILTER, "ogre.filter.sample2",
                    {{"service", "ogre.filter.sample2"}, {"resource_two", "b"}},
                    "create filter sample2 failed, rsource_one is null"},
        RefusalCase{"Sample2WithoutSecond", Morvane::MVN_SERVICE_FILTER, "ogre.filter.sample2",
                    {{"service", "ogre.filter.sample2"}, {"resource_one", "a"}},
                    "create filter sample2 failed, rsource_two is null"}),
    [](const ::testing::TestParamInfo<RefusalCase>& info) { return std::string(info.param.label); });

// Through the host's factory: no id, and only the first missing resource told.
TEST_F(ModuleDispatch, Sample2WithoutBothResourcesReportsOnlyTheFirst) {
    MVNProperties properties;
    properties.setString("service", "ogre.filter.sample2");
    LogCapture log;
    EXPECT_EQ(Morvane::createFilter(profile, properties), "");
    EXPECT_EQ(log.count(MVNLogLevel::Error, kTag, "create filter sample2 failed, rsource_one is null"), 1);
    EXPECT_EQ(log.countContaining("rsource_two"), 0);
}

TEST_F(ModuleDispatch, NameInOtherCaseNeverReachesTheModuleThroughTheHost) {
    MVNProperties properties;
    properties.setString("service", "OGRE.COLOR");
    LogCapture log;
    EXPECT_EQ(Morvane::createProducer(profile, properties), "");
    for (const auto& line : log.lines()) {
        EXPECT_NE(line.tag, kTag) << line.message;
    }
}

TEST_F(ModuleDispatch, ToolNeedsNoResource) {
    MVNProperties properties;
    properties.setString("service", "ogre.tool");
    LogCapture log;
    Morvane::MVNService* service =
        MVNRepository::getSingleton()->createService(Morvane::MVN_SERVICE_FILTER, "ogre.tool", profile, properties);
    EXPECT_EQ(log.countContaining("rsource"), 0);
    EXPECT_EQ(log.countContaining("error service name"), 0);
    delete service;
}

struct TextureCase {
    const char* label;
    int width;
    int height;
    int zOrder;
    const char* error;
};

class RenderTextureRefusal : public ModuleDispatch, public ::testing::WithParamInterface<TextureCase> {};

TEST_P(RenderTextureRefusal, StopsAtTheFirstBadNumber) {
    const TextureCase& c = GetParam();
    MVNProperties properties;
    properties.setInt32("width", c.width);
    properties.setInt32("height", c.height);
    properties.setInt32("zOrder", c.zOrder);
    LogCapture log;
    EXPECT_EQ(Morvane::createRenderTexture("ogreRenderTexture", profile, properties), nullptr);
    EXPECT_EQ(log.count(MVNLogLevel::Error, kTag, c.error), 1);
    EXPECT_EQ(log.countContaining("createRenderTexture failed"), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Checks, RenderTextureRefusal,
    ::testing::Values(
        TextureCase{"NegativeWidth", -4, 100, 0, "createRenderTexture failed, invalid width:-4"},
        TextureCase{"WidthBeforeHeight", 0, 0, -1, "createRenderTexture failed, invalid width:0"},
        TextureCase{"ZeroHeight", 100, 0, 0, "createRenderTexture failed, invalid height:0"},
        TextureCase{"HeightBeforeZOrder", 100, 0, -1, "createRenderTexture failed, invalid height:0"},
        TextureCase{"NegativeZOrder", 100, 100, -1, "createRenderTexture failed, invalid zOrder:-1"}),
    [](const ::testing::TestParamInfo<TextureCase>& info) { return std::string(info.param.label); });

TEST_F(ModuleDispatch, RenderTextureAtZOrderZeroPassesTheChecks) {
    MVNProperties properties;
    properties.setInt32("width", 64);
    properties.setInt32("height", 32);
    properties.setInt32("zOrder", 0);
    LogCapture log;
    Morvane::MVNRenderTexture* texture = Morvane::createRenderTexture("ogreRenderTexture", profile, properties);
    EXPECT_EQ(log.countContaining("createRenderTexture failed"), 0);
    delete texture;
}

TEST_F(ModuleDispatch, RenderSystemTakesTheWindowSizeFromItsProperties) {
    MVNProperties properties;
    properties.setInt32("render_win_width", 1921);
    properties.setInt32("render_win_height", 1080);
    Morvane::MVNRenderSystem* system = Morvane::createRenderSystem("ogreRenderSystem", profile, properties);
    ASSERT_NE(system, nullptr);
    LogCapture log;
    // An odd window is refused before any engine work, so no GPU is needed.
    EXPECT_EQ(system->init(), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Info, "Morvane::MVNOgreManager",
                        "profile size:1920x1080, render_win_size:1921x1080"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNOgreManager", "error render win size:1921x1080, must be even"));
    delete system;
    Morvane::MVNOgreManager::getSingleton()->release();
}

// The render system's "reader" property names the read-back strategy; an
// unknown name is an error and leaves the default.
struct ReaderPropertyCase {
    const char* value;
    Morvane::MVNOgreRenderReaderType type;
    const char* error;  // empty: none
};

class ReaderProperty : public ModuleDispatch, public ::testing::WithParamInterface<ReaderPropertyCase> {};

TEST_P(ReaderProperty, NamesTheStrategyOrLogsAndKeepsTheDefault) {
    MVNProperties properties;
    properties.setString("reader", GetParam().value);
    Morvane::MVNOgreManager::getSingleton()->setReaderType(Morvane::MVN_READER_GL);
    LogCapture log;
    Morvane::MVNRenderSystem* system = Morvane::createRenderSystem("ogreRenderSystem", profile, properties);
    ASSERT_NE(system, nullptr);
    EXPECT_EQ(Morvane::MVNOgreManager::getSingleton()->readerType(), GetParam().type);
    EXPECT_EQ(log.countContaining("unknown reader"), std::string(GetParam().error).empty() ? 0 : 1);
    if (*GetParam().error) {
        EXPECT_EQ(log.count(MVNLogLevel::Error, kTag, GetParam().error), 1);
    }
    delete system;
    Morvane::MVNOgreManager::getSingleton()->setReaderType(Morvane::MVN_READER_RTT);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ReaderProperty,
    ::testing::Values(ReaderPropertyCase{"rtt", Morvane::MVN_READER_RTT, ""},
                      ReaderPropertyCase{"rtt_sample", Morvane::MVN_READER_RTT_SAMPLE, ""},
                      ReaderPropertyCase{"direct", Morvane::MVN_READER_DIRECT, ""},
                      ReaderPropertyCase{"gl", Morvane::MVN_READER_GL, ""},
                      ReaderPropertyCase{"GL", Morvane::MVN_READER_RTT, "createRenderSystem unknown reader:GL, rtt used"},
                      ReaderPropertyCase{"", Morvane::MVN_READER_RTT, "createRenderSystem unknown reader:, rtt used"}));
