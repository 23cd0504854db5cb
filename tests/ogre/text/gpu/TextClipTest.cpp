// Text clips as a host builds them, by service name: the composed picture
// read back shows ink where the layout puts it, in the shape FreeType draws,
// with outline, bold, lean, columns, CJK and extruded 3D glyphs; property
// changes rebuild only what they must; release leaves the engine clean.
#include <gtest/gtest.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"
#include "text/MVNProducerText.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

// Ink: pixels of the picture that the magenta background doesn't explain.
// Green is 0 in magenta; a white or yellow glyph lifts it.
bool isInk(RGBA c) { return c.g >= 128; }

struct Box {
    int x0 = 1 << 20, y0 = 1 << 20, x1 = -1, y1 = -1;  // inclusive, y from the top
    bool empty() const { return x1 < x0; }
    int width() const { return x1 - x0 + 1; }
    int height() const { return y1 - y0 + 1; }
};

class TextClips : public QuadEngineTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        QuadEngineTest::TearDown();
    }

    // A text clip with `props`, built as the project loader builds it.
    MVNProducer* make(MVNProperties props) {
        props.setString("service", "text");
        if (!props.has("zOrder")) props.setInt32("zOrder", 2);
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        MVNProducer* p = MVNFactory::getSingleton()->getProducerById(id);
        p->setBoolean("_textNeedReBuild", true);
        return p;
    }

    static void show(MVNProducer* p, int position = 0) {
        MVNFrame* frame = nullptr;
        if (p->getImage(position, &frame) == 0) MVNFrame::pushBackPool(frame);
    }

    // The ink mask of the composed picture, rows top first.
    std::vector<uint8_t> inkMask(Box* box = nullptr) {
        Composition out(W, H);
        EXPECT_TRUE(out.ok());
        std::vector<uint8_t> mask(W * H, 0);
        if (!out.ok()) return mask;
        Picture pic = out.picture();
        Box b;
        for (int y = 0; y < H; ++y) {
            for (int x = 0; x < W; ++x) {
                if (!isInk(pic.at(x, y))) continue;
                mask[y * W + x] = 1;
                b.x0 = std::min(b.x0, x), b.x1 = std::max(b.x1, x);
                b.y0 = std::min(b.y0, y), b.y1 = std::max(b.y1, y);
            }
        }
        if (box) *box = b;
        return mask;
    }

    Box inkBox() {
        Box b;
        inkMask(&b);
        return b;
    }

    // Names of the glyph meshes the engine holds now.
    static std::set<std::string> glyphMeshes() {
        std::set<std::string> names;
        onRenderThread([&] {
            auto& meshes = Ogre::MeshManager::getSingleton();
            for (auto it = meshes.getResourceIterator(); it.hasMoreElements(); it.moveNext()) {
                const std::string& n = it.peekNextValue()->getName();
                if (n.rfind("objMesh", 0) == 0) names.insert(n);
            }
        });
        return names;
    }

    std::vector<std::string> ids_;
};

MVNProperties textProps(const std::string& text, int size) {
    MVNProperties props;
    props.setString("textString", text);
    props.setInt32("textSize", size);
    return props;
}

