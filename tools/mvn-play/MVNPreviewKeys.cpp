#include "MVNPreviewKeys.h"

namespace Morvane {

bool MVNPreviewKeys::keyPressed(const OgreBites::KeyboardEvent& evt) {
    std::lock_guard<std::mutex> guard(mLock);
    mKeys.push_back(static_cast<int>(evt.keysym.sym));
    return true;
}

int MVNPreviewKeys::take() {
    std::lock_guard<std::mutex> guard(mLock);
    if (mKeys.empty()) return 0;
    int key = mKeys.front();
    mKeys.pop_front();
    return key;
}

}  // namespace Morvane
