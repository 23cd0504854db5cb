// The service registry: building through registered factories, refusals,
// lookups by id and destruction, and the render factories by name.
#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

#include "FakeServices.h"
#include "LogCapture.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"
#include "services/MVNTransitionAudio.h"

using namespace Morvane;
using MorvaneTest::FakeProducer;
using MorvaneTest::LogCapture;
using MorvaneTest::StampFilter;

namespace {

const char* const kFactoryTag = "Morvane::MVNFactory";
const char* const kRepositoryTag = "Morvane::MVNRepository";

class Registry : public ::testing::Test {
protected:
    void SetUp() override {
        MorvaneTest::fakeCounters().reset();
        auto* repo = MVNRepository::getSingleton();
        repo->registerService(MVN_SERVICE_PRODUCER, "test.fake",
                              [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new FakeProducer(*p); });
        repo->registerService(MVN_SERVICE_PRODUCER, "test.refuse",
                              [](const MVNProfile*, const MVNProperties*) -> MVNService* { return nullptr; });
        repo->registerService(MVN_SERVICE_PRODUCER, "test.badinit",
                              [](const MVNProfile* p, const MVNProperties*) -> MVNService* {
                                  return new FakeProducer(*p, -1);
                              });
        repo->registerService(MVN_SERVICE_PRODUCER, "test.throw",
                              [](const MVNProfile*, const MVNProperties*) -> MVNService* {
                                  throw std::runtime_error("no memory for you");
                              });
        repo->registerService(MVN_SERVICE_FILTER, "test.filter",
                              [](const MVNProfile* p, const MVNProperties* q) -> MVNService* {
                                  return new StampFilter(*p, q->getInt32("tag", 1));
                              });
        before = MVNFactory::getSingleton()->count();
    }
    void TearDown() override {
        for (const char* n : {"test.fake", "test.refuse", "test.badinit", "test.throw", "test.filter"})
            MVNRepository::getSingleton()->unregisterService(n);
    }
    static MVNProperties service(const char* name) {
        MVNProperties p;
        p.setString("service", name);
        return p;
    }
    MVNProfile profile{"hd_720_25p"};
    int before = 0;
};

}  // namespace

TEST_F(Registry, CreateProducerCopiesPropertiesGivesAnIdAndInitialises) {
    MVNProperties props = service("test.fake");
    props.setString("id", "forged");
    props.setInt32("zOrder", 3);
    props.setString("resource", "a.png");
    std::string id = createProducer(profile, props);
    ASSERT_FALSE(id.empty());
    EXPECT_NE(id, "forged") << "the creation properties' id is not taken over";
    MVNProducer* p = getProducerById(id);
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->getString("id", ""), id);
    EXPECT_EQ(p->getInt32("zOrder", 0), 3);
    EXPECT_EQ(p->getString("resource", ""), "a.png");
    EXPECT_EQ(p->getInt32("render.width", 0), 1280);
    EXPECT_EQ(p->getInt32("render.height", 0), 720);
    EXPECT_EQ(p->getPlaytime(), 250) << "ten seconds at 25 fps when the producer has no timing";
    EXPECT_EQ(MorvaneTest::fakeCounters().inits, 1);
    EXPECT_EQ(getFilterById(id), nullptr);
    EXPECT_EQ(MVNFactory::getSingleton()->count(), before + 1);
    EXPECT_EQ(destroyService(id), 0);

    props.setInt32("in", 10);
    props.setInt32("out", 19);
    id = createProducer(profile, props);
    EXPECT_EQ(getProducerById(id)->getPlaytime(), 10) << "explicit timing is kept";
    destroyService(id);
}

struct Refusal {
    const char* name;
    const char* service;
    const char* tag;
    const char* message;
};

class RegistryRefusal : public Registry, public ::testing::WithParamInterface<Refusal> {};

TEST_P(RegistryRefusal, GivesAnEmptyIdAndSaysWhy) {
    LogCapture log;
    std::string id = createProducer(profile, service(GetParam().service));
    EXPECT_TRUE(id.empty());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, GetParam().tag, GetParam().message)) << GetParam().message;
    EXPECT_EQ(MVNFactory::getSingleton()->count(), before) << "nothing is kept";
    EXPECT_EQ(MorvaneTest::fakeCounters().built.load(), MorvaneTest::fakeCounters().destroyed.load())
        << "whatever was built is gone";
}

INSTANTIATE_TEST_SUITE_P(
    Cases, RegistryRefusal,
    ::testing::Values(
        Refusal{"FactoryRefuses", "test.refuse", kFactoryTag, "create producer failed, service test.refuse gave nothing"},
        Refusal{"UnknownName", "nope", kRepositoryTag, "create service failed, unknown service:nope"},
        Refusal{"NoName", "", kFactoryTag, "create producer failed, no service name"},
        Refusal{"FilterSide", "test.filter", kRepositoryTag, "create service failed, test.filter is a filter, not a producer"},
        Refusal{"InitFails", "test.badinit", kFactoryTag, "create producer failed, test.badinit init returned -1"},
        Refusal{"FactoryThrows", "test.throw", kRepositoryTag,
                "create service test.throw failed, exception: no memory for you"}),
    [](const ::testing::TestParamInfo<Refusal>& info) { return std::string(info.param.name); });

