#include "timeline/MVNProjectLoader.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "core/MVNCellKinds.h"
#include "core/MVNMediaProbe.h"
#include "timeline/MVNFactory.h"
#include "services/MVNFilter.h"
#include "services/MVNGroup.h"
#include "core/MVNLog.h"
#include "timeline/MVNPlaylist.h"
#include "services/MVNProducer.h"
#include "services/MVNProperties.h"
#include "core/MVNRect.h"
#include "core/MVNUtils.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

namespace Morvane {
namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;

const char* kTag = "Morvane::MVNProjectLoader";

// A problem at a JSON path; thrown while checking, caught by load.
struct ProjectError {
    std::string path;
    std::string reason;
};

[[noreturn]] void fail(const std::string& path, const std::string& reason) { throw ProjectError{path, reason}; }

std::string typeName(const json& v) { return v.type_name(); }

// What the check found, ready to build without further questions.
struct FilterPlan {
    std::string path;
    MVNProperties properties;
};

struct TrackPlan;

struct ClipPlan {
    std::string path;
    int blank = 0;            // > 0: a blank of that many frames
    bool transition = false;  // a transition between the clips before and after
    MVNProperties properties;
    int in = 0;
    int length = 0;
    bool hasGeometry = false;
    MVNRect geometry;  // host convention: bottom-left origin
    std::vector<FilterPlan> filters;
    // A group: its own timeline, composed inside it.
    std::vector<TrackPlan> tracks;
    // A grid: the JSON paths of its cells' resources by property key, so
    // that a cell the grid could not make is named where it was written.
    std::vector<std::pair<std::string, std::string>> cells;
    bool sound = false;  // a file of this clip has sound
};

struct TrackPlan {
    std::vector<ClipPlan> clips;
};

const char* const kGroupService = "ogre.group.sample";
const size_t kMaxGroupDepth = 16;
const char* const kGridService = "ogre.grid";
const char* const kImageService = "ogre.image";

int requireInt(const json& v, const std::string& path, int min) {
    if (!v.is_number_integer()) fail(path, "expected an integer, got " + typeName(v));
    long long n = v.get<long long>();
    if (n < min) fail(path, "must be at least " + std::to_string(min) + ", got " + std::to_string(n));
    if (n > 100000000LL) fail(path, "too large: " + std::to_string(n));
    return static_cast<int>(n);
}

const std::string& requireString(const json& v, const std::string& path) {
    if (!v.is_string()) fail(path, "expected a string, got " + typeName(v));
    const std::string& s = v.get_ref<const std::string&>();
    if (s.empty()) fail(path, "must not be empty");
    return s;
}

// Clips whose file the host decodes itself get it by absolute path. A
// moving one is opened while the file is read, so that a file that doesn't
// open is named where it was written, and its length defaults to the rest
// of the file after "in".
struct HostMedia {
    const char* service;
    bool moving;
};
const HostMedia kHostMedia[] = {{"codec.video", true}, {"codec.gif", true}, {"stb_image", false}};

const HostMedia* hostMedia(const std::string& service) {
    for (const HostMedia& m : kHostMedia) {
        if (service == m.service) return &m;
    }
    return nullptr;
}

// Checks a host-decoded clip's file and fills in its length.
void planHostMedia(ClipPlan& plan, const HostMedia& media, const json& v, const std::string& path,
                   const MVNProfile& profile, const std::string& folder) {
    if (!v.contains("resource")) fail(path + ".resource", "missing: the file to show");
    fs::path p(requireString(v["resource"], path + ".resource"));
    fs::path full = p.is_absolute() ? p : fs::path(folder) / p;
    std::error_code ec;
    full = fs::absolute(full, ec).lexically_normal();
    if (!fs::is_regular_file(full, ec)) fail(path + ".resource", "file not found: " + full.string());
    plan.properties.setString("resource", full.string());
    if (!media.moving) return;
    MVNMediaProbe probe;
    std::string reason;
    if (MVNMediaProbe::probe(full.string(), probe, reason) != 0) fail(path + ".resource", reason);
    int available = probe.positions(profile);
    if (plan.in >= available) {
        fail(path + ".in", "lies past the end of the file (" + std::to_string(available) + " frames)");
    }
    plan.sound = probe.audio;
    if (!v.contains("length")) {
        plan.length = available - plan.in;
    } else if (media.service == std::string("codec.video") && plan.in + plan.length > available) {
        fail(path + ".length", "runs past the end of the file: at most " + std::to_string(available - plan.in) +
                                   " frames after in " + std::to_string(plan.in));
    }
}

void copyProperties(const json& v, const std::string& path, MVNProperties& out) {
    if (!v.is_object()) fail(path, "expected an object, got " + typeName(v));
    for (auto it = v.begin(); it != v.end(); ++it) {
        const std::string key = it.key();
        const json& value = it.value();
        const std::string at = path + "." + key;
        if (value.is_boolean()) {
            out.setBoolean(key.c_str(), value.get<bool>());
        } else if (value.is_number_integer()) {
            long long n = value.get<long long>();
            if (n < INT32_MIN || n > INT32_MAX) fail(at, "integer out of range");
            out.setInt32(key.c_str(), static_cast<int>(n));
        } else if (value.is_number()) {
            out.setDouble(key.c_str(), value.get<double>());
        } else if (value.is_string()) {
            out.setString(key.c_str(), value.get<std::string>());
        } else {
            fail(at, "expected a string, a number or a boolean, got " + typeName(value));
        }
    }
}

// The bound MVNProfile puts on a "WxH@FPS" name: a frame of that size
// already takes a gigabyte.
const int kMaxProfileSide = 16384;

// Why a "WxH@FPS" name was refused, as ": <reason>" to follow it in a
// message; empty when "unknown" says it all.
std::string whyProfileRefused(const std::string& name) {
    size_t x = name.find('x');
    size_t at = name.find('@');
    if (x == std::string::npos || at == std::string::npos || at < x) return "";
    char* end = nullptr;
    long w = std::strtol(name.c_str(), &end, 10);
    if (end != name.c_str() + x) return ": the width is not a whole number";
    long h = std::strtol(name.c_str() + x + 1, &end, 10);
    if (end != name.c_str() + at) return ": the height is not a whole number";
    if (w <= 0 || h <= 0) return ": width and height must be positive";
    if (w > kMaxProfileSide || h > kMaxProfileSide) {
        return ": at most " + std::to_string(kMaxProfileSide) + " pixels a side";
    }
    return ": the rate is not a number of frames a second up to 10000 or a fraction N/D";
}

// The renderer draws into a window of the profile's size, which must be even
// both ways; a name of the table always is, "WxH@FPS" need not be.
MVNProfile requireEvenSize(const MVNProfile& p, const std::string& path) {
    if (p.width() % 2 || p.height() % 2) {
        fail(path, "width and height must be even, got " + std::to_string(p.width()) + "x" +
                       std::to_string(p.height()));
    }
    return p;
}

MVNProfile parseProfile(const json& root, const std::string& override, std::string& where) {
    if (!override.empty()) {
        where = "--profile";
        // Asked first: building a profile of an unknown name logs an error
        // of its own beside this one.
        if (!MVNProfile::exists(override)) {
            fail("profile", "unknown profile \"" + override + "\"" + whyProfileRefused(override));
        }
        return requireEvenSize(MVNProfile(override), "profile");
    }
    if (!root.contains("profile")) fail("profile", "missing");
    const json& v = root["profile"];
    if (v.is_string()) {
        const std::string& name = v.get_ref<const std::string&>();
        if (!MVNProfile::exists(name)) fail("profile", "unknown profile \"" + name + "\"" + whyProfileRefused(name));
        return requireEvenSize(MVNProfile(name), "profile");
    }
    if (!v.is_object()) fail("profile", "expected a name or an object, got " + typeName(v));
    for (const char* key : {"width", "height", "fps"}) {
        if (!v.contains(key)) fail(std::string("profile.") + key, "missing");
    }
    int width = requireInt(v["width"], "profile.width", 2);
    int height = requireInt(v["height"], "profile.height", 2);
    // The same bound as a "WxH@FPS" profile: a frame of that size already
    // takes a gigabyte.
    for (auto [side, key] : {std::pair<int, const char*>{width, "width"}, {height, "height"}}) {
        if (side > kMaxProfileSide) {
            fail(std::string("profile.") + key,
                 "too large: " + std::to_string(side) + " (at most " + std::to_string(kMaxProfileSide) + ")");
        }
    }
    if (width % 2 || height % 2) fail("profile", "width and height must be even");
    const json& fps = v["fps"];
    if (!fps.is_number() || fps.get<double>() <= 0 || fps.get<double>() > 1000) {
        fail("profile.fps", "expected a positive number");
    }
    // Rates are kept in thousandths: a smaller one would be a rate of 0.
    if (fps.get<double>() < 0.001) fail("profile.fps", "too small: at least 0.001 frames a second");
    double f = fps.get<double>();
    // Whole rates stay whole; the NTSC rates become their exact fractions.
    int num = static_cast<int>(std::lround(f * 1000));
    int den = 1000;
    if (std::fabs(f - std::round(f)) < 1e-9) {
        num = static_cast<int>(std::lround(f));
        den = 1;
    } else if (std::fabs(f * 1001 / 1000 - std::round(f * 1001 / 1000)) < 1e-3) {
        num = static_cast<int>(std::lround(f * 1001 / 1000)) * 1000;
        den = 1001;
    }
    MVNProfile p(width, height, num, den);
    if (!p.isValid()) fail("profile", "not a usable profile");
    return p;
}

// Resolves a file named by a project against its folder. Pictures are
// found by the renderer through resource locations, so the plan keeps the
// file's name and adds its folder to `locations`.
std::string resolvePicture(const std::string& resource, const std::string& folder, const std::string& path,
                           std::vector<std::string>& locations) {
    fs::path p(resource);
    fs::path full = p.is_absolute() ? p : fs::path(folder) / p;
    std::error_code ec;
    if (!fs::is_regular_file(full, ec)) fail(path, "file not found: " + full.lexically_normal().string());
    fs::path parent = fs::absolute(full, ec).lexically_normal().parent_path();
    std::string dir = parent.string();
    if (std::find(locations.begin(), locations.end(), dir) == locations.end()) locations.push_back(dir);
    return full.filename().string();
}

// A filter's resource is usually a name ("BrightnessFilter"); a file beside
// the project (a LUT) is passed on with its absolute path.
std::string resolveFilterResource(const std::string& resource, const std::string& folder) {
    fs::path p(resource);
    if (p.is_absolute()) return resource;
    std::error_code ec;
    fs::path full = fs::path(folder) / p;
    if (fs::is_regular_file(full, ec)) return full.lexically_normal().string();
    return resource;
}

// A text clip's files: its two fonts, its title's two videos and its
// picture are found from the project's folder, checked here so that a wrong
// name is an error of the project rather than text or a title that silently
// stays off; "textBgGeometry" is placed from the top-left corner like every
// geometry.
void resolveTextFiles(MVNProperties& p, const std::string& path, const std::string& folder, const MVNProfile& profile) {
    std::error_code ec;
    auto full = [&](const char* key) {
        fs::path f(p.getString(key, ""));
        return fs::absolute(f.is_absolute() ? f : fs::path(folder) / f, ec).lexically_normal();
    };
    for (const char* key : {"textFontFile", "textBackupPath", "textTitleVideoPath", "textTitleMaskVideoPath"}) {
        if (p.getString(key, "").empty()) continue;
        fs::path f = full(key);
        if (!fs::is_regular_file(f, ec)) fail(path + "." + key, "file not found: " + f.string());
        p.setString(key, f.string());
    }
    if (!p.getString("textTitleImagePath", "").empty() || !p.getString("textTitleImageName", "").empty()) {
        if (p.getString("textTitleImagePath", "").empty()) p.setString("textTitleImagePath", ".");
        fs::path dir = full("textTitleImagePath");
        if (!fs::is_directory(dir, ec)) fail(path + ".textTitleImagePath", "folder not found: " + dir.string());
        const std::string name = p.getString("textTitleImageName", "");
        if (name.empty()) fail(path + ".textTitleImageName", "missing: the picture's file name in textTitleImagePath");
        if (!fs::is_regular_file(dir / name, ec))
            fail(path + ".textTitleImageName", "file not found: " + (dir / name).string());
        p.setString("textTitleImagePath", dir.string());
    }
    if (p.has("textBgGeometry")) {
        const std::string text = p.getString("textBgGeometry", "");
        MVNRect r;
        if (!r.fromString(text)) fail(path + ".textBgGeometry", "expected \"[x:y wxh]\", got \"" + text + "\"");
        if (!(r.width > 0) || !(r.height > 0)) fail(path + ".textBgGeometry", "width and height must be positive");
        p.setRect("textBgGeometry", r.leftBottomToLeftTop(static_cast<float>(profile.width()),
                                                          static_cast<float>(profile.height())));
    }
}

void checkService(const std::string& name, MVNServiceType want, const std::string& path) {
    MVNRepository* repo = MVNRepository::getSingleton();
    if (!repo->hasService(name)) fail(path, "unknown service \"" + name + "\"");
    MVNServiceType type = repo->serviceType(name);
    if (want == MVN_SERVICE_FILTER && type != MVN_SERVICE_FILTER) {
        fail(path, "\"" + name + "\" is not a filter");
    }
    if (want != MVN_SERVICE_FILTER && type == MVN_SERVICE_FILTER) {
        fail(path, "\"" + name + "\" is a filter, not a clip");
    }
}

// The two-pass filter: "resource" names the material of pass one, the
// properties' "resource_two" that of pass two.
void planTwoPassFilter(FilterPlan& plan, const json& v, const std::string& path) {
    if (!v.contains("resource")) fail(path + ".resource", "missing");
    plan.properties.setString("resource_one", plan.properties.getString("resource", ""));
    if (plan.properties.getString("resource_two", "").empty()) {
        fail(path + ".properties.resource_two", "missing: the material of the second pass");
    }
}

// The canvas: "canvasType" 0 (the picture blurred), 1 (the picture file
// "resource" blurred) or 2 (the colour "color", "#rrggbbaa").
void planCanvasFilter(FilterPlan& plan, const json& v, const std::string& path, const std::string& folder) {
    const std::string at = path + ".properties";
    MVNProperties& p = plan.properties;
    if (v.contains("properties") && v["properties"].contains("canvasType")) {
        const json& t = v["properties"]["canvasType"];
        if (!t.is_number_integer() || t.get<long long>() < 0 || t.get<long long>() > 2) {
            fail(at + ".canvasType", "expected 0 (blurred picture), 1 (blurred file) or 2 (colour)");
        }
    }
    int type = p.getInt32("canvasType", 0);
    if (p.has("color")) {
        MVNColor4B c;
        if (!c.fromString(p.getString("color", ""))) fail(at + ".color", "expected a colour \"#rrggbbaa\"");
    }
    if (type == 1) {
        std::string file = p.getString("resource", "");
        if (file.empty()) fail(at + ".resource", "missing: the picture file of the background");
        fs::path full = fs::path(file).is_absolute() ? fs::path(file) : fs::path(folder) / file;
        std::error_code ec;
        if (!fs::is_regular_file(full, ec)) fail(at + ".resource", "file not found: " + full.lexically_normal().string());
        p.setString("resource", fs::absolute(full, ec).lexically_normal().string());
    }
}

// Filter properties whose value is a file.
const char* const kFilterFileKeys[] = {"ufmMVNLutPath"};

FilterPlan planFilter(const json& v, const std::string& path, const std::string& folder) {
    if (!v.is_object()) fail(path, "expected an object, got " + typeName(v));
    FilterPlan plan;
    plan.path = path;
    if (!v.contains("service")) fail(path + ".service", "missing");
    const std::string& service = requireString(v["service"], path + ".service");
    checkService(service, MVN_SERVICE_FILTER, path + ".service");
    if (v.contains("properties")) copyProperties(v["properties"], path + ".properties", plan.properties);
    plan.properties.setString("service", service);
    // Files named by a filter's properties start at the project's folder,
    // like every other file of the project.
    for (const char* key : kFilterFileKeys) {
        std::string file = plan.properties.getString(key, "");
        if (!file.empty() && fs::path(file).is_relative()) {
            plan.properties.setString(key, (fs::path(folder) / file).lexically_normal().string());
        }
    }
    if (v.contains("resource")) {
        plan.properties.setString("resource",
                                  resolveFilterResource(requireString(v["resource"], path + ".resource"), folder));
    }
    for (auto it = v.begin(); it != v.end(); ++it) {
        if (it.key() != "service" && it.key() != "resource" && it.key() != "properties") {
            fail(path + "." + it.key(), "unknown key");
        }
    }
    if (service == "ogre.filter.sample2") planTwoPassFilter(plan, v, path);
    if (service == "ogre.filter.canvas") planCanvasFilter(plan, v, path, folder);
    return plan;
}

// The service that draws the transitions of a project file.
const char* const kTransitionService = "ogre.transition.sample";

// A renderer may tell its names only once it runs, so a name is checked
// when the file is read and again when it is built.
void checkTransitionName(const std::string& name, const std::string& path) {
    MVNRepository* repo = MVNRepository::getSingleton();
    if (!repo->transitions().empty() && !repo->hasTransition(name)) {
        fail(path, "unknown transition \"" + name + "\"");
    }
}

// { "transition": NAME or FILE.glsl, "length": N, "properties": { ... } }.
// A name must be one the modules registered (when they registered any); a
// .glsl file is found beside the project and passed on by its full path.
ClipPlan planTransition(const json& v, const std::string& path, const std::string& folder) {
    ClipPlan plan;
    plan.path = path;
    plan.transition = true;
    for (auto it = v.begin(); it != v.end(); ++it) {
        if (it.key() != "transition" && it.key() != "length" && it.key() != "properties") {
            fail(path + "." + it.key(), "unknown key");
        }
    }
    const std::string& name = requireString(v["transition"], path + ".transition");
    checkService(kTransitionService, MVN_SERVICE_PRODUCER, path + ".transition");
    if (!v.contains("length")) fail(path + ".length", "missing");
    plan.length = requireInt(v["length"], path + ".length", 1);
    if (v.contains("properties")) copyProperties(v["properties"], path + ".properties", plan.properties);
    plan.properties.setString("service", kTransitionService);
    std::string resource = name;
    if (fs::path(name).extension() == ".glsl") {
        fs::path p(name);
        fs::path full = (p.is_absolute() ? p : fs::path(folder) / p).lexically_normal();
        std::error_code ec;
        if (!fs::is_regular_file(full, ec)) fail(path + ".transition", "file not found: " + full.string());
        resource = full.string();
    } else {
        checkTransitionName(name, path + ".transition");
    }
    plan.properties.setString("resource", resource);
    return plan;
}

// A transition overlaps the clips on both sides: it needs a clip before and
// after it, and can't take more frames than either has.
void checkTransitions(const std::vector<ClipPlan>& clips) {
    std::vector<int> taken(clips.size(), 0);
    for (size_t c = 0; c < clips.size(); ++c) {
        const ClipPlan& t = clips[c];
        if (!t.transition) continue;
        auto isClip = [&](size_t i) { return !clips[i].transition && clips[i].blank == 0; };
        if (c == 0) fail(t.path, "a transition needs a clip before it; this one starts the track");
        if (c + 1 == clips.size()) fail(t.path, "a transition needs a clip after it; this one ends the track");
        if (!isClip(c - 1)) fail(t.path, "a transition needs a clip before it, not a blank or a transition");
        if (!isClip(c + 1)) fail(t.path, "a transition needs a clip after it, not a blank or a transition");
        for (size_t side : {c - 1, c + 1}) {
            const ClipPlan& clip = clips[side];
            taken[side] += t.length;
            if (t.length > clip.length) {
                fail(t.path + ".length", std::to_string(t.length) + " frames are longer than the clip " +
                                             (side < c ? "before" : "after") + " (" + clip.path + ", " +
                                             std::to_string(clip.length) + " frames)");
            }
            if (taken[side] > clip.length) {
                fail(t.path + ".length", "the transitions on both sides of " + clip.path + " take " +
                                             std::to_string(taken[side]) + " of its " +
                                             std::to_string(clip.length) + " frames");
            }
        }
    }
}

std::vector<TrackPlan> planTrackList(const json& tracks, const std::string& path, const MVNProfile& profile,
                                     const std::string& folder, std::vector<std::string>& locations);

// A grid's properties: "row" and "column" of at least 1, and cells
// "clip.<row>.<column>.resource" inside them, each a file beside the
// project (made absolute) or a colour "#rrggbb[aa]".
void planGrid(ClipPlan& plan, const json& v, const std::string& path, const std::string& folder) {
    const std::string at = path + ".properties";
    // Checked in the file, where a number and a text still differ.
    static const json kNone = json::object();
    const json& given = v.contains("properties") ? v["properties"] : kNone;
    auto size = [&](const char* key) {
        if (!given.contains(key)) fail(at + "." + key, "missing");
        const json& n = given[key];
        if (!n.is_number_integer() || n.get<long long>() < 1 || n.get<long long>() > 1000) {
            fail(at + "." + key, "expected an integer from 1 to 1000");
        }
        return n.get<int>();
    };
    int rows = size("row");
    int columns = size("column");
    for (const std::string& key : plan.properties.keys()) {
        if (key.rfind("clip.", 0) != 0) continue;
        const std::string kpath = at + "." + key;
        int row = -1, column = -1;
        // Written as the grid reads it back: decimal, no sign, no zeros in front.
        if (std::sscanf(key.c_str(), "clip.%d.%d.", &row, &column) != 2 || row < 0 || column < 0 ||
            key != "clip." + std::to_string(row) + "." + std::to_string(column) + ".resource") {
            fail(kpath, "expected a cell key \"clip.<row>.<column>.resource\"");
        }
        if (row >= rows || column >= columns) {
            fail(kpath, "cell outside the grid of " + std::to_string(rows) + "x" + std::to_string(columns));
        }
        if (!given[key].is_string() || given[key].get_ref<const std::string&>().empty()) {
            fail(kpath, "expected a file or a colour");
        }
        std::string resource = given[key].get<std::string>();
        if (resource[0] != '#') {
            if (cellServiceForPath(resource).empty()) {
                fail(kpath, "a cell shows a colour \"#rrggbb\" or a file of " + cellExtensions() + ", not \"" +
                                resource + "\"");
            }
            fs::path p(resource);
            fs::path full = p.is_absolute() ? p : fs::path(folder) / p;
            std::error_code ec;
            if (!fs::is_regular_file(full, ec)) fail(kpath, "file not found: " + full.lexically_normal().string());
            plan.properties.setString(key.c_str(), fs::absolute(full, ec).lexically_normal().string());
            // A video cell is heard too.
            MVNMediaProbe probe;
            std::string reason;
            if (cellServiceForPath(resource) == "codec.video" &&
                MVNMediaProbe::probe(full.string(), probe, reason) == 0 && probe.audio) {
                plan.sound = true;
            }
        }
        plan.cells.emplace_back(key, kpath);
    }
}

// A text clip's animation: "textAnimationType" from 0 (none) to 30, its
// times as shares of the clip, the karaoke cover colour.
void checkTextAnimation(const json& v, const std::string& path) {
    if (!v.contains("properties") || !v["properties"].is_object()) return;
    const json& given = v["properties"];
    const std::string at = path + ".properties.";
    if (given.contains("textAnimationType")) {
        const json& t = given["textAnimationType"];
        if (!t.is_number_integer() || t.get<long long>() < 0 || t.get<long long>() > 30) {
            fail(at + "textAnimationType", "expected an integer from 0 (none) to 30");
        }
    }
    for (const char* key : {"textAnimationStartTime", "textAnimationEndTime", "textAnimationFirstEndTime",
                            "textAnimationSecendStartTime"}) {
        if (!given.contains(key)) continue;
        const json& t = given[key];
        if (!t.is_number() || t.get<double>() < 0 || t.get<double>() > 1) {
            fail(at + key, "expected a number from 0 to 1 (a share of the clip)");
        }
    }
    if (given.contains("AnimTextKaLaOkCol")) {
        MVNColor4B c;
        const json& t = given["AnimTextKaLaOkCol"];
        if (!t.is_string() || !c.fromString(t.get<std::string>())) {
            fail(at + "AnimTextKaLaOkCol", "expected a colour \"#rrggbbaa\"");
        }
    }
}

ClipPlan planClip(const json& v, const std::string& path, int track, const MVNProfile& profile,
                  const std::string& folder, std::vector<std::string>& locations) {
    if (!v.is_object()) fail(path, "expected an object, got " + typeName(v));
    if (v.contains("transition")) return planTransition(v, path, folder);
    ClipPlan plan;
    plan.path = path;
    if (v.contains("blank")) {
        if (v.size() != 1) fail(path, "a blank takes no other key");
        plan.blank = requireInt(v["blank"], path + ".blank", 1);
        return plan;
    }
    static const char* known[] = {"service", "length", "in", "resource", "geometry", "properties", "filters",
                                  "tracks"};
    for (auto it = v.begin(); it != v.end(); ++it) {
        if (std::find_if(std::begin(known), std::end(known), [&](const char* k) { return it.key() == k; }) ==
            std::end(known)) {
            fail(path + "." + it.key(), "unknown key");
        }
    }
    if (!v.contains("service")) fail(path + ".service", "missing");
    const std::string& service = requireString(v["service"], path + ".service");
    checkService(service, MVN_SERVICE_PRODUCER, path + ".service");
    const HostMedia* media = hostMedia(service);
    if (!v.contains("length") && !(media != nullptr && media->moving)) fail(path + ".length", "missing");
    if (v.contains("length")) plan.length = requireInt(v["length"], path + ".length", 1);
    if (v.contains("in")) plan.in = requireInt(v["in"], path + ".in", 0);

    if (v.contains("properties")) {
        // Set there, a file would bypass the look-up from the project's
        // folder and the check that it exists, and a missing picture would
        // draw nothing without a word.
        if (v["properties"].is_object() && v["properties"].contains("resource")) {
            fail(path + ".properties.resource", "a clip names its file with its own \"resource\" key");
        }
        copyProperties(v["properties"], path + ".properties", plan.properties);
    }
    if (service == kImageService && !v.contains("resource")) fail(path + ".resource", "missing: the picture to show");
    plan.properties.setString("service", service);
    if (service == "text") resolveTextFiles(plan.properties, path + ".properties", folder, profile);
    if (service == kGroupService) {
        if (!v.contains("tracks")) fail(path + ".tracks", "missing: a group composes its own tracks");
        if (v.contains("resource")) fail(path + ".resource", "a group takes no resource");
        // Each level is a recursion here and a scene with its render target
        // in the renderer.
        size_t depth = 0;
        for (size_t at = path.find(".tracks["); at != std::string::npos; at = path.find(".tracks[", at + 1)) ++depth;
        if (depth >= kMaxGroupDepth) {
            fail(path + ".tracks", "groups nest " + std::to_string(kMaxGroupDepth) + " deep at most");
        }
        plan.tracks = planTrackList(v["tracks"], path + ".tracks", profile, folder, locations);
    } else if (v.contains("tracks")) {
        fail(path + ".tracks", "only a group (\"" + std::string(kGroupService) + "\") takes tracks");
    }
    if (service == "text") checkTextAnimation(v, path);
    if (service == kGridService) {
        if (v.contains("resource")) fail(path + ".resource", "a grid takes its cells as properties");
        planGrid(plan, v, path, folder);
    }
    if (media != nullptr) {
        planHostMedia(plan, *media, v, path, profile, folder);
    } else if (v.contains("resource")) {
        plan.properties.setString(
            "resource", resolvePicture(requireString(v["resource"], path + ".resource"), folder, path + ".resource",
                                       locations));
    }
    // The track decides what is drawn over what.
    plan.properties.setInt32("zOrder", track + 1);

    if (v.contains("geometry")) {
        const std::string& text = requireString(v["geometry"], path + ".geometry");
        MVNRect r;
        if (!r.fromString(text)) fail(path + ".geometry", "expected \"[x:y wxh]\", got \"" + text + "\"");
        if (!(r.width > 0) || !(r.height > 0)) fail(path + ".geometry", "width and height must be positive");
        // Users place clips from the top-left corner, y down; the timeline
        // measures from the bottom-left corner, y up.
        plan.geometry = r.leftBottomToLeftTop(static_cast<float>(profile.width()),
                                              static_cast<float>(profile.height()));
        plan.hasGeometry = true;
    }
    if (v.contains("filters")) {
        const json& filters = v["filters"];
        if (!filters.is_array()) fail(path + ".filters", "expected a list, got " + typeName(filters));
        for (size_t i = 0; i < filters.size(); ++i) {
            plan.filters.push_back(planFilter(filters[i], path + ".filters[" + std::to_string(i) + "]", folder));
        }
    }
    return plan;
}

// The tracks of the project or of a group; `path` names the list.
std::vector<TrackPlan> planTrackList(const json& tracks, const std::string& path, const MVNProfile& profile,
                                     const std::string& folder, std::vector<std::string>& locations) {
    if (!tracks.is_array()) fail(path, "expected a list, got " + typeName(tracks));
    if (tracks.empty()) fail(path, "no track to render");
    std::vector<TrackPlan> plans;
    for (size_t t = 0; t < tracks.size(); ++t) {
        const std::string tpath = path + "[" + std::to_string(t) + "]";
        const json& track = tracks[t];
        if (!track.is_object()) fail(tpath, "expected an object, got " + typeName(track));
        for (auto it = track.begin(); it != track.end(); ++it) {
            if (it.key() != "clips") fail(tpath + "." + it.key(), "unknown key");
        }
        if (!track.contains("clips")) fail(tpath + ".clips", "missing");
        const json& clips = track["clips"];
        if (!clips.is_array()) fail(tpath + ".clips", "expected a list, got " + typeName(clips));
        TrackPlan plan;
        for (size_t c = 0; c < clips.size(); ++c) {
            plan.clips.push_back(planClip(clips[c], tpath + ".clips[" + std::to_string(c) + "]",
                                          static_cast<int>(t), profile, folder, locations));
        }
        checkTransitions(plan.clips);
        plans.push_back(std::move(plan));
    }
    return plans;
}

bool anySound(const std::vector<TrackPlan>& tracks) {
    for (const TrackPlan& t : tracks) {
        for (const ClipPlan& c : t.clips) {
            if (c.sound || anySound(c.tracks)) return true;
        }
    }
    return false;
}

std::vector<TrackPlan> planTracks(const json& root, const MVNProfile& profile, const std::string& folder,
                                  std::vector<std::string>& locations) {
    if (!root.contains("tracks")) fail("tracks", "missing");
    return planTrackList(root["tracks"], "tracks", profile, folder, locations);
}

// Builds what the plans describe: a tractor with one playlist per track,
// whose id is returned; `path` names the track list in messages. Throws
// ProjectError after a refusal (the caller destroys what was built).
std::string buildTimeline(const std::vector<TrackPlan>& plans, const std::string& path, MVNProject& project,
                          int& length);

// Connects a group to its timeline (built before the group, so that the
// group is destroyed first); checks that a grid made all its cells.
void buildComposite(const ClipPlan& clip, MVNProducer* producer, const std::string& timelineId) {
    if (!timelineId.empty()) {
        auto* group = dynamic_cast<MVNGroup*>(producer);
        if (group == nullptr || group->connect(timelineId) != 0) {
            fail(clip.path, "the group refused its tracks (see the log)");
        }
    }
    if (clip.cells.empty()) return;
    auto* grid = dynamic_cast<MVNGroup*>(producer);
    MVNTractor* cells = grid != nullptr ? dynamic_cast<MVNTractor*>(grid->producer()) : nullptr;
    int columns = producer->getInt32("column", 1);
    for (const auto& cell : clip.cells) {
        int row = 0, column = 0;
        std::sscanf(cell.first.c_str(), "clip.%d.%d.", &row, &column);
        auto* playlist = cells != nullptr ? dynamic_cast<MVNPlaylist*>(cells->getTrack(row * columns + column))
                                          : nullptr;
        if (playlist == nullptr || playlist->count() == 0) {
            fail(cell.second, "the grid could not make this cell (see the log)");
        }
    }
}

std::string buildTimeline(const std::vector<TrackPlan>& plans, const std::string& path, MVNProject& project,
                          int& length) {
    MVNFactory* factory = MVNFactory::getSingleton();
    const MVNProfile& profile = project.profile;
    MVNProperties none;
    std::string tractorId = factory->createTractor(profile, none);
    if (tractorId.empty()) fail(path, "the tractor could not be built (see the log)");
    project.serviceIds.push_back(tractorId);
    MVNTractor* tractor = factory->getTractorById(tractorId);

    for (size_t t = 0; t < plans.size(); ++t) {
        const std::string tpath = path + "[" + std::to_string(t) + "]";
        std::string playlistId = factory->createPlaylist(profile, none);
        if (playlistId.empty()) fail(tpath, "the playlist could not be built (see the log)");
        project.serviceIds.push_back(playlistId);
        MVNPlaylist* playlist = factory->getPlaylistById(playlistId);

        // A transition is built when it is met and mixes its two clips once
        // the clip after it is in the playlist.
        const ClipPlan* pending = nullptr;
        std::string pendingId;
        for (const ClipPlan& clip : plans[t].clips) {
            if (clip.transition) {
                std::string name = clip.properties.getString("resource", "");
                if (fs::path(name).extension() != ".glsl") checkTransitionName(name, clip.path + ".transition");
                pendingId = factory->createTransition(profile, clip.properties);
                if (pendingId.empty()) fail(clip.path, "the transition could not be built (see the log)");
                project.serviceIds.push_back(pendingId);
                pending = &clip;
                continue;
            }
            if (clip.blank > 0) {
                if (playlist->appendBlank(clip.blank) != 0) fail(clip.path, "the blank was refused");
                continue;
            }
            std::string timelineId;
            if (!clip.tracks.empty()) {
                int inner = 0;
                timelineId = buildTimeline(clip.tracks, clip.path + ".tracks", project, inner);
            }
            std::string id = factory->createProducer(profile, clip.properties);
            if (id.empty()) {
                fail(clip.path, "service \"" + clip.properties.getString("service", "") +
                                    "\" refused the clip (see the log)");
            }
            project.serviceIds.push_back(id);
            MVNProducer* producer = factory->getProducerById(id);
            buildComposite(clip, producer, timelineId);
            // After init, which sets a producer's own default timing.
            int out = clip.in + clip.length - 1;
            if (producer->getLength() < out + 1) producer->setLength(out + 1);
            producer->setInAndOut(clip.in, out);
            if (clip.hasGeometry) producer->setGeometry(clip.geometry);
            // A text clip builds its glyphs on the first change after init:
            // the file's properties were all set before it.
            if (clip.properties.getString("service", "") == "text") producer->setBoolean("_textNeedReBuild", true);

            for (const FilterPlan& f : clip.filters) {
                std::string fid = factory->createFilter(profile, f.properties);
                if (fid.empty()) {
                    fail(f.path, "service \"" + f.properties.getString("service", "") +
                                     "\" refused the filter (see the log)");
                }
                project.serviceIds.push_back(fid);
                if (producer->attach(factory->getFilterById(fid)) != 0) fail(f.path, "the filter could not be attached");
            }
            if (playlist->append(id) != 0) fail(clip.path, "the playlist refused the clip");
            if (pending != nullptr) {
                if (playlist->mix(playlist->count() - 2, pending->length, pendingId) != 0) {
                    fail(pending->path, "the playlist refused the transition (see the log)");
                }
                pending = nullptr;
            }
        }
        if (tractor->setTrack(playlistId, -1) != 0) fail(tpath, "the tractor refused the track");
        length = std::max(length, playlist->totalLength());
    }
    tractor->refresh();
    return tractorId;
}

void buildTracks(const std::vector<TrackPlan>& plans, MVNProject& project) {
    project.tractorId = buildTimeline(plans, "tracks", project, project.length);
}

}  // namespace

