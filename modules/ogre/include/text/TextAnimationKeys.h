#pragma once
#include <string>
#include <vector>

#include "MVNOgreExport.h"
#include "text/FontInfo.h"
#include "text/TextObjInfo.h"

namespace Morvane {

// The key frames of one "textAnimationType", as plain numbers: what the
// text's index node and the effect's values do over the clip. MVNTextEffect
// turns them into engine tracks; keeping them apart lets the tables be read
// and checked without an engine.
class MVN_OGRE_API TextAnimationKeys {
public:
    enum Kind { None, Node, Alpha, Print, Material };

    // One key of the node track. An unset part keeps the engine's default
    // (no move, unit scale, no turn).
    struct NodeKey {
        float time = 0;
        bool translated = false;
        float translate[3] = {0, 0, 0};
        bool scaled = false;
        float scale[3] = {1, 1, 1};
        bool rotated = false;
        float axis[3] = {0, 0, 1};
        float degrees = 0;
    };
    struct ValueKey {
        float time = 0;
        float value = 0;
    };

    // The keys of `type` for a text of the sizes in `obj`, timed by `font`;
    // `glyphs` is the number of glyphs a print reveals.
    static TextAnimationKeys build(unsigned type, const TextObjInfo& obj, const FontInfo& font, int glyphs);
    // The name a type's builder logs, or its effect program; empty for type
    // 0 and unknown types.
    static std::string nameOf(unsigned type);

    std::string name;          // logged by the builder, or the effect program
    bool nodeTrack = false;    // a node track exists (it may stay empty)
    bool spline = false;       // node (or print) keys are splined
    std::vector<NodeKey> node; // ascending time
    Kind value = None;         // Alpha or Print: a numeric track follows `values`
    std::vector<ValueKey> values;
    bool material = false;     // the output program is swapped for `name`

private:
    // Keys gathered by time: a key at the time of an earlier one replaces it.
    void mergeNode(const NodeKey& key);
};

}  // namespace Morvane
