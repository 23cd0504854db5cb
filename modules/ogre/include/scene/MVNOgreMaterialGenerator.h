#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Morvane {

// Generates a material that is no script: a template with a vertex and a
// fragment program written at run time by an implementation object.
// MVNOgreMaterialManager keeps what it generates. Render thread only.
class MVN_OGRE_API MVNOgreMaterialGenerator {
public:
    // Writes the two programs and the bare material of one kind of
    // generated material.
    class Impl {
    public:
        virtual Ogre::GpuProgramPtr createVertexProgram(std::string name) = 0;
        virtual Ogre::GpuProgramPtr createFragmentProgram(std::string name) = 0;
        virtual Ogre::MaterialPtr createMaterial(std::string name) = 0;
        virtual ~Impl() = default;
    };

    // Takes ownership of impl.
    explicit MVNOgreMaterialGenerator(Impl* impl);
    virtual ~MVNOgreMaterialGenerator();
    MVNOgreMaterialGenerator(const MVNOgreMaterialGenerator&) = delete;
    MVNOgreMaterialGenerator& operator=(const MVNOgreMaterialGenerator&) = delete;

    // The material `name` with the programs name + "_VP" and name + "_FP" on
    // its first pass. A program that doesn't compile throws out of here.
    Ogre::MaterialPtr genMaterial(const std::string& name);

private:
    Impl* impl = nullptr;  // owned
};

}  // namespace Morvane
