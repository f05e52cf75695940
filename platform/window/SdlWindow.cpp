#include <SDL2/SDL.h>
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <vector>

#include "platform/window/WindowModule.h"

namespace platform {

namespace {

template <typename Thing, void (*destroy)(Thing*)>
struct Destroy {
    void operator()(Thing* thing) const { destroy(thing); }
};
using WindowPointer = std::unique_ptr<SDL_Window, Destroy<SDL_Window, SDL_DestroyWindow>>;
using RendererPointer = std::unique_ptr<SDL_Renderer, Destroy<SDL_Renderer, SDL_DestroyRenderer>>;
using TexturePointer = std::unique_ptr<SDL_Texture, Destroy<SDL_Texture, SDL_DestroyTexture>>;

constexpr int kSmallest = 160;  // points, of either side

/// Xlib ends the process when its server goes, by an exit() that would run destructors under live threads.
void endAtOnceWithoutServer() {
    using Handler = int (*)(void*);
    using SetHandler = Handler (*)(Handler);
    void* const xlib = ::dlopen("libX11.so.6", RTLD_LAZY | RTLD_NOLOAD);
    if (!xlib) return;
    if (auto* const set = reinterpret_cast<SetHandler>(::dlsym(xlib, "XSetIOErrorHandler")))
        set([](void*) -> int { ::_exit(EXIT_FAILURE); });
}

bool hasGraphicsCard() {
    std::error_code failure;
    for (std::filesystem::directory_iterator entry("/dev/dri", failure), end; !failure && entry != end;
         entry.increment(failure))
        if (entry->path().filename().string().starts_with("renderD")) return true;
    return ::access("/dev/nvidia0", F_OK) == 0;
}

/// OpenGL that the processor does is slower than drawing without it.
bool isDrawnByProcessor(SDL_Renderer* renderer) {
    SDL_RendererInfo info{};
    if (SDL_GetRendererInfo(renderer, &info) != 0 || !std::strstr(info.name, "opengl")) return false;
    using GetString = const unsigned char* (*)(unsigned);
    constexpr unsigned rendererName = 0x1F01;
    auto* const getString = reinterpret_cast<GetString>(SDL_GL_GetProcAddress("glGetString"));
    const auto* const name = getString ? reinterpret_cast<const char*>(getString(rendererName)) : nullptr;
    return name && (std::strstr(name, "llvmpipe") || std::strstr(name, "softpipe"));
}

RendererPointer makeRenderer(SDL_Window* window) {
    const bool isChosen = SDL_GetHint(SDL_HINT_RENDER_DRIVER) != nullptr;
    if (isChosen || hasGraphicsCard()) {
        RendererPointer renderer(SDL_CreateRenderer(window, -1, SDL_RENDERER_ACCELERATED));
        if (renderer && (isChosen || !isDrawnByProcessor(renderer.get()))) return renderer;
    }
    return RendererPointer(SDL_CreateRenderer(window, -1, SDL_RENDERER_SOFTWARE));
}

WindowEvent::Key keyOf(SDL_Keycode code) {
    using Key = WindowEvent::Key;
    switch (code) {
        case SDLK_SPACE:
            return Key::Space;
        case SDLK_LEFT:
            return Key::Left;
        case SDLK_RIGHT:
            return Key::Right;
        case SDLK_UP:
            return Key::Up;
        case SDLK_DOWN:
            return Key::Down;
        case SDLK_HOME:
            return Key::Home;
        case SDLK_END:
            return Key::End;
        case SDLK_ESCAPE:
            return Key::Escape;
        default:
            return code >= SDLK_a && code <= SDLK_z ? Key::Letter : Key::None;
    }
}

/// A picture of the list, as the renderer has it.
class LayerTexture {
  public:
    SDL_Texture* update(SDL_Renderer* renderer, const WindowLayer& layer) {
        const Surface& picture = layer.picture;
        const bool fits = texture_ && picture.width == width_ && picture.height == height_;
        if (!fits) {
            texture_.reset(SDL_CreateTexture(renderer, SDL_PIXELFORMAT_ARGB8888, SDL_TEXTUREACCESS_STREAMING,
                                             picture.width, picture.height));
            width_ = picture.width;
            height_ = picture.height;
        }
        if (!texture_) return nullptr;
        if (!fits || version_ != layer.version)
            SDL_UpdateTexture(texture_.get(), nullptr, picture.pixels, static_cast<int>(picture.stride));
        version_ = layer.version;
        SDL_SetTextureBlendMode(texture_.get(), SDL_BLENDMODE_NONE);
        return texture_.get();
    }

