#include "scene/GridsImpl.h"

#include <Ogre.h>

#include <algorithm>
#include <sstream>

#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::GridsImpl";

// The first lines of both programs: the version header, then the words for
// the stage inputs and outputs, which go by the number alone (so the ES
// header with a low number keeps the old words).
struct Header {
    std::string text;
    const char* vertexIn;
    const char* vertexOut;
    const char* fragmentIn;
};

Header header(int version, bool glsles) {
    Header h;
    std::ostringstream os;
    if (glsles) {
        os << "#version 300 es\n"
           << "precision mediump int;\n"
           << "precision mediump float;\n";
    } else {
        os << "#version " << version << "\n";
    }
    h.text = os.str();
    bool old = version < 150;
    h.vertexIn = old ? "attribute" : "in";
    h.vertexOut = old ? "varying" : "out";
    h.fragmentIn = old ? "varying" : "in";
    return h;
}

Ogre::HighLevelGpuProgramPtr makeProgram(const std::string& name, Ogre::GpuProgramType type, const std::string& text,
                                         bool glsles) {
    Ogre::LogManager::getSingleton().getDefaultLog()->logMessage(text, Ogre::LML_NORMAL);
    Ogre::HighLevelGpuProgramManager& manager = Ogre::HighLevelGpuProgramManager::getSingleton();
    // A name generated again after removeAll: the new text replaces the old
    // program; materials that use the old one keep it alive.
    if (manager.resourceExists(name, Ogre::RGN_DEFAULT)) manager.remove(name, Ogre::RGN_DEFAULT);
    Ogre::HighLevelGpuProgramPtr program = manager.createProgram(
        name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, glsles ? "glsles" : "glsl", type);
    if (glsles) program->setParameter("syntax", "glsles");
    program->setSource(text);
    return program;
}
}  // namespace

std::string GridsImpl::vertexSource(int version, bool glsles) {
    Header h = header(version, glsles);
    std::ostringstream os;
    os << h.text;
    os << h.vertexIn << " vec4 vertex;\n";
    os << h.vertexIn << " vec2 uv" << 0 << ";\n";
    os << "\n";
    os << h.vertexOut << " vec2 oUv" << 0 << ";\n";
    os << h.vertexOut << " vec4 pos;\n";
    os << "\n";
    os << "uniform mat4 worldViewProj;\n";
    os << "void main()\n";
    os << "{\n";
    os << " gl_Position = worldViewProj * vertex;\n";
    os << " oUv" << 0 << " = uv" << 0 << ";\n";
    os << " pos = gl_Position;\n";
    os << "}\n";
    return os.str();
}

std::string GridsImpl::fragmentSource(int version, bool glsles) {
    Header h = header(version, glsles);
    std::ostringstream os;
    os << h.text;
    os << h.fragmentIn << " vec4 pos;\n";
    os << h.fragmentIn << " vec2 oUv" << 0 << ";\n";
    os << "\n";
    os << "out vec4 fragColour;\n";
    os << "uniform sampler2D ImageA; \n";
    os << "void main()\n";
    os << "{\n";
    os << "\tivec2 pos2d = ivec2(pos.x * 100, pos.y * 100);\n"
          " \tif (abs(mod(pos2d.y, 50)) == 0) {\n"
          " \t\tfragColour = vec4(0.0, 0.2, 1.0, 1.0);\n"
          " \t}\n"
          " \telse {\n"
          " \t\tfragColour = vec4(texture2D(ImageA, oUv0).xyz, 0.2);\n"
          " \t}\n";
    os << "}\n";
    return os.str();
}

int GridsImpl::shadingVersion() {
    int native = Ogre::Root::getSingleton().getRenderSystem()->getNativeShadingLanguageVersion();
    return std::min(native, kMaxVersion);
}

bool GridsImpl::isGlsles() { return Ogre::GpuProgramManager::getSingleton().isSyntaxSupported("glsles"); }

Ogre::GpuProgramPtr GridsImpl::createVertexProgram(std::string name) {
    bool glsles = isGlsles();
    std::string text = vertexSource(shadingVersion(), glsles);
    log_debug(kTag, glsles ? "create vertex program for glsles" : "create vertex program for glsl");
    Ogre::HighLevelGpuProgramPtr program = makeProgram(name, Ogre::GPT_VERTEX_PROGRAM, text, glsles);
    program->getDefaultParameters()->setNamedAutoConstant("worldViewProj",
                                                          Ogre::GpuProgramParameters::ACT_WORLDVIEWPROJ_MATRIX, 0);
    program->load(false);
    log_debug(kTag, "create vertex program done");
    return program;
}

Ogre::GpuProgramPtr GridsImpl::createFragmentProgram(std::string name) {
    bool glsles = isGlsles();
    std::string text = fragmentSource(shadingVersion(), glsles);
    log_debug(kTag, glsles ? "create fragment program for glsles" : "create fragment program for glsl");
    Ogre::HighLevelGpuProgramPtr program = makeProgram(name, Ogre::GPT_FRAGMENT_PROGRAM, text, glsles);
    program->load(false);
    log_debug(kTag, "create fragment program done");
    return program;
}

Ogre::MaterialPtr GridsImpl::createMaterial(std::string name) {
    log_debug(kTag, "gen %s", name.c_str());
    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().create(
        name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, false, nullptr, nullptr);
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    pass->setName(name + "Pass");
    pass->setLightingEnabled(false);
    log_debug(kTag, "create template material done");
    return material;
}

}  // namespace Morvane
