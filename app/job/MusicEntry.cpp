#include "app/job/MusicEntry.h"

namespace multiscene {

using platform::Value;

Value musicEntry(const std::string& path, const MusicSettings& settings) {
    return Value::Dictionary{{"type", "bgAudio"},
                             {"audioPath", path},
                             {"audioName", "bg-audio.mp3"},
                             {"volume", settings.volume},
                             {"fpsStart", 0},
                             {"fpsEnd", 100000},
                             {"isLoop", true},
                             {"startSeconds", settings.start},
                             {"fadeInSeconds", settings.fadeIn},
                             {"fadeOutSeconds", settings.fadeOut}};
}

}  // namespace multiscene