TEST_F(TextClips, PropertyChangesRebuildTheGlyphMeshesOnlyWhenTheShapeOrTextChanges) {
    MVNProducer* clip = make(textProps("Title", 40));
    ASSERT_NE(clip, nullptr);
    struct Row {
        const char* what;
        std::function<void(MVNProducer*)> change;
        bool rebuilds;
    };
    const Row rows[] = {
        {"textString", [](MVNProducer* p) { p->setString("textString", "Other"); }, true},
        {"textColorBase", [](MVNProducer* p) { p->setColor("textColorBase", MVNColor4B(255, 0, 0, 255)); }, false},
        {"textRoll", [](MVNProducer* p) { p->setDouble("textRoll", 10); }, false},
        {"textBgColor", [](MVNProducer* p) { p->setColor("textBgColor", MVNColor4B(0, 0, 255, 255)); }, false},
        {"textColorOutline", [](MVNProducer* p) { p->setColor("textColorOutline", MVNColor4B(0, 0, 255, 255)); }, false},
        {"textSize", [](MVNProducer* p) { p->setInt32("textSize", 30); }, true},
        {"textBold", [](MVNProducer* p) { p->setBoolean("textBold", true); }, true},
        {"textAlignType", [](MVNProducer* p) { p->setInt32("textAlignType", 0); }, true},
        {"textThreeLightSize", [](MVNProducer* p) { p->setInt32("textThreeLightSize", 80); }, false},
    };
    for (const Row& row : rows) {
        std::set<std::string> before = glyphMeshes();
        ASSERT_FALSE(before.empty()) << row.what;
        row.change(clip);
        std::set<std::string> after = glyphMeshes();
        EXPECT_EQ(before != after, row.rebuilds) << row.what;
        // A rebuild replaces the meshes; it never leaves the old ones behind.
        EXPECT_EQ(after.size(), before.size()) << row.what;
    }
}

class TextAlignment : public TextClips, public ::testing::WithParamInterface<int> {};

TEST_P(TextAlignment, InkSitsWhereTheAlignmentPutsIt) {
    MVNProperties props = textProps("Hello", 40);
    props.setInt32("textAlignType", GetParam());
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    show(clip);
    Box ink = inkBox();
    ASSERT_FALSE(ink.empty());
    const int centre = (ink.x0 + ink.x1) / 2;
    switch (GetParam()) {
        case 2:  // centred on the box
            EXPECT_NEAR(centre, W / 2, 4) << ink.x0 << ".." << ink.x1;
            break;
        case 0:  // from the box's left edge
            EXPECT_LE(ink.x0, 8);
            break;
        case 1:  // up to the box's right edge
            EXPECT_GE(ink.x1, W - 8);
            break;
    }
    // One row is centred vertically.
    EXPECT_NEAR((ink.y0 + ink.y1) / 2, H / 2, 8);
}

INSTANTIATE_TEST_SUITE_P(LeftRightCentre, TextAlignment, ::testing::Values(0, 1, 2));

// The reference: the same string drawn by FreeType's own rasterizer with the
// same face and size, pen moved by the advances and kerning.
std::vector<uint8_t> freetypeMask(const std::string& font, const std::string& text, int size, int& w, int& h) {
    FT_Library library;
    FT_Init_FreeType(&library);
    FT_Face face;
    std::vector<uint8_t> mask;
    if (FT_New_Face(library, font.c_str(), 0, &face) != 0) {
        FT_Done_FreeType(library);
        return mask;
    }
    FT_Set_Char_Size(face, 0, size * 64, 72, 72);
    w = 4 * size * static_cast<int>(text.size());
    h = 3 * size;
    mask.assign(static_cast<size_t>(w) * h, 0);
    int penX = size, baseline = 2 * size;
    FT_UInt previous = 0;
    for (char c : text) {
        FT_UInt index = FT_Get_Char_Index(face, static_cast<FT_ULong>(c));
        if (previous != 0 && FT_HAS_KERNING(face)) {
            FT_Vector delta;
            FT_Get_Kerning(face, previous, index, FT_KERNING_DEFAULT, &delta);
            penX += delta.x / 64;
        }
        FT_Load_Glyph(face, index, FT_LOAD_RENDER);
        FT_Bitmap& bm = face->glyph->bitmap;
        for (unsigned int y = 0; y < bm.rows; ++y) {
            for (unsigned int x = 0; x < bm.width; ++x) {
                int px = penX + face->glyph->bitmap_left + static_cast<int>(x);
                int py = baseline - face->glyph->bitmap_top + static_cast<int>(y);
                if (px >= 0 && px < w && py >= 0 && py < h && bm.buffer[y * bm.pitch + x] >= 128) mask[py * w + px] = 1;
            }
        }
        penX += static_cast<int>(face->glyph->advance.x / 64);
        previous = index;
    }
    FT_Done_Face(face);
    FT_Done_FreeType(library);
    return mask;
}

