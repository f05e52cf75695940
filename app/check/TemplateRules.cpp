#include "app/check/TemplateRules.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <optional>

#include "app/Model/MediaFormat.h"
#include "app/check/MediaReader.h"
#include "app/check/UsedFiles.h"
#include "app/template/TemplateFolder.h"
#include "format/DictionaryWalk.h"
#include "group/UserFilm.h"
#include "other/QVUtil.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

using platform::Value;

std::span<const TemplateRule> templateRules() {
    static constexpr std::array table{
        rules::lengthsAreTheClocks,        rules::numbersAreUnique,        rules::resourceFoldersAreFolders,
        rules::thumbnailsAreThere,         rules::pictureSizeCanBeWritten, rules::camerasHaveThePicturesShape,
        rules::videosHaveTheTemplatesRate, rules::musicCanBePlayed,        rules::inputKeysAreUnique,
        rules::inputTypesAreKnown,         rules::inputKeysAreFree,        rules::sceneGroupIsNotEmpty,
        rules::photoShapesAreWhole,        rules::inputsAreUsed,
    };
    return table;
}

namespace rules {

namespace {

std::string recordPath(size_t index, const std::string& key) {
    return "installScenes[" + std::to_string(index) + "]." + key;
}

}  // namespace

void lengthsAreTheClocks(const TemplateView& view, Findings& findings) {
    for (size_t index = 0; index < view.records().size(); ++index) {
        const Value& record = view.records()[index];
        const SceneView* scene = view.group.scene(record.integer("sId"));
        const auto last = scene ? scene->lastFrame() : std::nullopt;
        const int64_t length = record.integer("fpsLength");
        if (!last || *last < 0 || length == framesTo(*last)) continue;
        if (length < 1 && record.integer("sourceType") == kLengthFromUserVideo) continue;
        findings.push_back(
            {Severity::Error, view.file, recordPath(index, "fpsLength"),
             "is " + std::to_string(length) + ", but the clock's last frame is " + std::to_string(*last),
             "set it to " + std::to_string(framesTo(*last))});
    }
}

void sceneGroupIsNotEmpty(const TemplateView& view, Findings& findings) {
    if (view.inputs().has("sceneGroup") && view.inputs().array("sceneGroup").empty())
        findings.push_back({Severity::Warning, view.file, recordPath(0, "wechartTempletInfo.sceneGroup"),
                            "is empty: the first record's scene is played alone",
                            "list the scenes, or remove it"});
}

void numbersAreUnique(const TemplateView& view, Findings& findings) {
    std::set<int64_t> numbers;
    for (size_t index = 0; index < view.records().size(); ++index)
        if (!numbers.insert(view.records()[index].integer("sId")).second)
            findings.push_back({Severity::Error, view.file, recordPath(index, "sId"),
                                "an earlier record has this number too", "give each scene its own"});
}

void pictureSizeCanBeWritten(const TemplateView& view, Findings& findings) {
    const std::string text = view.inputs().string("mediaSize");
    const auto size = parseMediaSize(text);
    if (!size) return;
    const std::string place = recordPath(0, "wechartTempletInfo.mediaSize");
    if (size->width % 2 != 0 || size->height % 2 != 0)
        findings.push_back({Severity::Error, view.file, place,
                            "\"" + text + "\" is odd, which video cannot be", "use even numbers"});
    if (isTooLarge(*size))
        findings.push_back({Severity::Error, view.file, place, "\"" + text + "\" is too large for a video",
                            "give it " + std::to_string(kMostPixels) +
                                " pixels at most, as 4096,2304 has, and " + std::to_string(kLongestSide) +
                                " a side"});
}

void musicCanBePlayed(const TemplateView& view, Findings& findings) {
    const std::string named = view.inputs().string("bgAudioPath");
    const std::string music = named.empty() ? view.folder() + TemplateFolder::usualMusic : named;
    const Finding place{Severity::Error, view.file, recordPath(0, "wechartTempletInfo.bgAudioPath"), {}, {}};
    std::optional<Finding> finding;
    if (!named.empty()) finding = judgeFileName(view.group.playback(), music, view.folder(), place);
    if (!finding) finding = view.group.media->judge(MediaKind::Sound, music, view.folder(), place);
    if (finding) findings.push_back(*finding);
}

void resourceFoldersAreFolders(const TemplateView& view, Findings& findings) {
    for (size_t index = 0; index < view.records().size(); ++index) {
        const std::string folder = view.records()[index].string("sceneResourceFolderPath");
        const std::string complete =
            view.group.playback().settings().multiSceneRenderPathResourcesWithString(folder, "");
        const auto add = [&](const std::string& message, const std::string& remedy) {
            findings.push_back({Severity::Error, view.file, recordPath(index, "sceneResourceFolderPath"),
                                "\"" + folder + "\" " + message, remedy});
        };
        if (folder.empty() || complete.empty()) continue;
        if (folder.back() != '/')
            add("does not end in \"/\": the names of files would be glued to it", "add the \"/\"");
        else if (!platform::isFolder(complete))
            add("is no folder", "correct the name");
    }
}

void thumbnailsAreThere(const TemplateView& view, Findings& findings) {
    for (size_t index = 0; index < view.records().size(); ++index) {
        const Value& record = view.records()[index];
        const std::string picture = record.string("sceneThumbnailPath");
        if (picture.empty()) continue;
        const Finding place{Severity::Error, view.file, recordPath(index, "sceneThumbnailPath"), {}, {}};
        // The catalogue expands this path, and it knows no scene folder.
        auto finding = judgeFileName(view.group.playback(), picture, "", place);
        if (finding && QVUtil::multiScenePathWithString(picture).empty())
            finding->remedy = "write \"$(multiSceneSceneROOT)/" + view.name + "/…\"";
        if (!finding) finding = view.group.media->judge(MediaKind::Picture, picture, "", place);
        if (finding) findings.push_back(*finding);
    }
}

void camerasHaveThePicturesShape(const TemplateView& view, Findings& findings) {
    constexpr double tolerance = 0.02;  // share
    const MediaFormat format = mediaFormatOf(view.inputs());
    const double shape = static_cast<double>(format.width) / format.height;
    for (const auto& [number, scene] : view.group.scenes) {
        const double aspect = scene.content["Camera"].real("aspect");
        if (!(aspect > 0) || std::abs(aspect / shape - 1) <= tolerance) continue;
        findings.push_back({Severity::Warning, scene.file, "Camera.aspect",
                            "is " + scene.content["Camera"].string("aspect") + ", but the video has " +
                                std::to_string(format.width) + "x" + std::to_string(format.height) +
                                " pixels: everything is stretched",
                            "set it to width / height of \"mediaSize\", or remove it"});
    }
}

namespace {

/// The rates at which a scene's films are played, a picture a frame.
class FilmRates : public DictionaryVisitor {
  public:
    FilmRates(const SceneView& scene, int64_t wanted, Findings& findings)
        : scene_(scene), wanted_(wanted), findings_(findings) {}

    void dictionary(const KeySet& keys, const Value& content, const std::string& keyPath) override {
        const auto names = keys.names();
        const bool hasFilm = std::any_of(names.begin(), names.end(), [&](std::string_view name) {
            return keys.fileOf(*keys.find(name)) == KeyFile::Video && content.has(name);
        });
        const int64_t own = content.integer("videoFps");
        if (!hasFilm || own < 1 || own == wanted_) return;
        findings_.push_back({Severity::Warning, scene_.file, keyPath + ".videoFps",
                             "is " + std::to_string(own) + ", but the template has " +
                                 std::to_string(wanted_) + " frames a second: the video changes its speed",
                             "convert the video or change \"videoFrameRate\""});
    }

  private:
    const SceneView& scene_;
    int64_t wanted_;
    Findings& findings_;
};

}  // namespace

void videosHaveTheTemplatesRate(const TemplateView& view, Findings& findings) {
    const int64_t rate = mediaFormatOf(view.inputs()).framesPerSecond;
    for (const auto& [number, scene] : view.group.scenes) {
        FilmRates visitor(scene, rate, findings);
        walkDictionary(sceneFileKeys, scene.content, "", visitor);
    }
}

}  // namespace rules
}  // namespace multiscene
