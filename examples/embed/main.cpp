// A host application in a few lines: load the render module, build a
// two-track timeline in code (a red background, a blue box over it) and
// write its first ten frames to OUT/frame000.png ... frame009.png.
#include <cstdio>
#include <string>
#include <vector>

#include "Morvane.h"

using namespace Morvane;

int main(int argc, char** argv) {
    const std::string out = argc > 1 ? argv[1] : ".";
    // The engine's hidden window keeps the profile's size only when asked.
    if (FILE* marker = std::fopen("not_full_screen", "a")) std::fclose(marker);
    if (loadModule(findModule("MVNOgre")) != 0) return 1;

    MVNProfile profile(160, 90, 25);
    MVNRenderSystem* rs = createRenderSystem("ogreRenderSystem", profile, MVNProperties());
    if (!rs || rs->init() != 0) return 1;

    MVNFactory* factory = MVNFactory::getSingleton();
    MVNTractor* tractor = factory->getTractorById(factory->createTractor(profile, MVNProperties()));
    const char* colors[] = {"#ff0000ff", "#0000ffff"};
    for (int track = 0; track < 2; ++track) {
        MVNProperties clip;
        clip.setString("service", "ogre.color");
        clip.setString("color", colors[track]);
        clip.setInt32("zOrder", track + 1);  // the second track is drawn over the first
        std::string clipId = factory->createProducer(profile, clip);
        std::string playlistId = factory->createPlaylist(profile, MVNProperties());
        if (clipId.empty() || playlistId.empty()) return 1;
        MVNProducer* producer = factory->getProducerById(clipId);
        producer->setInAndOut(0, 9);
        // The box: 80x50 at (40, 20) from the top-left corner; the timeline
        // measures from the bottom-left.
        if (track == 1) producer->setGeometry(MVNRect(40, 20, 80, 50).leftBottomToLeftTop(160, 90));
        factory->getPlaylistById(playlistId)->append(clipId);
        tractor->setTrack(playlistId, -1);
    }
    tractor->refresh();

    MVNRenderConsumer consumer(profile, rs);
    consumer.connect(tractor);
    consumer.setPictureSink([&](const MVNRenderConsumer::Picture& pic) {
        std::vector<uint8_t> bgra(pic.pixels, pic.pixels + pic.stride * pic.height);
        for (size_t i = 0; i < bgra.size(); i += 4) std::swap(bgra[i], bgra[i + 2]);  // R,G,B,A -> B,G,R,A
        char name[32];
        std::snprintf(name, sizeof name, "/frame%03d.png", pic.position);
        return MVNImage::saveToFile(out + name, bgra.data(), pic.width, pic.height);
    });
    int written = consumer.renderRange(0, 9);
    consumer.disconnect();
    factory->destroyAll();
    rs->release();
    delete rs;
    std::printf("%d frames in %s\n", written, out.c_str());
    return written == 10 ? 0 : 1;
}
