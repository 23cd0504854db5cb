#pragma once
#include <string>

#include "MVNOgreExport.h"

namespace Morvane {

// The outcome of a piece of work done on the render thread for a caller that
// can't wait for it (a label's text drawing): a status code, a message and an
// object that the work produced.
class MVN_OGRE_API MVNOgreRenderableResult {
public:
    MVNOgreRenderableResult();
    MVNOgreRenderableResult(int code, const std::string& message, void* data);

    int code;             // 0 for success, -1 for failure
    std::string message;  // what went wrong, empty on success
    void* data;           // the object produced, owned by whoever asked for it
};

}  // namespace Morvane
