#include "services/MVNProducer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <exception>

#include "core/MVNAudioBlock.h"
#include "core/MVNByteBuffer.h"
#include "services/MVNDecoder.h"
#include "services/MVNFilter.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "services/MVNRenderTexture.h"
#include "services/MVNRegistryHooks.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducer";
const char* const kRenderTextureFactory = "ogreRenderTexture";
}  // namespace

MVNProducer::MVNProducer(const MVNProfile& profile) : MVNProducer(profile, MVN_SERVICE_PRODUCER) {}

MVNProducer::MVNProducer(const MVNProfile& profile, MVNServiceType type) : MVNService(profile, type) {}

MVNProducer::~MVNProducer() {
    // Whatever still points at this producer is told now, while the
    // pointers are good: transitions drop it as an input, filters are left
    // unattached.
    std::vector<MVNProducer*> transitions;
    {
        std::lock_guard<std::recursive_mutex> guard(mStateLock);
        transitions = mTransitions;
    }
    for (MVNProducer* t : transitions) t->_OnInputDestroyed(this);
    {
        std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
        for (auto* list : {&mVideoFilters, &mVideoFiltersCPU, &mAudioFilters}) {
            for (MVNFilter* f : *list) f->_setConnectedService(nullptr);
            list->clear();
        }
    }
    if (mRenderTexture != nullptr) {
        try {
            delete mRenderTexture;
        } catch (const std::exception& e) {
            log_error(kTag, "destroy render texture failed: %s", e.what());
        }
        mRenderTexture = nullptr;
    }
}

void MVNProducer::_OnPropertyChanged(const char* key) {
    if (key == nullptr) return;
    if (std::strcmp(key, "geometry") == 0) {
        MVNRect rect = getGeometry();
        {
            std::lock_guard<std::recursive_mutex> node(mStateLock);
            if (mRenderTexture != nullptr) mRenderTexture->setGeometry(_effectiveGeometry());
        }
        {
            std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
            for (MVNFilter* f : mVideoFilters) f->setGeometry(rect);
        }
        _OnGeometryChanged(rect);
    } else if (std::strcmp(key, "anim") == 0) {
        int anim = getAnimation();
        {
            std::lock_guard<std::recursive_mutex> node(mStateLock);
            if (mRenderTexture != nullptr) mRenderTexture->setAnimation(anim);
        }
        {
            std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
            for (MVNFilter* f : mVideoFilters) f->_OnAnimationChanged(anim);
        }
        _OnAnimationChanged(anim);
    } else if (std::strcmp(key, "rotation") == 0) {
        int rotation = getInt32("rotation", -1);
        {
            std::lock_guard<std::recursive_mutex> node(mStateLock);
            if (mRenderTexture != nullptr && rotation != -1) mRenderTexture->setRotation(rotation);
        }
        {
            std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
            for (MVNFilter* f : mVideoFilters) f->_OnRotationChanged(rotation);
        }
        _OnRotationChanged(rotation);
    } else if (std::strcmp(key, "visible") == 0) {
        bool visible = isVisible();
        {
            std::lock_guard<std::recursive_mutex> node(mStateLock);
            _syncQuad();
        }
        {
            std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
            for (MVNFilter* f : mVideoFilters) f->_OnVisibleChanged(visible);
        }
        _OnVisibleChanged(visible);
    } else if (std::strcmp(key, "zOrder") == 0) {
        int zOrder = getInt32("zOrder", 0);
        {
            std::lock_guard<std::recursive_mutex> node(mStateLock);
            if (mRenderTexture != nullptr) mRenderTexture->setZOrder(zOrder);
        }
        std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
        for (MVNFilter* f : mVideoFilters) f->setInt32("_zOrder", zOrder);
    }
}

MVNFrame* MVNProducer::_runChain(std::vector<MVNFilter*>& chain, int position, MVNFrame* frame) {
    for (MVNFilter* f : chain) {
        MVNFrame* out = nullptr;
        try {
            out = f->processImage(position, frame);
        } catch (const std::exception& e) {
            log_error(kTag, "%s filter %s threw at %d: %s", getStringId().c_str(), f->getStringId().c_str(), position,
                      e.what());
        } catch (...) {
            log_error(kTag, "%s filter %s threw at %d", getStringId().c_str(), f->getStringId().c_str(), position);
        }
        if (out == nullptr) {
            log_warn(kTag, "%s filter %s failed at %d, passing its input on", getStringId().c_str(),
                     f->getStringId().c_str(), position);
            continue;
        }
        frame = out;
    }
    return frame;
}

