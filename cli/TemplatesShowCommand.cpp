#include <filesystem>

#include "app/Model/QVUserPhotoInputModel.h"
#include "app/Model/QVUserTextInputModel.h"
#include "app/Model/QVUserVideoInputModel.h"
#include "app/job/JobFolder.h"
#include "app/job/Playable.h"
#include "cli/CatalogueCommand.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "cli/ServerList.h"
#include "cli/SourceReach.h"
#include "cli/Table.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

std::string limitsText(const QVUserTextInputModel& text) {
    std::string limits;
    if (text.maxLenght() > 0) limits += ", room for " + std::to_string(text.maxLenght()) + " characters";
    if (text.maxLine() > 0)
        limits += " in " + std::to_string(text.maxLine()) + (text.maxLine() == 1 ? " line" : " lines");
    return limits;
}

std::string shapeText(int64_t width, int64_t height) {
    if (width < 1 || height < 1) return {};
    return ", cropped to " + std::to_string(width) + ":" + std::to_string(height);
}

/// "--photo me=FILE, cropped to 1:1: Your photo".
std::string inputLine(const QVUserInputModelBase& input) {
    std::string line;
    if (const auto* photo = dynamic_cast<const QVUserPhotoInputModel*>(&input)) {
        line = "--photo " + input.renderMapKey() + "=FILE" +
               shapeText(photo->aspectWidth(), photo->aspectHeight());
    } else if (const auto* video = dynamic_cast<const QVUserVideoInputModel*>(&input)) {
        line = "--video " + input.renderMapKey() + "=FILE" +
               shapeText(video->aspectWidth(), video->aspectHeight());
    } else if (const auto* text = dynamic_cast<const QVUserTextInputModel*>(&input)) {
        line = "--text " + input.renderMapKey() + "=TEXT" + limitsText(*text);
    }
    return input.placeholder().empty() ? line : line + " (" + input.placeholder() + ")";
}

class TemplatesShowCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("TEMPLATE",
                       "Id or name of a template that is installed, a sample or offered; a template's folder "
                       "or a zip of one",
                       [this](const std::string& value) { wanted_ = value; });
        declareServer(arguments, list_);
        arguments.example("multiscene templates show sunny-day");
        arguments.example("multiscene templates show birthday.zip");
    }
    bool isResultPrinted() const override { return true; }

  protected:
    /// An archive is unpacked.
    bool needsFolder() const override {
        std::error_code ignored;
        return std::filesystem::is_regular_file(wanted_, ignored);
    }

    Errand prepare(const std::filesystem::path&) override {
        list_.setServerAddress(list_.serverAddress());
        Errand errand = errandOf(wanted_);
        errand.reach.add(reachOfServerList(list_));
        return errand;
    }

    int work(Console& console, std::stop_token, const std::function<void()>&) override {
        const auto found = find();
        if (!found)
            throw Error(
                ErrorKind::Template,
                "neither a folder, a zip nor the id or name of a template that is installed, a sample "
                "or offered (multiscene templates list)",
                wanted_);
        console.isJson() ? printEvent(console, *found) : printLines(console, *found);
        return 0;
    }

  private:
    std::optional<TemplateOverview> find() const {
        std::optional<JobFolder> job;
        std::optional<std::filesystem::path> folder;
        if (needsFolder())
            folder = templateFolderAt(wanted_, job.emplace());
        else
            folder = templateFolderAt(wanted_);
        QVDataManager catalogue;
        if (!folder) return findTemplateOverview(catalogue, list_, wanted_);
        TemplateOverview overview = overviewOf(readTemplateFolder(*folder), nullptr);
        std::error_code ignored;
        if (std::filesystem::is_regular_file(wanted_, ignored)) overview.folder = wanted_;
        return overview;
    }

    static void printEvent(Console& console, const TemplateOverview& found) {
        console.event("template", overviewFields(found));
    }

    static void printLines(Console& console, const TemplateOverview& found) {
        const MediaFormat& format = found.format;
        const auto row = [&](const std::string& name, const std::string& value) {
            constexpr size_t column = 10;
            if (!value.empty())
                console.line(printable(name + std::string(column - name.size(), ' ') + value));
        };
        row("id", std::to_string(found.sId));
        row("name", found.name);
        row("title", found.title);
        row("state", stateText(found));
        row("size", megabyteText(found.megabytes));
        row("length", lengthText(found));
        row("picture", std::to_string(format.width) + "x" + std::to_string(format.height) + ", " +
                           std::to_string(format.framesPerSecond) + " frames a second");
        row("photos", std::to_string(found.photos));
        for (const auto& input : found.inputs) row("input", inputLine(*input));
        row("folder", found.folder);
        row("archive", found.templateUrl);
        row("thumbnail", found.thumbUrl);
        row("preview", found.videoPreviewUrl);
        row("preview", found.youtubePreviewUrl);
    }

    QVDownloadInfoManager list_;
    std::string wanted_;
};

}  // namespace

std::unique_ptr<Command> makeTemplatesShowCommand() { return std::make_unique<TemplatesShowCommand>(); }

}  // namespace multiscene::cli