  private:
    TexturePointer texture_;
    int width_ = 0, height_ = 0;
    uint64_t version_ = 0;
};

/// Shrunk, its shape kept, to what the screen has room for.
void fitToScreen(int& width, int& height) {
    SDL_Rect room{};
    constexpr int frame = 40;  // points, for the window's own title and borders
    if (SDL_GetDisplayUsableBounds(0, &room) != 0 || room.w <= 2 * frame || room.h <= 2 * frame) return;
    const double share = std::min({1.0, static_cast<double>(room.w) / width,
                                   static_cast<double>(room.h - (height > room.h ? frame : 0)) / height});
    width = std::max(static_cast<int>(width * share), kSmallest);
    height = std::max(static_cast<int>(height * share), kSmallest);
}

class SdlWindow : public Window {
  public:
    SdlWindow(WindowPointer window, RendererPointer renderer)
        : window_(std::move(window)), renderer_(std::move(renderer)) {}
    ~SdlWindow() override {
        textures_.clear();
        renderer_.reset();
        window_.reset();
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
    }

    int width() const override { return contentSize().first; }
    int height() const override { return contentSize().second; }
    double scale() const override {
        int points = 0;
        SDL_GetWindowSize(window_.get(), &points, nullptr);
        return points > 0 ? static_cast<double>(width()) / points : 1;
    }
    bool isFullScreen() const override {
        return (SDL_GetWindowFlags(window_.get()) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
    }
    void setTitle(const std::string& title) override { SDL_SetWindowTitle(window_.get(), title.c_str()); }
    void setFullScreen(bool isFull) override {
        SDL_SetWindowFullscreen(window_.get(), isFull ? SDL_WINDOW_FULLSCREEN_DESKTOP : 0);
    }

    void resize(int width, int height) override {
        fitToScreen(width, height);
        SDL_SetWindowSize(window_.get(), width, height);
        SDL_SetWindowPosition(window_.get(), SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED);
    }

    std::optional<WindowEvent> next(int milliseconds) override {
        SDL_Event event;
        const bool isThere =
            milliseconds > 0 ? SDL_WaitEventTimeout(&event, milliseconds) : SDL_PollEvent(&event);
        if (!isThere) return std::nullopt;
        do
            if (const auto known = eventOf(event)) return known;
        while (SDL_PollEvent(&event));
        return std::nullopt;
    }

    bool show(std::span<const WindowLayer> layers) override {
        constexpr Uint32 unseen = SDL_WINDOW_HIDDEN | SDL_WINDOW_MINIMIZED;
        if ((SDL_GetWindowFlags(window_.get()) & unseen) != 0) return false;
        if (textures_.size() < layers.size()) textures_.resize(layers.size());
        constexpr Uint8 ground = 16;
        SDL_SetRenderDrawColor(renderer_.get(), ground, ground, ground, SDL_ALPHA_OPAQUE);
        SDL_RenderClear(renderer_.get());
        for (size_t index = 0; index < layers.size(); ++index) draw(layers[index], textures_[index]);
        SDL_RenderPresent(renderer_.get());
        return true;
    }

  private:
    std::pair<int, int> contentSize() const {
        std::pair<int, int> size{0, 0};
        SDL_GetRendererOutputSize(renderer_.get(), &size.first, &size.second);
        return size;
    }

    void draw(const WindowLayer& layer, LayerTexture& texture) {
        if (layer.picture.width <= 0 || layer.picture.height <= 0) return;
        const SDL_Rect place{layer.x, layer.y, layer.width, layer.height};
        if (SDL_Texture* const shown = texture.update(renderer_.get(), layer))
            SDL_RenderCopy(renderer_.get(), shown, nullptr, &place);
    }

    std::optional<WindowEvent> eventOf(const SDL_Event& event) {
        using Kind = WindowEvent::Kind;
        switch (event.type) {
            case SDL_QUIT:
                return WindowEvent{.kind = Kind::Close};
            case SDL_WINDOWEVENT:
                return WindowEvent{.kind = event.window.event == SDL_WINDOWEVENT_CLOSE ? Kind::Close
                                                                                       : Kind::Redraw};
            case SDL_RENDER_TARGETS_RESET:
            case SDL_RENDER_DEVICE_RESET:
                textures_.clear();
                return WindowEvent{.kind = Kind::Redraw};
            case SDL_KEYDOWN:
                return keyEvent(event.key);
            case SDL_MOUSEBUTTONDOWN:
            case SDL_MOUSEBUTTONUP:
                if (event.button.button != SDL_BUTTON_LEFT) return std::nullopt;
                return mouseEvent(event.type == SDL_MOUSEBUTTONDOWN ? Kind::Press : Kind::Release,
                                  event.button.x, event.button.y);
            case SDL_MOUSEMOTION:
                return mouseEvent((event.motion.state & SDL_BUTTON_LMASK) != 0 ? Kind::Drag : Kind::Moved,
                                  event.motion.x, event.motion.y);
            default:
                return std::nullopt;
        }
    }

    static std::optional<WindowEvent> keyEvent(const SDL_KeyboardEvent& event) {
        WindowEvent known{.kind = WindowEvent::Kind::Key};
        known.key = keyOf(event.keysym.sym);
        if (known.key == WindowEvent::Key::None) return std::nullopt;
        if (known.key == WindowEvent::Key::Letter)
            known.letter = static_cast<char>('a' + (event.keysym.sym - SDLK_a));
        known.hasShift = (event.keysym.mod & KMOD_SHIFT) != 0;
        return known;
    }

    WindowEvent mouseEvent(WindowEvent::Kind kind, int x, int y) const {
        const double pixels = scale();
        return {.kind = kind, .x = static_cast<int>(x * pixels), .y = static_cast<int>(y * pixels)};
    }

    WindowPointer window_;
    RendererPointer renderer_;
    std::vector<LayerTexture> textures_;
};

/// Where there is no screen the library takes to one that nobody sees.
bool isSeenByNobody() {
    if (SDL_GetHint(SDL_HINT_VIDEODRIVER)) return false;  // somebody wants it so
    const std::string_view driver = SDL_GetCurrentVideoDriver();
    return driver == "offscreen" || driver == "dummy" || driver == "evdev";
}

Window* open(const WindowSettings& settings, std::string& failure) {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "linear");
    SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
    if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        failure = SDL_GetError();
        return nullptr;
    }
    if (isSeenByNobody()) {
        failure = "there is no screen (DISPLAY, WAYLAND_DISPLAY)";
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        return nullptr;
    }
    // Else a window drawn by the processor is put on the screen by OpenGL that the processor does; other
    // drivers know no other way.
    if (SDL_GetCurrentVideoDriver() == std::string_view("x11"))
        SDL_SetHint(SDL_HINT_FRAMEBUFFER_ACCELERATION, "0");
    endAtOnceWithoutServer();
    int width = settings.width, height = settings.height;
    fitToScreen(width, height);
    const Uint32 flags =
        SDL_WINDOW_RESIZABLE | (settings.usesEveryPixel ? Uint32{SDL_WINDOW_ALLOW_HIGHDPI} : Uint32{0});
    WindowPointer window(SDL_CreateWindow(settings.title.c_str(), SDL_WINDOWPOS_CENTERED,
                                          SDL_WINDOWPOS_CENTERED, width, height, flags));
    RendererPointer renderer = window ? makeRenderer(window.get()) : nullptr;
    if (!renderer) {
        failure = SDL_GetError();
        window.reset();
        SDL_QuitSubSystem(SDL_INIT_VIDEO);
        return nullptr;
    }
    SDL_SetWindowMinimumSize(window.get(), kSmallest, kSmallest);
    return new SdlWindow(std::move(window), std::move(renderer));
}

}  // namespace

}  // namespace platform

extern "C" __attribute__((visibility("default"))) platform::Window* multisceneMakeWindow(
    const platform::WindowSettings& settings, std::string& failure) {
    return platform::open(settings, failure);
}