int MVNProducer::getImage(int position, MVNFrame** frame) {
    if (frame == nullptr) return -1;
    MVNFrame* f = nullptr;
    // Asked before the picture is made: a change that lands between the two
    // gives a key that is already out of date, so the next picture goes up.
    uint64_t key = _pictureKey(position);
    int rc = _getImage(position, &f);
    if (rc != 0) return rc;
    if (f == nullptr) {
        log_error(kTag, "%s _getImage gave no frame at %d", getStringId().c_str(), position);
        return -1;
    }
    bool filtered = false;
    {
        std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
        if (!mVideoFiltersCPU.empty()) {
            f = _runChain(mVideoFiltersCPU, position, f);
            key = 0;  // the picture is the filters' now
        }
        if (!mVideoFilters.empty()) {
            // A group runs its video filters itself while it draws.
            if (!_drawsOwnFilters()) f = _runChain(mVideoFilters, position, f);
            for (MVNFilter* filter : mVideoFilters) filtered = filtered || filter->drawsPicture();
        }
    }
    // Back on the timeline: the filters' pictures show again with the clip.
    if (mNodeHidden.exchange(false) && isVisible()) {
        std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
        for (MVNFilter* filter : mVideoFilters) filter->_OnVisibleChanged(true);
    }
    // The texture may be rebuilt by another thread (a change of group); it
    // is only touched under the state lock.
    std::lock_guard<std::recursive_mutex> node(mStateLock);
    // When video filters draw the clip's picture, its own quad stays hidden:
    // it would show through wherever a filter leaves transparency (masks,
    // reveals), and it needs no upload.
    mQuadSuppressed = filtered;
    if (mRenderTexture != nullptr) {
        _syncQuad();
        if (!filtered) {
            MVNByteBuffer* buffer = f->buffer();
            if (f->colorFormat() == MVN_COLOR_BGRA && buffer != nullptr && buffer->ptr() != nullptr &&
                f->width() > 0 && f->height() > 0 && (key == 0 || key != mUploadedKey)) {
                mRenderTexture->updateTexture(buffer->ptr(), f->width(), f->height());
                mUploadedKey = key;
            }
        }
        if (getAnimation() != 0) mRenderTexture->updateAnimation(position);
    }
    *frame = f;
    return 0;
}

int MVNProducer::getAudio(int position, void* converter, MVNFrame** frame) {
    if (frame == nullptr) return -1;
    MVNFrame* f = nullptr;
    int rc = _getAudio(position, converter, &f);
    if (rc != 0 || f == nullptr) return rc != 0 ? rc : -1;
    // The clip's own level, before its audio filters.
    double volume = getDouble("volume", 1.0);
    if (volume != 1.0) {
        if (float* s = MVNAudioBlock::samples(f)) {
            const int n = f->samples() * f->channels();
            for (int i = 0; i < n; ++i) s[i] = static_cast<float>(s[i] * volume);
        }
    }
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    for (MVNFilter* filter : mAudioFilters) {
        MVNFrame* out = filter->processAudio(position, f);
        if (out != nullptr) f = out;
    }
    *frame = f;
    return 0;
}

void MVNProducer::resetRender(int position) {
    if (mNodeHidden.exchange(true)) return;
    {
        std::lock_guard<std::recursive_mutex> node(mStateLock);
        _syncQuad();
    }
    // The filters' pictures leave the scene with the clip.
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    for (MVNFilter* filter : mVideoFilters) filter->_OnVisibleChanged(false);
}

void MVNProducer::_syncQuad() {
    if (mRenderTexture == nullptr) return;
    bool visible = isVisible() && !mNodeHidden.load() && !mQuadSuppressed;
    if (visible == mQuadVisible) return;
    mQuadVisible = visible;
    mRenderTexture->setVisible(visible);
}

int MVNProducer::seek(int position, int whence) {
    mPosition.store(position);
    return 0;
}

MVNFrame* MVNProducer::getCacheImage(int position) {
    MVNFrame* f = nullptr;
    return _getCacheImage(position, &f) == 0 ? f : nullptr;
}

std::string MVNProducer::locate() { return getString("resource", ""); }

