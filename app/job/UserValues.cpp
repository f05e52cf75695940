#include "app/job/UserValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <set>

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/check/LookedUpKeys.h"
#include "app/check/Suggestion.h"
#include "app/job/AskedKeys.h"
#include "app/job/JobFolder.h"
#include "app/job/UserText.h"
#include "app/job/UserVideo.h"
#include "app/job/VideoPlaces.h"
#include "dataMode/TextSettings.h"
#include "group/UserFilm.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "platform/image/ImageDecoder.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::Value;

namespace {

constexpr int kLeastPhotoSide = 2048;  // pixels
constexpr double kSameRate = 0.005;    // share: 29.97 counts as 30
constexpr int kMostAspect = 1'000'000;

/// Photos may be shown enlarged, so they keep twice the picture's size.
int photoSide(const MediaFormat& format) {
    return std::max(2 * std::max(format.width, format.height), kLeastPhotoSide);
}

/// " (--photo me=FILE)"; empty for a kind that several options give.
std::string optionFor(InputKind kind, const std::string& key) {
    switch (kind) {
        case InputKind::Text:
            return " (--text " + key + "=TEXT)";
        case InputKind::Photo:
            return " (--photo " + key + "=FILE)";
        case InputKind::Video:
            return " (--video " + key + "=FILE)";
        case InputKind::File:
            break;
    }
    return {};
}

class Collector {
  public:
    Collector(const Playable& playable, const JobFolder& job, const MediaFormat& format,
              platform::FileGate& gate, const std::stop_token& stop)
        : asked_(askedKeysOf(playable)),
          identifiers_(playable.group.identifiers()),
          places_(videoPlacesOf(playable.group)),
          job_(job),
          format_(format),
          gate_(gate),
          stop_(stop) {}

    void addPhotoPart(const JobInputs::PhotoPart& part) {
        require(part.key, InputKind::Photo);
        if (!photoParts_.emplace(part.key, part.crop).second)
            throw Error(ErrorKind::Usage, "the part of the photo is given twice", "", part.key);
    }

    void addText(const std::string& key, const std::string& text) {
        const AskedFor& asked = require(key, InputKind::Text);
        const auto* limits = dynamic_cast<const QVUserTextInputModel*>(asked.input.get());
        AcceptedText accepted = acceptText(text, key, limits);
        store(key, accepted.text);
        textScales_[key] = accepted.scale;
        std::ranges::move(accepted.notes, std::back_inserter(notes_));
    }

    void addPhoto(const std::string& key, const fs::path& photo) {
        const AskedFor& asked = require(key, InputKind::Photo);
        const FileGate::Opened opened = openInput(key, photo);
        const fs::path prepared = job_.file("photo-" + std::to_string(stored_.size()));
        const auto* shape = dynamic_cast<const QVUserPhotoInputModel*>(asked.input.get());
        const auto part = photoParts_.extract(key);
        try {
            platform::prepareUserPhoto(opened.file, prepared, aspectOf(shape), photoSide(format_),
                                       {photo.string(), ErrorKind::Input},
                                       part ? part.mapped() : platform::PhotoCrop());
        } catch (const Error& error) {
            throw Error(error.kind(), error.message(), error.file(), key);
        }
        store(key, prepared.string());
    }

