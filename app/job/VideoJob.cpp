#include "app/job/VideoJob.h"

#include <cmath>
#include <cstdio>

#include "app/job/FramePictures.h"
#include "app/job/GroupRun.h"
#include "app/job/MusicEntry.h"
#include "app/job/OutputFile.h"
#include "app/language/Strings.h"
#include "videoRenderCore/QVVideoCVCacheExporter.h"

namespace multiscene {

using platform::Error;
using platform::ErrorKind;

namespace {

constexpr const char* kSilentName = "silent.mp4";
constexpr double kHeardDifference = 0.5;  // LU

/// Hears of the end of the export, on the main queue.
class ExportEnd : public QVVideoCVCacheExporterDelegate {
  public:
    void videoExporterFinished(QVVideoCVCacheExporter&, const std::string& videoPath) override {
        path = videoPath;
    }
    void videoExporter(QVVideoCVCacheExporter&, const Error& failedWithError) override {
        error = failedWithError;
    }

    std::string path;
    std::optional<Error> error;
};

std::shared_ptr<QVVideoCVCacheExporter> makeExporter(const VideoRequest& request, const PreparedGroup& group,
                                                     const JobFolder& job) {
    VideoExportSettings settings;
    settings.bitRate = request.bitRate;
    settings.preset = request.preset;
    settings.loudness = request.loudness;
    settings.playback = group.playback;
    settings.layout = group.layout;
    settings.temporaryFolder = job.path();
    settings.errorDomain = localizedString("videoExporter");
    if (!request.pictures.empty())
        settings.watcher = [pictures = std::make_shared<FramePictures>(request.pictures, group.totalFrames)](
                               int64_t frame, const platform::Surface& picture) {
            pictures->see(frame, picture);
        };
    const auto exporter = QVVideoCVCacheExporter::initWithOutputURL(job.file(kSilentName).string(),
                                                                    group.format.width, group.format.height,
                                                                    group.format.framesPerSecond, settings);
    if (!group.musicPath.empty())
        exporter->addAudioTrackWithInfo(musicEntry(group.musicPath, request.musicSettings));
    return exporter;
}

/// An export whose film is too short for its sounds ends without telling anybody.
bool hasEnded(const ExportEnd& end, const QVVideoCVCacheExporter& exporter) {
    return !end.path.empty() || end.error || exporter.state() == QVVideoCVCacheExporter::State::SilentOnly;
}

/// Empty when the sound is as loud as it was to be.
std::string loudnessNote(const std::optional<double>& wanted,
                         const std::optional<platform::AudioMixReport>& sound) {
    if (!wanted) return {};
    if (!sound || !sound->after.integrated) return "there is nothing to hear that --loudness could change";
    if (std::abs(*sound->after.integrated - *wanted) < kHeardDifference) return {};
    char text[128];
    std::snprintf(text, sizeof text, "the sound could be brought to %.1f LUFS, not to %g",
                  *sound->after.integrated, *wanted);
    return text;
}

}  // namespace

JobSummary makeVideo(const VideoRequest& request, JobObserver& observer, std::stop_token stop) {
    const double start = platform::monotonicSeconds();
    const OutputFile output = OutputFile::video(request.output);
    const JobFolder job;
    const PreparedGroup group = prepareGroup(request, job, observer, stop);

    const auto exporter = makeExporter(request, group, job);
    const auto end = std::make_shared<ExportEnd>();
    exporter->setDelegate(end);
    GroupRun run(group, exporter, exporter, observer, std::move(stop));
    const int64_t frames = run.play();
    run.waitFor([&] { return hasEnded(*end, *exporter); });
    if (end->error) throw Error(*end->error);
    if (end->path.empty()) observer.jobNote("the video is too short for its sounds and stays silent");
    const auto sound = exporter->soundReport();
    if (const std::string note = loudnessNote(request.loudness, sound); !note.empty()) observer.jobNote(note);
    output.publish(end->path.empty() ? exporter->savePath() : end->path);

    JobSummary summary = summaryOf(group, frames, run);
    summary.encoder = exporter->writerStatistics();
    summary.sound = sound;
    summary.wantedLoudness = request.loudness;
    summary.output = output.path();
    summary.wallSeconds = platform::monotonicSeconds() - start;
    return summary;
}

}  // namespace multiscene
