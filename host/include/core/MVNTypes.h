#pragma once
// Enumerations shared by the host and its modules. The numbers are part of
// the module contract (modules store some of them in properties), so an
// enumerator's value never changes; new ones are added with new numbers.

namespace Morvane {

// Which side of the registry a service lives on. Transitions and groups are
// producers as far as the registry is concerned.
enum MVNServiceType : int {
    MVN_SERVICE_NONE = 0,
    MVN_SERVICE_PRODUCER = 1,
    MVN_SERVICE_CONSUMER = 2,
    MVN_SERVICE_PLAYLIST = 3,
    MVN_SERVICE_FILTER = 4,
    MVN_SERVICE_TRACTOR = 5,
    MVN_SERVICE_TRANSITION_AUDIO = 6,
};

// What a filter processes. Every filter of the GPU module is a video filter.
enum MVNFilterType : int {
    MVN_FILTER_NONE = 0,
    MVN_FILTER_VIDEO = 1,
    MVN_FILTER_AUDIO = 2,
};

// How a filter is used in a producer's chain.
enum MVNFilterTypeUse : int {
    MVN_FILTER_USE_NONE = 0,
    MVN_FILTER_USE_NORMAL = 1,  // a picture effect
    MVN_FILTER_USE_TOOL = 2,    // a helper pass that may run without a resource
    MVN_FILTER_USE_CPU = 3,     // works on pixels in memory; runs before the GPU filters
    MVN_FILTER_USE_TWO_PASS = 4,
    MVN_FILTER_USE_CANVAS = 5,  // fills the whole profile around the picture
};

// Kind of producer, for consumers and project files.
enum MVNProducerType : int {
    MVN_PRODUCER_NONE = 0,
    MVN_PRODUCER_VIDEO = 1,
    MVN_PRODUCER_AUDIO = 2,
    MVN_PRODUCER_IMAGE = 3,
    MVN_PRODUCER_COLOR = 4,
    MVN_PRODUCER_BLANK = 5,
    MVN_PRODUCER_GROUP = 6,
    MVN_PRODUCER_TRANSITION = 7,
    MVN_PRODUCER_TEXT = 8,
    MVN_PRODUCER_PLAYLIST = 9,
    MVN_PRODUCER_TRACTOR = 10,
};

// How the host is being driven. In the interactive modes (edit, preview)
// services configure themselves as soon as they are connected or changed; in
// the rendering modes they wait for an explicit reconfig and free what they
// hold at the end of a clip.
enum MVNMode : int {
    MVN_MODE_EDIT = 0,
    MVN_MODE_PREVIEW = 1,
    MVN_MODE_RENDER = 2,
    MVN_MODE_RENDER_PREVIEW = 3,
};

// What comes into a filter, stored in its "_inputType".
enum MVNInputType : int {
    MVN_INPUT_NONE = 0,
    MVN_INPUT_FRAME = 1,      // a frame with pixels in memory
    MVN_INPUT_RTT = 2,        // a frame naming the render texture of the previous filter
    MVN_INPUT_GROUP_RTT = 3,  // a frame naming the render texture of a group
};

// Where a filter puts its picture, stored in its "_outputType".
enum MVNOutputType : int {
    MVN_OUTPUT_NONE = 0,
    MVN_OUTPUT_SCENE = 1,     // stays in the shared scene; the frame goes on empty
    MVN_OUTPUT_RTT = 2,       // into the filter's own render texture
    MVN_OUTPUT_RTT_CHAIN = 3, // the same, taken further by a transition or consumer
    MVN_OUTPUT_RTT_NODE = 4,  // own render texture, also shown in the group's scene
};

// Event numbers passed to MVNEventListener::onEvent.
enum MVNEventType : int {
    MVN_EVENT_NONE = 0,
    MVN_EVENT_CANVAS_CHANGED = 1,
    MVN_EVENT_CLIP_END = 2,
};

}  // namespace Morvane
