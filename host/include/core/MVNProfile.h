#pragma once
#include <string>

namespace Morvane {

// Output format of a timeline: width, height and frame rate. Built from a
// name of the table ("hdv_540_24p", "hd_720_25p", "hd_1080_30p", ...), from
// "WxH@FPS" (fps may be a fraction "30000/1001"), or from numbers.
class MVNProfile {
public:
    MVNProfile();  // "hdv_540_24p"
    explicit MVNProfile(const std::string& name);
    MVNProfile(int width, int height, int fpsNum, int fpsDen = 1);

    int width() const { return mWidth; }
    int height() const { return mHeight; }
    double fps() const { return mFpsDen ? static_cast<double>(mFpsNum) / mFpsDen : 0.0; }
    int fpsNum() const { return mFpsNum; }
    int fpsDen() const { return mFpsDen; }
    const std::string& name() const { return mName; }
    const std::string& description() const { return mDescription; }
    // False when the name was neither in the table nor a valid "WxH@FPS".
    bool isValid() const { return mValid; }

    // True when `name` is in the table or parses as "WxH@FPS".
    static bool exists(const std::string& name);

private:
    std::string mName;
    std::string mDescription;
    int mWidth = 0;
    int mHeight = 0;
    int mFpsNum = 0;
    int mFpsDen = 1;
    bool mValid = false;
};

}  // namespace Morvane
