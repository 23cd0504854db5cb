#pragma once
// The keys pressed in the preview window. The SDL context hands them over on
// the render thread; the player takes them on its own, in order.
#include <Bites/OgreInput.h>

#include <deque>
#include <mutex>

namespace Morvane {

class MVNPreviewKeys : public OgreBites::InputListener {
public:
    bool keyPressed(const OgreBites::KeyboardEvent& evt) override;
    // The oldest key not taken yet, or 0.
    int take();

private:
    std::mutex mLock;
    std::deque<int> mKeys;
};

}  // namespace Morvane
