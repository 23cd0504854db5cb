// 3D lookup tables from .cube files: what a good file becomes (the packed
// picture, byte by byte), and the exact error of every kind of bad file.
#include <gtest/gtest.h>

#include <unistd.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>

#include "LogCapture.h"
#include "core/MVNLut3d.h"

using namespace Morvane;
namespace fs = std::filesystem;

namespace {

class CubeFile {
public:
    explicit CubeFile(const std::string& text, const std::string& name = "table.cube") {
        mPath = (fs::temp_directory_path() / ("mvn-lut-" + std::to_string(::getpid()) + "-" + name)).string();
        std::ofstream(mPath, std::ios::binary) << text;
    }
    ~CubeFile() { std::remove(mPath.c_str()); }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

// The colour lines of an N-step table of f, red fastest.
std::string colours(int n, const std::function<void(float&, float&, float&)>& f) {
    std::ostringstream out;
    for (int b = 0; b < n; ++b)
        for (int g = 0; g < n; ++g)
            for (int r = 0; r < n; ++r) {
                float cr = r / float(n - 1), cg = g / float(n - 1), cb = b / float(n - 1);
                f(cr, cg, cb);
                out << cr << " " << cg << " " << cb << "\n";
            }
    return out.str();
}

const auto kIdentity = [](float&, float&, float&) {};

// R,G,B of the picture's pixel for the table entry (r, g, b).
struct Bytes {
    int r, g, b;
};
Bytes pixelOf(MVNLut3d& lut, int r, int g, int b) {
    int n = lut.lutSize();
    const unsigned char* p = lut.data() + (static_cast<size_t>(g) * n * n + b * n + r) * 3;
    // Native order of a packed 0xRRGGBB word on this little-endian machine.
    return {p[2], p[1], p[0]};
}

TEST(Lut3d, PictureHoldsSlicesSideBySideInNativeByteOrder) {
    // Each entry names its own grid position, so a misplaced slice, row or
    // column, or swapped bytes, show at once.
    CubeFile file("TITLE \"grid\"\nLUT_3D_SIZE 3\n" + colours(3, [](float& r, float& g, float& b) {
                      r = r * 0.2f;
                      g = 0.4f + g * 0.2f;
                      b = 0.8f + b * 0.2f;
                  }));
    MVNLut3d lut;
    ASSERT_EQ(lut.loadFromFile(file.path()), 0) << lut.lastError();
    ASSERT_EQ(lut.lutSize(), 3);
    ASSERT_NE(lut.data(), nullptr);
    for (int b = 0; b < 3; ++b)
        for (int g = 0; g < 3; ++g)
            for (int r = 0; r < 3; ++r) {
                Bytes px = pixelOf(lut, r, g, b);
                EXPECT_EQ(px.r, std::lround(r * 0.1f * 255)) << r << g << b;
                EXPECT_EQ(px.g, std::lround((0.4f + g * 0.1f) * 255)) << r << g << b;
                EXPECT_EQ(px.b, std::lround((0.8f + b * 0.1f) * 255)) << r << g << b;
            }
    EXPECT_EQ(lut.colors().size(), 27u);
}

TEST(Lut3d, ReadsCommentsTabsCarriageReturnsAndSignedExponents) {
    std::string text = "# a comment\r\nTITLE \"with # inside\"\r\n\r\n  LUT_3D_SIZE\t2\r\n";
    text += "0 0 0\r\n+1e0\t0 0\r\n0 1.0E+0 0\r\n1 1 0\r\n";
    text += "# between\n0 0 1\n1 0 1\n0 1 1\n  1   1   1  \n";
    CubeFile file(text);
    MVNLut3d lut;
    ASSERT_EQ(lut.loadFromFile(file.path()), 0) << lut.lastError();
    EXPECT_EQ(lut.lutSize(), 2);
    Bytes px = pixelOf(lut, 1, 0, 0);
    EXPECT_EQ(px.r, 255);
    EXPECT_EQ(px.g, 0);
    EXPECT_EQ(px.b, 0);
}

TEST(Lut3d, SizeThirtyThreeFillsThePictureToItsLastPixel) {
    CubeFile file("LUT_3D_SIZE 33\n" + colours(33, kIdentity));
    MVNLut3d lut;
    ASSERT_EQ(lut.loadFromFile(file.path()), 0);
    Bytes px = pixelOf(lut, 32, 32, 32);  // white, last pixel of the last row
    EXPECT_EQ(px.r + px.g + px.b, 3 * 255);
}

TEST(Lut3d, ADomainBeyondOneIsResampledOntoZeroToOne) {
    // Identity over inputs 0..2: over 0..1 the picture is the identity.
    CubeFile file("LUT_3D_SIZE 5\nDOMAIN_MIN 0 0 0\nDOMAIN_MAX 2 2 2\n" +
                  colours(5, [](float& r, float& g, float& b) {
                      r *= 2;
                      g *= 2;
                      b *= 2;
                  }));
    MVNLut3d lut;
    ASSERT_EQ(lut.loadFromFile(file.path()), 0) << lut.lastError();
    for (int i = 0; i < 5; ++i) {
        Bytes px = pixelOf(lut, i, 4 - i, i);
        EXPECT_NEAR(px.r, i * 255 / 4.0, 1);
        EXPECT_NEAR(px.g, (4 - i) * 255 / 4.0, 1);
        EXPECT_NEAR(px.b, i * 255 / 4.0, 1);
    }
}

TEST(Lut3d, OutputOutsideZeroToOneIsClampedInThePicture) {
    CubeFile file("LUT_3D_SIZE 2\n" + colours(2, [](float& r, float& g, float&) {
                      r = r * 3 - 1;
                      g = -0.5f;
                  }));
    MVNLut3d lut;
    ASSERT_EQ(lut.loadFromFile(file.path()), 0);
    EXPECT_EQ(pixelOf(lut, 0, 0, 0).r, 0);
    EXPECT_EQ(pixelOf(lut, 1, 0, 0).r, 255);
    EXPECT_EQ(pixelOf(lut, 1, 1, 1).g, 0);
    EXPECT_FLOAT_EQ(lut.colors()[1].r, 2.0f);
}

TEST(Lut3d, NumbersReadTheSameUnderACommaLocale) {
    const char* old = std::setlocale(LC_NUMERIC, nullptr);
    std::string saved = old ? old : "C";
    if (!std::setlocale(LC_NUMERIC, "de_DE.UTF-8") && !std::setlocale(LC_NUMERIC, "fr_FR.UTF-8")) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    MVNLut3dColor3F c;
    bool ok = c.fromString("0.25 0.5 0.75");
    std::setlocale(LC_NUMERIC, saved.c_str());
    EXPECT_TRUE(ok);
    EXPECT_FLOAT_EQ(c.g, 0.5f);
}

TEST(Lut3dColor3F, EmptyLineIsFalseAndSilent) {
    MorvaneTest::LogCapture log;
    MVNLut3dColor3F c(1, 2, 3);
    EXPECT_FALSE(c.fromString(""));
    EXPECT_TRUE(log.lines().empty());
    EXPECT_FLOAT_EQ(c.b, 3.0f);
}

class Lut3dColor3FBadLine : public ::testing::TestWithParam<const char*> {};

TEST_P(Lut3dColor3FBadLine, LogsTheFormatErrorAndKeepsTheColour) {
    MorvaneTest::LogCapture log;
    MVNLut3dColor3F c(1, 2, 3);
    EXPECT_FALSE(c.fromString(GetParam()));
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNLut3dColor3F", "error LUT3D color format"), 1);
    EXPECT_FLOAT_EQ(c.r, 1.0f);
    EXPECT_FLOAT_EQ(c.g, 2.0f);
    EXPECT_FLOAT_EQ(c.b, 3.0f);
}

INSTANTIATE_TEST_SUITE_P(Lines, Lut3dColor3FBadLine,
                         ::testing::Values("0.5 0.5", "0.5 0.5 0.5 0.5", "0,5 0,5 0,5", "1 2 nan", "1 2 inf",
                                           "   "));

struct BadFile {
    const char* name;
    std::string text;
    std::string message;  // with %s for the path
};
std::ostream& operator<<(std::ostream& os, const BadFile& b) { return os << b.name; }

class Lut3dBadFile : public ::testing::TestWithParam<BadFile> {};

TEST_P(Lut3dBadFile, FailsWithItsExactReasonAndLeavesNoTable) {
    CubeFile file(GetParam().text);
    MorvaneTest::LogCapture log;
    MVNLut3d lut;
    EXPECT_EQ(lut.loadFromFile(file.path()), -1);
    std::string expected = GetParam().message;
    expected.replace(expected.find("%s"), 2, file.path());
    EXPECT_EQ(lut.lastError(), expected);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNLut3d", expected), 1);
    EXPECT_EQ(lut.data(), nullptr);
    EXPECT_EQ(lut.lutSize(), 0);
}

INSTANTIATE_TEST_SUITE_P(
    Files, Lut3dBadFile,
    ::testing::Values(
        BadFile{"Empty", "", "%s: no LUT_3D_SIZE"},
        BadFile{"TooFewColours", "LUT_3D_SIZE 2\n" + colours(2, kIdentity).substr(6),
                "%s: 7 colours where LUT_3D_SIZE 2 needs 8"},
        BadFile{"TooManyColours", "LUT_3D_SIZE 2\n" + colours(2, kIdentity) + "0 0 0\n",
                "%s:10: more colours than LUT_3D_SIZE 2 holds"},
        BadFile{"BadNumber", "LUT_3D_SIZE 2\n0 0 0\n1 O 0\n", "%s:3: bad colour line \"1 O 0\""},
        BadFile{"SizeOne", "LUT_3D_SIZE 1\n0 0 0\n", "%s:1: LUT_3D_SIZE must be a whole number from 2 to 256"},
        BadFile{"SizeTooLarge", "LUT_3D_SIZE 257\n", "%s:1: LUT_3D_SIZE must be a whole number from 2 to 256"},
        BadFile{"SizeNotWhole", "LUT_3D_SIZE 2.5\n", "%s:1: LUT_3D_SIZE must be a whole number from 2 to 256"},
        BadFile{"SizeTwice", "LUT_3D_SIZE 2\nLUT_3D_SIZE 2\n", "%s:2: LUT_3D_SIZE given twice"},
        BadFile{"ColoursBeforeSize", "0 0 0\nLUT_3D_SIZE 2\n", "%s:1: colours before LUT_3D_SIZE"},
        BadFile{"DomainShort", "DOMAIN_MIN 0 0\n", "%s:1: DOMAIN_MIN needs three numbers"},
        BadFile{"DomainUpsideDown", "LUT_3D_SIZE 2\nDOMAIN_MIN 0 0 1\nDOMAIN_MAX 1 1 1\n" + colours(2, kIdentity),
                "%s: DOMAIN_MAX must be above DOMAIN_MIN in every channel"},
        BadFile{"InputRangeShort", "LUT_3D_INPUT_RANGE 0\n", "%s:1: LUT_3D_INPUT_RANGE needs two numbers"},
        BadFile{"OneDimensional", "LUT_1D_SIZE 16\n", "%s:1: 1D tables are not supported"}),
    [](const ::testing::TestParamInfo<BadFile>& info) { return std::string(info.param.name); });

TEST(Lut3d, AFailedLoadEmptiesATableLoadedBeforeAndAMissingFileIsNamed) {
    CubeFile good("LUT_3D_SIZE 2\n" + colours(2, kIdentity), "good.cube");
    CubeFile bad("LUT_3D_SIZE 2\n0 0 0\n", "bad.cube");
    MVNLut3d lut;
    ASSERT_EQ(lut.loadFromFile(good.path()), 0);
    EXPECT_EQ(lut.loadFromFile(bad.path()), -1);
    EXPECT_EQ(lut.data(), nullptr);
    EXPECT_TRUE(lut.colors().empty());
    MorvaneTest::LogCapture log;
    EXPECT_EQ(lut.loadFromFile("/no/such/table.cube"), -1);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNLut3d", "cannot open LUT file /no/such/table.cube"), 1);
}

TEST(Lut3d, UnknownKeywordsAreSkippedWithAWarning) {
    CubeFile file("LUT_3D_SIZE 2\nLUT_IN_VIDEO_RANGE\n" + colours(2, kIdentity));
    MorvaneTest::LogCapture log;
    MVNLut3d lut;
    EXPECT_EQ(lut.loadFromFile(file.path()), 0);
    EXPECT_EQ(log.count(MVNLogLevel::Warn, "MVNLut3d", file.path() + ":2: unknown keyword LUT_IN_VIDEO_RANGE skipped"),
              1);
}

}  // namespace