TEST_F(TextClips, InkHasTheShapeFreeTypeDrawsForTheSameFaceAndSize) {
    MVNProducer* clip = make(textProps("Hello", 48));
    ASSERT_NE(clip, nullptr);
    show(clip);
    Box ink;
    std::vector<uint8_t> ours = inkMask(&ink);
    ASSERT_FALSE(ink.empty());
    int rw = 0, rh = 0;
    std::vector<uint8_t> ref = freetypeMask(MVNProducerText::defaultFontFile(), "Hello", 48, rw, rh);
    ASSERT_FALSE(ref.empty());
    Box rbox;
    for (int y = 0; y < rh; ++y)
        for (int x = 0; x < rw; ++x)
            if (ref[y * rw + x]) {
                rbox.x0 = std::min(rbox.x0, x), rbox.x1 = std::max(rbox.x1, x);
                rbox.y0 = std::min(rbox.y0, y), rbox.y1 = std::max(rbox.y1, y);
            }
    // Boxes aligned at their top-left corners; overlap over union.
    int both = 0, either = 0;
    const int bw = std::max(ink.width(), rbox.width()), bh = std::max(ink.height(), rbox.height());
    for (int y = 0; y < bh; ++y) {
        for (int x = 0; x < bw; ++x) {
            int ox = ink.x0 + x, oy = ink.y0 + y, rx = rbox.x0 + x, ry = rbox.y0 + y;
            bool a = ox < W && oy < H && ours[oy * W + ox];
            bool b = rx < rw && ry < rh && ref[ry * rw + rx];
            both += a && b;
            either += a || b;
        }
    }
    ASSERT_GT(either, 0);
    EXPECT_GE(static_cast<double>(both) / either, 0.85) << "ours " << ink.width() << "x" << ink.height()
                                                         << ", FreeType " << rbox.width() << "x" << rbox.height();
}

// In the frame, and in the track's texture of an animated text (standing
// in its final look), where the outline lies behind the fill.
TEST_F(TextClips, OutlineIsDrawnInItsColourOnlyWithAPositiveSize) {
    for (bool track : {false, true})
    for (double size : {0.0, 3.0}) {
        SCOPED_TRACE(track ? "in its track" : "in the frame");
        MVNProperties props = textProps("Hello", 40);
        props.setDouble("textOutlineSize", size);
        props.setColor("textColorOutline", MVNColor4B(0, 0, 255, 255));
        if (track) props.setInt32("textAnimationType", 9);
        MVNProducer* clip = make(props);
        ASSERT_NE(clip, nullptr);
        if (track) clip->setBoolean("_textEditStatus", true);
        show(clip);
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        int blue = 0;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                RGBA c = out.at(x, y);
                blue += c.b > 200 && c.r < 60 && c.g < 60;
            }
        if (size > 0) EXPECT_GT(blue, 200) << "outline " << size;
        else EXPECT_EQ(blue, 0) << "no outline";
        clip->resetRender(0);
    }
}

TEST_F(TextClips, BoldWidensAndLeanSlantsToTheRightAtTheTop) {
    auto measure = [this](bool bold, bool lean, int* topRight) {
        MVNProperties props = textProps("lll", 60);
        props.setBoolean("textBold", bold);
        props.setBoolean("textLean", lean);
        props.setInt32("textAlignType", 0);
        MVNProducer* clip = make(props);
        show(clip);
        Box box;
        std::vector<uint8_t> mask = inkMask(&box);
        clip->resetRender(0);
        int right = -1;
        for (int x = 0; x < W; ++x)
            if (mask[(box.y0 + 2) * W + x]) right = x;
        *topRight = right;
        int bottomRight = -1;
        for (int x = 0; x < W; ++x)
            if (mask[(box.y1 - 2) * W + x]) bottomRight = x;
        return std::make_pair(box, bottomRight);
    };
    int plainTop = 0, boldTop = 0, leanTop = 0;
    auto plain = measure(false, false, &plainTop);
    auto bold = measure(true, false, &boldTop);
    auto lean = measure(false, true, &leanTop);
    ASSERT_FALSE(plain.first.empty());
    EXPECT_GT(bold.first.width(), plain.first.width());
    // Slanted: the top of the last stroke lies further right than its foot.
    EXPECT_GT(leanTop - lean.second, 5);
    EXPECT_LE(std::abs(plainTop - plain.second), 1);
}

