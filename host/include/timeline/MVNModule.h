#pragma once
#include <string>

namespace Morvane {

// Loads a module (a shared library exporting
// `extern "C" int MorvaneModuleInstall(MVNRepository*)`) and installs it
// into the process repository. 0 on success; -1 with a logged reason when
// the file is missing, isn't a loadable shared object, has no install
// function, or its install returns non-zero. Loading the same module again
// is safe: the library stays loaded once and the install runs again,
// replacing its registrations.
int loadModule(const std::string& path);

// Where modules are looked for: $MORVANE_MODULE_DIR when set, else
// morvane/modules beside libMorvane when it exists (an installed tree,
// wherever it was moved), else the build tree's library folder when it
// exists, else the configured install folder.
std::string defaultModuleDir();

// The path of module `name` ("MVNOgre", "libMVNOgre.so" or a path). A path
// with a '/' is returned as it is if it exists; a bare name is looked for in
// $MORVANE_MODULE_DIR, morvane/modules beside libMorvane, the build tree,
// the folder of libMorvane itself and the install folder, in that order.
// Empty when not found.
std::string findModule(const std::string& name);

}  // namespace Morvane
