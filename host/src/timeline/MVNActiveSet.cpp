#include "timeline/MVNActiveSet.h"

#include "timeline/MVNFactory.h"
#include "core/MVNFrame.h"
#include "services/MVNProducer.h"

namespace Morvane {

namespace {
bool contains(const std::vector<MVNActiveClip>& list, const MVNProducer* p) {
    for (const MVNActiveClip& c : list) {
        if (c.producer == p) return true;
    }
    return false;
}

// A clip remembered from the last position may have been destroyed since;
// only one still registered under its id is touched.
bool alive(const MVNActiveClip& c) { return c.producer != nullptr && getProducerById(c.id) == c.producer; }
}  // namespace

void MVNActiveSet::draw(int position, const std::vector<MVNActiveClip>& now) {
    for (const MVNActiveClip& c : mCurrent) {
        if (!contains(now, c.producer) && alive(c)) {
            c.producer->setActive(false, false, c.position, 0);
            c.producer->onClipEnd();
        }
    }
    for (const MVNActiveClip& c : now) {
        if (c.producer == nullptr) continue;
        if (!contains(mCurrent, c.producer)) c.producer->setActive(true, false, c.position, 0);
        MVNFrame* frame = nullptr;
        if (c.producer->getImage(c.position, &frame) == 0) MVNFrame::pushBackPool(frame);
    }
    // Assigning keeps the vector's storage, so a steady timeline allocates
    // nothing here.
    mCurrent.assign(now.begin(), now.end());
}

void MVNActiveSet::reset(int position) {
    for (const MVNActiveClip& c : mCurrent) {
        if (!alive(c)) continue;
        c.producer->setActive(false, false, c.position, 0);
        c.producer->resetRender(c.position);
    }
    mCurrent.clear();
}

}  // namespace Morvane
