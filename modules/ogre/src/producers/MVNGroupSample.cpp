#include "producers/MVNGroupSample.h"

#include <OgreRenderTexture.h>

#include <cstring>

#include "core/AutoLock.h"
#include "core/MVNFrame.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreSceneManager.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"
#include "services/MVNFilter.h"
#include "timeline/MVNManager.h"
#include "timeline/MVNMultitrack.h"
#include "timeline/MVNPlaylist.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNGroupSample";
}  // namespace

MVNGroupSample::MVNGroupSample(const MVNProfile& profile) : MVNGroup(profile) {
    block();
    setString("service", "ogre.group.sample");
    setString("_groupOutRtt", MVNGeneratorStringId::getSingleton()->genStringId("GroupRtt"));
    setString("_groupName", MVNGeneratorStringId::getSingleton()->genStringId("Group"));
    unblock();
}

MVNGroupSample::~MVNGroupSample() {
    log_debug(kTag, "%s destory", getStringId().c_str());
    // A group destroyed without release still gives its engine objects back.
    _deleteNode();
    if (sceneManager != nullptr) {
        MVNOgreManager::getSingleton()->delayDestroySceneManager(sceneManager);
        sceneManager = nullptr;
    }
}

void MVNGroupSample::_OnPropertyChanged(const char* key) {
    MVNGroup::_OnPropertyChanged(key);
    if (key != nullptr && std::strcmp(key, "zOrder") == 0 && node != nullptr) {
        node->setZOrder(getInt32("zOrder", 0));
        // The depth takes effect with the next placement.
        _OnGeometryChanged(getGeometry());
    }
}

int MVNGroupSample::init() {
    block();
    setInt32("render.width", mProfile.width());
    setInt32("width", mProfile.width());
    setInt32("render.height", mProfile.height());
    setInt32("height", mProfile.height());
    unblock();
    return MVNGroup::init();
}

void MVNGroupSample::_deleteNode() {
    delete node;
    node = nullptr;
    nodeShown = false;
}

void MVNGroupSample::_Config() {
    std::string rtt = getString("_groupOutRtt", "");
    int zOrder = getInt32("zOrder", 0);
    std::string groupName = getString("_groupName", "");
    int width = mProfile.width();
    int height = mProfile.height();
    if (sceneManager == nullptr) {
        MVNOgreManager::getSingleton()->callRenderableWait(
            [&]() {
                sceneManager = new MVNOgreSceneManager(width, height, rtt, groupName);
                // Drawn by render ("groupRender") when the timeline asks for
                // the group, not again with every frame of the window.
                if (sceneManager->getRenderTarget() != nullptr) sceneManager->getRenderTarget()->setAutoUpdated(false);
            },
            "createSceneManager");
    }
    bool filtered = false;
    {
        std::lock_guard<std::recursive_mutex> guard(filtersLock());
        filtered = !videoFilters().empty();
    }
    // While filters draw the group's picture a quad of its own would show it
    // twice.
    if (getInt32("_outputType", 0) != 2 && !filtered && node == nullptr) {
        // The quad lives where the group itself is drawn: the shared scene,
        // or the scene of the group that holds this one.
        node = new MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>(rtt, width, height, width, height, zOrder,
                                                                     std::string(), getGroup());
        MVNRect rect = getGeometry();
        if (rect.isEmpty()) rect = MVNRect(0, 0, static_cast<float>(width), static_cast<float>(height));
        node->setGeometry(rect);
        if (!isVisible()) node->setVisible(false);
        nodeShown = isVisible();
    }
    // Only the first filter takes the texture; the others read the filter
    // before them, and are reconfigured as the chain changes (_OnAttach,
    // _OnDetach).
    std::lock_guard<std::recursive_mutex> guard(filtersLock());
    if (!videoFilters().empty()) videoFilters().front()->reconfig();
}

void MVNGroupSample::_moveIntoScene(MVNProducer* timeline) {
    if (timeline == nullptr) return;
    if (auto* tracks = dynamic_cast<MVNMultitrack*>(timeline)) {
        for (MVNProducer* track : tracks->tracks()) _moveIntoScene(track);
        return;
    }
    if (auto* playlist = dynamic_cast<MVNPlaylist*>(timeline)) {
        for (int i = 0; i < playlist->count(); ++i) {
            MVNProducer* clip = playlist->getClip(i);
            if (clip != nullptr && !clip->isBlank()) _moveIntoScene(clip);
        }
        return;
    }
    timeline->connectGroup(getString("_groupName", ""));
}

void MVNGroupSample::_OnConnected() {
    log_debug(kTag, "%s _OnConnected...", getStringId().c_str());
    _Config();
    _moveIntoScene(producer());
    log_debug(kTag, "%s _OnConnected done", getStringId().c_str());
}

void MVNGroupSample::reconfig() {
    log_debug(kTag, "%s reconfig...", getStringId().c_str());
    _deleteNode();
    _Config();
    log_debug(kTag, "%s reconfig done", getStringId().c_str());
}

void MVNGroupSample::_OnDisconnected() {
    log_debug(kTag, "%s _OnDisconnected", getStringId().c_str());
    _deleteNode();
}

