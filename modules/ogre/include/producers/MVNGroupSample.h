#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "core/Mutex.h"
#include "services/MVNGroup.h"

namespace Morvane {

class MVNOgreSceneManager;
class MVNOgreTextureNodeImpl;

// The service "ogre.group.sample": a sub-composition. The connected
// timeline draws into a private scene ("_groupName") that renders into a
// texture of the profile's size ("_groupOutRtt"); to the outside the group
// is one picture, a frame that names that texture. Unless "_outputType" is
// 2 a quad shows the texture in the scene around the group (the shared
// scene, or the scene of an enclosing group), placed by the group's
// geometry. Video filters of the group run inside render and take the
// texture as their input; while they or a transition draw the picture the
// quad is gone.
//
// Properties: "service", "_groupOutRtt", "_groupName" (constructor);
// "render.width", "render.height", "width", "height" (init, the profile);
// "zOrder", "_outputType", "hidden" (not 0: render does nothing), "_frames"
// (last position, for refreshRender after a filter change), from the host.
class MVN_OGRE_API MVNGroupSample : public MVNGroup {
public:
    explicit MVNGroupSample(const MVNProfile& profile);
    ~MVNGroupSample() override;

    // "zOrder" moves the quad in depth and draw order.
    void _OnPropertyChanged(const char* key) override;
    int init() override;
    // Drops the quad; the scene goes to the manager, which destroys it at
    // its own release: clips of the group may still have quads in it.
    void release() override;
    // Draws the timeline at getIn() + position of the child into the scene,
    // renders the scene into the texture, then runs the video filters.
    void render(int position) override;
    void resetRender(int position) override;
    void setDefaultGeometry() override;
    void _OnGeometryChanged(const MVNRect& rect) override;
    void _OnVisibleChanged(bool visible) override;
    // render, then a frame that names the texture (colour type 10001).
    int _getImage(int position, MVNFrame** frame) override;
    void _OnAttach(const MVNFilter* filter) override;
    void _OnDetach(const MVNFilter* filter) override;
    void _OnTransitionConnected(MVNProducer* transition) override;
    void _OnTransitionDisconnected(MVNProducer* transition) override;
    // Moved into (or out of) another group's scene: the quad follows.
    void _OnGroupConnected(const std::string& name) override;
    void _OnGroupDisconnected(const std::string& name) override;
    void reconfig() override;
    // Builds the scene and the quad, and moves every clip of the connected
    // timeline into the scene.
    void _OnConnected() override;
    void _OnDisconnected() override;

    // The scene's texture and name, for tests and the code that links
    // services.
    std::string getOutputRtt() const { return getString("_groupOutRtt", ""); }
    std::string getGroupName() const { return getString("_groupName", ""); }
    bool hasNode() const { return node != nullptr; }

protected:
    // Held by render while the timeline draws; whoever changes the timeline
    // under a running group takes it too.
    Mutex& renderLock() { return lock; }
    // Every clip reachable through playlists and multitracks from
    // `timeline` is connected to this group's scene; a nested group moves
    // with its quad, its own clips stay in its own scene.
    void _moveIntoScene(MVNProducer* timeline);

private:
    void _Config();
    void _deleteNode();
    // The first video filter reads the group's texture.
    void _linkFirstFilter();

    MVNOgreTextureNodeImpl* node = nullptr;        // owned; the quad that shows the texture
    MVNOgreSceneManager* sceneManager = nullptr;   // owned until handed to the manager at release
    bool nodeShown = false;                         // what node was last told by setVisible
    Mutex lock;                                     // held by render while it waits for the render thread
};

}  // namespace Morvane
