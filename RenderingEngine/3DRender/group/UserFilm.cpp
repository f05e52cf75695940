#include "group/UserFilm.h"

#include "other/QVMultiSceneRenderShareSettings.h"

namespace multiscene {

using platform::Value;

UserFilm UserFilm::of(const std::string& key, const std::string& sceneIdentifier,
                      const QVMultiSceneRenderShareSettings& settings) {
    const Value stored = settings.computeUserMap(mapKey(key), sceneIdentifier);
    UserFilm film;
    film.framesPerSecond = stored["framesPerSecond"].intValue();
    film.aspectWidth = stored["aspectWidth"].intValue();
    film.aspectHeight = stored["aspectHeight"].intValue();
    film.firstFrame = stored["firstFrame"].integerValue();
    if (stored.has("volume")) film.volume = stored["volume"].floatValue();
    return film;
}

// No input's key holds the character that the program keeps for itself.
std::string UserFilm::mapKey(const std::string& key) { return key + "#film"; }

Value UserFilm::value() const {
    Value::Dictionary stored{
        {"framesPerSecond", framesPerSecond}, {"aspectWidth", aspectWidth}, {"aspectHeight", aspectHeight}};
    if (firstFrame > 0) stored["firstFrame"] = firstFrame;
    if (volume) stored["volume"] = static_cast<double>(*volume);
    return stored;
}

}  // namespace multiscene
