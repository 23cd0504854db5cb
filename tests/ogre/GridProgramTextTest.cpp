// The grid material's GLSL text depends on the language version alone.
#include <gtest/gtest.h>

#include <string>

#include "GridsImpl.h"

using Morvane::GridsImpl;

namespace {

bool startsWith(const std::string& s, const std::string& prefix) { return s.compare(0, prefix.size(), prefix) == 0; }
bool contains(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

TEST(GridProgramText, OldDesktopVersionUsesAttributeAndVarying) {
    std::string vertex = GridsImpl::vertexSource(130, false);
    EXPECT_TRUE(startsWith(vertex, "#version 130\nattribute vec4 vertex;\nattribute vec2 uv0;\n\nvarying vec2 oUv0;\n"));
    std::string fragment = GridsImpl::fragmentSource(130, false);
    EXPECT_TRUE(startsWith(fragment, "#version 130\nvarying vec4 pos;\nvarying vec2 oUv0;\n\nout vec4 fragColour;\n"));
}

TEST(GridProgramText, VersionFrom150UsesInAndOut) {
    std::string vertex = GridsImpl::vertexSource(330, false);
    EXPECT_EQ(vertex,
              "#version 330\n"
              "in vec4 vertex;\n"
              "in vec2 uv0;\n"
              "\n"
              "out vec2 oUv0;\n"
              "out vec4 pos;\n"
              "\n"
              "uniform mat4 worldViewProj;\n"
              "void main()\n"
              "{\n"
              " gl_Position = worldViewProj * vertex;\n"
              " oUv0 = uv0;\n"
              " pos = gl_Position;\n"
              "}\n");
    std::string fragment = GridsImpl::fragmentSource(150, false);
    EXPECT_TRUE(startsWith(fragment, "#version 150\nin vec4 pos;\nin vec2 oUv0;\n\nout vec4 fragColour;\n"
                                     "uniform sampler2D ImageA; \nvoid main()\n{\n"));
    EXPECT_TRUE(contains(fragment, "fragColour = vec4(texture2D(ImageA, oUv0).xyz, 0.2);"));
}

TEST(GridProgramText, EsHeaderKeepsTheWordsOfTheNumber) {
    const std::string es = "#version 300 es\nprecision mediump int;\nprecision mediump float;\n";
    EXPECT_TRUE(startsWith(GridsImpl::vertexSource(300, true), es + "in vec4 vertex;\n"));
    // A low number under the ES header keeps the old words.
    EXPECT_TRUE(startsWith(GridsImpl::vertexSource(100, true), es + "attribute vec4 vertex;\n"));
    EXPECT_TRUE(startsWith(GridsImpl::fragmentSource(100, true), es + "varying vec4 pos;\n"));
}

TEST(GridProgramText, SameVersionGivesTheSameText) {
    EXPECT_EQ(GridsImpl::fragmentSource(330, false), GridsImpl::fragmentSource(330, false));
    EXPECT_NE(GridsImpl::fragmentSource(330, false), GridsImpl::fragmentSource(140, false));
}

}  // namespace