TEST_F(Registry, DestroyReleasesDeletesAndForgets) {
    std::string id = createProducer(profile, service("test.fake"));
    ASSERT_FALSE(id.empty());
    EXPECT_EQ(destroyService(id), 0);
    EXPECT_EQ(MorvaneTest::fakeCounters().releases, 1);
    EXPECT_EQ(MorvaneTest::fakeCounters().destroyed, 1);
    EXPECT_EQ(getProducerById(id), nullptr);
    LogCapture log;
    EXPECT_EQ(destroyService(id), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kFactoryTag, "destroyService failed, no service " + id));
}

// Destroying either end of an attachment detaches first: a destroyed filter
// leaves the chain, a destroyed producer leaves its filters unattached.
TEST_F(Registry, DestroyingEitherEndOfAnAttachmentDetachesFirst) {
    std::string pid = createProducer(profile, service("test.fake"));
    std::string fid = createFilter(profile, service("test.filter"));
    ASSERT_FALSE(fid.empty());
    MVNProducer* p = getProducerById(pid);
    auto* f = dynamic_cast<StampFilter*>(getFilterById(fid));
    ASSERT_NE(f, nullptr);
    EXPECT_FALSE(f->has("render.width")) << "picture defaults are for producers only";
    ASSERT_EQ(p->attach(f), 0);
    EXPECT_EQ(destroyService(fid), 0);
    EXPECT_EQ(p->filterCount(), 0);

    fid = createFilter(profile, service("test.filter"));
    f = dynamic_cast<StampFilter*>(getFilterById(fid));
    ASSERT_EQ(p->attach(f), 0);
    EXPECT_EQ(destroyService(pid), 0);
    EXPECT_EQ(f->connectedService(), nullptr);
    EXPECT_EQ(f->disconnects, 1);
    destroyService(fid);
}

TEST_F(Registry, SecondRegistrationReplacesTheFirstWithALogLine) {
    LogCapture log;
    auto* repo = MVNRepository::getSingleton();
    repo->registerService(MVN_SERVICE_PRODUCER, "test.fake",
                          [](const MVNProfile* p, const MVNProperties*) -> MVNService* {
                              auto* s = new FakeProducer(*p);
                              s->setInt32("second", 1);
                              return s;
                          });
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kRepositoryTag, "service test.fake registered again, replacing the previous factory"));
    std::string id = createProducer(profile, service("test.fake"));
    EXPECT_EQ(getProducerById(id)->getInt32("second", 0), 1);
    destroyService(id);
}

TEST_F(Registry, RenderFactoriesAreFoundByName) {
    LogCapture log;
    MVNProperties none;
    EXPECT_EQ(createRenderTexture("test.noTexture", profile, none), nullptr);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kRepositoryTag, "create render texture failed, unknown name:test.noTexture"));
    EXPECT_EQ(createRenderSystem("test.noSystem", profile, none), nullptr);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kRepositoryTag, "create render system failed, unknown name:test.noSystem"));

    std::vector<std::string> calls;
    MVNRepository::getSingleton()->registerRenderTexture(
        "test.texture", [&calls](const MVNProfile* p, const MVNProperties* q) -> MVNRenderTexture* {
            if (q->getInt32("width", 0) < 1) return nullptr;
            calls.push_back("profile " + std::to_string(p->width()));
            return new MorvaneTest::RecordingRenderTexture(&calls);
        });
    MVNProperties sized;
    sized.setInt32("width", 10);
    MVNRenderTexture* t = createRenderTexture("test.texture", profile, sized);
    ASSERT_NE(t, nullptr);
    delete t;
    EXPECT_EQ(calls, (std::vector<std::string>{"profile 1280", "built", "destroyed"}));
    EXPECT_EQ(createRenderTexture("test.texture", profile, none), nullptr) << "a refusal is a null";
}

TEST_F(Registry, HostTimelinesAreBuiltIn) {
    MVNProperties props;
    props.setString("service", "tractor");
    std::string tractor = createTractor(profile, props);
    props.setString("service", "playlist");
    std::string playlist = createPlaylist(profile, props);
    props.setString("service", "transition_audio");
    std::string audio = createTransitionAudio(profile, props);
    MVNProperties bare;  // no "service" at all: the built-in kind is meant
    std::string playlist2 = createPlaylist(profile, bare);
    ASSERT_NE(getTractorById(tractor), nullptr);
    ASSERT_NE(getPlaylistById(playlist2), nullptr);
    ASSERT_NE(getTransitionAudioById(audio), nullptr);
    EXPECT_EQ(getTractorById(playlist), nullptr);
    EXPECT_EQ(getProducerById(playlist), getPlaylistById(playlist)) << "a playlist is a producer";
    EXPECT_EQ(getPlaylistById(playlist)->getPlaytime(), 0) << "an empty timeline gets no default length";
    for (const std::string& id : {tractor, playlist, audio, playlist2}) EXPECT_EQ(destroyService(id), 0);
}

TEST_F(Registry, ConcurrentCreateLookupAndDestroyKeepsCount) {
    std::vector<std::thread> threads;
    std::atomic<int> failures{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 200; ++i) {
                std::string id = createProducer(profile, service("test.fake"));
                if (id.empty() || getProducerById(id) == nullptr) ++failures;
                if (destroyService(id) != 0) ++failures;
            }
        });
    }
    for (auto& t : threads) t.join();
    EXPECT_EQ(failures.load(), 0);
    EXPECT_EQ(MVNFactory::getSingleton()->count(), before);
    EXPECT_EQ(MorvaneTest::fakeCounters().destroyed, 800);
}
