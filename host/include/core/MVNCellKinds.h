#pragma once
#include <string>

namespace Morvane {

// What a grid cell's file is shown with, by the file's extension: one table
// for the grid that makes the cells and for the project loader that checks
// them before anything is built.

// The service for `path` ("stb_image", "codec.video", "codec.gif"), empty
// for a kind no cell shows. Extensions compare without regard to case.
std::string cellServiceForPath(const std::string& path);
// The extensions a cell shows, for messages: ".jpg, .jpeg, ...".
std::string cellExtensions();

}  // namespace Morvane
