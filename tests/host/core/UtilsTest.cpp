// Helpers for paths, names and text.
#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "core/MVNTypes.h"
#include "core/MVNUtils.h"

using namespace Morvane;

TEST(Utils, ExtensionOfTheLastComponentWithItsDot) {
    EXPECT_EQ(getExtension("clip.MP4"), ".MP4");
    EXPECT_EQ(getExtension("/a/b.c/movie.tar.gz"), ".gz");
    EXPECT_EQ(getExtension("dir\\pic.jpeg"), ".jpeg");
    EXPECT_EQ(getExtension(".bashrc"), "");
    EXPECT_EQ(getExtension("name."), ".");
}

TEST(Utils, IcaseCompareIgnoresAsciiCaseOnly) {
    EXPECT_TRUE(icaseCompare(".JPG", ".jpg"));
    EXPECT_FALSE(icaseCompare(".jpg", ".jpeg"));
    EXPECT_FALSE(icaseCompare("wmv", ".wmv"));
}

TEST(Utils, OneLineEscapesControlCharactersAndKeepsTheRest) {
    EXPECT_EQ(oneLine("a\nb\r\tc"), "a\\nb\\r\\tc");
    EXPECT_EQ(oneLine(std::string("x\0y\x1f\x7f", 5)), "x\\x00y\\x1f\\x7f");
    // UTF-8 and backslashes pass unchanged.
    EXPECT_EQ(oneLine("caf\xc3\xa9 \\n"), "caf\xc3\xa9 \\n");
}

TEST(Utils, WideTextRoundTripsThroughUtf8) {
    std::wstring text = L"A\u00e9\u4e2d\U0001F600";
    std::string utf8 = to_utf8Str(text);
    EXPECT_EQ(utf8, "A\xc3\xa9\xe4\xb8\xad\xf0\x9f\x98\x80");
    EXPECT_EQ(to_wideStr(utf8), text);
    EXPECT_EQ(to_utf8Str(std::wstring(1, static_cast<wchar_t>(0xD800))), "\xef\xbf\xbd");
    EXPECT_EQ(to_wideStr("a\xff" "b"), L"a\ufffdb");
    EXPECT_EQ(to_wideStr("\xc0\x80"), L"\ufffd\ufffd") << "overlong NUL is refused";
}

TEST(Utils, AbspathTakesBackslashesAndTheWorkingDirectory) {
    std::string cwd = std::filesystem::current_path().string();
    EXPECT_EQ(ports::path::abspath("resources\\fonts\\a.ttf"), cwd + "/resources/fonts/a.ttf");
    EXPECT_EQ(ports::path::abspath("/x/./y/../z/"), "/x/z");
    EXPECT_EQ(ports::path::abspath(nullptr), "");
}

TEST(Utils, ThreadIdsDifferBetweenThreads) {
    uint64_t mine = getCurrentThreadId();
    uint64_t other = 0;
    std::thread t([&] { other = getCurrentThreadId(); });
    t.join();
    EXPECT_NE(mine, 0u);
    EXPECT_NE(mine, other);
}