TEST_F(TextClips, VerticalLayoutStacksCharactersInAColumn) {
    MVNProperties props = textProps("ABC", 30);
    props.setBoolean("textVerticalAlign", true);
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    show(clip);
    Box ink = inkBox();
    ASSERT_FALSE(ink.empty());
    EXPECT_GT(ink.height(), 2 * ink.width());
    EXPECT_GT(clip->getDouble("_textActualMaxHeight", 0), clip->getDouble("_textActualMaxWidth", 0));
}

TEST_F(TextClips, CjkDrawsWithTheDefaultFont) {
    MVNProducer* clip = make(textProps("\xe4\xb8\xad\xe6\x96\x87", 48));  // two CJK ideographs
    ASSERT_NE(clip, nullptr);
    show(clip);
    Box ink = inkBox();
    ASSERT_FALSE(ink.empty());
    EXPECT_GT(ink.width(), 70);
    EXPECT_GT(ink.height(), 30);
}

TEST_F(TextClips, ACharacterMissingFromBothFacesIsSkipped) {
    auto ink = [this](const std::string& text, Box* box) {
        MVNProducer* clip = make(textProps(text, 48));
        show(clip);
        std::vector<uint8_t> mask = inkMask(box);
        clip->resetRender(0);
        int n = 0;
        for (uint8_t m : mask) n += m;
        return n;
    };
    Box plain, gap;
    const int ab = ink("AB", &plain);
    // U+0378 is unassigned: no face maps it, and no .notdef box stands in.
    const int withGap = ink("A\xcd\xb8" "B", &gap);
    ASSERT_GT(ab, 0);
    EXPECT_NEAR(withGap, ab, ab / 50) << "ink pixels";
    EXPECT_NEAR(gap.width(), plain.width(), 3);
}

TEST_F(TextClips, ExtrudedTextTurnedByYawShowsSidesLitUnlikeTheFront) {
    MVNProperties props = textProps("H", 100);
    props.setBoolean("textThree", true);
    props.setDouble("textThreeYaw", 40);
    props.setInt32("textDepth", 8);
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    show(clip);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    // Shades of grey of the white glyph, in steps of 16: the front facing
    // the lights is one shade, the turned sides others.
    std::map<int, int> shades;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            RGBA c = out.at(x, y);
            if (c.g < 40 || c.r != c.g) continue;  // background and its blend
            ++shades[c.g / 16];
        }
    int lit = 0;
    for (const auto& s : shades) lit += s.second >= 150;
    EXPECT_GE(lit, 2) << "shades with at least 150 pixels";
}

TEST_F(TextClips, ExtrudedClipsOneAfterTheOtherOnATrackBothDrawTheirFront) {
    for (int i = 0; i < 2; ++i) {
        MVNProperties props = textProps("H", 100);
        props.setBoolean("textThree", true);
        props.setInt32("textDepth", 8);
        MVNProducer* clip = make(props);
        ASSERT_NE(clip, nullptr);
        show(clip);
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        int lit = 0;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) lit += out.at(x, y).g >= 40;
        // Face on, the whole front of the H shows, not only its edges.
        EXPECT_GT(lit, 800) << "clip " << i;
        clip->resetRender(0);
    }
}

// Glyph edges are smoothed in the composed picture however the text is
// drawn: flat in the main scene, flat in its track's render texture (an
// animated clip, here standing in its final look) and extruded there. A
// white face on magenta lifts green; a pixel the edge covers in part lifts
// it by its coverage, so it lies between the background's 0 and the face.
// Drawn with one sample a pixel, every pixel is all face or all background.
struct EdgeCase {
    const char* name;
    std::function<void(MVNProducer*, MVNProperties&)> set;
    int face;  // green of the face, at least
    friend void PrintTo(const EdgeCase& c, std::ostream* os) { *os << c.name; }
};

