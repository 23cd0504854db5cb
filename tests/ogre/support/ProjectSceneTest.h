#pragma once
// A project file's tracks built in-process on a running engine of 320x180,
// drawn at a position and read back with the origin at the top left, as
// project files place their clips.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "engine/MVNOgreManager.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNTractor.h"

namespace MorvaneTest {

class ProjectSceneTest : public QuadEngineTest {
protected:
    void TearDown() override {
        Morvane::MVNProjectLoader::unload(project);
        QuadEngineTest::TearDown();
    }

    // `tracks` is the JSON list of the project's tracks. 0, or -1 with
    // loader.error() set.
    int load(const std::string& tracks) {
        std::string text = R"({ "profile": { "width": 320, "height": 180, "fps": 25 }, "tracks": )" + tracks + " }";
        int rc = loader.loadFromString(text, (std::filesystem::current_path() / "show.json").string(), project);
        if (rc == 0) {
            for (const std::string& folder : project.resourceLocations)
                Morvane::MVNOgreManager::getSingleton()->addResourceLocation(folder);
        }
        return rc;
    }

    void draw(int position) {
        Morvane::MVNTractor* tractor = Morvane::MVNFactory::getSingleton()->getTractorById(project.tractorId);
        ASSERT_NE(tractor, nullptr);
        Morvane::MVNFrame* frame = nullptr;
        if (tractor->getImage(position, &frame) == 0) Morvane::MVNFrame::pushBackPool(frame);
    }

    // Pixels of the rectangle (x, y, w, h), top-left origin, shrunk by
    // `inset` on every side (edges are multisampled), that aren't `c`.
    static int wrongIn(const RenderImage& out, int x, int y, int w, int h, RGBA c, int inset = 2) {
        int wrong = 0;
        for (int py = y + inset; py < y + h - inset; ++py) {
            for (int px = x + inset; px < x + w - inset; ++px) {
                if (!(out.at(px, py) == c)) ++wrong;
            }
        }
        return wrong;
    }

    Morvane::MVNProjectLoader loader;
    Morvane::MVNProject project;
};

}  // namespace MorvaneTest
