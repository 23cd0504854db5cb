#include "text/TextAnimationKeys.h"

#include <algorithm>

namespace Morvane {

namespace {

// Names by type, index = type. Node and value builders log these; material
// effects name their fragment program.
const char* const kNames[] = {
    "",                          // 0: plain text
    "leftpause2right",           // 1
    "rightPause2left",           // 2
    "topPause2down",             // 3
    "downPause2top",             // 4
    "left2right",                // 5
    "right2left",                // 6
    "down2top",                  // 7
    "top2down",                  // 8
    "fadeInOut",                 // 9
    "textPrint",                 // 10
    "ScaleRebound",              // 11
    "textDownRebound",           // 12
    "textLinerZoom",             // 13
    "textLinerZoom",             // 14: a zoom from larger, logged as 13
    "textDownBuffer",            // 15
    "TextWindowslice_FP",        // 16
    "TextPixel_FP",              // 17
    "TextPinWheel_FP",           // 18
    "SpinClock_FP",              // 19
    "textScaleClear",            // 20
    "textStarWars",              // 21
    "textSpinClear",             // 22
    "textPrint",                 // 23
    "textZoomLeftRight",         // 24
    "TextVerticalWipe_FP",       // 25
    "TextHorizontalWipe_FP",     // 26
    "TextHorizontalWipeTwo_FP",  // 27
    "texthorizontalmove",        // 28
    "TextKaLaOk_FP",             // 29
    "TextVerticalWipeTwo_FP",    // 30
};
constexpr unsigned kTypes = sizeof(kNames) / sizeof(kNames[0]);

TextAnimationKeys::NodeKey at(float time) {
    TextAnimationKeys::NodeKey k;
    k.time = time;
    return k;
}

TextAnimationKeys::NodeKey moved(float time, float x, float y, float z) {
    TextAnimationKeys::NodeKey k = at(time);
    k.translated = true;
    k.translate[0] = x, k.translate[1] = y, k.translate[2] = z;
    return k;
}

TextAnimationKeys::NodeKey scaled(TextAnimationKeys::NodeKey k, float x, float y, float z) {
    k.scaled = true;
    k.scale[0] = x, k.scale[1] = y, k.scale[2] = z;
    return k;
}

}  // namespace

std::string TextAnimationKeys::nameOf(unsigned type) { return type < kTypes ? kNames[type] : ""; }

void TextAnimationKeys::mergeNode(const NodeKey& key) {
    auto it = std::lower_bound(node.begin(), node.end(), key.time,
                               [](const NodeKey& k, float t) { return k.time < t; });
    if (it != node.end() && it->time == key.time) *it = key;
    else node.insert(it, key);
}

TextAnimationKeys TextAnimationKeys::build(unsigned type, const TextObjInfo& obj, const FontInfo& font, int glyphs) {
    TextAnimationKeys k;
    k.name = nameOf(type);
    if (k.name.empty()) return k;
    const float T = font.playTime, s = font.startTime, e = font.endTime, f = font.firstEndTime,
                g = font.secendStartTime;
    const float W = obj.canvasWidth, H = obj.canvasHeight, w = obj.actualMaxWidth, h = obj.actualMaxHeight;
    const float z = static_cast<float>(font.zOrder), a = font.alpha;
    const float X = W / 2 + w / 2 + obj.maxAdvance, Y = H / 2 + h / 2;
    const bool leaves = g != 1.0f;  // a second start of 1 keeps the text to the end
    auto merge = [&k](const NodeKey& key) { k.mergeNode(key); };
    auto push = [&k](const NodeKey& key) { k.node.push_back(key); };
    auto value = [&k](float time, float v) { k.values.push_back(ValueKey{time, v}); };
    switch (type) {
        case 8:
            merge(moved(0, 0, Y, z));
            merge(moved(T, 0, -Y, z));
            break;
        case 7:
            merge(moved(0, 0, -Y, z));
            merge(moved(T + 0.01f, 0, Y, z));
            break;
        case 5:
        case 6: {
            const float from = type == 5 ? -X : X;
            merge(moved(0, from, 0, z));
            merge(moved(T, -from, 0, z));
            break;
        }
        case 3:
        case 4:
        case 2: {
            // In from one side, a pause, out through the other.
            const float x = type == 2 ? X : 0, y = type == 3 ? Y : type == 4 ? -Y : 0;
            merge(moved(0, x, y, z));
            merge(moved(T * f, 0, 0, z));
            merge(moved(T * g, 0, 0, z));
            if (leaves) merge(moved(T, -x, -y, z));
            break;
        }
        case 1:
            merge(moved(0, -X, 0, z));
            merge(moved(T * s, -X, 0, z));
            merge(moved(T * f, 0, 0, z));
            merge(moved(T * g, 0, 0, z));
            if (leaves) {
                merge(moved(T * e, X, 0, z));
                merge(moved(T, X, 0, z));
            }
            break;
        case 28: {
            const float A = T * s, E = T * e, L = -W / 2 - w / 2;
            merge(moved(0, L, 0, z));
            merge(moved(A, L, 0, z));
            merge(moved(A + (E - A) * f, 0, 0, z));
            merge(moved(A + (E - A) * g, 0, 0, z));
            if (T <= E) {
                merge(moved(T, L, 0, z));
            } else {
                merge(moved(E, L, 0, z));
                merge(moved(T, L, 0, z));
            }
            break;
        }
        case 12:
            merge(moved(0, 0, H / 2, z));
            merge(moved(T * f * 0.2075f, 0, -h, z));
            merge(moved(T * f * 0.55f, 0, h, z));
            merge(moved(T * f * 0.725f, 0, 0, z));
            merge(moved(T * f * 0.9f, 0, 0.25f * h, z));
            merge(moved(T * f, 0, 0, z));
            merge(moved(T * g, 0, 0, z));
            merge(moved(T * g + T * (1 - g) * 0.8f + 0.001f, 0, -h, z));
            if (leaves) merge(moved(T, 0, H, z));
            break;
        case 15:
            merge(scaled(moved(0, 0, H / 2 + h, z), 1, 0.2f, 1));
            merge(scaled(moved(T * f * 0.3f, 0, 1.5f * h, z), 1, 0.35f, 1));
            merge(scaled(moved(T * f, 0, 0, z), 1, 1, 1));
            merge(scaled(moved(T * g, 0, 0, z), 1, 1, 1));
            merge(scaled(moved(T * (g + (1 - g) * 0.3f), 0, 1.5f * h, z), 1, 0.8f, 1));
            if (leaves) merge(scaled(moved(T, 0, H, z), 1, 0.25f, 1));
            break;
        case 11: {
            auto zoom = [&](float time, float n) { merge(scaled(moved(time, 0, 0, z), n, n, 1)); };
            zoom(0, 0);
            zoom(T * f * 0.2f, 1);
            zoom(T * f * 0.4f, 1.75f);
            zoom(T * f * 0.6f, 1);
            zoom(T * f * 0.8f, 1.75f);
            zoom(T * f, 1);
            zoom(T * (0.45f * g + 0.55f), 1);
            zoom(T * (0.25f * g + 0.75f), 1.75f);
            if (leaves) zoom(T, 0.5f);
            break;
        }
        case 13:
        case 14: {
            const float first = type == 13 ? 0.0f : 1.5f;
            merge(scaled(moved(0, 0, 0, z), first, first, 1));
            merge(scaled(moved(T * f, 0, 0, z), 1, 1, 1));
            merge(scaled(moved(T * g, 0, 0, z), 1, 1, 1));
            if (leaves) merge(scaled(moved(T, 0, 0, z), 1, 1, 1));
            break;
        }
        case 21: {
            k.spline = true;
            NodeKey start = moved(0, 0, -H / 2 - h, z);
            start.rotated = true;
            start.axis[0] = 1, start.axis[2] = 0, start.degrees = 30;
            push(start);
            NodeKey end = scaled(moved(T, 0, H / 2, z), 0.5f, 0.5f, 0.5f);
            end.rotated = true;
            end.axis[0] = 1, end.axis[2] = 0, end.degrees = -45;
            push(end);
            break;
        }
        case 20:
            push(scaled(at(0), 0.5f, 0.5f, 1));
            push(scaled(at(T * f), 1, 1, 1));
            push(scaled(at(T * g), 1, 1, 1));
            push(scaled(at(T), 2, 2, 2));
            break;
        case 22: {
            auto spin = [&](float time, float degrees, float n) {
                NodeKey key = scaled(at(time), n, n, 1);
                key.rotated = true;
                key.degrees = degrees;
                push(key);
            };
            spin(0, 0, 3);
            spin(T * f * 0.1f, -180, 2.5f);
            spin(T * f * 0.2f, -360, 2);
            spin(T * f * 0.5f, -540, 1.5f);
            spin(T * f * 0.8f, -720, 1);
            spin(T * f, 0, 1);
            spin(T * g, 0, 1);
            spin(T * g + T * (1 - g) * 0.4f, -540, 2);
            spin(T, -720, 3);
            break;
        }
        case 24:
            push(scaled(at(0), 2, 1, 1));
            push(scaled(at(T * f), 1, 1, 1));
            push(scaled(at(T * g), 1, 1, 1));
            if (leaves) push(scaled(at(T), 2, 1, 2));
            break;
        default:
            break;
    }
    if (!k.node.empty() || type == 9) k.nodeTrack = true;
    switch (type) {
        case 9: {
            k.value = Alpha;
            const float A = T * s, E = T * e;
            value(0, 0);
            value(A, 0);
            value(A + (E - A) * f, a);
            value(A + (E - A) * g, a);
            if (T <= E) {
                value(T, 0);
            } else {
                value(E, 0);
                value(T, 0);
            }
            break;
        }
        case 20:
        case 22:
        case 24:
            k.value = Alpha;
            value(0, 0);
            value(T * f, a);
            value(T * g, a);
            if (leaves || type == 24) value(T, 0);
            break;
        case 10:
        case 23:
            k.value = Print;
            k.spline = true;
            value(0, 0);
            value(T * f, static_cast<float>(glyphs));
            value(T * g, static_cast<float>(glyphs));
            if (leaves) value(T, 0);
            break;
        case 16:
        case 17:
        case 18:
        case 19:
        case 25:
        case 26:
        case 27:
        case 29:
        case 30:
            k.material = true;
            break;
        default:
            break;
    }
    return k;
}

}  // namespace Morvane