class TextEdges : public TextClips, public ::testing::WithParamInterface<EdgeCase> {};

TEST_P(TextEdges, AreAntiAliasedAndTheFaceIsLit) {
    MVNProperties props = textProps("VAV", 100);
    props.setColor("textColorBase", MVNColor4B(255, 255, 255, 255));
    GetParam().set(nullptr, props);
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    GetParam().set(clip, props);
    show(clip);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    int face = 0, edge = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            const int g = out.at(x, y).g;
            face += g >= GetParam().face;
            edge += g >= 8 && g < GetParam().face;
        }
    // The front of three 100-pixel letters, not only their outlines.
    EXPECT_GT(face, 2000) << "face pixels";
    // Six slanted strokes 100 pixels tall give some 700 (a lit extruded
    // face varies a little, some 60 pixels below its least without).
    EXPECT_GT(edge, 300) << "edge pixels between background and face";
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, TextEdges,
    ::testing::Values(EdgeCase{"Flat", [](MVNProducer*, MVNProperties&) {}, 240},
                      EdgeCase{"FlatInItsTrack",
                               [](MVNProducer* clip, MVNProperties& p) {
                                   if (clip == nullptr) p.setInt32("textAnimationType", 9);
                                   else clip->setBoolean("_textEditStatus", true);
                               },
                               240},
                      EdgeCase{"Extruded",
                               [](MVNProducer* clip, MVNProperties& p) {
                                   if (clip != nullptr) return;
                                   p.setBoolean("textThree", true);
                                   p.setInt32("textDepth", 8);
                               },
                               160}),
    [](const ::testing::TestParamInfo<EdgeCase>& info) { return std::string(info.param.name); });

// A turned extruded title whose caps and sides meet along curves: where the
// depth is resolved too coarsely the sides show through the caps as dark
// pits along the outlines ("o", "B", "8", "e").
TEST_F(TextClips, TurnedExtrudedCapsShowNoSidesThroughThem) {
    MVNProperties props = textProps("Bo8e", 48);
    props.setColor("textColorBase", MVNColor4B(255, 204, 0, 255));
    props.setBoolean("textThree", true);
    props.setDouble("textThreeYaw", 25);
    props.setInt32("textDepth", 6);
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    show(clip);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    // A pit: darker by 24 or more than three of its four neighbours.
    int pits = 0;
    for (int y = 1; y + 1 < H; ++y)
        for (int x = 1; x + 1 < W; ++x) {
            const int g = out.at(x, y).g;
            const int darker = (out.at(x - 1, y).g - g >= 24) + (out.at(x + 1, y).g - g >= 24) +
                               (out.at(x, y - 1).g - g >= 24) + (out.at(x, y + 1).g - g >= 24);
            pits += darker >= 3;
        }
    // A handful where glyph corners meet; some 20 with the near plane 5 away.
    EXPECT_LE(pits, 8);
}

// A text shown through its track's texture is the text drawn in the frame:
// the texture's pixels fall on the frame's one to one, on a high track too.
TEST_F(TextClips, TextInItsTrackLooksAsInTheFrame) {
    auto draw = [this](bool track) {
        MVNProperties props = textProps("Bo8e", 60);
        props.setInt32("zOrder", 40);
        if (track) props.setInt32("textAnimationType", 9);
        MVNProducer* clip = make(props);
        if (track) clip->setBoolean("_textEditStatus", true);
        show(clip);
        Composition out(W, H);
        std::vector<int> green(W * H, 0);
        for (int y = 0; y < H && out.ok(); ++y)
            for (int x = 0; x < W; ++x) green[y * W + x] = out.at(x, y).g;
        clip->resetRender(0);
        return green;
    };
    const std::vector<int> frame = draw(false), track = draw(true);
    int far = 0, sum = 0;
    for (size_t i = 0; i < frame.size(); ++i) {
        const int d = std::abs(frame[i] - track[i]);
        far += d > 64;
        sum += d;
    }
    // Edge pixels multisampled in one place or the other differ a little;
    // a plane drawn 0.8% too large (at twice the track's depth) resampled
    // the whole text and left some 90 pixels far apart.
    EXPECT_LE(far, 40) << "pixels more than a quarter apart";
    EXPECT_LT(sum, 28000) << "summed difference of green";
}

