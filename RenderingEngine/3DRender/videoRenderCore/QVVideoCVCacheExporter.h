// Turns rendered frames into a video file, mixes the group's sounds and joins both. Glossary: "canle" is
// cancel, "Aolume" is volume.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "output/FrameSink.h"
#include "output/SoundSink.h"
#include "platform/audio/AudioMix.h"
#include "platform/base/DispatchQueue.h"
#include "platform/media/VideoWriter.h"
#include "platform/pixels/FrameLayout.h"
#include "platform/pixels/Surface.h"
#include "playback/Playback.h"

namespace multiscene {

class QVVideoCVCacheExporter;

/// Hears of an export's end, once, on the main queue.
class QVVideoCVCacheExporterDelegate {
  public:
    virtual ~QVVideoCVCacheExporterDelegate() = default;
    /// `videoPath`: the silent film when there were no sounds, else the joined film in the job's folder.
    virtual void videoExporterFinished(QVVideoCVCacheExporter&, const std::string& /*videoPath*/) {}
    virtual void videoExporter(QVVideoCVCacheExporter&, const platform::Error& /*failedWithError*/) {}
};

struct VideoExportSettings {
    /// Whose sounds are mixed: its gate opens them, its report tells what was left out.
    std::shared_ptr<Playback> playback = std::make_shared<Playback>();
    int bitRate = 1500000;            ///< video, bits a second
    std::string preset = "veryfast";  ///< of the H.264 encoder
    int threads = 3;                  ///< of the H.264 encoder; part of the result, never of the machine
    int audioBitRate = 128000;        ///< bits a second
    /// LUFS to which the mix is brought; none: it stays as it is.
    std::optional<double> loudness = {};
    /// Where the mixed sound and the joined film are made, under names of their own. The exporter deletes
    /// neither; the job that owns the folder does.
    std::filesystem::path temporaryFolder = {};
    /// How the drawn picture lies in the film; none: it fills it.
    std::optional<platform::FrameLayout> layout = {};
    /// Sees every frame of the film, counted from 0, before it is encoded; render queue. None: nobody.
    std::function<void(int64_t frame, const platform::Surface& picture)> watcher = {};
    /// What an export that was stopped calls itself, in the user's language.
    std::string errorDomain = "videoExporter";
};

/// One export, from the first frame to the finished file. The frame counter starts at 1, so the first frame
/// is stamped 1/fps while the film starts at 0.
class QVVideoCVCacheExporter : public FrameSink,
                               public SoundSink,
                               public std::enable_shared_from_this<QVVideoCVCacheExporter> {
  public:
    /// Goes one way. Completed and Failed are each told to the delegate once; the others are not.
    enum class State {
        Writing,    ///< takes frames
        Finishing,  ///< completing the film, mixing, joining
        Completed,
        Failed,
        Cancelled,   ///< canleExport
        SilentOnly,  ///< the film is complete at savePath() but too short for its sounds: nobody is told
    };

    /// Deletes what is at the path and opens the encoder. The size is rounded to whole pixels, halves away
    /// from zero. Throws Error.
    static std::shared_ptr<QVVideoCVCacheExporter> initWithOutputURL(const std::string& path, double width,
                                                                     double height, int32_t frameRate,
                                                                     const VideoExportSettings& settings);
    /// Gives up an export that has not ended.
    ~QVVideoCVCacheExporter() override;

    void setDelegate(std::weak_ptr<QVVideoCVCacheExporterDelegate> delegate);  ///< before the first frame

    // End and abort, any thread.
    /// Completes the film on a thread of the exporter's own and goes on with the sounds. Frames must have
    /// stopped.
    void finishExport() override;
    /// Gives up and tells the delegate: failure, code 101111.
    void stopExport();
    /// Gives up without telling anybody.
    void canleExport() override;

    State state() const;
    const std::string& savePath() const { return savePath_; }
    int32_t framesPerSecond() const { return framesPerSecond_; }
    std::vector<platform::Value> audioTrackArray() const;
    /// CPU seconds of conversion and encoding; complete once the film is.
    platform::VideoWriter::Statistics writerStatistics() const { return writer_->statistics(); }
    /// What became of the sounds; none until they are mixed, and in a film without sound.
    std::optional<platform::AudioMixReport> soundReport() const;

    // FrameSink
    int32_t width() const override { return placer_.layout().drawnWidth; }
    int32_t height() const override { return placer_.layout().drawnHeight; }
    platform::Canvas frameCanvas() override;
    bool isOkCaptureScreenVideo() const override;
    bool waitUntilOk() override;
    void wake() override;
    std::optional<platform::Error> failure() const override;
    void renderFrameToVideo() override;
    std::shared_ptr<FrameSink> freshSink() override;

    // SoundSink
    void addAudioTrackWithInfo(const platform::Value& info) override;

  private:
    QVVideoCVCacheExporter(const std::string& path, double width, double height, int32_t frameRate,
                           const VideoExportSettings& settings);

    void addFrameCVCache(platform::PixelBufferPool::Pointer picture);
    bool moveTo(State next);
    void giveUp();
    void complete();
    /// The finished sound's file, empty when nothing is heard; none when the film is too short for its
    /// sounds.
    std::optional<std::filesystem::path> mutableAudioCompositionWithVideoUrl();
    void synthesisAudio(const std::filesystem::path& audio);
    void handleSessionCompleteWithVideoPath(const std::string& path);
    void handleSessionError(const platform::Error& error);
    void tellDelegate(std::function<void(QVVideoCVCacheExporterDelegate&)> call);
    std::filesystem::path temporaryFile(const char* extension) const;

    const std::string savePath_;
    const int32_t width_, height_, framesPerSecond_;
    const VideoExportSettings settings_;
    std::weak_ptr<QVVideoCVCacheExporterDelegate> delegate_;
    int64_t currentFrame_ = 1;  // the next one; render queue
    platform::FramePlacer placer_;
    std::vector<uint8_t> drawn_;                 ///< a picture that does not fill the film
    platform::PixelBufferPool::Pointer buffer_;  ///< the frame that is being drawn
    std::unique_ptr<platform::VideoWriter> writer_;

    mutable std::mutex mutex_;
    State state_ = State::Writing;
    std::optional<platform::Error> error_;
    std::vector<platform::Value> audioTrackArray_;
    std::optional<platform::AudioMixReport> soundReport_;
    std::stop_source stop_;
    platform::DispatchQueue finishing_{"video export"};  // last: joined first
};

}  // namespace multiscene
