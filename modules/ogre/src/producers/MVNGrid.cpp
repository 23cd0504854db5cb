#include "producers/MVNGrid.h"

#include <filesystem>
#include <regex>

#include "core/AutoLock.h"
#include "core/MVNCellKinds.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "core/MVNGeometry.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "timeline/MVNFactory.h"
#include "services/MVNTransitionAudio.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

namespace Morvane {

namespace {

const char* const kTag = "Morvane::MVNGrid";
const char* const kErrorPicture = "grid.error.jpg";

// A still picture is decoded on the processor where the host offers that;
// otherwise the engine loads it itself.
const char* const kPictureService = "stb_image";
const char* const kEnginePictureService = "ogre.image";

// How long a colour or an engine-drawn picture stays in its cell.
const double kStillSeconds = 99999.0;

bool isColour(const std::string& resource) { return !resource.empty() && resource[0] == '#'; }

// The error picture of the working directory, else the one shipped with
// the module's media.
std::string errorPicture() {
    namespace fs = std::filesystem;
    std::error_code ec;
    for (const fs::path& candidate :
         {fs::path(kErrorPicture), fs::path(MVN_MEDIA_DIR) / "pictures" / kErrorPicture,
          fs::path(MVN_INSTALL_MEDIA_DIR) / "pictures" / kErrorPicture}) {
        if (fs::is_regular_file(candidate, ec)) return fs::absolute(candidate, ec).lexically_normal().string();
    }
    return kErrorPicture;
}

}  // namespace

MVNGrid::MVNGrid(const MVNProfile& profile) : MVNGroupSample(profile) {
    block();
    setString("service", "ogre.grid");
    unblock();
    genStringId("grid");
}

MVNGrid::~MVNGrid() { log_debug(kTag, "%s destory", getStringId().c_str()); }

std::string MVNGrid::cellService(const std::string& resource) {
    if (isColour(resource)) return "ogre.color";
    std::string service = cellServiceForPath(resource);
    if (service == kPictureService && !MVNRepository::getSingleton()->hasService(service))
        service = kEnginePictureService;
    return service;
}

int MVNGrid::init() {
    if (MVNGroupSample::init() != 0) return -1;
    if (getBoolean("_is_from_xml", false)) {
        initialised = true;
        return 0;
    }
    int row = getInt32("row", 0);
    int column = getInt32("column", 0);
    if (row < 1 || column < 1) {
        log_error(kTag, "error row:%d,column:%d", row, column);
        MVNGroupSample::release();
        return -1;
    }
    std::string id = _createGrid(row, column);
    if (id.empty()) {
        log_error(kTag, "creat graid producer failed");
        MVNGroupSample::release();
        return -1;
    }
    // Kept apart from the connection: the registry disconnects a group
    // before it releases it, and release must still find the cells.
    block();
    setString("_gridTractor", id);
    unblock();
    if (MVNGroup::connect(id) != 0) {
        log_error(kTag, "connect producer failed");
        MVNGroupSample::release();
        return -1;
    }
    initialised = true;
    return 0;
}

std::string MVNGrid::_createGrid(int row, int column) {
    MVNProperties properties;
    properties.setString("service", "tractor");
    std::string tractorId = createTractor(mProfile, properties);
    MVNTractor* tractor = getTractorById(tractorId);
    if (tractor == nullptr) {
        log_error(kTag, "create tractor failed");
        return std::string();
    }
    int cellWidth = mProfile.width() / column;
    int cellHeight = mProfile.height() / row;
    for (int r = 0; r < row; ++r) {
        for (int c = 0; c < column; ++c) {
            int index = r * column + c;
            properties.setString("service", "playlist");
            std::string playlistId = createPlaylist(mProfile, properties);
            MVNPlaylist* playlist = getPlaylistById(playlistId);
            if (playlist == nullptr) {
                log_error(kTag, "create playlist failed");
                return std::string();
            }
            std::string key = "clip." + std::to_string(r) + "." + std::to_string(c) + ".resource";
            std::string resource = getString(key.c_str(), "");
            std::string clipId = _createCell(resource.empty() ? errorPicture() : resource, index);
            MVNProducer* clip = getProducerById(clipId);
            if (clip == nullptr) {
                log_error(kTag, "create cell [%d,%d] failed", r, c);
            } else {
                _placeCell(clip, r, c, cellWidth, cellHeight);
                playlist->append(clipId);
            }
            tractor->setTrack(playlistId, -1);
        }
    }
    // Track 0's sound is mixed with each other track's.
    for (int i = 1; i < tractor->count(); ++i) {
        properties.setString("service", "transition_audio");
        std::string id = createTransitionAudio(mProfile, properties);
        if (getTransitionAudioById(id) == nullptr) {
            log_error(kTag, "create transition audio %d error", i);
        } else {
            tractor->plantTransitionAudio(id, 0, i);
        }
    }
    return tractorId;
}

std::string MVNGrid::_createCell(const std::string& resource, int zOrder) {
    std::string service = cellService(resource);
    if (service.empty()) {
        log_error(kTag, "error format %s", resource.c_str());
        return std::string();
    }
    MVNProperties properties;
    properties.setString("service", service);
    properties.setInt32("zOrder", zOrder);
    if (service == "ogre.color") {
        properties.setString("color", resource);
        properties.setString("resource", resource);
    } else if (service == kEnginePictureService) {
        // The engine finds pictures by name in its resource locations.
        std::filesystem::path path(resource);
        if (path.has_parent_path()) MVNOgreManager::getSingleton()->addResourceLocation(path.parent_path().string());
        properties.setString("resource", path.filename().string());
        // The picture's own size, so that the cell keeps its aspect; the
        // engine loads it again by name, once, for its texture.
        if (MVNFrame* picture = MVNImage::loadFromFile(resource, 0, 0)) {
            properties.setInt32("width", picture->width());
            properties.setInt32("height", picture->height());
            MVNFrame::pushBackPool(picture);
        }
    } else {
        properties.setString("resource", resource);
    }
    return createProducer(mProfile, properties);
}

void MVNGrid::_placeCell(MVNProducer* clip, int row, int column, int cellWidth, int cellHeight) {
    int w = clip->getInt32("width", 0);
    int h = clip->getInt32("height", 0);
    MVNSize fitted = adjustSizeFill(MVNSize(static_cast<float>(w), static_cast<float>(h)),
                                    MVNSize(static_cast<float>(cellWidth), static_cast<float>(cellHeight)));
    int offsetX = static_cast<int>((cellWidth - fitted.width) / 2.0);
    int offsetY = static_cast<int>((cellHeight - fitted.height) / 2.0);
    // Rows count from the top of the picture; geometry is measured from its
    // bottom.
    float top = static_cast<float>(cellHeight * row + offsetY);
    float bottom = static_cast<float>(mProfile.height()) - top - fitted.height;
    clip->setGeometry(MVNRect(static_cast<float>(cellWidth * column + offsetX), bottom, fitted.width, fitted.height));
    std::string service = clip->getString("service", "");
    if (service == "codec.gif") {
        // A gif lasts five seconds.
        clip->setInAndOut(0, static_cast<int>(mProfile.fps() * 5.0 - 1.0));
    } else if (service == "ogre.color" || service == kEnginePictureService || service == kPictureService) {
        // A colour or a still picture, whoever decodes it, is kept: as long
        // as any grid runs.
        int length = static_cast<int>(mProfile.fps() * kStillSeconds);
        clip->setLength(length);
        clip->setInAndOut(0, length - 1);
    }
}

void MVNGrid::_OnPropertyChanged(const char* key) {
    // The dot between the two numbers stands for any character.
    static const std::regex cellKey("clip\\.(\\d*).(\\d*)\\.(.*)", std::regex::ECMAScript);
    std::cmatch match;
    // Before init the cells are only being named; init reads them.
    if (key != nullptr && initialised && std::regex_match(key, match, cellKey)) {
        int row = std::atoi(match[1].str().c_str());
        int column = std::atoi(match[2].str().c_str());
        if (match[3].str() == "resource") _OnResourceChanged(getString(key, ""), row, column);
    }
    MVNGroupSample::_OnPropertyChanged(key);
}

void MVNGrid::_OnResourceChanged(const std::string& resource, int row, int column) {
    if (resource.empty()) {
        log_warn(kTag, "not process empty resource");
        return;
    }
    MVNProducer* child = producer();
    if (child == nullptr) {
        log_warn(kTag, "grid producer not exists");
        return;
    }
    auto* tractor = dynamic_cast<MVNTractor*>(child);
    if (tractor == nullptr) {
        log_warn(kTag, "get tractor error");
        return;
    }
    int rows = getInt32("row", 0);
    int columns = getInt32("column", 0);
    int index = row * columns + column;
    auto* playlist = dynamic_cast<MVNPlaylist*>(tractor->getTrack(index));
    if (playlist == nullptr) {
        log_warn(kTag, "get track %d error", index);
        return;
    }
    MVNProducer* clip = playlist->getClip(0);
    if (clip == nullptr) {
        log_warn(kTag, "get track:%d clip:0 error", index);
        return;
    }
    if (clip->getString("resource", "") == resource) {
        log_debug(kTag, "resource sample, not process");
        return;
    }
    // Not while the grid draws: the cell's clip is taken out from under it.
    AutoLock guard(renderLock());
    playlist->remove(0);
    destroyService(clip->getStringId());
    int cellWidth = mProfile.width() / columns;
    int cellHeight = mProfile.height() / rows;
    std::string id = _createCell(resource, index);
    MVNProducer* cell = getProducerById(id);
    if (cell == nullptr) {
        log_error(kTag, "create cell [%d,%d] failed", row, column);
    } else {
        _placeCell(cell, row, column, cellWidth, cellHeight);
        cell->connectGroup(getString("_groupName", ""));
        playlist->append(id);
    }
    tractor->refresh();
    setLength(tractor->getPlaytime());
}

void MVNGrid::release() {
    std::string id = getString("_gridTractor", "");
    if (MVNProducer* child = producer()) id = child->getStringId();
    MVNGroup::disconnect();
    if (MVNTractor* tractor = getTractorById(id)) {
        // Each track once, and each clip of it once, with a counter of its
        // own: one counter shared by the two walks would skip tracks, or
        // start over at 1 once a playlist is emptied and never end.
        for (int track = 0; track < tractor->count(); ++track) {
            auto* playlist = dynamic_cast<MVNPlaylist*>(tractor->getTrack(track));
            if (playlist == nullptr) continue;
            for (int i = 0; i < playlist->count(); ++i) {
                MVNProducer* clip = playlist->getClip(i);
                if (clip != nullptr && !clip->isBlank()) destroyService(clip->getStringId());
            }
            playlist->clear();
        }
        tractor->clear();
    }
    MVNGroupSample::release();
}

}  // namespace Morvane
