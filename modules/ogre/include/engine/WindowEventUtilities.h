#pragma once
// Window-system glue for engine windows on X11: the listener tables, a
// non-blocking message pump that hands window events to the listeners, and
// the size of the primary screen.
#include <map>
#include <vector>

#include "MVNOgreExport.h"

namespace Ogre {
class RenderWindow;
}

namespace Morvane {

class MVN_OGRE_API WindowEventListener {
public:
    virtual ~WindowEventListener() {}
    virtual void windowMoved(Ogre::RenderWindow* rw) {}
    virtual void windowResized(Ogre::RenderWindow* rw) {}
    // A listener may refuse to let the window close.
    virtual bool windowClosing(Ogre::RenderWindow* rw) { return true; }
    virtual void windowClosed(Ogre::RenderWindow* rw) {}
    virtual void windowFocusChange(Ogre::RenderWindow* rw) {}
};

class MVN_OGRE_API WindowEventUtilities {
public:
    // Drains pending window-system events of the registered windows without
    // blocking. Render thread only.
    static void messagePump();
    static void addWindowEventListener(Ogre::RenderWindow* window, WindowEventListener* listener);
    static void removeWindowEventListener(Ogre::RenderWindow* window, WindowEventListener* listener);
    static void _addRenderWindow(Ogre::RenderWindow* window);
    static void _removeRenderWindow(Ogre::RenderWindow* window);
    // Size of the primary screen of $DISPLAY; false when there is no display.
    static bool getScreenSize(int& width, int& height);

    typedef std::multimap<Ogre::RenderWindow*, WindowEventListener*> WindowEventListeners;
    typedef std::vector<Ogre::RenderWindow*> Windows;

private:
    // One native event (an XEvent) of `window`: passed on to its listeners.
    static void _WndProc(Ogre::RenderWindow* window, const void* nativeEvent);

    static WindowEventListeners _msListeners;
    static Windows _msWindows;
};

}  // namespace Morvane
