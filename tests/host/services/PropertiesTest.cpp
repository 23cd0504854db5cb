// Property bags: notification and its blocking, listeners, reads across the
// typed stores, copying between bags and concurrent use.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "services/MVNListenerProperty.h"
#include "services/MVNProperties.h"

using namespace Morvane;

namespace {

// Records every change the bag reports about itself.
class RecordingProperties : public MVNProperties {
public:
    void _OnPropertyChanged(const char* key) override { changes.push_back(key); }
    std::vector<std::string> changes;
};

class RecordingListener : public MVNListenerProperty {
public:
    void onPropertyChanged(MVNProperties* properties, const char* key) override {
        seen.push_back(key);
        source = properties;
    }
    std::vector<std::string> seen;
    MVNProperties* source = nullptr;
};

}  // namespace

TEST(Properties, EverySetterNotifies) {
    RecordingProperties p;
    p.setInt32("a", 1);
    p.setDouble("b", 2.5);
    p.setBoolean("c", true);
    p.setString("d", "x");
    p.setColor("e", MVNColor4B(1, 2, 3, 4));
    p.setRect("f", MVNRect(1, 2, 3, 4));
    p.setWstring("g", L"w");
    EXPECT_EQ(p.changes, (std::vector<std::string>{"a", "b", "c", "d", "e", "f", "g"}));
}

TEST(Properties, BlocksNestAndAnExtraUnblockDoesNotSilenceForGood) {
    RecordingProperties p;
    p.block();
    p.block();
    p.unblock();
    p.setInt32("k", 1);
    EXPECT_TRUE(p.changes.empty()) << "still inside the outer block";
    p.unblock();
    p.unblock();  // unmatched
    p.setInt32("k", 2);
    EXPECT_EQ(p.changes, (std::vector<std::string>{"k"}));
    p.block();
    p.setInt32("k", 3);
    EXPECT_EQ(p.changes.size(), 1u) << "a block after an unmatched unblock must still block";
}

TEST(Properties, ListenersHearUnblockedChangesAfterTheBagAndCanBeRemoved) {
    RecordingProperties p;
    RecordingListener l1, l2;
    p.addListener(&l1);
    p.addListener(&l2);
    p.addListener(&l1);  // a second add is ignored
    p.setInt32("x", 1);
    EXPECT_EQ(l1.seen, (std::vector<std::string>{"x"}));
    EXPECT_EQ(l2.seen, (std::vector<std::string>{"x"}));
    EXPECT_EQ(l1.source, &p);

    p.block();
    p.setInt32("y", 1);
    p.unblock();
    EXPECT_EQ(l1.seen.size(), 1u);

    p.removeListener(&l1);
    p.setInt32("z", 1);
    EXPECT_EQ(l1.seen.size(), 1u);
    EXPECT_EQ(l2.seen, (std::vector<std::string>{"x", "z"}));
}

TEST(Properties, ListenerMaySetPropertiesOfTheSameBag) {
    struct Echo : MVNListenerProperty {
        void onPropertyChanged(MVNProperties* p, const char* key) override {
            if (std::string(key) == "in") p->setInt32("out", p->getInt32("in", 0) * 2);
        }
    } echo;
    MVNProperties p;
    p.addListener(&echo);
    p.setInt32("in", 21);
    EXPECT_EQ(p.getInt32("out", 0), 42);
}

TEST(Properties, LastSetWinsAcrossStores) {
    MVNProperties p;
    p.setInt32("k", 5);
    p.setString("k", "hello");
    EXPECT_EQ(p.getString("k", ""), "hello");
    EXPECT_EQ(p.getInt32("k", -1), -1) << "the int is gone; the string isn't numeric";
    p.setDouble("k", 2.75);
    EXPECT_EQ(p.getString("k", ""), "2.75");
    EXPECT_EQ(p.keys(), (std::vector<std::string>{"k"}));
    EXPECT_EQ(p.getInt32(nullptr, 3), 3);
    EXPECT_FALSE(p.has("none"));
}