struct MVNProjectLoader::Plan {
    std::vector<TrackPlan> tracks;
};

MVNProjectLoader::MVNProjectLoader() = default;
MVNProjectLoader::~MVNProjectLoader() = default;

int MVNProjectLoader::read(const std::string& path, MVNProject& project, const std::string& profileOverride) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        mError = oneLine(path + ": cannot open the project file");
        mPlan.reset();
        return -1;
    }
    std::ostringstream text;
    text << in.rdbuf();
    return readFromString(text.str(), path, project, profileOverride);
}

int MVNProjectLoader::readFromString(const std::string& text, const std::string& path, MVNProject& project,
                                     const std::string& profileOverride) {
    mError.clear();
    mPlan.reset();
    mPath = path;
    project = MVNProject();
    std::error_code ec;
    project.path = fs::absolute(path, ec).lexically_normal().string();
    project.folder = fs::path(project.path).parent_path().string();
    project.resourceLocations.push_back(project.folder);

    json root;
    try {
        root = json::parse(text);
    } catch (const json::exception& e) {
        // Syntax, and numbers no double holds ("1e400").
        mError = oneLine(path + ": not valid JSON: " + e.what());
        return -1;
    }
    std::string where;
    try {
        if (!root.is_object()) fail("(top)", "expected an object, got " + typeName(root));
        for (auto it = root.begin(); it != root.end(); ++it) {
            if (it.key() != "profile" && it.key() != "tracks") fail(it.key(), "unknown key");
        }
        project.profile = parseProfile(root, profileOverride, where);
        where.clear();
        auto plan = std::make_unique<Plan>();
        plan->tracks = planTracks(root, project.profile, project.folder, project.resourceLocations);
        project.sound = anySound(plan->tracks);
        mPlan = std::move(plan);
    } catch (const ProjectError& e) {
        mError = oneLine(path + ": " + (where.empty() ? e.path : where) + ": " + e.reason);
        log_info(kTag, "%s", mError.c_str());
        return -1;
    } catch (const json::exception& e) {
        // A value of a shape no check above expected; still the user's file.
        mError = oneLine(path + ": " + e.what());
        log_info(kTag, "%s", mError.c_str());
        return -1;
    }
    return 0;
}

