#pragma once
#include <string>

namespace Morvane {

class MVNProjectLoader;
struct MVNProject;

// The steps every mvn-render pass takes before its renderer starts: the
// project file exists, the output's folder exists ("-" writes to standard
// output and has none), the state folder and modules are in place, and the
// project reads and passes the tools' checks. Returns 0, or the tool's exit
// status after one line on standard error. The loader then builds it.
int openProjectForRender(MVNProjectLoader& loader, const std::string& projectArg, const std::string& projectPath,
                         const std::string& output, const std::string& profile, MVNProject& project);

}  // namespace Morvane
