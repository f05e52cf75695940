#include "platform/soundOut/SoundOut.h"

#include "platform/base/Error.h"
#include "platform/base/Module.h"
#include "platform/soundOut/SoundOutModule.h"

namespace platform {

std::unique_ptr<SoundOut> openSoundOut(int rate, SoundOut::Source source) {
    auto* const make = reinterpret_cast<MakeSoundOut*>(moduleFunction("multiscene_sound", kMakeSoundOut));
    std::string failure;
    std::unique_ptr<SoundOut> device(make(rate, source, failure));
    if (!device) throw Error(ErrorKind::Failed, "no sound: " + failure);
    return device;
}

}  // namespace platform