TEST_F(TextClips, LayoutTakesAtMost281CodePoints) {
    MVNProducer* clip = make(textProps(std::string(281, 'i'), 4));
    ASSERT_NE(clip, nullptr);
    double full = clip->getDouble("_textActualMaxWidth", 0);
    clip->setString("textString", std::string(300, 'i'));
    EXPECT_DOUBLE_EQ(clip->getDouble("_textActualMaxWidth", 0), full);
    clip->setString("textString", std::string(280, 'i'));
    EXPECT_LT(clip->getDouble("_textActualMaxWidth", 0), full);
}

TEST_F(TextClips, AFontFileThatIsNoFontLogsOnceAndDrawsNothing) {
    LogCapture log;
    MVNProperties props = textProps("Hello", 40);
    props.setString("textFontFile", std::string(MVN_SOURCE_DIR) + "/README.md");
    props.setString("textBackupPath", "/nonexistent/font.ttf");
    MVNProducer* clip = make(props);
    ASSERT_NE(clip, nullptr);
    show(clip);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNProducerText", "text path is error"), 1);
    EXPECT_TRUE(inkBox().empty());
}

// Engine objects of text clips: glyph meshes, planes, materials, nodes and
// track scenes.
struct TextObjects {
    size_t meshes = 0, materials = 0, nodes = 0, scenes = 0;
    bool operator==(const TextObjects& o) const {
        return meshes == o.meshes && materials == o.materials && nodes == o.nodes && scenes == o.scenes;
    }
};

TextObjects countTextObjects() {
    TextObjects t;
    onRenderThread([&] {
        auto starts = [](const std::string& s, std::initializer_list<const char*> prefixes) {
            for (const char* p : prefixes)
                if (s.rfind(p, 0) == 0) return true;
            return false;
        };
        for (auto it = Ogre::MeshManager::getSingleton().getResourceIterator(); it.hasMoreElements(); it.moveNext())
            t.meshes += starts(it.peekNextValue()->getName(), {"objMesh", "mOut"});
        for (auto it = Ogre::MaterialManager::getSingleton().getResourceIterator(); it.hasMoreElements(); it.moveNext())
            t.materials += starts(it.peekNextValue()->getName(), {"_TextRtt", "mOut"});
        Ogre::SceneManager* main = MVNOgreManager::getSingleton()->getOgreContext()->getSceneManager();
        for (Ogre::Node* n : main->getRootSceneNode()->getChildren()) t.nodes += starts(n->getName(), {"_TextMorVane"});
        for (const auto& kv : Ogre::Root::getSingleton().getSceneManagers()) t.scenes += starts(kv.first, {"_TextRtt"});
    });
    return t;
}

TEST_F(TextClips, ReleaseLeavesNoMeshesMaterialsNodesOrScenesBehind) {
    TextObjects before = countTextObjects();
    MVNProperties flat = textProps("Flat", 30);
    flat.setDouble("textOutlineSize", 2);
    MVNProducer* a = make(flat);
    MVNProperties solid = textProps("3D", 30);
    solid.setBoolean("textThree", true);
    MVNProducer* b = make(solid);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    show(a);
    show(b);
    TextObjects during = countTextObjects();
    EXPECT_GT(during.meshes, before.meshes);
    EXPECT_EQ(during.scenes, before.scenes + 1);
    for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
    ids_.clear();
    TextObjects after = countTextObjects();
    EXPECT_EQ(after.meshes, before.meshes);
    EXPECT_EQ(after.materials, before.materials);
    EXPECT_EQ(after.nodes, before.nodes);
    EXPECT_EQ(after.scenes, before.scenes);
}

}  // namespace
