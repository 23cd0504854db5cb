#include "scene/MVNOgreMaterialGenerator.h"

#include <Ogre.h>

#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNOgreMaterialGenerator";
}

MVNOgreMaterialGenerator::MVNOgreMaterialGenerator(Impl* impl) : impl(impl) {}

MVNOgreMaterialGenerator::~MVNOgreMaterialGenerator() { delete impl; }

Ogre::MaterialPtr MVNOgreMaterialGenerator::genMaterial(const std::string& name) {
    log_debug(kTag, "genMaterial %s ", name.c_str());
    Ogre::GpuProgramPtr vertex = impl->createVertexProgram(name + "_VP");
    Ogre::GpuProgramPtr fragment = impl->createFragmentProgram(name + "_FP");
    Ogre::MaterialPtr material = impl->createMaterial(name);
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    pass->setFragmentProgram(fragment->getName(), true);
    pass->setVertexProgram(vertex->getName(), true);
    log_debug(kTag, "genMaterial %s done", name.c_str());
    return material;
}

}  // namespace Morvane