TEST(Properties, RemoveForgetsTheKeyAndNotifies) {
    RecordingProperties p;
    p.setInt32("k", 1);
    p.changes.clear();
    EXPECT_TRUE(p.remove("k"));
    EXPECT_FALSE(p.has("k"));
    EXPECT_EQ(p.changes, (std::vector<std::string>{"k"}));
    EXPECT_FALSE(p.remove("k"));
    EXPECT_EQ(p.changes.size(), 1u);
}

// One value put into one store, read through every getter.
struct CrossRead {
    const char* name;
    void (*set)(MVNProperties&);
    int asInt;  // with default -999
    double asDouble;  // with default -999
    int asBool;  // -1 means the default (false) comes back for a default of false and true for true
    const char* asString;
};

class PropertiesCrossRead : public ::testing::TestWithParam<CrossRead> {};

TEST_P(PropertiesCrossRead, ReadsThroughOtherGetters) {
    const CrossRead& c = GetParam();
    MVNProperties p;
    c.set(p);
    EXPECT_EQ(p.getInt32("k", -999), c.asInt);
    EXPECT_DOUBLE_EQ(p.getDouble("k", -999), c.asDouble);
    if (c.asBool < 0) {
        EXPECT_FALSE(p.getBoolean("k", false));
        EXPECT_TRUE(p.getBoolean("k", true));
    } else {
        EXPECT_EQ(p.getBoolean("k", !c.asBool), c.asBool != 0);
    }
    EXPECT_EQ(p.getString("k", "def"), c.asString);
}

INSTANTIATE_TEST_SUITE_P(
    Stores, PropertiesCrossRead,
    ::testing::Values(
        CrossRead{"int", [](MVNProperties& p) { p.setInt32("k", 42); }, 42, 42.0, 1, "42"},
        CrossRead{"doubleTruncates", [](MVNProperties& p) { p.setDouble("k", -2.9); }, -2, -2.9, 1, "-2.9"},
        CrossRead{"doubleHuge", [](MVNProperties& p) { p.setDouble("k", 1e20); }, 2147483647, 1e20, 1, "1e+20"},
        CrossRead{"boolTrue", [](MVNProperties& p) { p.setBoolean("k", true); }, 1, 1.0, 1, "true"},
        CrossRead{"numericString", [](MVNProperties& p) { p.setString("k", "12"); }, 12, 12.0, -1, "12"},
        CrossRead{"decimalString", [](MVNProperties& p) { p.setString("k", " 3.75 "); }, 3, 3.75, -1, " 3.75 "},
        CrossRead{"trueString", [](MVNProperties& p) { p.setString("k", "TRUE"); }, -999, -999, 1, "TRUE"},
        CrossRead{"zeroString", [](MVNProperties& p) { p.setString("k", "0"); }, 0, 0.0, 0, "0"},
        CrossRead{"wordString", [](MVNProperties& p) { p.setString("k", "12abc"); }, -999, -999, -1, "12abc"},
        CrossRead{"color", [](MVNProperties& p) { p.setColor("k", MVNColor4B(255, 0, 16, 128)); }, -999, -999, -1,
                  "#ff001080"},
        CrossRead{"wide", [](MVNProperties& p) { p.setWstring("k", L"\u00e9t\u00e9"); }, -999, -999, -1,
                  "\xc3\xa9t\xc3\xa9"}),
    [](const ::testing::TestParamInfo<CrossRead>& info) { return std::string(info.param.name); });