void MVNProducer::setDefaultGeometry() {
    setGeometry(MVNRect(0, 0, static_cast<float>(mProfile.width()), static_cast<float>(mProfile.height())));
}

void MVNProducer::setDefaultGeometryPIP() {
    float w = static_cast<float>(mProfile.width());
    float h = static_cast<float>(mProfile.height());
    setGeometry(MVNRect(w * 0.45f, h * 0.45f, w * 0.5f, h * 0.5f));
}

void MVNProducer::refreshRender(int position) {
    MVNFrame* f = nullptr;
    if (getImage(position, &f) == 0) MVNFrame::pushBackPool(f);
}

void MVNProducer::setDecoder(std::shared_ptr<MVNDecoder> decoder) {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    mDecoder = std::move(decoder);
}

std::shared_ptr<MVNDecoder> MVNProducer::getDecoder() {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    return mDecoder;
}

void MVNProducer::onClipEnd() {
    int position = lastPosition();
    resetRender(position);
    fireEvent(MVN_EVENT_CLIP_END, position, "clip end", nullptr);
}

void MVNProducer::setActive(bool active, bool force, int position, int flags) { setBoolean("_active", active); }

int MVNProducer::connectGroup(const std::string& name) {
    if (name.empty()) {
        log_error(kTag, "%s connectGroup failed, empty group name", getStringId().c_str());
        return -1;
    }
    bool rebuild = false;
    {
        std::lock_guard<std::recursive_mutex> guard(mStateLock);
        if (mGroup == name) return 0;
        mGroup = name;
        rebuild = mRenderTexture != nullptr;
    }
    if (rebuild) {
        _destroyTextureNode();
        _createTextureNode();
    }
    _moveFiltersToGroup();
    _OnGroupConnected(name);
    return 0;
}

int MVNProducer::disconnectGroup(const std::string& name) {
    bool rebuild = false;
    {
        std::lock_guard<std::recursive_mutex> guard(mStateLock);
        if (name.empty() || mGroup != name) {
            log_error(kTag, "%s disconnectGroup failed, not in group %s", getStringId().c_str(), name.c_str());
            return -1;
        }
        mGroup.clear();
        rebuild = mRenderTexture != nullptr;
    }
    if (rebuild) {
        _destroyTextureNode();
        _createTextureNode();
    }
    _moveFiltersToGroup();
    _OnGroupDisconnected(name);
    return 0;
}

void MVNProducer::_moveFiltersToGroup() {
    // A filter that draws the clip's picture draws it in the clip's scene:
    // rebuilt there.
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    for (MVNFilter* f : mVideoFilters) f->reconfig();
}

int MVNProducer::connectTransition(MVNProducer* transition) {
    if (transition == nullptr) return -1;
    {
        std::lock_guard<std::recursive_mutex> guard(mStateLock);
        if (std::find(mTransitions.begin(), mTransitions.end(), transition) == mTransitions.end())
            mTransitions.push_back(transition);
    }
    _OnTransitionConnected(transition);
    return 0;
}

int MVNProducer::disconnectTransition(MVNProducer* transition) {
    {
        std::lock_guard<std::recursive_mutex> guard(mStateLock);
        auto it = std::find(mTransitions.begin(), mTransitions.end(), transition);
        if (it == mTransitions.end()) return -1;
        mTransitions.erase(it);
    }
    _OnTransitionDisconnected(transition);
    return 0;
}

MVNRect MVNProducer::_effectiveGeometry() const {
    MVNRect rect = getGeometry();
    if (rect.isEmpty())
        rect = MVNRect(0, 0, static_cast<float>(mProfile.width()), static_cast<float>(mProfile.height()));
    return rect;
}

