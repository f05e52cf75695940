// A window on the screen that shows pictures and hears keys and mouse.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "platform/pixels/Surface.h"

namespace platform {

struct WindowEvent {
    enum class Kind { Close, Key, Press, Drag, Release, Moved, Redraw };
    enum class Key { None, Space, Left, Right, Up, Down, Home, End, Escape, Letter };

    Kind kind = Kind::Redraw;
    Key key = Key::None;
    char letter = 0;  ///< of Key::Letter, small
    bool hasShift = false;
    int x = 0, y = 0;  ///< of the mouse, pixels of the window's content, y down
};

/// One picture on the window's content, the later ones over the earlier ones; none is transparent.
struct WindowLayer {
    Surface picture;                          ///< read before show() returns
    uint64_t version = 0;                     ///< another number: another picture in this place of the list
    int x = 0, y = 0, width = 0, height = 0;  ///< where it lies; another size than its own: scaled
};

/// One thread: the one that has made it. Nothing waits for the screen: what cannot be shown at once, as on a
/// hidden window, is not shown.
class Window {
  public:
    virtual ~Window() = default;

    /// Pixels of the content.
    virtual int width() const = 0;
    virtual int height() const = 0;
    /// Pixels a point of the desktop, in which mice and window sizes are measured.
    virtual double scale() const = 0;
    virtual bool isFullScreen() const = 0;

    virtual void setTitle(const std::string& title) = 0;
    virtual void setFullScreen(bool isFull) = 0;
    /// Of the content, in points; smaller where the screen is.
    virtual void resize(int width, int height) = 0;
    /// The next thing that has happened; waits `milliseconds` for it at most.
    virtual std::optional<WindowEvent> next(int milliseconds) = 0;
    /// True when something was put on the screen.
    virtual bool show(std::span<const WindowLayer> layers) = 0;
};

/// How a window begins, in points.
struct WindowSettings {
    std::string title;
    int width = 0, height = 0;    ///< of the content; smaller where the screen is
    bool usesEveryPixel = false;  ///< on screens with several pixels a point
};

/// Opens a window. Throws Error(Failed): no screen, or a program built without windows.
std::unique_ptr<Window> openWindow(const WindowSettings& settings);

}  // namespace platform
