#pragma once
// Declarations of the engine types that the module's headers name, so that a
// header can mention them without pulling in the engine's prerequisites.
// Fields hold std::shared_ptr<T>: the engine's SharedPtr<T> converts to and
// from it implicitly.
#include <memory>

namespace Ogre {
template <typename T>
class SharedPtr;
template <int dims, typename T>
class Vector;
class GpuProgram;
class HardwarePixelBuffer;
class Material;
class SceneNode;
class Texture;
typedef SharedPtr<GpuProgram> GpuProgramPtr;
typedef SharedPtr<Material> MaterialPtr;
typedef SharedPtr<Texture> TexturePtr;
// The engine's Real is float in this build.
typedef Vector<3, float> Vector3;
}  // namespace Ogre
