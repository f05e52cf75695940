#include "app/Job/UserValues.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <set>

#include "app/Check/LookedUpKeys.h"
#include "app/Check/Suggestion.h"
#include "app/Job/AskedKeys.h"
#include "app/Job/JobFolder.h"
#include "app/Job/UserText.h"
#include "app/Job/UserVideo.h"
#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "dataMode/TextSettings.h"
#include "platform/base/FileGate.h"
#include "platform/base/Json.h"
#include "platform/image/ImageDecoder.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::FileGate;
using platform::Value;

namespace {

constexpr uint64_t kMaxMediaFileBytes = 4u << 20;
constexpr int kLeastPhotoSide = 2048;  // pixels

/// Photos may be shown enlarged, so they keep twice the picture's size.
int photoSide(const MediaFormat& format) {
    return std::max(2 * std::max(format.width, format.height), kLeastPhotoSide);
}

class Collector {
  public:
    Collector(const Playable& playable, const JobFolder& job, const MediaFormat& format,
              const std::stop_token& stop)
        : asked_(askedKeysOf(playable)),
          identifiers_(playable.identifiers()),
          job_(job),
          format_(format),
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
        platform::prepareUserPhoto(opened.file, prepared, aspectOf(shape), photoSide(format_),
                                   {photo.string(), ErrorKind::Input},
                                   part ? part.mapped() : platform::PhotoCrop());
        store(key, prepared.string());
    }

    void addVideo(const std::string& key, const fs::path& video) {
        require(key, InputKind::Video);
        openInput(key, video);
        const UserVideo prepared =
            userVideoAtRate(fs::absolute(video).lexically_normal(), format_.framesPerSecond,
                            job_.file("video-" + std::to_string(stored_.size()) + ".mp4"), stop_);
        store(key, prepared.file.string());
        videoFrames_ = videoFrames_.value_or(prepared.frames);
    }

    void addMediaFile(const fs::path& file) {
        const auto bytes = platform::readFile(file, kMaxMediaFileBytes, ErrorKind::Input);
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
        values.notes = std::move(notes_);
        if (videoFrames_) stored_.try_emplace(kUserVideoFrames, *videoFrames_);
        for (const auto& input : playable.inputs) {
            if (stored_.contains(input->renderMapKey())) continue;
            values.missing.push_back(input->renderMapKey());
            // Without a value a text would show its own key.
            if (asked_[input->renderMapKey()].kind == InputKind::Text)
                spread(values.map, input->renderMapKey(), "");
        }
        for (const auto& [key, value] : playable.userMediaMap.dictionary()) values.map[key] = value;
        for (const auto& [key, value] : stored_)
            if (asked_.contains(key)) spread(values.map, key, value);
        // What was given for one scene alone wins there.
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
        constexpr int64_t most = 1'000'000;
        return {static_cast<int>(std::min(shape->aspectWidth(), most)),
                static_cast<int>(std::min(shape->aspectHeight(), most))};
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
    static FileGate::Opened openInput(const std::string& key, const fs::path& path) {
        FileGate::shared().allowFile(path);
        FileGate::Opened opened = FileGate::shared().open(path);
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
                        std::string("the template asks for ") + inputKindName(asked.kind) + " here", "", key);
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
        for (const std::string_view known : keys) message += " " + std::string(known);
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
    const JobFolder& job_;
    const MediaFormat& format_;
    const std::stop_token& stop_;
    Value::Dictionary stored_;
    std::map<std::string, double> textScales_;
    std::vector<std::string> notes_;
    std::map<std::string, platform::PhotoCrop> photoParts_;  ///< those that are not used yet
    std::optional<int64_t> videoFrames_;
};

}  // namespace

UserValues collectUserValues(const JobInputs& given, const Playable& playable, const JobFolder& job,
                             const MediaFormat& format, const std::stop_token& stop) {
    Collector collector(playable, job, format, stop);
    for (const JobInputs::PhotoPart& part : given.photoParts) collector.addPhotoPart(part);
    for (const JobInputs::Given& text : given.texts) collector.addText(text.key, text.value);
    for (const JobInputs::Given& photo : given.photos) collector.addPhoto(photo.key, photo.value);
    for (const JobInputs::Given& video : given.videos) collector.addVideo(video.key, video.value);
    if (!given.mediaFile.empty()) collector.addMediaFile(given.mediaFile);
    return collector.result(playable);
}

}  // namespace multiscene