    void addVideoVolume(const std::string& key, const std::string& text) {
        require(key, InputKind::Video);
        float volume = -1;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), volume);
        if (result.ec != std::errc() || result.ptr != text.data() + text.size() ||
            !(volume >= 0 && volume <= 1))
            throw Error(ErrorKind::Usage, "\"" + text + "\" is not a volume from 0 to 1", "", key);
        if (!volumes_.emplace(key, volume).second) throw Error(ErrorKind::Usage, "is given twice", "", key);
    }

    void addVideo(const std::string& key, const fs::path& video) {
        const AskedFor& asked = require(key, InputKind::Video);
        openInput(key, video);
        const std::vector<VideoPlace> places = placesOf(key);
        const UserVideo judged =
            judgeUserVideo(video, format_.framesPerSecond, framesWanted(places), gate_, stop_);
        for (const VideoPlace& place : places) requireFits(judged, place, video, key);
        store(key, judged.file.string());
        storeFilm(key, asked);
        noteVideo(judged, places, video, key);
        videoFrames_ = videoFrames_.value_or(judged.frames);
        for (const VideoPlace& place : places)
            if (place.isAsLongAsTheFilm())
                sceneFrames_.try_emplace(kUserVideoFrames + place.identifier, judged.frames);
    }

    void addMediaFile(const fs::path& file) {
        const auto bytes = platform::readFile(file, platform::limitOf("maxMediaFileBytes"), ErrorKind::Input);
        const Value content =
            platform::parseJson({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, file.string());
        if (!content.isDictionary())
            throw Error(ErrorKind::Input, "holds no object from keys to values", file.string());
        // What the command line says wins.
        for (const auto& [key, value] : content.dictionary())
            if (!stored_.contains(key)) addMedia(key, value, file);
    }

    UserValues result(const Playable& playable) {
        if (!photoParts_.empty())
            throw Error(ErrorKind::Input, "a part of the photo is asked for, but no photo is given", "",
                        photoParts_.begin()->first);
        UserValues values;
        for (const auto& [key, volume] : volumes_)
            if (!stored_.contains(key))
                throw Error(ErrorKind::Usage, "no video is given under this key", "", key);
        const bool isLengthGiven = stored_.contains(kUserVideoFrames);
        values.notes = std::move(notes_);
        if (videoFrames_) stored_.try_emplace(kUserVideoFrames, *videoFrames_);
        for (const auto& input : playable.inputs) {
            if (stored_.contains(input->renderMapKey())) continue;
            values.missing.push_back(input->renderMapKey());
            // Without a value a text would show its own key.
            if (asked_[input->renderMapKey()].kind == InputKind::Text)
                spread(values.map, input->renderMapKey(), "");
        }
        for (const auto& [key, value] : playable.group.userMediaMap.dictionary()) values.map[key] = value;
        for (const auto& [key, value] : stored_)
            if (asked_.contains(key)) spread(values.map, key, value);
        if (!isLengthGiven)
            for (const auto& [key, frames] : sceneFrames_) values.map[key] = frames;
        for (const auto& [key, film] : films_) spread(values.map, key, film);
        // What was given for one scene alone wins there.
        for (const auto& [key, film] : filmsOfScenes_) values.map[key] = film;
        for (const auto& [key, value] : stored_)
            if (!asked_.contains(key)) values.map[key] = value;
        addTextScales(values.map);
        return values;
    }

  private:
    /// A short text for one scene is not made smaller by a long one for all.
    void addTextScales(Value::Dictionary& map) const {
        if (std::ranges::all_of(textScales_, [](const auto& text) { return text.second == 1; })) return;
        for (const auto& [key, scale] : textScales_)
            if (asked_.contains(key)) spread(map, kUserTextScale + key, scale);
        for (const auto& [key, scale] : textScales_)
            if (!asked_.contains(key)) map[kUserTextScale + key] = scale;
    }

    static platform::Aspect aspectOf(const QVUserPhotoInputModel* shape) {
        if (!shape || shape->aspectWidth() < 1 || shape->aspectHeight() < 1) return {};
        constexpr int64_t most = kMostAspect;
        return {static_cast<int>(std::min(shape->aspectWidth(), most)),
                static_cast<int>(std::min(shape->aspectHeight(), most))};
    }

    /// The part of a key before the identifier of a scene; all of it when it names no scene.
    std::string inputOf(const std::string& key) const {
        if (asked_.contains(key)) return key;
        for (const std::string& identifier : identifiers_)
            if (key.ends_with(identifier)) {
                const std::string input = key.substr(0, key.size() - identifier.size());
                if (asked_.contains(input)) return input;
            }
        return key;
    }

    /// Where the video under a key is shown: in every scene, or in the one that the key names.
    std::vector<VideoPlace> placesOf(const std::string& key) const {
        const std::string input = inputOf(key);
        std::vector<VideoPlace> places;
        for (const VideoPlace& place : places_)
            if (place.key == input && (input == key || input + place.identifier == key))
                places.push_back(place);
        return places;
    }

    int64_t framesWanted(const std::vector<VideoPlace>& places) const {
        const int64_t most = int64_t{kLongestUserVideo} * format_.framesPerSecond;
        int64_t wanted = readsVideoLength() ? most : 1;
        for (const VideoPlace& place : places) wanted = std::max(wanted, std::min(place.mostFrames, most));
        return wanted;
    }

    /// A scene may take its length from the video without showing it.
    bool readsVideoLength() const {
        return std::any_of(places_.begin(), places_.end(), std::mem_fn(&VideoPlace::isAsLongAsTheFilm));
    }

    std::string lengthText(int64_t frames) const {
        char text[60];
        std::snprintf(text, sizeof text, "%lld frames (%.2f s)", static_cast<long long>(frames),
                      static_cast<double>(frames) / format_.framesPerSecond);
        return text;
    }

    void requireFits(const UserVideo& video, const VideoPlace& place, const fs::path& file,
                     const std::string& key) const {
        if (video.frames < place.leastFrames)
            throw Error(ErrorKind::Input,
                        "is too short: " + lengthText(video.frames) + " at " +
                            std::to_string(format_.framesPerSecond) +
                            " frames a second, and its place needs " + lengthText(place.leastFrames),
                        file.string(), key);
        const int64_t most = int64_t{kLongestUserVideo} * format_.framesPerSecond;
        if (place.isAsLongAsTheFilm() && (!video.isWhole || video.frames > most))
            throw Error(ErrorKind::Input,
                        "is too long: the template plays all of it, at most " +
                            std::to_string(kLongestUserVideo / 60) + " minutes (" +
                            std::to_string(kLongestUserVideo) + " s)",
                        file.string(), key);
    }

    void storeFilm(const std::string& key, const AskedFor& asked) {
        UserFilm film{.framesPerSecond = format_.framesPerSecond};
        if (const auto* shape = dynamic_cast<const QVUserVideoInputModel*>(asked.input.get())) {
            film.aspectWidth =
                static_cast<int32_t>(std::clamp<int64_t>(shape->aspectWidth(), 0, kMostAspect));
            film.aspectHeight =
                static_cast<int32_t>(std::clamp<int64_t>(shape->aspectHeight(), 0, kMostAspect));
        }
        const std::string input = inputOf(key);
        for (const std::string& named : {input, key})
            if (const auto volume = volumes_.find(named); volume != volumes_.end())
                film.volume = volume->second;
        if (input == key)
            films_[UserFilm::mapKey(key)] = film.value();
        else
            filmsOfScenes_[UserFilm::mapKey(input) + key.substr(input.size())] = film.value();
    }

    void noteVideo(const UserVideo& video, const std::vector<VideoPlace>& places, const fs::path& file,
                   const std::string& key) {
        const std::string name = key + ": " + file.filename().string();
        char text[160];
        if (video.rate > 0 && std::abs(video.rate - format_.framesPerSecond) > kSameRate * video.rate) {
            std::snprintf(text, sizeof text,
                          " has %.4g frames a second, the video %d: its pictures are repeated or left out, "
                          "its speed stays",
                          video.rate, format_.framesPerSecond);
            notes_.push_back(name + text);
        }
        int64_t seen = 0;
        for (const VideoPlace& place : places) seen = std::max(seen, place.mostFrames);
        if (places.empty() || (video.isWhole && video.frames <= seen)) return;
        notes_.push_back(name + " is longer than its place: the first " + lengthText(seen) + " are shown");
    }

    void addMedia(const std::string& key, const Value& value, const fs::path& file) {
        if (!value.isString() && !value.isNumber())
            throw Error(ErrorKind::Input,
                        "is " + std::string(typeName(value.type())) + ", not a text, number or path",
                        file.string(), key);
        const AskedFor& asked = requireKnown(key);
        const fs::path path = fs::absolute(file).parent_path() / value.stringValue();
        if (asked.kind == InputKind::Photo)
            addPhoto(key, path);
        else if (asked.kind == InputKind::Video)
            addVideo(key, path);
        else if (asked.kind == InputKind::File)
            addFile(key, path);
        else if (value.isString())
            addText(key, value.stringValue());
        else
            store(key, value);
    }

    void addFile(const std::string& key, const fs::path& path) {
        openInput(key, path);
        store(key, fs::absolute(path).lexically_normal().string());
    }

    /// Opens a file of the user's own and lets the scenes open it.
    FileGate::Opened openInput(const std::string& key, const fs::path& path) {
        gate_.allowFile(path);
        FileGate::Opened opened = gate_.open(path);
        if (opened.verdict == FileGate::Verdict::Allowed) return opened;
        throw Error(ErrorKind::Input, describe(opened.verdict), path.string(), key);
    }

    const AskedFor& requireKnown(const std::string& key) {
        if (const auto found = asked_.find(key); found != asked_.end()) return found->second;
        for (const std::string& identifier : identifiers_) {
            if (!key.ends_with(identifier)) continue;
            const auto found = asked_.find(key.substr(0, key.size() - identifier.size()));
            if (found != asked_.end()) return found->second;
        }
        throw unknownKey(key);
    }

    const AskedFor& require(const std::string& key, InputKind given) {
        const AskedFor& asked = requireKnown(key);
        if (!fits(given, asked.kind))
            throw Error(ErrorKind::Input,
                        std::string("the template asks for ") + inputKindName(asked.kind) + " here" +
                            optionFor(asked.kind, key),
                        "", key);
        return asked;
    }

    /// A file that a scene looks up may be a photo or a video.
    static bool fits(InputKind given, InputKind asked) {
        return given == asked || (given != InputKind::Text && asked == InputKind::File);
    }

    Error unknownKey(const std::string& key) const {
        std::vector<std::string_view> keys;
        for (const auto& [known, asked] : asked_)
            if (asked.input) keys.push_back(known);
        std::string message = "the template does not ask for this";
        if (const std::string remedy = didYouMean(key, keys); !remedy.empty())
            return {ErrorKind::Input, message + "; " + remedy, "", key};
        if (keys.empty()) return {ErrorKind::Input, message, "", key};
        message += "; it asks for";
        for (const std::string_view& known : keys)
            message += (&known == &keys.front() ? " " : ", ") + std::string(known);
        return {ErrorKind::Input, message, "", key};
    }

    void store(const std::string& key, Value value) {
        if (!stored_.emplace(key, std::move(value)).second)
            throw Error(ErrorKind::Usage, "is given twice", "", key);
    }

    void spread(Value::Dictionary& map, const std::string& key, const Value& value) const {
        map[key] = value;
        for (const std::string& identifier : identifiers_) map[key + identifier] = value;
    }

    AskedKeys asked_;
    std::set<std::string> identifiers_;
    const std::vector<VideoPlace> places_;
    const JobFolder& job_;
    const MediaFormat& format_;
    FileGate& gate_;
    const std::stop_token& stop_;
    Value::Dictionary stored_;
    std::optional<int64_t> videoFrames_;          ///< of the first video
    std::map<std::string, int64_t> sceneFrames_;  ///< of the videos that scenes are as long as
    std::map<std::string, float> volumes_;
    Value::Dictionary films_, filmsOfScenes_;
    std::vector<std::string> notes_;
    std::map<std::string, platform::PhotoCrop> photoParts_;  ///< those that are not used yet
    std::map<std::string, double> textScales_;
};

}  // namespace

UserValues collectUserValues(const JobInputs& given, const Playable& playable, const JobFolder& job,
                             const MediaFormat& format, FileGate& gate, const std::stop_token& stop) {
    Collector collector(playable, job, format, gate, stop);
    for (const JobInputs::PhotoPart& part : given.photoParts) collector.addPhotoPart(part);
    for (const JobInputs::Given& text : given.texts) collector.addText(text.key, text.value);
    for (const JobInputs::Given& photo : given.photos) collector.addPhoto(photo.key, photo.value);
    for (const JobInputs::Given& volume : given.videoVolumes)
        collector.addVideoVolume(volume.key, volume.value);
    for (const JobInputs::Given& video : given.videos) collector.addVideo(video.key, video.value);
    if (!given.mediaFile.empty()) collector.addMediaFile(given.mediaFile);
    return collector.result(playable);
}

}  // namespace multiscene
