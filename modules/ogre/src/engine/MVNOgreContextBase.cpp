#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"

#include <Bites/OgreInput.h>
#include <Ogre.h>
#include <OgreFileSystemLayer.h>
#include <OgreGpuProgramManager.h>
#include <OgreRenderSystem.h>
#include <OgreRenderWindow.h>
#include <OgreViewport.h>
#include <OgrePlugin.h>
#include <OgreOverlaySystem.h>
#include <OgreRTShaderSystem.h>

#include <dlfcn.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "core/MVNLog.h"
#include "engine/WindowEventUtilities.h"

#ifndef MVN_BUILD_CONFIG_DIR
#define MVN_BUILD_CONFIG_DIR ""
#endif
#ifndef MVN_INSTALL_CONFIG_DIR
#define MVN_INSTALL_CONFIG_DIR ""
#endif
#ifndef MVN_MODULE_TO_CONFIG_DIR
#define MVN_MODULE_TO_CONFIG_DIR ""
#endif

namespace Morvane {

static const char* TAG = "Morvane::MVNOgreContextBase";

// The engine calls frame listeners by interface; this forwards to the
// context's virtual hooks so that the header needs no engine types.
class MVNOgreContextBase::FrameHooks : public Ogre::FrameListener {
public:
    explicit FrameHooks(MVNOgreContextBase* owner) : mOwner(owner) {}
    bool frameStarted(const Ogre::FrameEvent& evt) override { return mOwner->frameStarted(evt); }
    bool frameRenderingQueued(const Ogre::FrameEvent& evt) override {
        return mOwner->frameRenderingQueued(evt);
    }
    bool frameEnded(const Ogre::FrameEvent& evt) override { return mOwner->frameEnded(evt); }

private:
    MVNOgreContextBase* mOwner;
};

// Makes shader-based techniques on demand for materials that a viewport of
// the shader generator's scheme draws, so fixed-function materials render
// through generated programs.
class MVNOgreContextBase::TechniqueResolver : public Ogre::MaterialManager::Listener {
public:
    explicit TechniqueResolver(Ogre::RTShader::ShaderGenerator* generator) : mGenerator(generator) {}

    Ogre::Technique* handleSchemeNotFound(unsigned short schemeIndex, const Ogre::String& schemeName,
                                          Ogre::Material* originalMaterial, unsigned short lodIndex,
                                          const Ogre::Renderable* rend) override {
        if (!mGenerator->hasRenderState(schemeName)) return nullptr;
        bool created = mGenerator->createShaderBasedTechnique(
            *originalMaterial, Ogre::MaterialManager::DEFAULT_SCHEME_NAME, schemeName);
        if (!created) return nullptr;
        mGenerator->validateMaterial(schemeName, originalMaterial->getName(), originalMaterial->getGroup());
        for (Ogre::Technique* tech : originalMaterial->getTechniques()) {
            if (tech->getSchemeName() == schemeName) return tech;
        }
        return nullptr;
    }

    bool afterIlluminationPassesCreated(Ogre::Technique* tech) override {
        if (!mGenerator->hasRenderState(tech->getSchemeName())) return false;
        Ogre::Material* mat = tech->getParent();
        mGenerator->validateMaterialIlluminationPasses(tech->getSchemeName(), mat->getName(), mat->getGroup());
        return true;
    }