void MVNProducer::_createTextureNode(const std::string& name, bool apply) {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    mTextureNodeName = name;
    mTextureNodeApply = apply;
    if (mRenderTexture != nullptr) {
        delete mRenderTexture;
        mRenderTexture = nullptr;
    }
    MVNProperties p;
    p.setInt32("width", getInt32("render.width", mProfile.width()));
    p.setInt32("height", getInt32("render.height", mProfile.height()));
    p.setInt32("zOrder", getInt32("zOrder", 0));
    p.setString("resource", name);
    p.setString("_groupName", mGroup);
    // Placed before it shows: another thread's frame drawn in between would
    // otherwise see the new quad at the whole profile's size.
    if (apply) p.setBoolean("_hidden", true);
    MVNRenderTexture* texture = MVNRegistryHooks::createRenderTexture(kRenderTextureFactory, mProfile, p);
    if (texture == nullptr) {
        log_error(kTag, "%s _createTextureNode failed, no render texture", getStringId().c_str());
        return;
    }
    mRenderTexture = texture;
    mUploadedKey = 0;
    mNodeHidden.store(false);
    mQuadVisible = !apply;  // a render texture starts shown unless asked hidden
    if (!apply) return;
    texture->setGeometry(_effectiveGeometry());
    texture->setAnimation(getAnimation());
    int rotation = getInt32("rotation", -1);
    if (rotation != -1) texture->setRotation(rotation);
    if (isVisible()) {
        texture->setVisible(true);
        mQuadVisible = true;
    }
}

void MVNProducer::_destroyTextureNode() {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    if (mRenderTexture == nullptr) return;
    try {
        delete mRenderTexture;
    } catch (const std::exception& e) {
        log_error(kTag, "%s destroy render texture failed: %s", getStringId().c_str(), e.what());
    }
    mRenderTexture = nullptr;
    mUploadedKey = 0;
}

void MVNProducer::_createTextureNode() {
    std::string name;
    bool apply = true;
    {
        std::lock_guard<std::recursive_mutex> guard(mStateLock);
        name = mTextureNodeName;
        apply = mTextureNodeApply;
    }
    _createTextureNode(name, apply);
}

void MVNProducer::setIn(int in) { setInt32("in", in); }

void MVNProducer::setOut(int out) { setInt32("out", out); }

void MVNProducer::setInAndOut(int in, int out) {
    setInt32("in", in);
    setInt32("out", out);
}

int MVNProducer::getIn() const { return getInt32("in", 0); }

int MVNProducer::getOut() const { return has("out") ? getInt32("out", -1) : getLength() - 1; }

void MVNProducer::setLength(int length) { setInt32("length", length); }

int MVNProducer::getLength() const { return getInt32("length", 0); }

int MVNProducer::getPlaytime() const { return std::max(0, getOut() - getIn() + 1); }

MVNRect MVNProducer::getGeometry() const { return getRect("geometry", MVNRect()); }

void MVNProducer::setGeometry(const MVNRect& rect) { setRect("geometry", rect); }

int MVNProducer::getAnimation() const { return getInt32("anim", 0); }

void MVNProducer::setAnimation(int animation) { setInt32("anim", animation); }

int MVNProducer::getRotation() const {
    int r = getInt32("rotation", -1);
    return r == -1 ? 0 : r;
}

void MVNProducer::setRotation(int degrees) { setInt32("rotation", degrees); }

bool MVNProducer::isVisible() const { return getBoolean("visible", true); }

void MVNProducer::setVisible(bool visible) { setBoolean("visible", visible); }

int MVNProducer::attach(MVNFilter* filter) {
    if (filter == nullptr) {
        log_error(kTag, "%s attach failed, filter is null", getStringId().c_str());
        return -1;
    }
    if (filter->connectedService() != nullptr) {
        log_error(kTag, "%s attach failed, filter %s is already attached", getStringId().c_str(),
                  filter->getStringId().c_str());
        return -1;
    }
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    bool video = false;
    if (filter->filterType() == MVN_FILTER_AUDIO) {
        mAudioFilters.push_back(filter);
    } else if (filter->filterTypeUse() == MVN_FILTER_USE_CPU) {
        mVideoFiltersCPU.push_back(filter);
    } else {
        mVideoFilters.push_back(filter);
        video = true;
    }
    filter->_setConnectedService(this);
    if (video) {
        MVNFilter* prev = mVideoFilters.size() >= 2 ? mVideoFilters[mVideoFilters.size() - 2] : nullptr;
        // The filter that was last now hands its picture on through its own
        // render texture instead of drawing into the scene.
        if (prev != nullptr && prev->getInt32("_outputType", MVN_OUTPUT_NONE) != MVN_OUTPUT_RTT)
            prev->setInt32("_outputType", MVN_OUTPUT_RTT);
        bool groupHead = prev == nullptr && _drawsOwnFilters();
        filter->block();
        if (groupHead) {
            // The first filter of a group reads the group's render texture.
            filter->setInt32("_inputType", MVN_INPUT_GROUP_RTT);
            filter->setString("_inputRtt", getString("_groupOutRtt", ""));
        } else {
            filter->setInt32("_inputType", prev != nullptr ? MVN_INPUT_RTT : MVN_INPUT_FRAME);
            filter->setString("_inputRtt", prev != nullptr ? prev->getString("_outputRtt", "") : std::string());
        }
        filter->setInt32("_outputType", MVN_OUTPUT_SCENE);
        filter->unblock();
    }
    filter->_OnConnected(this);
    _OnAttach(filter);
    return 0;
}

