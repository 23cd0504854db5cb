#include "timeline/MVNTimelineProducer.h"

#include "core/MVNFrame.h"
#include "core/MVNLog.h"

namespace Morvane {

MVNTimelineProducer::MVNTimelineProducer(const MVNProfile& profile, MVNServiceType type, const char* tag)
    : MVNProducer(profile, type), mTag(tag) {}

void MVNTimelineProducer::render(int position) {
    mScratch.clear();
    _activeAt(position, mScratch);
    mDrawn.draw(position, mScratch);
}

void MVNTimelineProducer::resetRender(int position) {
    mDrawn.reset(position);
    MVNProducer::resetRender(position);
}

int MVNTimelineProducer::_getImage(int position, MVNFrame** frame) {
    render(position);
    MVNFrame* f = MVNFrame::pullFromPool(1);
    if (f == nullptr) {
        log_error(mTag, "%s _getImage failed, no frame in the pool", getStringId().c_str());
        return -1;
    }
    f->setColorFormat(MVN_COLOR_BLANK);
    f->setWidth(0);
    f->setHeight(0);
    *frame = f;
    return 0;
}

}  // namespace Morvane