    bool beforeIlluminationPassesCleared(Ogre::Technique* tech) override {
        if (!mGenerator->hasRenderState(tech->getSchemeName())) return false;
        Ogre::Material* mat = tech->getParent();
        mGenerator->invalidateMaterialIlluminationPasses(tech->getSchemeName(), mat->getName(),
                                                         mat->getGroup());
        return true;
    }

private:
    Ogre::RTShader::ShaderGenerator* mGenerator;
};

void StaticPluginLoader::load() {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (!root) return;
    for (Ogre::Plugin* plugin : mPlugins) root->installPlugin(plugin);
}

void StaticPluginLoader::unload() {
    for (Ogre::Plugin* plugin : mPlugins) delete plugin;
    mPlugins.clear();
}

// The installed configuration seen from the folder this module was loaded
// from (lib/morvane/modules of an installed tree), so that the tree still
// finds it after being moved. Empty for the build tree's module.
static std::string configBesideModule() {
    const std::string relative = MVN_MODULE_TO_CONFIG_DIR;
    Dl_info info{};
    if (relative.empty() || ::dladdr(reinterpret_cast<void*>(&configBesideModule), &info) == 0 ||
        info.dli_fname == nullptr) {
        return std::string();
    }
    std::string dir = info.dli_fname;
    size_t slash = dir.find_last_of('/');
    dir = slash == std::string::npos ? std::string() : dir.substr(0, slash);
    if (!Ogre::StringUtil::endsWith(dir, "/morvane/modules", false)) return std::string();
    return dir + "/" + relative;
}

// Folder of plugins.cfg and resources.cfg: OGRE_CONFIG_DIR when set, else the
// installed files beside the module, else the build tree's generated files,
// else the installed ones at the configured prefix.
static std::string configDir() {
    if (const char* env = std::getenv("OGRE_CONFIG_DIR")) {
        if (*env) return Ogre::StringUtil::standardisePath(env);
    }
    const std::string besideModule = configBesideModule();
    for (const std::string& d : {besideModule, std::string(MVN_BUILD_CONFIG_DIR), std::string(MVN_INSTALL_CONFIG_DIR)}) {
        if (!d.empty() && Ogre::FileSystemLayer::fileExists(d + "/plugins.cfg")) {
            return Ogre::StringUtil::standardisePath(d);
        }
    }
    return std::string();
}

MVNOgreContextBase::MVNOgreContextBase(const std::string& appName, int width, int height)
    : mFSLayer(new Ogre::FileSystemLayer(appName)), mAppName(appName), mWidth(width), mHeight(height) {
    std::string dir = configDir();
    if (!dir.empty()) mFSLayer->setConfigPaths({dir});
}

MVNOgreContextBase::~MVNOgreContextBase() {
    // closeApp runs on the render thread before the context is deleted; a
    // context that is dropped without it still frees its engine.
    if (mRoot) {
        log_warn(TAG, "deleted without closeApp, closing now");
        try {
            closeApp();
        } catch (const std::exception& e) {
            log_error(TAG, "closeApp error %s", e.what());
        }
    }
}

bool MVNOgreContextBase::frameStarted(const Ogre::FrameEvent& evt) {
    pollEvents();
    return true;
}

bool MVNOgreContextBase::frameRenderingQueued(const Ogre::FrameEvent& evt) {
    for (const auto& entry : mInputListeners) entry.second->frameRendered(evt);
    return true;
}

bool MVNOgreContextBase::frameEnded(const Ogre::FrameEvent& evt) { return true; }

int MVNOgreContextBase::initApp() {
    int result = -1;
    try {
        _preInitApp();
        createRoot();
        if (oneTimeConfig()) {
            if (!mFirstRun) mRoot->setRenderSystem(mRoot->getRenderSystemByName(mNextRenderer));
            setup();
            result = 0;
        }
    } catch (const std::exception& e) {
        log_error(TAG, "initApp error %s", describe(e).c_str());
    } catch (...) {
        log_error(TAG, "initApp error unknown exception");
    }
    // Only now, with the exception gone, may a failed root's plugins go.
    unpinPlugins();
    return result;
}

std::string MVNOgreContextBase::describe(const std::exception& e) {
    // An engine exception's full text names its source file by a pointer
    // into the plugin that threw it; the description is its own copy.
    if (const Ogre::Exception* oe = dynamic_cast<const Ogre::Exception*>(&e)) return oe->getDescription();
    return e.what();
}

void MVNOgreContextBase::pinPlugins(const std::string& pluginsFile) {
    if (!Ogre::FileSystemLayer::fileExists(pluginsFile)) return;
    Ogre::ConfigFile cf;
    cf.load(pluginsFile);
    std::string folder = cf.getSetting("PluginFolder");
    if (!folder.empty() && folder.back() != '/') folder += '/';
    for (const std::string& name : cf.getMultiSetting("Plugin")) {
        std::string path = folder + name;
        if (!Ogre::StringUtil::endsWith(path, ".so")) path += ".so";
        if (void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) mPluginPins.push_back(handle);
    }
}

void MVNOgreContextBase::unpinPlugins() {
    for (void* handle : mPluginPins) ::dlclose(handle);
    mPluginPins.clear();
}

void MVNOgreContextBase::createRoot() {
    std::string pluginsPath = mFSLayer->getConfigFilePath("plugins.cfg");
    if (!Ogre::FileSystemLayer::fileExists(pluginsPath)) {
        pluginsPath = Ogre::FileSystemLayer::resolveBundlePath("./plugins.cfg");
    }
    log_debug(TAG, "plugins file:%s", pluginsPath.c_str());
    // Our own log manager keeps the engine's log in its file and off the
    // console; it outlives the root, which doesn't own it.
    if (!Ogre::LogManager::getSingletonPtr()) {
        Ogre::LogManager* logs = new Ogre::LogManager();
        logs->createLog("render.log", true, false, false);
    }
    pinPlugins(pluginsPath);
    mRoot = new Ogre::Root(pluginsPath, mFSLayer->getWritablePath("ogre.cfg"), "render.log");
    mOverlaySystem = new Ogre::OverlaySystem();
}

bool MVNOgreContextBase::oneTimeConfig() {
    const Ogre::RenderSystemList& renderers = mRoot->getAvailableRenderers();
    if (renderers.empty()) {
        Ogre::LogManager::getSingleton().logError("No RenderSystems available");
        log_error(TAG, "No RenderSystems available");
        return false;
    }
    for (Ogre::RenderSystem* rs : renderers) log_info(TAG, "renderSystem:%s", rs->getName().c_str());
    // The readers and the shaders need desktop GL; there is no fallback.
    Ogre::RenderSystem* gl = mRoot->getRenderSystemByName("OpenGL Rendering Subsystem");
    if (!gl) {
        OGRE_EXCEPT(Ogre::Exception::ERR_ITEM_NOT_FOUND,
                    "render system 'OpenGL Rendering Subsystem' not available (RenderSystem_GL not loaded)",
                    "Morvane::MVNOgreContextBase::oneTimeConfig");
    }
    mRoot->setRenderSystem(gl);
    gl->_initRenderTargets();
    gl->setConfigOption("FSAA", Ogre::StringConverter::toString(chooseAntiAliasingLevel()));
    return true;
}

int MVNOgreContextBase::chooseAntiAliasingLevel() {
    if (!MVNOgreManager::getSingleton()->isAntiAliasing()) return 0;
    if (mAntiAliasingLevel >= 0) return mAntiAliasingLevel;
    std::vector<std::string> values;
    Ogre::RenderSystem* rs = mRoot ? mRoot->getRenderSystem() : nullptr;
    if (rs) {
        const Ogre::ConfigOptionMap& options = rs->getConfigOptions();
        auto it = options.find("FSAA");
        if (it != options.end()) values.assign(it->second.possibleValues.begin(), it->second.possibleValues.end());
    }
    mAntiAliasingLevel = antiAliasingLevelFor(values);
    return mAntiAliasingLevel;
}

int MVNOgreContextBase::antiAliasingLevelFor(const std::vector<std::string>& possibleValues) {
    bool has4 = false;
    bool has8 = false;
    for (const std::string& v : possibleValues) {
        if (v == "8") has8 = true;
        if (v == "4") has4 = true;
    }
    return has8 ? 8 : (has4 ? 4 : 0);
}

void MVNOgreContextBase::setup() {
    log_debug(TAG, "setup...");
    mRoot->initialise(false, "OGRE Render Window", Ogre::BLANKSTRING);
    log_debug(TAG, "before createWindow");
    createWindow(mAppName.c_str(), mWidth, mHeight, std::map<std::string, std::string>());
    log_debug(TAG, "after createWindow");
    locateResources();
    initialiseRTShaderSystem();
    loadResources();
    if (!mFrameHooks) mFrameHooks.reset(new FrameHooks(this));
    mRoot->addFrameListener(mFrameHooks.get());
    log_debug(TAG, "setup done");
}

NativeWindowPair MVNOgreContextBase::createWindow(const char* name, int width, int height,
                                                  std::map<std::string, std::string> options) {
    log_debug(TAG, "createWindow...");
    if (!mWindows.empty()) options["currentGLContext"] = "true";
    Ogre::RenderWindowDescription desc = mRoot->getRenderSystem()->getRenderWindowDescription();
    for (const auto& kv : desc.miscParams) options.insert(kv);
    desc.miscParams.clear();
    desc.miscParams.insert(options.begin(), options.end());
    desc.name = name;
    if (width > 0 && height > 0) {
        desc.width = width;
        desc.height = height;
    }
    NativeWindowPair pair;
    pair.render = mRoot->createRenderWindow(desc);
    mWindows.push_back(pair);
    WindowEventUtilities::_addRenderWindow(pair.render);
    log_debug(TAG, "createWindow done");
    return pair;
}

void MVNOgreContextBase::destroyWindow(const std::string& name) {
    for (auto it = mWindows.begin(); it != mWindows.end(); ++it) {
        if (it->render->getName() != name) continue;
        _destroyWindow(*it);
        mWindows.erase(it);
        return;
    }
    OGRE_EXCEPT(Ogre::Exception::ERR_INVALIDPARAMS, "No window named '" + name + "'",
                "Morvane::MVNOgreContextBase::destroyWindow");
}

void MVNOgreContextBase::_destroyWindow(const NativeWindowPair& win) {
    log_debug(TAG, "_destroyWindow...");
    WindowEventUtilities::_removeRenderWindow(win.render);
    mRoot->destroyRenderTarget(win.render);
    log_debug(TAG, "_destroyWindow done");
}

void MVNOgreContextBase::locateResources() {
    log_debug(TAG, "locateResources...");
    Ogre::ResourceGroupManager& rgm = Ogre::ResourceGroupManager::getSingleton();
    std::string resourcesPath = mFSLayer->getConfigFilePath("resources.cfg");
    Ogre::ConfigFile cf;
    if (Ogre::FileSystemLayer::fileExists(resourcesPath)) {
        cf.load(resourcesPath, "\t:=", true);
    } else {
        rgm.addResourceLocation(getDefaultMediaDir(), "FileSystem", Ogre::RGN_DEFAULT);
    }
    // Relative entries are relative to the file, not to the working folder.
    std::string fileName;
    std::string cfgDir;
    Ogre::StringUtil::splitFilename(resourcesPath, fileName, cfgDir);
    for (const auto& section : cf.getSettingsBySection()) {
        for (const auto& entry : section.second) {
            std::string path = entry.second;
            Ogre::StringUtil::trim(path);
            if (path.empty() || path[0] == '.') path = cfgDir + path;
            path = Ogre::FileSystemLayer::resolveBundlePath(path);
            rgm.addResourceLocation(path, entry.first, section.first, false, true);
        }
    }

    if (rgm.getResourceLocationList(Ogre::RGN_INTERNAL).empty()) {
        const std::string mediaDir = getDefaultMediaDir();
        for (const char* sub :
             {"/ShadowVolume", "/Terrain", "/RTShaderLib/materials", "/RTShaderLib/GLSL", "/RTShaderLib/HLSL_Cg"}) {
            rgm.addResourceLocation(mediaDir + sub, "FileSystem", Ogre::RGN_INTERNAL);
        }
    }

    const Ogre::ResourceGroupManager::LocationList& genLocs = rgm.getResourceLocationList(Ogre::RGN_DEFAULT);
    log_error(TAG, "Resource Group '%s' must contain at least one entry", Ogre::RGN_DEFAULT);
    if (genLocs.empty()) {
        OGRE_EXCEPT(Ogre::Exception::ERR_INVALIDPARAMS,
                    std::string("Resource Group '") + Ogre::RGN_DEFAULT + "' must contain at least one entry",
                    "Morvane::MVNOgreContextBase::locateResources");
    }
    std::string arch = genLocs.front().archive->getName();
    std::string type = genLocs.front().archive->getType();
    for (const char* strip : {"Media/../../Tests/Media", "media/../../Tests/Media"}) {
        for (size_t pos; (pos = arch.find(strip)) != std::string::npos;) arch.erase(pos, std::strlen(strip));
    }

    Ogre::GpuProgramManager& gpm = Ogre::GpuProgramManager::getSingleton();
    bool hasCg = false;
    for (Ogre::Plugin* plugin : mRoot->getInstalledPlugins()) {
        if (plugin->getName() == "Cg Program Manager") hasCg = true;
    }
    bool sharedHlslCg = hasCg || gpm.isSyntaxSupported("hlsl");

    rgm.addResourceLocation(arch + "/materials/programs/GLSL", type, Ogre::RGN_DEFAULT);
    if (gpm.isSyntaxSupported("glsles")) {
        rgm.addResourceLocation(arch + "/materials/programs/GLSLES", type, Ogre::RGN_DEFAULT);
    } else if (gpm.isSyntaxSupported("glsl")) {
        rgm.addResourceLocation(arch + "/materials/programs/GLSL120", type, Ogre::RGN_DEFAULT);
        if (gpm.isSyntaxSupported("glsl150")) {
            rgm.addResourceLocation(arch + "/materials/programs/GLSL150", type, Ogre::RGN_DEFAULT);
        }
        if (gpm.isSyntaxSupported("glsl400")) {
            rgm.addResourceLocation(arch + "/materials/programs/GLSL400", type, Ogre::RGN_DEFAULT);
        }
    } else if (gpm.isSyntaxSupported("hlsl")) {
        rgm.addResourceLocation(arch + "/materials/programs/HLSL", type, Ogre::RGN_DEFAULT);
    }
    if (gpm.isSyntaxSupported("spirv")) {
        rgm.addResourceLocation(arch + "/materials/programs/SPIRV", type, Ogre::RGN_DEFAULT);
    }
    if (hasCg) rgm.addResourceLocation(arch + "/materials/programs/Cg", type, Ogre::RGN_DEFAULT);
    if (sharedHlslCg) rgm.addResourceLocation(arch + "/materials/programs/HLSL_Cg", type, Ogre::RGN_DEFAULT);
    log_debug(TAG, "locateResources done");
}

void MVNOgreContextBase::loadResources() {
    log_debug(TAG, "loadResources...");
    Ogre::ResourceGroupManager::getSingleton().initialiseAllResourceGroups();
    log_debug(TAG, "loadResources done");
}

void MVNOgreContextBase::reconfigure(const std::string& renderer, std::map<std::string, std::string>& options) {
    mNextRenderer = renderer;
    Ogre::RenderSystem* rs = mRoot->getRenderSystemByName(renderer);
    if (rs) {
        for (const auto& kv : options) rs->setConfigOption(kv.first, kv.second);
    }
    mRoot->queueEndRendering(true);
}

bool MVNOgreContextBase::initialiseRTShaderSystem() {
    if (!Ogre::RTShader::ShaderGenerator::initialize()) return false;
    mShaderGenerator = Ogre::RTShader::ShaderGenerator::getSingletonPtr();
    if (!mMaterialMgrListener) {
        mMaterialMgrListener = new TechniqueResolver(mShaderGenerator);
        Ogre::MaterialManager::getSingleton().addListener(mMaterialMgrListener);
    }
    return true;
}

void MVNOgreContextBase::destroyRTShaderSystem() {
    if (Ogre::MaterialManager::getSingletonPtr()) {
        Ogre::MaterialManager::getSingleton().setActiveScheme(Ogre::MaterialManager::DEFAULT_SCHEME_NAME);
        if (mMaterialMgrListener) Ogre::MaterialManager::getSingleton().removeListener(mMaterialMgrListener);
    }
    delete mMaterialMgrListener;
    mMaterialMgrListener = nullptr;
    if (mShaderGenerator) {
        Ogre::RTShader::ShaderGenerator::destroy();
        mShaderGenerator = nullptr;
    }
}

void MVNOgreContextBase::setRTSSWriteShadersToDisk(bool write) {
    if (!mShaderGenerator) return;
    if (!write) {
        mShaderGenerator->setShaderCachePath("");
        return;
    }
    std::string path = mFSLayer->getWritablePath("RTShaderCache");
    if (!Ogre::FileSystemLayer::fileExists(path)) Ogre::FileSystemLayer::createDirectory(path);
    mShaderGenerator->setShaderCachePath(path);
}

void MVNOgreContextBase::enableShaderCache() const {
    Ogre::GpuProgramManager::getSingleton().setSaveMicrocodesToCache(true);
    std::string path = mFSLayer->getWritablePath("cache.bin");
    std::ifstream in(path.c_str(), std::ios::binary);
    if (in.is_open()) {
        Ogre::LogManager::getSingleton().logMessage("Loading shader cache from '" + path + "'");
        Ogre::DataStreamPtr stream(new Ogre::FileStreamDataStream(path, &in, false));
        Ogre::GpuProgramManager::getSingleton().loadMicrocodeCache(stream);
    } else {
        Ogre::LogManager::getSingleton().logWarning("Could not open '" + path + "'");
    }
}

void MVNOgreContextBase::shutdown() {
    log_debug(TAG, "shutdown...");
    Ogre::GpuProgramManager* gpm = Ogre::GpuProgramManager::getSingletonPtr();
    if (gpm && gpm->getSaveMicrocodesToCache() && gpm->isCacheDirty()) {
        std::string path = mFSLayer->getWritablePath("cache.bin");
        std::fstream out(path.c_str(), std::ios::out | std::ios::binary);
        if (out.is_open()) {
            Ogre::LogManager::getSingleton().logMessage("Writing shader cache to " + path);
            Ogre::DataStreamPtr stream(new Ogre::FileStreamDataStream(path, &out, false));
            gpm->saveMicrocodeCache(stream);
        } else {
            Ogre::LogManager::getSingleton().logWarning("Cannot open shader cache for writing " + path);
        }
    }
    destroyRTShaderSystem();
    while (!mWindows.empty()) {
        _destroyWindow(mWindows.back());
        mWindows.pop_back();
    }
    delete mOverlaySystem;
    mOverlaySystem = nullptr;
    mInputListeners.clear();
    log_debug(TAG, "shutdown done");
}

void MVNOgreContextBase::closeApp() {
    log_debug(TAG, "closeApp...");
    if (mRoot) {
        shutdown();
        if (mFrameHooks) mRoot->removeFrameListener(mFrameHooks.get());
        try {
            mRoot->saveConfig();
        } catch (const std::exception& e) {
            log_warn(TAG, "saveConfig failed: %s", e.what());
        }
        delete mRoot;
        mRoot = nullptr;
    } else {
        // A root that failed to build leaves only the overlay system behind.
        delete mOverlaySystem;
        mOverlaySystem = nullptr;
    }
    delete Ogre::LogManager::getSingletonPtr();
    log_debug(TAG, "closeApp done");
}

void MVNOgreContextBase::renderOneFrame() {
    pollEvents();
    Ogre::RenderWindow* win = getRenderWindow();
    if (win) win->update(true);
}

void MVNOgreContextBase::pollEvents() { WindowEventUtilities::messagePump(); }

Ogre::RenderWindow* MVNOgreContextBase::getRenderWindow() {
    return mWindows.empty() ? nullptr : mWindows.front().render;
}

void MVNOgreContextBase::resyncRenderTarget() {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    Ogre::RenderSystem* rs = root ? root->getRenderSystem() : nullptr;
    Ogre::RenderWindow* window = getRenderWindow();
    if (rs && window && window->getNumViewports() > 0) rs->_setViewport(window->getViewport(0));
}

void MVNOgreContextBase::resyncCurrentRenderTarget() {
    if (MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext()) context->resyncRenderTarget();
}

int MVNOgreContextBase::getDisplayWidth() {
    Ogre::RenderWindow* win = getRenderWindow();
    if (!win) {
        log_error(TAG, "render window is null");
        return mWidth;
    }
    return static_cast<int>(win->getWidth());
}

int MVNOgreContextBase::getDisplayHeight() {
    Ogre::RenderWindow* win = getRenderWindow();
    if (!win) {
        log_error(TAG, "render window is null");
        return mHeight;
    }
    return static_cast<int>(win->getHeight());
}

void MVNOgreContextBase::addInputListener(InputListener* listener) {
    if (mWindows.empty()) {
        OGRE_EXCEPT(Ogre::Exception::ERR_INVALIDPARAMS, "!mWindows.empty() failed. create a window first",
                    "Morvane::MVNOgreContextBase::addInputListener");
    }
    addInputListener(mWindows.front().native, listener);
}

void MVNOgreContextBase::removeInputListener(InputListener* listener) {
    if (mWindows.empty()) {
        OGRE_EXCEPT(Ogre::Exception::ERR_INVALIDPARAMS, "!mWindows.empty() failed. create a window first",
                    "Morvane::MVNOgreContextBase::removeInputListener");
    }
    removeInputListener(mWindows.front().native, listener);
}

void MVNOgreContextBase::setWindowGrab(bool grab) {
    if (mWindows.empty()) {
        OGRE_EXCEPT(Ogre::Exception::ERR_INVALIDPARAMS, "!mWindows.empty() failed. create a window first",
                    "Morvane::MVNOgreContextBase::setWindowGrab");
    }
    setWindowGrab(mWindows.front().native, grab);
}

void MVNOgreContextBase::addInputListener(SDL_Window* window, InputListener* listener) {
    mInputListeners.insert(std::make_pair(0u, listener));
}

void MVNOgreContextBase::removeInputListener(SDL_Window* window, InputListener* listener) {
    mInputListeners.erase(std::make_pair(0u, listener));
}

void MVNOgreContextBase::_fireInputEvent(const OgreBites::Event& event, unsigned int windowId) const {
    OgreBites::Event evt = event;
    for (const auto& entry : mInputListeners) {
        if (entry.first != windowId) continue;
        InputListener& l = *entry.second;
        switch (evt.type) {
            case OgreBites::KEYDOWN: l.keyPressed(evt.key); break;
            case OgreBites::KEYUP: l.keyReleased(evt.key); break;
            case OgreBites::MOUSEBUTTONDOWN: l.mousePressed(evt.button); break;
            case OgreBites::MOUSEBUTTONUP: l.mouseReleased(evt.button); break;
            case OgreBites::MOUSEWHEEL: l.mouseWheelRolled(evt.wheel); break;
            case OgreBites::MOUSEMOTION: l.mouseMoved(evt.motion); break;
            case OgreBites::FINGERDOWN:
                // A press also moves the finger to where it came down.
                l.touchMoved(evt.tfinger);
                l.touchPressed(evt.tfinger);
                break;
            case OgreBites::FINGERUP: l.touchReleased(evt.tfinger); break;
            case OgreBites::FINGERMOTION: l.touchMoved(evt.tfinger); break;
            case OgreBites::TEXTINPUT: l.textInput(evt.text); break;
            default: break;
        }
    }
}

void MVNOgreContextBase::createDummyScene() {
    mWindows.front().render->removeAllViewports();
    Ogre::SceneManager* sm = mRoot->createSceneManager("DefaultSceneManager", "DummyScene");
    sm->addRenderQueueListener(mOverlaySystem);
    Ogre::Camera* cam = sm->createCamera("DummyCamera");
    sm->getRootSceneNode()->attachObject(cam);
    mWindows.front().render->addViewport(cam);
    if (!initialiseRTShaderSystem()) {
        OGRE_EXCEPT(Ogre::Exception::ERR_FILE_NOT_FOUND,
                    "Shader Generator Initialization failed - Core shader libs path not found",
                    "ApplicationContextBase::createDummyScene");
    }
    mShaderGenerator->addSceneManager(sm);
}

void MVNOgreContextBase::destroyDummyScene() {
    if (!mRoot->hasSceneManager("DummyScene")) return;
    Ogre::SceneManager* sm = mRoot->getSceneManager("DummyScene");
    if (mShaderGenerator) mShaderGenerator->removeSceneManager(sm);
    sm->removeRenderQueueListener(mOverlaySystem);
    mWindows.front().render->removeAllViewports();
    mRoot->destroySceneManager(sm);
}

std::string MVNOgreContextBase::getDefaultMediaDir() {
    return Ogre::FileSystemLayer::resolveBundlePath("./Media");
}

void MVNOgreContextBase::_buildScene(const char* scene, const char* light, const char* camera,
                                      Ogre::SceneManager*& sceneManager, Ogre::Camera*& cameraOut) {
    sceneManager = mRoot->createSceneManager("DefaultSceneManager", scene);
    sceneManager->addRenderQueueListener(mOverlaySystem);
    if (mShaderGenerator) mShaderGenerator->addSceneManager(sceneManager);

    Ogre::SceneNode* lightNode = sceneManager->getRootSceneNode()->createChildSceneNode();
    lightNode->attachObject(sceneManager->createLight(light));
    lightNode->setPosition(0, 0, 10000);

    // The camera stands 10000 units away and sees exactly half the height up.
    cameraOut = sceneManager->createCamera(camera);
    cameraOut->setNearClipDistance(5);
    cameraOut->setFarClipDistance(10000);
    cameraOut->setAutoAspectRatio(true);
    double halfHeight = mHeight / 2;
    cameraOut->setFOVy(Ogre::Radian(static_cast<float>(2 * std::atan(halfHeight / 10000))));
    Ogre::SceneNode* camNode = sceneManager->getRootSceneNode()->createChildSceneNode();
    camNode->attachObject(cameraOut);
    camNode->setPosition(0, 0, 10000);
    camNode->lookAt(Ogre::Vector3(0, 0, -1), Ogre::Node::TS_PARENT);
}

void MVNOgreContextBase::_destroyScene(Ogre::SceneManager*& sceneManager, Ogre::Camera*& camera) {
    if (!sceneManager) return;
    if (mShaderGenerator) mShaderGenerator->removeSceneManager(sceneManager);
    sceneManager->removeRenderQueueListener(mOverlaySystem);
    if (getRenderWindow()) getRenderWindow()->removeAllViewports();
    mRoot->destroySceneManager(sceneManager);
    sceneManager = nullptr;
    camera = nullptr;
}

}  // namespace Morvane