int MVNProducer::detach(MVNFilter* filter) {
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    bool found = false;
    bool video = false;
    for (auto* list : {&mVideoFilters, &mVideoFiltersCPU, &mAudioFilters}) {
        auto it = std::find(list->begin(), list->end(), filter);
        if (it != list->end()) {
            list->erase(it);
            found = true;
            video = list == &mVideoFilters;
            break;
        }
    }
    if (!found) {
        log_error(kTag, "%s detach failed, filter %s is not attached here", getStringId().c_str(),
                  filter != nullptr ? filter->getStringId().c_str() : "(null)");
        return -1;
    }
    filter->_OnDisconnected(this);
    filter->_setConnectedService(nullptr);
    if (video) _updateFilterChain();
    _OnDetach(filter);
    return 0;
}

void MVNProducer::_dropFilter(MVNFilter* filter) {
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    bool video = false;
    bool found = false;
    for (auto* list : {&mVideoFilters, &mVideoFiltersCPU, &mAudioFilters}) {
        auto it = std::find(list->begin(), list->end(), filter);
        if (it != list->end()) {
            list->erase(it);
            video = list == &mVideoFilters;
            found = true;
            break;
        }
    }
    if (!found) return;
    if (video) _updateFilterChain();
    _OnDetach(filter);
}

void MVNProducer::detachAll() {
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    for (auto* list : {&mAudioFilters, &mVideoFiltersCPU, &mVideoFilters}) {
        while (!list->empty()) detach(list->back());
    }
}

void MVNProducer::_updateFilterChain() {
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    bool group = _drawsOwnFilters();
    for (size_t i = 0; i < mVideoFilters.size(); ++i) {
        MVNFilter* f = mVideoFilters[i];
        if (i > 0 || !group) {
            int input = i == 0 ? MVN_INPUT_FRAME : MVN_INPUT_RTT;
            std::string rtt = i == 0 ? std::string() : mVideoFilters[i - 1]->getString("_outputRtt", "");
            if (f->getString("_inputRtt", "") != rtt) {
                f->block();
                f->setString("_inputRtt", rtt);
                f->unblock();
                // The type is set with notification below whether or not it
                // changed, so the filter picks the new name up.
                f->setInt32("_inputType", input);
            } else if (f->getInt32("_inputType", MVN_INPUT_NONE) != input) {
                f->setInt32("_inputType", input);
            }
        }
        int output = i + 1 == mVideoFilters.size() ? MVN_OUTPUT_SCENE : MVN_OUTPUT_RTT;
        if (f->getInt32("_outputType", MVN_OUTPUT_NONE) != output) f->setInt32("_outputType", output);
    }
}

void MVNProducer::getVideoFilters(std::vector<std::string>& ids) {
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    ids.clear();
    for (MVNFilter* f : mVideoFilters) ids.push_back(f->getStringId());
}

int MVNProducer::filterCount() {
    std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
    return static_cast<int>(mVideoFilters.size() + mVideoFiltersCPU.size() + mAudioFilters.size());
}

std::string MVNProducer::getGroup() const {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    return mGroup;
}

void MVNProducer::fireCanvasChanged() {
    {
        std::lock_guard<std::recursive_mutex> guard(mFiltersLock);
        for (MVNFilter* f : mVideoFilters) {
            if (f->filterTypeUse() == MVN_FILTER_USE_CANVAS) f->updateCanvas(nullptr);
        }
    }
    fireEvent(MVN_EVENT_CANVAS_CHANGED, 0, "canvas changed", nullptr);
}

void MVNProducer::_createAudioConverter() {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    mAudioConverter = true;
}

void MVNProducer::_destroyAudioConverter() {
    std::lock_guard<std::recursive_mutex> guard(mStateLock);
    mAudioConverter = false;
}

}  // namespace Morvane
