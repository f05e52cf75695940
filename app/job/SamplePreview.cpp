#include "app/job/SamplePreview.h"

#include "app/job/FramesJob.h"
#include "app/job/JobFolder.h"
#include "app/job/VideoJob.h"
#include "platform/base/File.h"

namespace multiscene {

namespace fs = std::filesystem;

namespace {

constexpr const char* kInputs = "sample/inputs.json";

void playSample(RenderRequest& request, const TemplateFolder& folder) {
    request.source = folder.folder.string();
    request.isJudged = true;
    if (platform::isThere(folder.folder / kInputs)) request.inputs.mediaFile = folder.folder / kInputs;
}

}  // namespace

int64_t renderSampleVideo(const TemplateFolder& folder, const fs::path& video, JobObserver& observer,
                          const std::stop_token& stop) {
    VideoRequest request;
    playSample(request, folder);
    request.output = video;
    return makeVideo(request, observer, stop).frames;
}

void renderSamplePicture(const TemplateFolder& folder, int64_t frame, const fs::path& picture,
                         JobObserver& observer, const std::stop_token& stop) {
    const JobFolder job;
    FramesRequest request;
    playSample(request, folder);
    request.selection.at = {frame};
    request.output = job.file("pictures");
    writeFrames(request, observer, stop);
    platform::moveFile(fs::directory_iterator(request.output)->path(), picture);
}

}  // namespace multiscene
