#include "services/MVNTransition.h"

#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"
#include "services/MVNTransitionAudio.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNTransition";
}  // namespace

MVNTransition::MVNTransition(const MVNProfile& profile) : MVNProducer(profile) {
    setType(MVN_PRODUCER_TRANSITION);
}

MVNTransition::~MVNTransition() {
    // The inputs must not keep a pointer to a transition that is gone.
    if (clipA != nullptr) clipA->disconnectTransition(this);
    if (clipB != nullptr) clipB->disconnectTransition(this);
    clipA = nullptr;
    clipB = nullptr;
}

int MVNTransition::connect(MVNProducer* a, MVNProducer* b, int startA, int startB) {
    if (a == nullptr || b == nullptr || a == b || a == this || b == this) {
        log_error(kTag, "%s connect failed, need two different clips", getStringId().c_str());
        return -1;
    }
    if (clipA != nullptr || clipB != nullptr) disconnect();
    clipA = a;
    clipB = b;
    setStarts(startA, startB);
    a->connectTransition(this);
    b->connectTransition(this);
    _OnConnected();
    return 0;
}

void MVNTransition::disconnect() {
    if (clipA == nullptr && clipB == nullptr) return;
    _OnDisconnected();
    MVNProducer* a = clipA;
    MVNProducer* b = clipB;
    clipA = nullptr;
    clipB = nullptr;
    if (a != nullptr) a->disconnectTransition(this);
    if (b != nullptr) b->disconnectTransition(this);
}

void MVNTransition::setStarts(int startA, int startB) {
    mStartA.store(startA);
    mStartB.store(startB);
}

void MVNTransition::preRender(int position) {
    if (clipA != nullptr) clipA->preRender(mStartA + position);
    if (clipB != nullptr) clipB->preRender(mStartB + position);
}

void MVNTransition::render(int position) {
    if (clipA != nullptr) clipA->render(mStartA + position);
    if (clipB != nullptr) clipB->render(mStartB + position);
}

void MVNTransition::resetRender(int position) {
    if (clipA != nullptr) clipA->resetRender(mStartA + position);
    if (clipB != nullptr) clipB->resetRender(mStartB + position);
    MVNProducer::resetRender(position);
}

int MVNTransition::seek(int position, int whence) {
    MVNProducer::seek(position, whence);
    int rc = 0;
    if (clipA != nullptr && clipA->seek(mStartA + position, whence) != 0) rc = -1;
    if (clipB != nullptr && clipB->seek(mStartB + position, whence) != 0) rc = -1;
    return rc;
}

void MVNTransition::prepareVideo(int position) {
    if (clipA != nullptr) clipA->prepareVideo(mStartA + position);
    if (clipB != nullptr) clipB->prepareVideo(mStartB + position);
}

void MVNTransition::prepareAudio(int position) {
    if (clipA != nullptr) clipA->prepareAudio(mStartA + position);
    if (clipB != nullptr) clipB->prepareAudio(mStartB + position);
}

std::string MVNTransition::locate() { return getString("resource", ""); }

void MVNTransition::cleanCachedFrame(bool all) {
    if (clipA != nullptr) clipA->cleanCachedFrame(all);
    if (clipB != nullptr) clipB->cleanCachedFrame(all);
}

int MVNTransition::start() {
    int rc = 0;
    if (clipA != nullptr && clipA->start() != 0) rc = -1;
    if (clipB != nullptr && clipB->start() != 0) rc = -1;
    return rc;
}

void MVNTransition::stop() {
    if (clipA != nullptr) clipA->stop();
    if (clipB != nullptr) clipB->stop();
}

void MVNTransition::refreshRender(int position) { MVNProducer::refreshRender(position); }

void MVNTransition::onClipEnd() {
    if (clipA != nullptr) clipA->onClipEnd();
    if (clipB != nullptr) clipB->onClipEnd();
    MVNProducer::onClipEnd();
}

int MVNTransition::getRenderType(int position) {
    return clipA != nullptr ? clipA->getRenderType(mStartA + position) : MVNProducer::getRenderType(position);
}

void MVNTransition::setActive(bool active, bool force, int position, int flags) {
    if (clipA != nullptr) clipA->setActive(active, force, mStartA + position, flags);
    if (clipB != nullptr) clipB->setActive(active, force, mStartB + position, flags);
    MVNProducer::setActive(active, force, position, flags);
}

bool MVNTransition::containGroup() {
    return (clipA != nullptr && clipA->containGroup()) || (clipB != nullptr && clipB->containGroup());
}

int MVNTransition::_getAudio(int position, void* converter, MVNFrame** frame) {
    if (frame == nullptr) return -1;
    MVNFrame* a = nullptr;
    MVNFrame* b = nullptr;
    if (clipA != nullptr && clipA->getAudio(mStartA + position, converter, &a) != 0) a = nullptr;
    if (clipB != nullptr && clipB->getAudio(mStartB + position, converter, &b) != 0) b = nullptr;
    // Over the transition A's sound gives way to B's, as the picture does.
    MVNFrame* out =
        MVNTransitionAudio::blend(true, position, getPlaytime(), MVNAudioBlock::samplesOf(mProfile, position), a, b);
    if (out == nullptr) return -1;
    *frame = out;
    return 0;
}

int MVNTransition::_getImage(int position, MVNFrame** frame) {
    if (frame == nullptr) return -1;
    MVNFrame* a = nullptr;
    MVNFrame* b = nullptr;
    if (clipA != nullptr && clipA->getImage(mStartA + position, &a) != 0) a = nullptr;
    if (clipB != nullptr && clipB->getImage(mStartB + position, &b) != 0) b = nullptr;
    MVNFrame* out = processImage(position, a, b);
    if (out == nullptr) {
        out = MVNFrame::pullFromPool(1);
        if (out == nullptr) {
            log_error(kTag, "%s _getImage failed, no frame in the pool", getStringId().c_str());
            return -1;
        }
        out->setColorFormat(MVN_COLOR_BLANK);
        out->setWidth(0);
        out->setHeight(0);
    }
    *frame = out;
    return 0;
}

MVNFrame* MVNTransition::processImage(int position, MVNFrame* a, MVNFrame* b) {
    MVNFrame::pushBackPool(a);
    MVNFrame::pushBackPool(b);
    return nullptr;
}

}  // namespace Morvane
