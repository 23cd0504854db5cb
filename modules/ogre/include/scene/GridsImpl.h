#pragma once
#include <string>

#include "scene/MVNOgreMaterialGenerator.h"

namespace Morvane {

// The generated grid material: the picture at alpha 0.2 under blue lines
// where the clip-space y, in hundredths, is a multiple of 50. Its GLSL text
// is a pure function of the language version, which is the render system's
// native one but never above 330: newer core versions drop texture2D, and a
// program written for them would compile and draw nothing.
class MVN_OGRE_API GridsImpl : public MVNOgreMaterialGenerator::Impl {
public:
    Ogre::GpuProgramPtr createVertexProgram(std::string name) override;
    Ogre::GpuProgramPtr createFragmentProgram(std::string name) override;
    Ogre::MaterialPtr createMaterial(std::string name) override;

    // Highest version the texts are written for.
    static constexpr int kMaxVersion = 330;
    // The texts for a GLSL `version`; `glsles` writes the ES header instead
    // of "#version <version>".
    static std::string vertexSource(int version, bool glsles);
    static std::string fragmentSource(int version, bool glsles);

private:
    // The native version of the render system, capped at kMaxVersion, and
    // whether the engine speaks GLSL ES.
    static int shadingVersion();
    static bool isGlsles();
};

}  // namespace Morvane
