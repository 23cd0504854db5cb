#include "MVNProjectOpen.h"

#include <cstdio>
#include <filesystem>

#include "MVNProjectCheck.h"
#include "MVNToolSetup.h"

namespace fs = std::filesystem;

namespace Morvane {

namespace {
constexpr int kExitFailed = 1;
constexpr int kExitBadInput = 2;
}  // namespace

int openProjectForRender(MVNProjectLoader& loader, const std::string& projectArg, const std::string& projectPath,
                         const std::string& output, const std::string& profile, MVNProject& project) {
    std::error_code ec;
    if (!fs::is_regular_file(projectPath, ec)) {
        std::fprintf(stderr, "mvn-render: %s: no such project file\n", projectArg.c_str());
        return kExitBadInput;
    }
    if (output != "-") {
        fs::path parent = fs::path(output).parent_path();
        if (!parent.empty() && !fs::is_directory(parent, ec)) {
            std::fprintf(stderr, "mvn-render: %s: the output folder does not exist\n", parent.c_str());
            return kExitBadInput;
        }
    }

    if (!MVNToolSetup::enterStateFolder("mvn-render")) return kExitFailed;
    if (!MVNToolSetup::loadRenderModule("mvn-render")) return kExitFailed;
    // Video files, animations and pictures decoded on the processor.
    if (!MVNToolSetup::loadMediaModule("mvn-render")) return kExitFailed;

    if (readCheckedProject("mvn-render", loader, projectPath, profile, project) != 0) return kExitBadInput;
    return 0;
}

}  // namespace Morvane
