// The grid material's GLSL text depends on the language version alone.
#include <gtest/gtest.h>

#include <string>

#include "scene/GridsImpl.h"

using Morvane::GridsImpl;

namespace {

bool startsWith(const std::string& s, const std::string& prefix) { return s.compare(0, prefix.size(), prefix) == 0; }
bool contains(const std::string& s, const std::string& part) { return s.find(part) != std::string::npos; }

TEST(GridProgramText, VersionsBelow150UseAttributeAndVaryingLaterOnesInAndOut) {
    EXPECT_TRUE(startsWith(GridsImpl::vertexSource(130, false),
                           "#version 130\nattribute vec4 vertex;\nattribute vec2 uv0;\n\nvarying vec2 oUv0;\n"));
    EXPECT_TRUE(startsWith(GridsImpl::fragmentSource(130, false),
                           "#version 130\nvarying vec4 pos;\nvarying vec2 oUv0;\n\nout vec4 fragColour;\n"));
    EXPECT_TRUE(startsWith(GridsImpl::vertexSource(330, false),
                           "#version 330\nin vec4 vertex;\nin vec2 uv0;\n\nout vec2 oUv0;\nout vec4 pos;\n"));
    std::string fragment = GridsImpl::fragmentSource(150, false);
    EXPECT_TRUE(startsWith(fragment, "#version 150\nin vec4 pos;\nin vec2 oUv0;\n\nout vec4 fragColour;\n"));
    EXPECT_TRUE(contains(fragment, "fragColour = vec4(texture2D(ImageA, oUv0).xyz, 0.2);"));
}

TEST(GridProgramText, EsHeaderKeepsTheWordsOfTheNumber) {
    const std::string es = "#version 300 es\nprecision mediump int;\nprecision mediump float;\n";
    EXPECT_TRUE(startsWith(GridsImpl::vertexSource(300, true), es + "in vec4 vertex;\n"));
    // A low number under the ES header keeps the old words.
    EXPECT_TRUE(startsWith(GridsImpl::vertexSource(100, true), es + "attribute vec4 vertex;\n"));
    EXPECT_TRUE(startsWith(GridsImpl::fragmentSource(100, true), es + "varying vec4 pos;\n"));
}

}  // namespace
