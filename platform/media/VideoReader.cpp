#include "platform/media/VideoReader.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "platform/base/Clock.h"
#include "platform/media/BoundedQueue.h"
#include "platform/media/KeptFilms.h"
#include "platform/media/PictureConverter.h"
#include "platform/media/PicturesByTime.h"
#include "platform/media/ThreadCpu.h"
#include "platform/media/VideoDecoder.h"

namespace platform {

namespace {

constexpr int64_t kNeighbours = 8;    // frames
constexpr unsigned kMostThreads = 4;  // that decode a film

}  // namespace

class VideoReader::Implementation : public std::enable_shared_from_this<Implementation> {
  public:
    Implementation(FileHandle opened, const std::string& name, ErrorKind kind, const Settings& wanted)
        : file(std::move(opened)),
          settings(wanted),
          film(keptFilms().film(file, settings)),
          decoder(file, name, kind, threads()),
          converter(converterOf(decoder)),
          info(decoder.info()),
          queue(static_cast<size_t>(std::max(settings.framesAhead, 1))) {
        const CropSize size = cropSize(info.width, info.height, settings.shape);
        info.width = size.width;
        info.height = size.height;
    }
    ~Implementation() {
        cancel();
        if (thread.joinable()) thread.join();
    }

    void start() {
        const std::lock_guard lock(startMutex);
        if (!thread.joinable()) thread = std::thread([this] { run(); });
    }
    /// A film whose beginning is known is decoded when somebody looks at it.
    void startUnlessKnown() {
        if (!film || !film->at(0)) start();
    }
    void cancel() {
        isCancelled = true;
        queue.abort();
    }
    /// Nobody reads on; pictures that were given may still be looked at.
    void letGo() {
        cancel();
        given.reset();
    }

    const VideoInfo& fileInfo() const { return info; }

    std::optional<VideoFrame> next() {
        if (film) return nextKept();
        start();
        auto decoded = queue.pop();
        if (!decoded) return std::nullopt;
        return std::move(decoded->frame);
    }

    std::optional<Error> error() const {
        const std::lock_guard lock(mutex);
        return failure || !film ? failure : film->error();
    }
    Statistics statistics() const {
        const std::lock_guard lock(mutex);
        return counters;
    }

  private:
    using Picture = std::shared_ptr<const FilmPicture>;
    struct Decoded {
        int64_t index = 0, picture = 0;
        VideoFrame frame;
    };

    PictureConverter::Settings converterOf(const VideoDecoder& from) const {
        return {from.orientation(), settings.shape, from.pixelShape(),
                from.info().hasAlpha && settings.premultipliesAlpha};
    }