int MVNProjectLoader::build(MVNProject& project) {
    if (!mPlan) {
        mError = oneLine(mPath + ": nothing read to build");
        return -1;
    }
    try {
        buildTracks(mPlan->tracks, project);
        if (project.length <= 0) fail("tracks", "nothing to render: every track is empty");
    } catch (const ProjectError& e) {
        mError = oneLine(mPath + ": " + e.path + ": " + e.reason);
        log_info(kTag, "%s", mError.c_str());
        unload(project);
        return -1;
    }
    log_info(kTag, "%s: %zu services, %d frames at %dx%d", mPath.c_str(), project.serviceIds.size(),
             project.length, project.profile.width(), project.profile.height());
    return 0;
}

int MVNProjectLoader::load(const std::string& path, MVNProject& project, const std::string& profileOverride) {
    if (read(path, project, profileOverride) != 0) return -1;
    return build(project);
}

int MVNProjectLoader::loadFromString(const std::string& text, const std::string& path, MVNProject& project,
                                     const std::string& profileOverride) {
    if (readFromString(text, path, project, profileOverride) != 0) return -1;
    return build(project);
}

void MVNProjectLoader::unload(MVNProject& project) {
    MVNFactory* factory = MVNFactory::getSingleton();
    for (auto it = project.serviceIds.rbegin(); it != project.serviceIds.rend(); ++it) {
        factory->destroyService(*it);
    }
    project.serviceIds.clear();
    project.tractorId.clear();
    project.length = 0;
}

}  // namespace Morvane
