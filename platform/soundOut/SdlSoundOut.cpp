#include <SDL2/SDL.h>

#include "platform/soundOut/SoundOutModule.h"

namespace platform {

namespace {

constexpr Uint16 kBlock = 1024;  // sample frames, 23 ms
constexpr Uint8 kChannels = 2;

class SdlSoundOut : public SoundOut {
  public:
    explicit SdlSoundOut(const Source& source) : source_(source) {}
    ~SdlSoundOut() override {
        if (device_ != 0) SDL_CloseAudioDevice(device_);
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }

    bool open(int rate) {
        SDL_AudioSpec wanted{};
        wanted.freq = rate;
        wanted.format = AUDIO_F32SYS;
        wanted.channels = kChannels;
        wanted.samples = kBlock;
        wanted.callback = fill;
        wanted.userdata = this;
        SDL_AudioSpec got{};
        device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, &got, 0);
        if (device_ == 0) return false;
        blockFrames_ = got.samples;
        SDL_PauseAudioDevice(device_, 0);
        return true;
    }
    int64_t blockFrames() const override { return blockFrames_; }

  private:
    static void fill(void* self, Uint8* bytes, int length) {
        constexpr int frameBytes = kChannels * static_cast<int>(sizeof(float));
        static_cast<SdlSoundOut*>(self)->source_(reinterpret_cast<float*>(bytes), length / frameBytes);
    }

    Source source_;
    SDL_AudioDeviceID device_ = 0;
    int64_t blockFrames_ = kBlock;
};

SoundOut* open(int rate, const SoundOut::Source& source, std::string& failure) {
    SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) {
        failure = SDL_GetError();
        return nullptr;
    }
    auto device = std::make_unique<SdlSoundOut>(source);
    if (device->open(rate)) return device.release();
    failure = SDL_GetError();
    return nullptr;
}

}  // namespace

}  // namespace platform

extern "C" __attribute__((visibility("default"))) platform::SoundOut* multisceneMakeSoundOut(
    int rate, const platform::SoundOut::Source& source, std::string& failure) {
    return platform::open(rate, source, failure);
}
