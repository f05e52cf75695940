#include "core/component/QVObject3DSoundSourceComponent.h"

#include "core/QVScene3D.h"
#include "core/SkippedMedia.h"
#include "playback/Playback.h"

namespace multiscene {

static constexpr Key soundSourceKeyList[] = {
    {.name = "audioFilePath",
     .type = KeyType::Text,
     .meaning = "the sound",
     .lookup = KeyLookup::UserPath,
     .required = true,
     .file = KeyFile::Sound},
    {.name = "audioVolume",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "volume, 1 as recorded",
     .lookup = KeyLookup::UserMap,
     .required = true,
     .minimum = 0,
     .maximum = 1},
    {.name = "audioKey", .type = KeyType::Text, .meaning = "the clip's name"},
    {.name = "isLoop",
     .type = KeyType::Bool,
     .fallback = "0",
     .meaning = "repeat the clip in a live preview; a video plays it once"},
};
const KeyTable soundSourceKeys{"QVObject3DSoundSourceComponent", "A sound effect.", &componentKeys,
                               soundSourceKeyList};

static const ComponentTypes::Registration registered(
    "QVObject3DSoundSourceComponent",
    []() -> std::shared_ptr<QVObject3DComponentBase> {
        return std::make_shared<QVObject3DSoundSourceComponent>();
    },
    soundSourceKeys);

float QVObject3DSoundSourceComponent::audioVolume() const {
    const platform::Value& volume = componentInfo()["audioVolume"];
    return settings().valueOrUsers(volume, sceneIdentifier()).floatValue();
}

std::string QVObject3DSoundSourceComponent::audioKeyIndfer() const {
    return KeyReader(soundSourceKeys, componentInfo()).text("audioKey") + sceneIdentifier();
}

std::string QVObject3DSoundSourceComponent::audioPath() const {
    const auto scene = object3D()->scene();
    return settings().computeFilePathUserMap(
        KeyReader(soundSourceKeys, componentInfo()).text("audioFilePath"), sceneIdentifier(),
        scene ? scene->sceneConfigData().sceneResourceFolderPath : std::string());
}

platform::Value QVObject3DSoundSourceComponent::audioEntry(const std::string& path) const {
    return platform::Value(platform::Value::Dictionary{
        {"type", platform::Value("audio")},
        {"audioPath", platform::Value(path)},
        {"audioName", platform::Value(audioKeyIndfer())},
        {"volume", platform::Value(static_cast<double>(audioVolume()))},
        {"isLoop", KeyReader(soundSourceKeys, componentInfo()).value("isLoop")},
        {"fpsStart", platform::Value(sartFps())},
        {"fpsEnd", platform::Value(endFps())},
    });
}

void QVObject3DSoundSourceComponent::updateData(const Tick& tick) {
    const auto scene = object3D()->scene();
    if (!tick.isNew || tick.frame != sartFps() || !scene) return;
    const std::string path = audioPath();
    if (scene->playback().gate().exists(path))
        scene->renderManager().startSoundEffect(audioEntry(path));
    else
        reportSkipped(*object3D(), "missing file",
                      KeyReader(soundSourceKeys, componentInfo()).text("audioFilePath"));
}

void QVObject3DSoundSourceComponent::renderComplete(const Tick& tick) {
    if (tick.frame != endFps()) return;
    if (const auto scene = object3D()->scene()) scene->renderManager().stopSoundEffect(audioKeyIndfer());
}

}  // namespace multiscene
