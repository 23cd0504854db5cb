#pragma once

namespace Morvane {

// How the composed picture is brought back to memory.
enum MVNOgreRenderReaderType : int {
    MVN_READER_RTT = 1,         // render texture, engine copy; sync and async
    MVN_READER_RTT_SAMPLE = 2,  // render texture read through a pixel buffer object; sync
    MVN_READER_DIRECT = 3,      // the render window itself; sync and async
    MVN_READER_GL = 4,          // glReadPixels of whatever is bound; sync
    MVN_READER_AUTO = 10,       // the best that this GL offers
};

}  // namespace Morvane
