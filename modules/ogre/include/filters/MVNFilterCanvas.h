#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "core/MVNColor4B.h"
#include "core/MVNRect.h"
#include "filters/MVNOgreFilterService.h"

namespace Morvane {

class MVNOgreFilterPass;
class MVNOgreSceneManager;
class MVNOgreTextureNodeImpl;
class MVNProducer;

// The service "ogre.filter.canvas": a clip whose aspect differs from the
// project's stands, unscaled-up and centred, on a full-frame background:
// "canvasType" 0 a blur of the picture itself, 1 a blur of the picture file
// "resource", 2 the plain colour "color". The blur is two passes
// ("GaussianBlurX" into mPass, "GaussianBlurY" into mSceneMain) and the
// picture is drawn unblurred over it, all into one render texture the size
// of the profile. "ufmStrength" s sends 4s - 3 to the blur, which widens
// its kernel by that much; the first pass then draws into a texture as many
// times smaller, so that the second pass still reads every texel of it and
// the enlarged background shows no bands.
//
// mLock also orders the background swaps.
class MVN_OGRE_API MVNFilterCanvas : public MVNOgreFilterService {
public:
    MVNFilterCanvas(const MVNProfile& profile, int canvasType);
    ~MVNFilterCanvas() override;
    MVNFilterCanvas(const MVNFilterCanvas&) = delete;
    MVNFilterCanvas& operator=(const MVNFilterCanvas&) = delete;

    void resetRender(int position) override;
    void setGeometry(const MVNRect& rect) override;
    void updateCanvas(MVNFrame* frame) override;
    MVNFilter* _alloc() override;
    void _OnVisibleChanged(bool visible) override;
    void _OnRotationChanged(int rotation) override;

    // For tests: the composed render texture, the blur's first pass, and
    // where the picture and the background stand in the profile.
    const std::string& rttMain() const { return mRttMain; }
    bool hasPass() const { return mPass != nullptr; }
    MVNOgreFilterPass* pass() const { return mPass; }
    bool hasBackground() const { return mBackground != nullptr; }
    const MVNRect& pictureRect() const { return mPictureRect; }
    const MVNRect& backgroundRect() const { return mBackRect; }

protected:
    void _Config() override;
    void _releaseFilterNode() override;
    void _onInit() override;
    void _onRelease() override;
    void _onReconfig() override { mBackgroundDirty = true; }
    void _SetUniform(const std::string& name) override;
    void _SetZOrder(int zOrder) override;
    void _OnOtherPropertyChanged(const char* key) override;
    bool _beforeInput(int position) override;
    bool _takeFrame(MVNFrame* frame) override;
    void _render(int position, int inputType, int outputType) override;
    const std::string& _outputRtt() const override { return mRttMain; }

private:
    void _SetDefaultParameters(int width, int height);
    // Step "setUniform": the uniform to both blur passes.
    void _sendUniform(const std::string& name);
    // How much the kernel is widened now ("ufmStrength"), and how many times
    // smaller than the picture the first pass draws for that.
    float _spread() const;
    static int _passScale(float spread, int width, int height);
    // Step "canvasPassUpdateTexture"; false when the frame could not be
    // converted.
    bool _uploadToPass(MVNFrame* frame, const char* failure);
    void _OnColorChanged(const MVNColor4B& color);
    void _OnResourceChanged(const std::string& path);
    void _OnTypeChanged(int type);
    // The size of the picture file an image clip shows by name, into width
    // and height; they stay as they are when it can't be loaded.
    void _pictureFileSize(const std::string& texture, int& width, int& height);
    MVNFrame* _loadBgImage(const std::string& path);
    MVNFrame* _loadBgColor(const MVNColor4B& color);
    // Uploads a frame of any colour type to a node; false when it could not
    // be converted.
    bool _upload(MVNOgreTextureNodeImpl* node, MVNFrame* frame, const char* failure);
    // mLock held.
    void _swapBackground(MVNFrame* background);

    MVNOgreSceneManager* mSceneMain = nullptr;    // owned; the profile's size, draws into mRttMain
    MVNOgreTextureNodeImpl* mNodeBack = nullptr;  // blurred or coloured background, in mSceneMain
    MVNOgreFilterPass* mPass = nullptr;          // owned, render thread; the blur's first pass; none for a colour
    int mPassScale = 1;                           // the first pass draws this many times smaller than its picture
    int mPassWidth = 0;                           // size of that picture
    int mPassHeight = 0;
    MVNOgreTextureNodeImpl* mNodePicture = nullptr;  // the picture itself, in mSceneMain
    MVNOgreTextureNodeImpl* mNodeOut = nullptr;   // shows mRttMain for output kinds 1 and 4
    std::string mRttMain;                         // from "CanvasRtt"
    std::string mRttPass;                         // from "CanvasRttPass"
    bool mBackgroundDirty = true;                 // mBackground must be uploaded at the next frame
    bool mCanvasFed = false;                      // updateCanvas gave the blur its picture since the last frame
    MVNFrame* mBackground = nullptr;              // owned; null for the picture's own blur
    MVNRect mPictureRect;                         // profile pixels, top-left origin, as last configured
    MVNRect mBackRect;
};

}  // namespace Morvane