// A string that does not parse gives the default, not a half-read value.
TEST(Properties, ColorAndRectParseFromStrings) {
    MVNProperties p;
    p.setString("c", "#0a0b0c");  // no alpha: refused
    EXPECT_EQ(p.getColor("c", MVNColor4B(1, 1, 1, 1)), MVNColor4B(1, 1, 1, 1));
    p.setString("r", "[10:20 300x400]");
    EXPECT_TRUE(p.getRect("r", MVNRect()).equals(MVNRect(10, 20, 300, 400)));
    EXPECT_EQ(p.getColor("none", MVNColor4B(9, 9, 9, 9)), MVNColor4B(9, 9, 9, 9));
    p.setString("w", "caf\xc3\xa9");
    EXPECT_EQ(p.getWstring("w", L""), L"caf\u00e9");
}

TEST(Properties, FromOtherCopiesEveryStoreButExcludedKeysAndNotifies) {
    MVNProperties src;
    src.setInt32("id", 99);
    src.setString("service", "color");
    src.setDouble("ufmStrength", 0.5);
    src.setBoolean("border", true);
    src.setColor("color", MVNColor4B(1, 2, 3, 4));
    src.setRect("geometry", MVNRect(1, 2, 3, 4));
    src.setString("skip", "me");

    RecordingProperties dst;
    dst.setString("id", "keep");
    dst.setString("border", "stale string");
    dst.changes.clear();
    std::vector<std::string> excluded{"id", "skip"};
    dst.fromOther(src, &excluded);

    EXPECT_EQ(dst.getString("id", ""), "keep");
    EXPECT_FALSE(dst.has("skip"));
    EXPECT_EQ(dst.getString("service", ""), "color");
    EXPECT_DOUBLE_EQ(dst.getDouble("ufmStrength", 0), 0.5);
    EXPECT_TRUE(dst.getBoolean("border", false));
    EXPECT_EQ(dst.getString("border", ""), "true") << "the copy replaced the string store's value";
    EXPECT_EQ(dst.getColor("color", MVNColor4B()), MVNColor4B(1, 2, 3, 4));
    EXPECT_TRUE(dst.getRect("geometry", MVNRect()).equals(MVNRect(1, 2, 3, 4)));
    EXPECT_EQ(dst.changes, (std::vector<std::string>{"border", "color", "geometry", "service", "ufmStrength"}));

    MVNProperties all;
    all.fromOther(src, nullptr);
    EXPECT_EQ(all.keys(), src.keys());
}

TEST(Properties, CopyTakesValuesButNotListeners) {
    MVNProperties a;
    RecordingListener l;
    a.addListener(&l);
    a.setInt32("n", 1);
    MVNProperties b(a);
    b.setInt32("n", 2);
    EXPECT_EQ(l.seen.size(), 1u);
    EXPECT_EQ(a.getInt32("n", 0), 1);
    EXPECT_EQ(b.getInt32("n", 0), 2);
}

// Writers move a key between stores while readers read it through every
// getter: every read must see one whole value of one of the writers.
TEST(Properties, ConcurrentReadersAndWritersSeeWholeValues) {
    MVNProperties p;
    p.setInt32("k", 1);
    std::atomic<bool> stop{false};
    std::atomic<int> bad{0};
    std::vector<std::thread> threads;
    threads.emplace_back([&] {
        for (int i = 0; i < 20000; ++i) p.setInt32("k", 1);
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 20000; ++i) p.setString("k", "1");
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 20000; ++i) p.setDouble("k", 1.0);
    });
    for (int r = 0; r < 2; ++r) {
        threads.emplace_back([&] {
            while (!stop.load()) {
                if (p.getInt32("k", -1) != 1) ++bad;
                if (p.getDouble("k", -1) != 1.0) ++bad;
                if (!p.getBoolean("k", false)) ++bad;
                std::string s = p.getString("k", "");
                if (s != "1") ++bad;
                if (!p.has("k")) ++bad;
            }
        });
    }
    for (int i = 0; i < 3; ++i) threads[i].join();
    stop = true;
    for (size_t i = 3; i < threads.size(); ++i) threads[i].join();
    EXPECT_EQ(bad.load(), 0);
    EXPECT_EQ(p.keys().size(), 1u);
}
