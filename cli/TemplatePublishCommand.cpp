#include <charconv>
#include <filesystem>
#include <optional>

#include "app/job/SamplePreview.h"
#include "app/server/TemplatePublishing.h"
#include "cli/AuthorCommand.h"
#include "cli/Commands.h"
#include "cli/FencedCommand.h"
#include "platform/base/Error.h"
#include "platform/net/HttpDownload.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
namespace fs = std::filesystem;

namespace {

float versionOf(const std::string& text) {
    float version = 0;
    const auto end = std::from_chars(text.data(), text.data() + text.size(), version);
    if (end.ec != std::errc() || end.ptr != text.data() + text.size() || !(version >= 0 && version < 1e6F))
        throw Error(ErrorKind::Usage, "\"" + text + "\" is not a version such as 1.2");
    return version;
}

std::string baseUrlOf(const std::string& text) {
    if (!platform::isHttpUrl(text))
        throw Error(ErrorKind::Usage, "\"" + text + "\" is no http or https address");
    return text.ends_with('/') ? text : text + "/";
}

class TemplatePublishCommand : public FencedCommand {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("DIR", "The template's folder",
                       [this](const std::string& value) { folder_ = given_ = value; });
        arguments.option(
            "--to", "FOLDER", "A folder that an HTTP server offers; made when it is missing",
            [this](const std::string& value) {
                if (value.empty()) throw Error(ErrorKind::Usage, "is empty");
                server_ = value;
            },
            Occurs::Once);
        arguments.option("--base-url", "URL",
                         "Write complete addresses; else they are relative to the server",
                         [this](const std::string& value) { options_.baseUrl = baseUrlOf(value); });
        arguments.option("--min-version", "V",
                         "Lowest version of the program that can play it; else what the template's own "
                         "file says, or 1",
                         [this](const std::string& value) { options_.minVersion = versionOf(value); });
        arguments.flag("--not-new", "Do not mark it as new", isOld_);
        arguments.example("multiscene template publish templates/minimal --to /var/www/templates");
    }

  protected:
    Errand prepare(const fs::path& folder) override {
        folder_ = (fs::absolute(folder_) / "").lexically_normal().parent_path();
        requireOutside(folder_, server_, "the server's folder");
        lock_ = lockServerFolder(server_, cancelling());
        stage_ = folder / "server";
        Errand errand{folder_.string(), {}, {}};
        errand.reach.read = {folder_, server_};
        return errand;
    }

    int work(Console& console, std::stop_token stop, const std::function<void()>& publish) override {
        options_.isNew = !isOld_;
        options_.judge = judgeAloud(console, "nothing was published");
        options_.renderPreview = [&](const TemplateFolder& folder, const fs::path& video) {
            console.status("rendering the preview of " + folder.name);
            frames_ = renderSampleVideo(folder, video, console, stop);
        };
        options_.renderThumbnail = [&](const TemplateFolder& folder, const fs::path& picture) {
            console.status("rendering the thumbnail of " + folder.name);
            // What a template is about is seen in its middle; often it starts and ends empty.
            renderSamplePicture(folder, frames_ / 2, picture, console, stop);
        };
        stageTemplate(folder_, server_, stage_, options_);
        flush(stage_);
        publish();
        if (console.isJson())
            console.event("done", {{"template", given_}, {"folder", server_.string()}});
        else
            console.status("published " + given_ + " in " + server_.string());
        return 0;
    }

    void publish() override { publishStaged(stage_, server_, folder_.filename().string()); }

  private:
    std::string given_;
    fs::path folder_, server_, stage_;
    std::optional<platform::FileLock> lock_;
    PublishOptions options_;
    bool isOld_ = false;
    int64_t frames_ = 0;  ///< of the preview
};

}  // namespace

std::unique_ptr<Command> makeTemplatePublishCommand() { return std::make_unique<TemplatePublishCommand>(); }

}  // namespace multiscene::cli
