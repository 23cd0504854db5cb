#include "engine/WindowEventUtilities.h"

#include <OgreRenderWindow.h>
#include <X11/Xlib.h>

#include <algorithm>

namespace Morvane {

WindowEventUtilities::WindowEventListeners WindowEventUtilities::_msListeners;
WindowEventUtilities::Windows WindowEventUtilities::_msWindows;

void WindowEventUtilities::messagePump() {
    // A listener may remove its window while events are handed out.
    Windows windows = _msWindows;
    for (Ogre::RenderWindow* win : windows) {
        Display* display = nullptr;
        win->getCustomAttribute("XDISPLAY", &display);
        if (!display) continue;
        ::Window xid = 0;
        win->getCustomAttribute("WINDOW", &xid);
        XEvent event;
        while (XCheckWindowEvent(display, xid, StructureNotifyMask | VisibilityChangeMask | FocusChangeMask,
                                 &event)) {
            _WndProc(win, &event);
        }
        // Close requests are client messages, which no event mask selects.
        while (XCheckTypedWindowEvent(display, xid, ClientMessage, &event)) _WndProc(win, &event);
    }
}

void WindowEventUtilities::_WndProc(Ogre::RenderWindow* win, const void* nativeEvent) {
    const XEvent& event = *static_cast<const XEvent*>(nativeEvent);
    auto range = _msListeners.equal_range(win);
    switch (event.type) {
        case ClientMessage: {
            Atom deleteAtom = 0;
            win->getCustomAttribute("ATOM", &deleteAtom);
            if (static_cast<Atom>(event.xclient.data.l[0]) != deleteAtom) break;
            bool close = true;
            for (auto it = range.first; it != range.second; ++it) {
                if (!it->second->windowClosing(win)) close = false;
            }
            if (!close) break;
            for (auto it = range.first; it != range.second; ++it) it->second->windowClosed(win);
            win->destroy();
            break;
        }
        case ConfigureNotify: {
            unsigned int oldWidth, oldHeight, depth;
            int oldLeft, oldTop;
            win->getMetrics(oldWidth, oldHeight, depth, oldLeft, oldTop);
            win->windowMovedOrResized();
            unsigned int newWidth, newHeight;
            int newLeft, newTop;
            win->getMetrics(newWidth, newHeight, depth, newLeft, newTop);
            if (newLeft != oldLeft || newTop != oldTop) {
                for (auto it = range.first; it != range.second; ++it) it->second->windowMoved(win);
            }
            if (newWidth != oldWidth || newHeight != oldHeight) {
                for (auto it = range.first; it != range.second; ++it) it->second->windowResized(win);
            }
            break;
        }
        case FocusIn:
        case FocusOut: {
            bool active = event.type == FocusIn;
            if (win->isDeactivatedOnFocusChange()) win->setActive(active);
            for (auto it = range.first; it != range.second; ++it) it->second->windowFocusChange(win);
            break;
        }
        case MapNotify:
        case UnmapNotify:
            win->setVisible(event.type == MapNotify);
            for (auto it = range.first; it != range.second; ++it) it->second->windowFocusChange(win);
            break;
        default:
            break;
    }
}

void WindowEventUtilities::addWindowEventListener(Ogre::RenderWindow* window, WindowEventListener* listener) {
    _msListeners.insert(std::make_pair(window, listener));
}

void WindowEventUtilities::removeWindowEventListener(Ogre::RenderWindow* window,
                                                     WindowEventListener* listener) {
    auto range = _msListeners.equal_range(window);
    for (auto it = range.first; it != range.second; ++it) {
        if (it->second == listener) {
            _msListeners.erase(it);
            return;
        }
    }
}

void WindowEventUtilities::_addRenderWindow(Ogre::RenderWindow* window) { _msWindows.push_back(window); }

void WindowEventUtilities::_removeRenderWindow(Ogre::RenderWindow* window) {
    _msWindows.erase(std::remove(_msWindows.begin(), _msWindows.end(), window), _msWindows.end());
    _msListeners.erase(window);
}

bool WindowEventUtilities::getScreenSize(int& width, int& height) {
    Display* display = XOpenDisplay(nullptr);
    if (!display) return false;
    int screen = DefaultScreen(display);
    width = DisplayWidth(display, screen);
    height = DisplayHeight(display, screen);
    XCloseDisplay(display);
    return true;
}

}  // namespace Morvane