void MVNGroupSample::release() {
    log_debug(kTag, "release...");
    _deleteNode();
    if (sceneManager != nullptr) {
        MVNOgreManager::getSingleton()->delayDestroySceneManager(sceneManager);
        sceneManager = nullptr;
    }
    MVNGroup::release();
    log_debug(kTag, "release done");
}

void MVNGroupSample::render(int position) {
    if (getInt32("hidden", 0) != 0) return;
    // The chain's lock before ours, in the order attach takes them when it
    // asks for a refresh.
    std::lock_guard<std::recursive_mutex> filters(filtersLock());
    AutoLock guard(lock);
    if (MVNProducer* child = producer()) child->render(child->getIn() + position);
    // Shown again after resetRender; told only on a change, every call is a
    // wait for the render thread.
    if (node != nullptr && !nodeShown && isVisible()) {
        node->setVisible(true);
        nodeShown = true;
    }
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            if (sceneManager != nullptr && sceneManager->getRenderTarget() != nullptr)
                sceneManager->getRenderTarget()->update(true);
        },
        "groupRender");
    if (videoFilters().empty()) return;
    MVNMode mode = MVNManager::getSingleton()->getMode();
    if ((mode == MVN_MODE_RENDER || mode == MVN_MODE_RENDER_PREVIEW) && MVNManager::getSingleton()->getIgnoreFrames() != -1) return;
    MVNFrame* frame = MVNFrame::pullFromPool(1);
    if (frame == nullptr) {
        log_error(kTag, "render failed, alloc video frame error");
        return;
    }
    frame->setRttData(getString("_groupOutRtt", ""), 0, 0, MVN_COLOR_RTT);
    for (MVNFilter* filter : videoFilters()) frame = filter->processImage(position, frame);
    if (frame != nullptr) MVNFrame::pushBackPool(frame);
}

int MVNGroupSample::_getImage(int position, MVNFrame** frame) {
    render(position);
    MVNFrame* f = MVNFrame::pullFromPool(1);
    if (f == nullptr) {
        log_error(kTag, "_getImage failed, alloc video frame error");
        return -1;
    }
    f->setRttData(getString("_groupOutRtt", ""), 0, 0, MVN_COLOR_RTT);
    *frame = f;
    return 0;
}

void MVNGroupSample::_linkFirstFilter() {
    MVNFilter* first = videoFilters().front();
    first->block();
    first->setString("_inputRtt", getString("_groupOutRtt", ""));
    first->setInt32("_inputType", MVN_INPUT_GROUP_RTT);
    first->unblock();
    first->reconfig();
}

void MVNGroupSample::_OnAttach(const MVNFilter* filter) {
    if (filter == nullptr || filter->filterType() != MVN_FILTER_VIDEO) return;
    {
        std::lock_guard<std::recursive_mutex> guard(filtersLock());
        std::vector<MVNFilter*>& chain = videoFilters();
        if (!chain.empty() && chain.front() == filter) _linkFirstFilter();
        for (size_t i = 1; i < chain.size(); ++i) chain[i]->reconfig();
    }
    // A filter draws the picture now.
    _deleteNode();
    refreshRender(getInt32("_frames", 0));
}

void MVNGroupSample::_OnDetach(const MVNFilter* filter) {
    if (filter != nullptr && filter->filterType() != MVN_FILTER_VIDEO) return;
    bool empty = false;
    {
        std::lock_guard<std::recursive_mutex> guard(filtersLock());
        std::vector<MVNFilter*>& chain = videoFilters();
        if (!chain.empty() && chain.front()->getInt32("_inputType", 0) != MVN_INPUT_GROUP_RTT) _linkFirstFilter();
        for (size_t i = 1; i < chain.size(); ++i) chain[i]->reconfig();
        empty = chain.empty();
    }
    // The last filter gone: the quad shows the texture again.
    if (empty) reconfig();
    refreshRender(getInt32("_frames", 0));
}

void MVNGroupSample::_OnTransitionConnected(MVNProducer* transition) {
    // The transition takes over the drawing.
    _deleteNode();
}

void MVNGroupSample::_OnTransitionDisconnected(MVNProducer* transition) { reconfig(); }

void MVNGroupSample::_OnGroupConnected(const std::string& name) {
    if (sceneManager != nullptr) reconfig();
}

void MVNGroupSample::_OnGroupDisconnected(const std::string& name) {
    if (sceneManager != nullptr) reconfig();
}

void MVNGroupSample::setDefaultGeometry() {
    if (node != nullptr)
        node->setGeometry(MVNRect(0, 0, static_cast<float>(mProfile.width()), static_cast<float>(mProfile.height())));
}

void MVNGroupSample::_OnGeometryChanged(const MVNRect& rect) {
    if (node == nullptr) return;
    // All zero is unset: the whole profile.
    node->setGeometry(rect.isEmpty()
                          ? MVNRect(0, 0, static_cast<float>(mProfile.width()), static_cast<float>(mProfile.height()))
                          : rect);
}

void MVNGroupSample::_OnVisibleChanged(bool visible) {
    if (node == nullptr) return;
    node->setVisible(visible);
    nodeShown = visible;
}

void MVNGroupSample::resetRender(int position) {
    MVNGroup::resetRender(position);
    if (node == nullptr) return;
    node->setVisible(false);
    nodeShown = false;
}

}  // namespace Morvane