    /// Who goes to and fro in a film waits for its decoding.
    int threads() const {
        if (!film || !film->isSound()) return 1;
        return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads));
    }

    // On the decoding thread

    void run() {
        nameThread("video-decode");
        try {
            const bool isWhole = settings.framesPerSecond > 0 ? deliverByTime() : deliverEach();
            if (decoder.error()) note(*decoder.error());
            if (film && isWhole) film->noteEnd(decoder.error());
        } catch (const Error& caught) {
            note(caught);
        } catch (const std::exception& caught) {
            note(Error(ErrorKind::Transient, caught.what()));
        }
        queue.close();
    }

    /// Adds the CPU time of `work` to a counter.
    template <typename Work>
    auto timed(double& counter, Work work) {
        const double begin = threadCpuSeconds();
        auto result = work();
        const std::lock_guard lock(mutex);
        counter += threadCpuSeconds() - begin;
        return result;
    }

    /// False when nobody wants more.
    bool deliverEach() {
        for (int64_t index = 0; timed(counters.decodeSeconds, [&] { return decoder.next(); }); ++index) {
            if (isPassed(index)) continue;
            countPicture();
            const CMTime time = decoder.time();
            if (!hand({index, index, {converted(converter, decoder.picture()), time}})) return false;
        }
        return !isCancelled;
    }

    bool deliverByTime() {
        auto pictures = timed(counters.decodeSeconds, [&] {
            return PicturesByTime(decoder, settings.framesPerSecond, settings.firstFrame);
        });
        Decoded shown;
        bool isConverted = false;
        for (int64_t index = 0; timed(counters.decodeSeconds, [&] { return pictures.next(); }); ++index) {
            if (!pictures.isShownAgain()) {
                ++shown.picture;
                isConverted = false;
            }
            if (isPassed(index)) continue;
            if (!isConverted) {
                countPicture();
                shown.frame.pixels = converted(converter, pictures.picture());
                isConverted = true;
            }
            shown.index = index;
            shown.frame.time = pictures.time();
            if (!hand(shown)) return false;
        }
        return !isCancelled;
    }

    /// Nobody will ask for the frame, and all is known of it.
    bool isPassed(int64_t index) const {
        return film && index < deliveredFrom && film->at(index) && !isCancelled;
    }

    bool hand(const Decoded& decoded) {
        const FilmPicture& pixels = *decoded.frame.pixels;
        if (film && decoder.error()) film->noteDamage();
        if (film)
            film->note(decoded.index, {decoded.frame.time, decoded.picture, pixels.width(), pixels.height(),
                                       pixels.isOpaque()});
        return queue.push(decoded);
    }

    Picture converted(PictureConverter& with, const AVFrame& picture) {
        return timed(counters.convertSeconds, [&] { return with.convert(picture); });
    }

    void countPicture() {
        const std::lock_guard lock(mutex);
        ++counters.frames;
    }

    void note(const Error& caught) {
        const std::lock_guard lock(mutex);
        failure = caught;
    }

    // Of a film that is kept

    std::optional<VideoFrame> nextKept() {
        const int64_t index = position++;
        if (isCancelled) return std::nullopt;
        if (!film->at(index) && !film->endsBefore(index)) {
            const std::lock_guard lock(findMutex);
            decodeUpTo(index);
        }
        const auto known = film->at(index);
        if (!known) return std::nullopt;
        if (!given || givenPicture != known->picture)
            given =
                std::make_shared<FilmPicture>(known->width, known->height, known->isOpaque,
                                              [self = shared_from_this(), index, picture = known->picture] {
                                                  return self->find(index, picture);
                                              });
        givenPicture = known->picture;
        return VideoFrame{given, known->time};
    }

    /// Any thread. None when the film cannot be decoded any more.
    Picture find(int64_t index, int64_t number) {
        const std::lock_guard lock(findMutex);
        Picture picture = keptFilms().picture(film, number);
        if (picture) {
            // Whoever looks at it will look at the next one.
            wantedFrom = std::max(wantedFrom, index + 1);
            deliveredFrom = wantedFrom;
            start();
            return picture;
        }
        if (latest.picture != number || !latest.frame.pixels) decodeUpTo(index);
        picture = latest.picture == number ? latest.frame.pixels : nullptr;
        if (!picture) picture = decodedAnew(index);
        if (picture) keptFilms().keep(film, number, picture);
        return picture;
    }

    /// `latest` is that frame then, unless it was passed or there is no more.
    void decodeUpTo(int64_t index) {
        if (index < wantedFrom || index <= latest.index) return;
        const bool isLeap = index > wantedFrom + 1;
        wantedFrom = index;
        deliveredFrom = isLeap ? index - kNeighbours : index;
        start();
        while (latest.index < index) {
            auto decoded = queue.pop();
            if (!decoded) return;
            latest = std::move(*decoded);
            const bool isNear = latest.index < index && latest.index + kNeighbours >= index;
            if (isLeap && isNear) keepNeighbour(latest);
        }
    }

    /// Who leaps to a picture may go back from there, one by one.
    void keepNeighbour(const Decoded& decoded) {
        if (!keptFilms().picture(film, decoded.picture))
            keptFilms().keep(film, decoded.picture, decoded.frame.pixels);
    }

    /// For who goes back, and for pictures that are looked at when the reader has gone on.
    Picture decodedAnew(int64_t wanted) {
        try {
            VideoDecoder again(file, file.name(), ErrorKind::Failed, threads());
            PictureConverter fresh(converterOf(again));
            if (settings.framesPerSecond > 0) {
                PicturesByTime pictures(again, settings.framesPerSecond, settings.firstFrame);
                for (int64_t index = 0; pictures.next(); ++index)
                    if (index == wanted) return fresh.convert(pictures.picture());
            } else {
                for (int64_t index = 0; again.next(); ++index)
                    if (index == wanted) return fresh.convert(again.picture());
            }
        } catch (const Error& error) {
            if (error.kind() == ErrorKind::Transient) throw;
        }
        return nullptr;
    }

    const FileHandle file;
    const Settings settings;
    const std::shared_ptr<KeptFilm> film;  ///< none: nothing is kept
    VideoDecoder decoder;
    PictureConverter converter;
    VideoInfo info;
    BoundedQueue<Decoded> queue;
    std::atomic<bool> isCancelled = false;
    mutable std::mutex mutex;
    std::optional<Error> failure;
    Statistics counters;
    std::mutex startMutex;
    std::thread thread;

    int64_t position = 0;  ///< the reader's, as is what follows
    Picture given;
    int64_t givenPicture = -1;

    std::mutex findMutex;
    Decoded latest{.index = -1, .picture = -1, .frame = {}};  ///< that was decoded; under findMutex
    int64_t wantedFrom = 0;                                   // under findMutex
    std::atomic<int64_t> deliveredFrom = 0;                   ///< frames before it are not
};

VideoReader::VideoReader(FileHandle file, const std::string& name, ErrorKind kind, const Settings& settings)
    : implementation_(std::make_shared<Implementation>(std::move(file), name, kind, settings)) {}

/// Pictures that nobody has looked at yet keep what decodes them.
VideoReader::~VideoReader() { implementation_->letGo(); }

const VideoInfo& VideoReader::info() const { return implementation_->fileInfo(); }

void VideoReader::start() { implementation_->startUnlessKnown(); }

std::optional<VideoFrame> VideoReader::nextFrame() { return implementation_->next(); }

void VideoReader::cancel() { implementation_->cancel(); }

std::optional<Error> VideoReader::error() const { return implementation_->error(); }

VideoReader::Statistics VideoReader::statistics() const { return implementation_->statistics(); }

}  // namespace platform
