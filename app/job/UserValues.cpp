#include "app/job/UserValues.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <set>

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/check/LookedUpKeys.h"
#include "app/check/Suggestion.h"
#include "app/job/AskedKeys.h"
#include "app/job/PhotoPart.h"
#include "app/job/PreparedFiles.h"
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
    Collector(const Playable& playable, PreparedFiles& files, const MediaFormat& format,
              platform::FileGate& gate, const std::stop_token& stop)
        : asked_(askedKeysOf(playable)),
          identifiers_(playable.group.identifiers()),
          places_(videoPlacesOf(playable.group)),
          files_(files),
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
        const auto* shape = dynamic_cast<const QVUserPhotoInputModel*>(asked.input.get());
        const auto part = photoParts_.extract(key);
        try {
            const fs::path prepared = files_.photo(
                opened.file,
                {aspectOf(shape), photoSide(format_), part ? part.mapped() : platform::PhotoCrop()},
                {photo.string(), ErrorKind::Input});
            store(key, prepared.string());
        } catch (const Error& error) {
            throw Error(error.kind(), error.message(), error.file(), key);
        }
    }

    void addVideoVolume(const std::string& key, const std::string& text) {
        setVideoVolume(key, numberOf(text).value_or(-1), ErrorKind::Usage);
    }

    void addVideoStart(const std::string& key, const std::string& text) {
        setVideoStart(key, numberOf(text).value_or(-1), ErrorKind::Usage);
    }

    void addVideo(const std::string& key, const fs::path& video) {
        const AskedFor& asked = require(key, InputKind::Video);
        openInput(key, video);
        const std::vector<VideoPlace> places = placesOf(key);
        const UserVideo judged = files_.video(video, format_.framesPerSecond, firstFrameOf(key),
                                              framesWanted(places), gate_, stop_);
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
        addMedia(content, file);
    }

    /// `file` holds it, and its relative paths begin there.
    void addMedia(const Value& content, const fs::path& file) {
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
        for (const auto* asked : {&volumes_, &starts_})
            for (const auto& [key, number] : *asked)
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
    static std::optional<double> numberOf(const std::string& text) {
        double number = 0;
        const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
        const bool isNumber = result.ec == std::errc() && result.ptr == text.data() + text.size();
        return isNumber ? std::optional(number) : std::nullopt;
    }

    void setVideoVolume(const std::string& key, double volume, ErrorKind blame) {
        require(key, InputKind::Video);
        if (!(volume >= 0 && volume <= 1)) throw Error(blame, "the volume is no number from 0 to 1", "", key);
        if (!volumes_.emplace(key, volume).second) throw Error(ErrorKind::Usage, "is given twice", "", key);
    }

    void setVideoStart(const std::string& key, double seconds, ErrorKind blame) {
        require(key, InputKind::Video);
        constexpr auto most = platform::limitOf<double>("maxMusicSeconds");
        if (!(seconds >= 0 && seconds <= most))
            throw Error(blame, "the start is no number of seconds", "", key);
        if (!starts_.emplace(key, seconds).second) throw Error(ErrorKind::Usage, "is given twice", "", key);
    }

    /// What was said for this key, or for it in all scenes.
    std::optional<double> numberFor(const std::string& key,
                                    const std::map<std::string, double>& numbers) const {
        for (const std::string& named : {key, inputOf(key)})
            if (const auto found = numbers.find(named); found != numbers.end()) return found->second;
        return std::nullopt;
    }

    int64_t firstFrameOf(const std::string& key) const {
        return std::llround(numberFor(key, starts_).value_or(0) * format_.framesPerSecond);
    }

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
        UserFilm film{.framesPerSecond = format_.framesPerSecond, .firstFrame = firstFrameOf(key)};
        if (const auto* shape = dynamic_cast<const QVUserVideoInputModel*>(asked.input.get())) {
            film.aspectWidth =
                static_cast<int32_t>(std::clamp<int64_t>(shape->aspectWidth(), 0, kMostAspect));
            film.aspectHeight =
                static_cast<int32_t>(std::clamp<int64_t>(shape->aspectHeight(), 0, kMostAspect));
        }
        const std::string input = inputOf(key);
        if (const auto volume = numberFor(key, volumes_)) film.volume = static_cast<float>(*volume);
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

    /// {"file": PATH} and what is wanted of it.
    void addFileOf(const std::string& key, const Value& value, const fs::path& file) {
        const AskedFor& asked = requireKnown(key);
        const bool isVideo = asked.kind == InputKind::Video;
        for (const auto& [name, wanted] : value.dictionary()) {
            const bool isKnown =
                name == "file" || (isVideo ? name == "start" || name == "volume"
                                           : name == "crop" && asked.kind == InputKind::Photo);
            if (!isKnown)
                throw Error(ErrorKind::Input, "holds \"" + name + "\", which is not known here",
                            file.string(), key);
        }
        if (!value["file"].isString()) throw Error(ErrorKind::Input, "holds no \"file\"", file.string(), key);
        if (value.has("crop")) addPhotoPart({key, cropOf(value["crop"], key, file)});
        const auto number = [&](const char* name) {
            return value[name].isNumber() ? value[name].doubleValue() : -1;
        };
        if (value.has("start")) setVideoStart(key, number("start"), ErrorKind::Input);
        if (value.has("volume")) setVideoVolume(key, number("volume"), ErrorKind::Input);
        addMedia(key, value["file"], file);
    }

    static platform::PhotoCrop cropOf(const Value& crop, const std::string& key, const fs::path& file) {
        std::array<double, 5> numbers{};
        constexpr std::array names{"x", "y", "width", "height", "angle"};
        bool isWhole = crop.isDictionary();
        for (size_t i = 0; i < names.size(); ++i) {
            numbers[i] = crop[names[i]].doubleValue();
            isWhole =
                isWhole && (crop[names[i]].isNumber() || (i + 1 == names.size() && !crop.has(names[i])));
        }
        const auto part = photoPart(numbers[0], numbers[1], numbers[2], numbers[3], numbers[4]);
        if (isWhole && part) return *part;
        throw Error(
            ErrorKind::Input,
            "the crop is no x, y, width and height from 0 to 1 that lie inside the picture, and an angle",
            file.string(), key);
    }

    void addMedia(const std::string& key, const Value& value, const fs::path& file) {
        if (value.isDictionary()) return addFileOf(key, value, file);
        if (!value.isString() && !value.isNumber())
            throw Error(ErrorKind::Input,
                        "is " + std::string(typeName(value.type())) + ", not a text, number or path",
                        file.string(), key);
        const AskedFor& asked = requireKnown(key);
        const fs::path folder = file.empty() ? fs::path("/") : fs::absolute(file).parent_path();
        const fs::path path = folder / value.stringValue();
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
    PreparedFiles& files_;
    const MediaFormat& format_;
    FileGate& gate_;
    const std::stop_token& stop_;
    Value::Dictionary stored_;
    std::optional<int64_t> videoFrames_;              ///< of the first video
    std::map<std::string, int64_t> sceneFrames_;      ///< of the videos that scenes are as long as
    std::map<std::string, double> volumes_, starts_;  ///< the latter in seconds
    Value::Dictionary films_, filmsOfScenes_;
    std::vector<std::string> notes_;
    std::map<std::string, platform::PhotoCrop> photoParts_;  ///< those that are not used yet
    std::map<std::string, double> textScales_;
};

}  // namespace

UserValues collectUserValues(const JobInputs& given, const Playable& playable, PreparedFiles& files,
                             const MediaFormat& format, FileGate& gate, const std::stop_token& stop) {
    Collector collector(playable, files, format, gate, stop);
    for (const JobInputs::PhotoPart& part : given.photoParts) collector.addPhotoPart(part);
    for (const JobInputs::Given& text : given.texts) collector.addText(text.key, text.value);
    for (const JobInputs::Given& photo : given.photos) collector.addPhoto(photo.key, photo.value);
    for (const JobInputs::Given& volume : given.videoVolumes)
        collector.addVideoVolume(volume.key, volume.value);
    for (const JobInputs::Given& start : given.videoStarts) collector.addVideoStart(start.key, start.value);
    for (const JobInputs::Given& video : given.videos) collector.addVideo(video.key, video.value);
    if (given.media) collector.addMedia(given.media, {});
    if (!given.mediaFile.empty()) collector.addMediaFile(given.mediaFile);
    UserValues values = collector.result(playable);
    files.endRound();
    return values;
}

}  // namespace multiscene
