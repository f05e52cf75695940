#include "cli/CatalogueCommand.h"

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/installation/TemplateInstallation.h"
#include "cli/Table.h"
#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
using platform::Value;

std::shared_ptr<QVDataManager> openCatalogue() {
    auto catalogue = std::make_shared<QVDataManager>();
    catalogue->checkUsable();
    TemplateInstallation::recover(*catalogue);
    return catalogue;
}

void declareServer(Arguments& arguments, QVDownloadInfoManager& list) {
    arguments.option(
        "--server", "URL",
        "Address of the template server; else MULTISCENE_SERVER, else the one of the last update",
        [&list](const std::string& value) {
            if (!platform::isHttpUrl(value))
                throw Error(ErrorKind::Usage, "\"" + value + "\" is no http or https address");
            list.setServerAddress(value);
        });
}

namespace {

Value::Dictionary inputFields(const QVUserInputModelBase& input) {
    Value::Dictionary fields{{"key", input.renderMapKey()},
                             {"placeholder", input.placeholder()},
                             {"placeholders", input.placeholders()}};
    if (const auto* text = dynamic_cast<const QVUserTextInputModel*>(&input)) {
        fields["kind"] = "text";
        fields["maxCharacters"] = text->maxLenght();
        fields["maxLines"] = text->maxLine();
        fields["threeDimensional"] = text->is3DText();
    } else if (const auto* photo = dynamic_cast<const QVUserPhotoInputModel*>(&input)) {
        fields["kind"] = "photo";
        fields["aspectWidth"] = photo->aspectWidth();
        fields["aspectHeight"] = photo->aspectHeight();
    } else if (const auto* video = dynamic_cast<const QVUserVideoInputModel*>(&input)) {
        fields["kind"] = "video";
        fields["aspectWidth"] = video->aspectWidth();
        fields["aspectHeight"] = video->aspectHeight();
    }
    return fields;
}

Value inputsValue(const UserInputList& inputs) {
    Value::Array all;
    for (const auto& input : inputs) all.emplace_back(inputFields(*input));
    return all;
}

int64_t videosWanted(const UserInputList& inputs) {
    return std::count_if(inputs.begin(), inputs.end(), [](const auto& input) {
        return dynamic_cast<const QVUserVideoInputModel*>(input.get()) != nullptr;
    });
}

/// The texts among the inputs that a template brings along to be tried with; none when it brings none.
Value sampleTexts(const TemplateOverview& overview) {
    const std::filesystem::path file = std::filesystem::path(overview.folder) / "sample/inputs.json";
    if (overview.folder.empty() || !platform::isFile(file)) return {};
    try {
        const auto bytes = platform::readFile(file, platform::limitOf("maxMediaFileBytes"));
        const Value values =
            platform::parseJson({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, "");
        Value::Dictionary texts;
        for (const auto& input : overview.inputs)
            if (const Value& value = values[input->renderMapKey()];
                dynamic_cast<const QVUserTextInputModel*>(input.get()) && value.isString())
                texts[input->renderMapKey()] = value;
        return texts;
    } catch (const Error&) {
        return {};
    }
}

}  // namespace

platform::Value::Dictionary overviewFields(const TemplateOverview& overview) {
    return {{"id", overview.sId},
            {"name", overview.name},
            {"title", overview.title},
            {"installed", overview.isInstalled},
            {"sample", overview.isSample},
            {"offered", overview.isOffered},
            {"new", overview.isNew},
            {"newerOffered", overview.newerOffered},
            {"needsNewerVersion", overview.needsNewerVersion},
            {"minVersion", overview.minVersion},
            {"megabytes", overview.megabytes},
            {"frames", overview.frames},
            {"seconds", overview.seconds()},
            {"photos", overview.photos},
            {"videos", videosWanted(overview.inputs)},
            {"titles", overview.titles},
            {"width", overview.format.width},
            {"height", overview.format.height},
            {"framesPerSecond", overview.format.framesPerSecond},
            {"music", overview.hasMusic},
            {"folder", overview.folder},
            {"thumbnail", overview.thumbnail},
            {"inputs", inputsValue(overview.inputs)},
            {"sampleTexts", sampleTexts(overview)},
            {"templateUrl", overview.templateUrl},
            {"thumbUrl", overview.thumbUrl},
            {"videoPreviewUrl", overview.videoPreviewUrl},
            {"youtubePreviewUrl", overview.youtubePreviewUrl}};
}

std::string lengthText(const TemplateOverview& overview) {
    return overview.frames > 0 ? secondsText(overview.seconds()) : "-";
}

std::string stateText(const TemplateOverview& overview) {
    std::ostringstream text;
    const auto add = [&](bool isSo, const char* words) {
        if (isSo) text << (text.tellp() > 0 ? ", " : "") << words;
    };
    add(overview.isInstalled, "installed");
    add(overview.isSample, "sample");
    add(overview.isOffered && !overview.isInstalled, "offered");
    add(text.tellp() <= 0, "not installed");
    add(overview.isNew, "new");
    add(overview.newerOffered, "newer offered");
    if (overview.needsNewerVersion) text << ", needs version " << overview.minVersion;
    return text.str();
}

}  // namespace multiscene::cli
