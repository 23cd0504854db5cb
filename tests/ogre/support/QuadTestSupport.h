#pragma once
// Helpers of the quad, material and producer tests: an engine of a small
// profile with the module installed in the host's repository, pictures in
// the host's byte order with a marker corner, and read-back checks in
// profile coordinates (origin bottom-left, as the producers' geometry).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "GpuTestSupport.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "timeline/MVNRepository.h"

extern "C" int MVNOgre_module_install(Morvane::MVNRepository* repository);

namespace MorvaneTest {

// A B,G,R,A picture of w x h filled with `fill`, rows top first.
struct BgraPicture {
    int width;
    int height;
    std::vector<uint8_t> bytes;

    BgraPicture(int w, int h, RGBA fill) : width(w), height(h), bytes(static_cast<size_t>(w) * h * 4) {
        paint(0, 0, w, h, fill);
    }
    // A block with its top-left pixel at (x, y), y counted from the top.
    void paint(int x, int y, int w, int h, RGBA c) {
        for (int j = y; j < y + h; ++j) {
            for (int i = x; i < x + w; ++i) {
                uint8_t* p = &bytes[(static_cast<size_t>(j) * width + i) * 4];
                p[0] = c.b;
                p[1] = c.g;
                p[2] = c.r;
                p[3] = c.a;
            }
        }
    }
    uint8_t* data() { return bytes.data(); }
};

// The composed picture in profile coordinates, read back once; released at
// the end of the scope.
class Composition : public RenderImage {
public:
    Composition(int w, int h) : RenderImage(w, h) {}

    // Pixel (x, y) of the profile, y counted from the bottom.
    RGBA at(int x, int y) const { return picture().at(x, height_ - 1 - y); }
    void save(const std::string& name) const { picture().save(name + ".png"); }

    // Pixels inside the profile rectangle (x, y, w, h) that aren't `inside`,
    // plus pixels outside it that aren't `outside`.
    int countWrong(int x, int y, int w, int h, RGBA inside, RGBA outside) const {
        int wrong = 0;
        for (int py = 0; py < height_; ++py) {
            for (int px = 0; px < width_; ++px) {
                bool in = px >= x && px < x + w && py >= y && py < y + h;
                if (!(at(px, py) == (in ? inside : outside))) ++wrong;
            }
        }
        return wrong;
    }

    // Pixels inside (or outside) the profile rectangle that are (`equal`
    // true) or aren't `c`.
    int countInside(int x, int y, int w, int h, RGBA c, bool equal) const { return count(x, y, w, h, c, equal, true); }
    int countOutside(int x, int y, int w, int h, RGBA c, bool equal) const {
        return count(x, y, w, h, c, equal, false);
    }

private:
    int count(int x, int y, int w, int h, RGBA c, bool equal, bool inside) const {
        int n = 0;
        for (int py = 0; py < height_; ++py) {
            for (int px = 0; px < width_; ++px) {
                bool in = px >= x && px < x + w && py >= y && py < y + h;
                if (in == inside && (at(px, py) == c) == equal) ++n;
            }
        }
        return n;
    }
};

// Largest difference of the colour channels (alpha left out).
inline int maxColourDifference(RGBA a, RGBA b) {
    int d = std::abs(a.r - b.r);
    d = std::max(d, std::abs(a.g - b.g));
    return std::max(d, std::abs(a.b - b.b));
}

// How many resources an engine manager holds. Render thread only.
inline size_t resourceCount(Ogre::ResourceManager& manager) {
    size_t n = 0;
    for (auto it = manager.getResourceIterator(); it.hasMoreElements(); it.moveNext()) ++n;
    return n;
}

// An engine of w x h with a magenta background, the module's factories
// registered with the host, and the window kept off full screen.
class QuadEngineTest : public ::testing::Test {
protected:
    static constexpr int W = 320;
    static constexpr int H = 180;

    void SetUp() override {
        touchMarker("not_full_screen");
        Morvane::MVNRepository* repository = Morvane::MVNRepository::getSingleton();
        if (!repository->hasRenderTexture("ogreRenderTexture")) MVNOgre_module_install(repository);
        run_.reset(new EngineRun(W, H));
        ASSERT_EQ(run_->rc, 0);
        TestScene::setBackground(kMagenta);
    }
    void TearDown() override {
        run_.reset();
        removeMarker("not_full_screen");
    }

    Morvane::MVNProfile profile() const { return Morvane::MVNProfile(W, H, 25); }

    std::unique_ptr<EngineRun> run_;
};

}  // namespace MorvaneTest
