#include "transitions/MVNTransitionGlslFile.h"

#include <GL/glew.h>
#include <Ogre.h>
#include <OgreHighLevelGpuProgramManager.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>
#include <sstream>

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "readers/MVNOgreRenderReader.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNTransitionGlslFile";
// The version the filter programs use: texture2D and gl_FragColor stay.
const char* const kVersionLine = "#version 120\n";
// The shared pass-through vertex program of the filters; it hands on vUv,
// (0, 0) at the top left of the picture.
const char* const kVertexProgram = "MVNFilters/FilterVP";
// What a file that doesn't compile draws instead.
const char* const kShowClipB = "vec4 transition(vec2 uv)\n{\n    return getToColor(uv);\n}\n";

bool readText(const std::string& path, std::string& text) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    std::ostringstream out;
    out << in.rdbuf();
    text = out.str();
    return true;
}

// A file of the media, found through the engine's resource locations.
bool readMedia(const std::string& name, std::string& text) {
    try {
        Ogre::DataStreamPtr stream = Ogre::ResourceGroupManager::getSingleton().openResource(
            name, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
        if (!stream) return false;
        text = stream->getAsString();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// The GL compiler's own verdict on a fragment program: empty when it
// compiles, else its log on one line. The engine would only put it in its
// own log file.
std::string compileLog(const std::string& source) {
    if (glCreateShader == nullptr) MVNOgreRenderReader::initGlew();
    if (glCreateShader == nullptr) return std::string();
    GLuint shader = glCreateShader(GL_FRAGMENT_SHADER);
    const char* text = source.c_str();
    glShaderSource(shader, 1, &text, nullptr);
    glCompileShader(shader);
    GLint ok = GL_FALSE;
    glGetShaderiv(shader, GL_COMPILE_STATUS, &ok);
    std::string message;
    if (ok != GL_TRUE) {
        GLint length = 0;
        glGetShaderiv(shader, GL_INFO_LOG_LENGTH, &length);
        std::string log(static_cast<size_t>(length > 1 ? length : 1), '\0');
        glGetShaderInfoLog(shader, length, nullptr, &log[0]);
        log.resize(std::strlen(log.c_str()));
        std::string line;
        std::istringstream lines(log);
        while (std::getline(lines, line)) {
            while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.pop_back();
            if (line.empty()) continue;
            if (!message.empty()) message += "; ";
            message += line;
        }
        if (message.empty()) message = "compile failed";
    }
    glDeleteShader(shader);
    return message;
}

void setDefault(const Ogre::GpuProgramParametersSharedPtr& params, const MVNTransitionGlslFile::Uniform& u) {
    try {
        if (u.type == "int" || u.type == "bool") {
            params->setNamedConstant(u.name, static_cast<int>(u.value[0]));
        } else {
            params->setNamedConstant(u.name, u.value.data(), 1, u.value.size());
        }
    } catch (const std::exception&) {
        // Declared but unused: the compiler dropped it, there is nothing to set.
    }
}

// Program and material under `name` for a complete fragment source.
void buildMaterial(const std::string& name, const std::string& source,
                   const std::vector<MVNTransitionGlslFile::Uniform>& uniforms) {
    Ogre::HighLevelGpuProgramPtr program = Ogre::HighLevelGpuProgramManager::getSingleton().createProgram(
        name + "/FP", Ogre::RGN_DEFAULT, "glsl", Ogre::GPT_FRAGMENT_PROGRAM);
    program->setSource(source);
    program->load();
    Ogre::GpuProgramParametersSharedPtr params = program->getDefaultParameters();
    params->setNamedConstant("inputImageTexture", 0);
    params->setNamedConstant("inputImageTexture2", 1);
    for (const auto& u : uniforms) setDefault(params, u);

    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().create(name, Ogre::RGN_DEFAULT);
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    pass->setLightingEnabled(false);
    pass->setDepthCheckEnabled(false);
    pass->setDepthWriteEnabled(false);
    pass->setCullingMode(Ogre::CULL_NONE);
    pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
    pass->setVertexProgram(kVertexProgram);
    pass->setFragmentProgram(program->getName());
}
}  // namespace

bool MVNTransitionGlslFile::isGlslFile(const std::string& resource) {
    return resource.size() > 5 && resource.compare(resource.size() - 5, 5, ".glsl") == 0;
}

std::vector<MVNTransitionGlslFile::Uniform> MVNTransitionGlslFile::parseUniforms(const std::string& source) {
    static const std::regex declaration(
        R"(uniform\s+(float|int|bool|vec2|vec3|vec4)\s+(\w+)\s*;\s*//\s*=\s*([^\n;]+))");
    static const std::regex number(R"([-+]?(\d+\.?\d*|\.\d+)([eE][-+]?\d+)?|true|false)");
    std::vector<Uniform> out;
    for (std::sregex_iterator it(source.begin(), source.end(), declaration), end; it != end; ++it) {
        Uniform u;
        u.type = (*it)[1];
        u.name = (*it)[2];
        std::string text = (*it)[3];
        std::string numbers = text.substr(text.find('(') == std::string::npos ? 0 : text.find('('));
        for (std::sregex_iterator n(numbers.begin(), numbers.end(), number); n != end; ++n) {
            std::string v = (*n)[0];
            u.value.push_back(v == "true" ? 1.0f : v == "false" ? 0.0f : std::strtof(v.c_str(), nullptr));
        }
        size_t want = u.type == "vec2" ? 2 : u.type == "vec3" ? 3 : u.type == "vec4" ? 4 : 1;
        // vec3(0.5) fills every component.
        if (u.value.size() == 1) u.value.resize(want, u.value[0]);
        if (u.value.size() != want) continue;
        out.push_back(u);
    }
    return out;
}

std::string MVNTransitionGlslFile::wrap(const std::string& prelude, const std::string& function,
                                        const std::string& main) {
    // The compiler counts the function's lines from 1, so its messages point
    // into the user's file (before version 330, #line names the line before
    // the next one).
    return std::string(kVersionLine) + prelude + "\n#line 0\n" + function + "\n" + main;
}

std::string MVNTransitionGlslFile::material(const std::string& path) {
    std::string name = "MVNTransitionFile/" + path;
    std::string result;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            try {
                if (Ogre::MaterialManager::getSingleton().resourceExists(name, Ogre::RGN_DEFAULT)) {
                    result = name;
                    return;
                }
                std::string prelude, main, function;
                if (!readMedia("prelude.glsl", prelude) || !readMedia("main.glsl", main)) {
                    log_error(kTag, "%s: the media have no transitions/prelude.glsl and main.glsl", path.c_str());
                    return;
                }
                if (!readText(path, function)) {
                    log_error(kTag, "%s: cannot read the transition file", path.c_str());
                    return;
                }
                std::string source = wrap(prelude, function, main);
                std::vector<Uniform> uniforms = parseUniforms(function);
                std::string error = compileLog(source);
                if (!error.empty()) {
                    log_error(kTag, "%s: %s", path.c_str(), error.c_str());
                    source = wrap(prelude, kShowClipB, main);
                    uniforms.clear();
                }
                buildMaterial(name, source, uniforms);
                result = name;
            } catch (const std::exception& e) {
                log_error(kTag, "%s: %s", path.c_str(), e.what());
            }
        },
        "transGlslFile");
    return result;
}

}  // namespace Morvane
