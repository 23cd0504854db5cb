#pragma once
#include <string>
#include <vector>

#include "MVNOgreExport.h"

namespace Morvane {

// A transition written by a user in the open GLSL transition format: a file
// that defines `vec4 transition(vec2 uv)`, reads the clips through
// getFromColor(uv) / getToColor(uv), and may use `progress`, `ratio` and
// uniforms of its own whose defaults stand in a comment:
//
//   uniform float amplitude; // = 30.0
//
// material() wraps the function into a fragment program (version line,
// media's transitions/prelude.glsl, the file, transitions/main.glsl) and a
// material script the transition back-end can clone, the way the library's
// generator does for the named transitions. A file that doesn't compile
// gives one error line with the compiler's message, and a material that
// shows clip B.
class MVN_OGRE_API MVNTransitionGlslFile {
public:
    struct Uniform {
        std::string type;           // "float", "int", "bool", "vec2", "vec3", "vec4"
        std::string name;
        std::vector<float> value;   // the comment's default, one number per component
    };

    // True for a resource that names a .glsl file rather than a material.
    static bool isGlslFile(const std::string& resource);

    // The uniforms of the file's own with a default in a comment, in the
    // order they are declared. Pure text work, for any thread.
    static std::vector<Uniform> parseUniforms(const std::string& source);
    // The complete fragment program for a transition function.
    static std::string wrap(const std::string& prelude, const std::string& function, const std::string& main);

    // The material for the file at `path`, built on the render thread under
    // "transGlslFile" the first time and kept for the engine's life (the
    // engine's material and program managers empty the cache when the
    // engine stops). Empty when the media lack the prelude or the file
    // can't be read (logged).
    static std::string material(const std::string& path);
};

}  // namespace Morvane
