// The pictures that the colour and pixel-buffer producers paint in memory,
// byte by byte (B, G, R, A).
#include <gtest/gtest.h>

#include <vector>

#include "producers/MVNProducerColor.h"
#include "producers/MVNProducerPixelBuffer.h"

using Morvane::MVNColor4B;
using Morvane::MVNProducerColor;
using Morvane::MVNProducerPixelBuffer;

namespace {

struct Painted {
    int width;
    std::vector<uint8_t> bytes;
    // B, G, R, A of (x, y), y from the top.
    std::vector<int> at(int x, int y) const {
        const uint8_t* p = &bytes[(static_cast<size_t>(y) * width + x) * 4];
        return {p[0], p[1], p[2], p[3]};
    }
};

Painted colour(int w, int h, MVNColor4B c, bool border, bool grids) {
    Painted p{w, std::vector<uint8_t>(static_cast<size_t>(w) * h * 4, 7)};
    MVNProducerColor::paint(p.bytes.data(), w, h, c, border, grids);
    return p;
}

TEST(ColourPattern, BorderIsFourPixelsOnTopAndLeftAndThreeOnBottomAndRight) {
    Painted p = colour(100, 100, MVNColor4B(10, 20, 30, 255), true, false);
    const std::vector<int> border{255, 0, 0, 255};
    const std::vector<int> fill{30, 20, 10, 255};
    for (int i : {0, 3, 97, 99}) {
        EXPECT_EQ(p.at(50, i), border) << "row " << i;
        EXPECT_EQ(p.at(i, 50), border) << "column " << i;
    }
    for (int i : {4, 96}) {
        EXPECT_EQ(p.at(50, i), fill) << "row " << i;
        EXPECT_EQ(p.at(i, 50), fill) << "column " << i;
    }
}

TEST(ColourPattern, GridLinesEveryFiftyPixelsButNotOnTheEdges) {
    Painted p = colour(120, 120, MVNColor4B(10, 20, 30, 255), false, true);
    const std::vector<int> white{255, 255, 255, 255};
    const std::vector<int> fill{30, 20, 10, 255};
    EXPECT_EQ(p.at(50, 7), white);
    EXPECT_EQ(p.at(7, 100), white);
    EXPECT_EQ(p.at(0, 7), fill);  // column 0 is no line
    EXPECT_EQ(p.at(7, 0), fill);  // nor row 0
    EXPECT_EQ(p.at(51, 51), fill);
    // A colour never set is black with alpha one.
    EXPECT_EQ(colour(4, 4, MVNColor4B(), false, false).at(2, 2), (std::vector<int>{0, 0, 0, 1}));
}

TEST(ColourPattern, BorderWinsOverGridAndBothKeepTheColoursAlpha) {
    Painted p = colour(100, 100, MVNColor4B(10, 20, 30, 128), true, true);
    EXPECT_EQ(p.at(50, 50), (std::vector<int>{255, 255, 255, 128}));
    EXPECT_EQ(p.at(0, 50), (std::vector<int>{255, 0, 0, 128}));
    EXPECT_EQ(p.at(20, 20), (std::vector<int>{30, 20, 10, 128}));
}

TEST(PixelBufferPattern, EveryChannelLiesIn200To249AndTheBorderIsBlue) {
    for (int position : {0, 89, 1000}) {
        Painted p{40, std::vector<uint8_t>(40 * 30 * 4)};
        MVNProducerPixelBuffer::paint(p.bytes.data(), 40, 30, position);
        std::vector<int> inner = p.at(20, 15);
        for (int c = 0; c < 3; ++c) {
            EXPECT_GE(inner[c], 200) << "position " << position;
            EXPECT_LE(inner[c], 249) << "position " << position;
        }
        EXPECT_EQ(inner[3], 255);
        std::vector<int> edge = p.at(0, 0);
        EXPECT_EQ(edge[0], 255);
        EXPECT_EQ(edge[1], inner[1]);
        EXPECT_EQ(edge[2], 0);
    }
}

}  // namespace
