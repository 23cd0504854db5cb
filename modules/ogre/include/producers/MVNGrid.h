#pragma once
#include <string>

#include "producers/MVNGroupSample.h"

namespace Morvane {

// The service "ogre.grid": "row" x "column" cells over the whole profile,
// each showing the clip that "clip.<row>.<column>.resource" names, fitted
// into its cell with its aspect kept and centred there. The grid builds no
// picture of its own: it makes a tractor with one playlist per cell,
// connects it as its timeline and lets the group draw it. Setting a cell's
// resource while the grid runs replaces that cell's clip.
//
// A cell's kind comes from its file's extension (pictures, videos, gifs);
// a resource "#rrggbb" or "#rrggbbaa" is a colour. A cell without a
// resource shows the error picture "grid.error.jpg" (the working directory's,
// else the one shipped in media/pictures). Cells lie in index order
// (row * column + column), later ones above.
//
// Properties: "service" ("ogre.grid"), "row", "column" (at least 1, read at
// init), "_is_from_xml" (true: init builds nothing, the timeline is
// restored by its loader), "clip.%d.%d.resource", "_gridTractor" (the id of
// the tractor the grid made).
class MVN_OGRE_API MVNGrid : public MVNGroupSample {
public:
    explicit MVNGrid(const MVNProfile& profile);
    ~MVNGrid() override;

    void _OnPropertyChanged(const char* key) override;
    int init() override;
    // Destroys every clip the grid made, then releases the group.
    void release() override;

private:
    // The service a cell of this resource is made by, empty for a kind the
    // grid can't show.
    static std::string cellService(const std::string& resource);
    // The tractor's id, or empty.
    std::string _createGrid(int row, int column);
    // The producer's id, or empty.
    std::string _createCell(const std::string& resource, int zOrder);
    // Fits the cell's clip into cell (row, column) of a cellWidth x
    // cellHeight table.
    void _placeCell(MVNProducer* clip, int row, int column, int cellWidth, int cellHeight);
    void _OnResourceChanged(const std::string& resource, int row, int column);

    // Set once init has built the cells; a cell's resource changes them
    // only from then on.
    bool initialised = false;
};

}  // namespace Morvane
