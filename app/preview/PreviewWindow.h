// The window of a preview: shows, keeps the time, obeys keys and mouse.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/preview/PreviewFace.h"
#include "app/preview/PreviewFeed.h"
#include "app/preview/PreviewPictures.h"
#include "app/preview/PreviewSound.h"
#include "platform/fence/Channel.h"
#include "platform/watch/FileWatch.h"
#include "platform/window/Window.h"

namespace multiscene {

struct PreviewSettings {
    bool isWatching = false;
    std::vector<std::filesystem::path> watched;  ///< folders and files that are followed
};

/// Lives in a process of its own, beside the program and the worker that draws; has one thread besides those
/// of its feed and its sound.
///
/// The program says (Message::Kind::Request): "worker", with a connection to a new one; "lost" and why: there
/// is none for the moment. It is told (Message::Kind::Answer) "again" when another one is wanted and "closed"
/// at an orderly end.
class PreviewWindow {
  public:
    /// `note` takes what the user should know.
    PreviewWindow(platform::Channel& program, PreviewSettings settings,
                  std::function<void(const std::string&)> note);

    /// Until the window is closed or the program wants no more of it. Throws platform::Error.
    void run();

  private:
    // What comes in
    void hearProgram();
    void takeNews();
    void open(PreviewVideo video);
    void setFrames(int64_t frames);
    void followFiles();
    void tell(const std::string& what);
    void refuse(const std::string& text);
    void replaceWorker();

    // Events
    void obeyEvents();
    void obey(const platform::WindowEvent& event);
    void obeyKey(const platform::WindowEvent& event);
    void obeyLetter(char letter);
    void obeyMouse(const platform::WindowEvent& event);
    void beginDragging();
    void endDragging();
    void step(int64_t frames);
    void seek(int64_t frame, bool isOnTheWay = false);
    void setPlaying(bool isPlaying);
    void savePicture();

    // Time
    void keepTime();
    void beginWhenReady();
    void endOrLoop();
    void feedSound();
    int64_t frameNow();
    int64_t frameAt(int64_t position) const;
    int64_t positionOf(int64_t frame) const;
    int64_t lastFrame() const;

    // The screen
    void makeWindow();
    std::unique_ptr<platform::Window> openWindow(int width, int height) const;
    int waitingTime() const;
    bool isToBeShown();
    void show();
    platform::WindowLayer pictureLayer(int width, int height) const;
    std::string timeText();
    std::string stateText() const;
    std::string overlayText();
    void say(const std::string& text);

    platform::Channel& program_;
    const PreviewSettings settings_;
    const std::function<void(const std::string&)> note_;
    std::optional<platform::FileWatch> watch_;
    PreviewSound sound_;
    std::unique_ptr<PreviewFeed> feed_;
    std::unique_ptr<platform::Window> window_;
    PreviewFace face_;
    PreviewPictures pictures_;

    std::optional<PreviewVideo> video_;
    std::string fault_;  ///< why what the files say now is not shown
    std::string said_;   ///< for a moment
    double saidAt_ = 0, openedAt_ = 0, shownAt_ = 0;
    int64_t goal_ = 0;  ///< the frame that is to be seen while time stands
    bool isPlaying_ = false, wantsToPlay_ = true, isLooping_ = false, isMuted_ = false, hasOverlay_ = false;
    bool isDragging_ = false, playsAfterDragging_ = false, isClosed_ = false, mustShow_ = true;
    bool isFreshWorker_ = true;  ///< has shown nothing yet
};

}  // namespace multiscene
