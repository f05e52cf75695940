#include <malloc.h>
#include <sys/resource.h>

#include <chrono>
#include <csignal>
#include <random>
#include <thread>

#include "MediaFixture.h"
#include "platform/media/FilmLength.h"
#include "platform/media/PictureConverter.h"
#include "platform/media/VideoReader.h"
#include "tests/platform/PngBytes.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/pixdesc.h>
}

namespace platform {
namespace {

class VideoTest : public MediaFolder {
  protected:
    /// A copy of the film in which ffmpeg has changed what the file says of its pictures.
    std::string copied(const std::string& film, const std::string& name,
                       const std::string& options = "") const {
        const std::string made = path(name);
        EXPECT_EQ(std::system(("ffmpeg -v error -y -i " + film + " -c copy " + options + " " + made).c_str()),
                  0);
        return made;
    }
    /// One whose display matrix has these four numbers.
    std::string turned(const std::string& film, const std::array<int32_t, 4>& matrix) const {
        std::string bytes = bytesOf(film);
        const std::array<int, 4> places{0, 4, 12, 16};
        for (size_t i = 0; i < 4; ++i)
            bytes.replace(bytes.find("tkhd") + 44 + static_cast<size_t>(places[i]), 4,
                          test::bigEndian(static_cast<uint32_t>(matrix[i]) << 16));
        return write("turned.mp4", bytes);
    }

    int countFrames(const std::string& file) {
        VideoReader reader(open(file), file);
        int frames = 0;
        while (reader.nextFrame()) ++frames;
        return frames;
    }

    static void expectRefused(const std::string& file, ErrorKind kind) {
        try {
            VideoReader reader(open(file), "the file", kind);
            FAIL() << file << " was opened";
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), kind) << error.what();
            EXPECT_EQ(error.file(), "the file");
        }
    }
};

TEST_F(VideoTest, WhatIsWrittenIsReadBackWithExactTimes) {
    // 30 does not divide a thousand, so that a rounded edit list would show.
    const std::string film = makeFilm("a.mp4", 20, small(64, 48, 30));
    const auto packets = packetsOf(film, AVMEDIA_TYPE_VIDEO, 30000);
    ASSERT_EQ(packets.size(), 20u);
    int64_t first = packets[0].pts, last = packets[0].pts;
    for (const PacketLine& packet : packets) {
        first = std::min(first, packet.pts);
        last = std::max(last, packet.pts);
        EXPECT_EQ(packet.duration, 1000);
    }
    EXPECT_EQ(first, 1000);
    EXPECT_EQ(last, 20000);

    VideoReader reader(open(film), film);
    EXPECT_EQ(reader.info().width, 64);
    EXPECT_EQ(reader.info().height, 48);
    EXPECT_EQ(reader.info().frameCount, 20);
    EXPECT_DOUBLE_EQ(reader.info().averageFrameRate, 30);
    EXPECT_EQ(reader.info().durationTicks(), 21 * 20);
    for (int i = 0; i < 20; ++i) {
        const auto frame = reader.nextFrame();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->time.value * 30, i * frame->time.timescale);
        Corners corners = kCorners;
        corners[3] = greyOf(i);
        expectCorners(*frame->pixels, corners);
    }
    EXPECT_FALSE(reader.nextFrame());
    EXPECT_FALSE(reader.nextFrame());
    EXPECT_FALSE(reader.error());
}

// While it lives, new memory is full of one byte, as if another film had left it there.
class MemoryFilledWith {
  public:
    explicit MemoryFilledWith(int byte) {
        // Large blocks come from the heap too: what comes straight from the system is always zero.
        mallopt(M_MMAP_THRESHOLD, 16 << 20);
        mallopt(M_PERTURB, ~byte & 0xFF);
    }
    ~MemoryFilledWith() {
        mallopt(M_PERTURB, 0);
        mallopt(M_MMAP_THRESHOLD, 128 << 10);
    }
};

TEST_F(VideoTest, TheSameFramesGiveTheSameBytes) {
    VideoWriter::Settings settings = small(320, 240);
    settings.optimiseForNetworkUse = true;
    const std::string first = bytesOf(makeFilm("a.mp4", 30, settings));
    EXPECT_LT(first.find("moov"), first.find("mdat"));
    for (const int byte : {0x00, 0x24, 0x55, 0x81, 0xAA, 0xC7, 0xFE}) {
        const MemoryFilledWith dirt(byte);
        EXPECT_TRUE(first == bytesOf(makeFilm("b.mp4", 30, settings))) << "in memory full of " << byte;
    }
}

TEST_F(VideoTest, CancellingWakesTheCallerAndRemovesTheFile) {
    VideoWriter::Settings settings = small(640, 480);
    settings.path = path("a.mp4");
    VideoWriter writer(settings);
    std::thread canceller([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        writer.cancel();
    });
    for (int64_t i = 1; writer.waitUntilReady(); ++i) writer.append(writer.takeBuffer(), i);
    canceller.join();
    EXPECT_FALSE(writer.isReadyForMoreMediaData());
    EXPECT_FALSE(writer.append(writer.takeBuffer(), 1000000));
    EXPECT_EQ(writer.finish(), VideoWriter::State::Cancelled);
    EXPECT_FALSE(std::filesystem::exists(settings.path));
}

TEST_F(VideoTest, AWriteThatFailsLaterEndsTheWriter) {
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit old{};
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit limit{40000, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
    VideoWriter::Settings settings = small(320, 240);
    settings.path = path("a.mp4");
    settings.preset = "ultrafast";
    settings.bitRate = 20000000;
    VideoWriter writer(settings);
    for (int64_t i = 1; writer.waitUntilReady(); ++i) {
        PixelBufferPool::Pointer picture = writer.takeBuffer();
        for (size_t k = 0; k < picture->size(); ++k)
            picture->data()[k] = static_cast<uint8_t>((k + 1) * (k + static_cast<size_t>(i)) >> 7);
        writer.append(std::move(picture), i);
        ASSERT_LT(i, 1000);
    }
    setrlimit(RLIMIT_FSIZE, &old);
    EXPECT_EQ(writer.finish(), VideoWriter::State::Failed);
    ASSERT_TRUE(writer.error());
    EXPECT_EQ(writer.error()->kind(), ErrorKind::Transient);
    EXPECT_EQ(writer.error()->file(), settings.path);
    EXPECT_FALSE(std::filesystem::exists(settings.path));
}

TEST_F(VideoTest, PicturesAreTurnedUpright) {
    VideoWriter::Settings settings = small(64, 32);
    settings.preset = "ultrafast";
    const std::string film = makeFilm("a.mp4", 1, settings);
    const Corners stored{kRed, kGreen, kBlue, greyOf(0)};
    const std::array<int32_t, 4> matrices[] = {{1, 0, 0, 1},  {0, 1, -1, 0}, {-1, 0, 0, -1}, {0, -1, 1, 0},
                                               {-1, 0, 0, 1}, {1, 0, 0, -1}, {0, 1, 1, 0},   {0, -1, -1, 0}};
    for (const auto& [a, b, c, d] : matrices) {
        SCOPED_TRACE(testing::Message() << a << " " << b << " " << c << " " << d);
        Corners expected;
        for (int i = 0; i < 4; ++i) {
            const int x = i % 2 ? 1 : -1, y = i / 2 ? 1 : -1;
            expected[static_cast<size_t>((b * x + d * y > 0) * 2 + (a * x + c * y > 0))] =
                stored[static_cast<size_t>(i)];
        }
        VideoReader reader(open(turned(film, {a, b, c, d})), "turned");
        const auto frame = reader.nextFrame();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->pixels->width(), a == 0 ? 32 : 64);
        EXPECT_EQ(reader.info().width, frame->pixels->width());
        EXPECT_EQ(reader.info().height, frame->pixels->height());
        expectCorners(*frame->pixels, expected);
    }
}

TEST_F(VideoTest, AVariableFrameRateGivesEveryPictureOnce) {
    VideoWriter::Settings settings = small();
    settings.preset = "ultrafast";
    const std::string film = makeFilm("a.mp4", 8, settings);
    VideoReader reader(open(copied(film, "vfr.mp4", "-bsf:v 'setts=ts=(4+N*(N+2))/(25*TB)'")), "vfr");
    for (int i = 0; i < 8; ++i) {
        const auto frame = reader.nextFrame();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->time.value * 25, ((i + 1) * (i + 1) - 1) * frame->time.timescale);
        expectColour(*frame->pixels, 48, 36, greyOf(i));
    }
    EXPECT_FALSE(reader.nextFrame());
}

TEST_F(VideoTest, TimesThatTheFileRoundsToMillisecondsAreExact) {
    VideoWriter::Settings settings = small(64, 48, 30);
    settings.preset = "ultrafast";
    const std::string film = makeFilm("a.mp4", 8, settings);
    VideoReader even(open(copied(film, "even.mkv")), "even");
    for (int i = 0; i < 8; ++i) {
        const auto frame = even.nextFrame();
        ASSERT_TRUE(frame);
        EXPECT_EQ(frame->time.value * 30, i * frame->time.timescale);
    }
    // What is uneven stays so.
    const std::string unevenly = copied(film, "vfr.mp4", "-bsf:v 'setts=ts=N*(N+2)/(30*TB)'");
    VideoReader uneven(open(copied(unevenly, "uneven.mkv")), "uneven");
    for (int i = 0; i < 8; ++i) {
        const auto frame = uneven.nextFrame();
        ASSERT_TRUE(frame);
        EXPECT_NEAR(CMTimeGetSeconds(frame->time), (i + 2) * i / 30.0, 0.0011);
    }
}

TEST_F(VideoTest, GreysAndSaturatedColoursComeBack) {
    struct Size {
        int width, height;
        AVColorSpace matrix;
    };
    for (const Size& size : {Size{640, 360, AVCOL_SPC_SMPTE170M}, Size{1280, 720, AVCOL_SPC_BT709},
                             Size{400, 720, AVCOL_SPC_BT709}}) {
        SCOPED_TRACE(size.width);
        // Above 16 greys, below eight bars of the corners of the colour cube.
        const auto colourAt = [&size](int x, int y) {
            const int grey = x * 16 / size.width * 17, bar = x * 8 / size.width;
            if (y < size.height / 2) return Colour{grey, grey, grey};
            return Colour{bar & 4 ? 255 : 0, bar & 2 ? 255 : 0, bar & 1 ? 255 : 0};
        };
        VideoWriter::Settings settings = small(size.width, size.height, 30);
        settings.path = path("bars.mp4");
        settings.bitRate = 20'000'000;
        VideoWriter writer(settings);
        for (int frame = 1; frame <= 3; ++frame) {
            auto picture = writer.takeBuffer();
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) {
                    const Colour colour = colourAt(x, y);
                    uint8_t* pixel = picture->data() + y * picture->stride() + 4 * x;
                    pixel[0] = static_cast<uint8_t>(colour.blue);
                    pixel[1] = static_cast<uint8_t>(colour.green);
                    pixel[2] = static_cast<uint8_t>(colour.red);
                    pixel[3] = 255;
                }
            writer.append(std::move(picture), frame);
        }
        writer.finish();

        AVFormatContext* file = nullptr;
        ASSERT_EQ(avformat_open_input(&file, path("bars.mp4").c_str(), nullptr, nullptr), 0);
        EXPECT_EQ(file->streams[0]->codecpar->color_space, size.matrix) << "the file's colour box";
        avformat_close_input(&file);
        VideoReader reader(open(path("bars.mp4")), "bars");
        const auto frame = reader.nextFrame();
        ASSERT_TRUE(frame);
        for (int y : {size.height / 4, size.height * 3 / 4})
            for (int i = 0; i < 16; ++i) {
                const int x = size.width * (2 * i + 1) / 32;
                expectColour(*frame->pixels, x, y, colourAt(x, y), 2);
            }
    }
}

TEST_F(VideoTest, TheNamedColourMatrixDecides) {
    const std::string film = makeFilm("a.mp4", 1, small());
    VideoReader reader(open(copied(film, "709.mp4", "-bsf:v h264_metadata=matrix_coefficients=1")), "709");
    // The stored red, written as BT.601, seen through BT.709.
    const double luma = 16 + (65.481 * kRed.red + 128.553 * kRed.green + 24.966 * kRed.blue) / 255;
    const double cb = (-37.797 * kRed.red - 74.203 * kRed.green + 112.0 * kRed.blue) / 255;
    const double cr = (112.0 * kRed.red - 93.786 * kRed.green - 18.214 * kRed.blue) / 255;
    const double grey = 1.164 * (luma - 16);
    expectColour(*reader.nextFrame()->pixels, 16, 12,
                 {static_cast<int>(grey + 1.793 * cr), static_cast<int>(grey - 0.213 * cb - 0.533 * cr),
                  static_cast<int>(grey + 2.112 * cb)});
}

TEST(PictureConverterTest, EveryPixelFormatAndOddSizeGivesTheSameColours) {
    // Limited BT.601 of the colour (200, 40, 40).
    constexpr int kLuma = 91, kCb = 106, kCr = 197;
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P10LE,
          AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_YUV444P12LE}) {
        const AVPixFmtDescriptor* descriptor = av_pix_fmt_desc_get(format);
        SCOPED_TRACE(descriptor->name);
        AVFrame* frame = av_frame_alloc();
        frame->format = format;
        frame->width = 17;
        frame->height = 13;
        frame->colorspace = AVCOL_SPC_SMPTE170M;
        ASSERT_EQ(av_frame_get_buffer(frame, 0), 0);
        const int levels[] = {kLuma, kCb, kCr};
        for (int c = 0; c < 3; ++c) {
            const AVComponentDescriptor& component = descriptor->comp[c];
            for (int y = 0; y < (c ? -(-13 >> descriptor->log2_chroma_h) : 13); ++y)
                for (int x = 0; x < (c ? -(-17 >> descriptor->log2_chroma_w) : 17); ++x) {
                    uint8_t* sample = frame->data[component.plane] + y * frame->linesize[component.plane] +
                                      x * component.step + component.offset;
                    const int value = levels[c] << (component.depth - 8);
                    sample[0] = static_cast<uint8_t>(value);
                    if (component.depth > 8) sample[1] = static_cast<uint8_t>(value >> 8);
                }
        }
        PictureConverter converter({});
        const auto picture = converter.convert(*frame);
        ASSERT_EQ(picture->width(), 17);
        ASSERT_EQ(picture->height(), 13);
        for (int y = 0; y < 13; ++y)
            for (int x = 0; x < 17; ++x) expectColour(*picture, x, y, {200, 40, 40}, 4);
        av_frame_free(&frame);
    }
}

TEST_F(VideoTest, ARateIsKeptByTime) {
    struct Case {
        int fps, wanted;
        std::vector<int> pictures;
    };
    for (const Case& it : {Case{10, 30, {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3}}, Case{60, 30, {0, 2}},
                           Case{30, 30, {0, 1, 2, 3}}, Case{24, 30, {0, 1, 1, 2, 3}}}) {
        const std::string film = makeFilm("film.mp4", 4, small(64, 48, it.fps));
        VideoReader reader(open(film), film, ErrorKind::Input, {.framesPerSecond = it.wanted});
        std::shared_ptr<const FilmPicture> before;
        for (size_t frame = 0; frame < it.pictures.size(); ++frame) {
            const auto shown = reader.nextFrame();
            ASSERT_TRUE(shown) << frame << " of " << it.fps;
            EXPECT_EQ(shown->time.value * it.wanted, int64_t(frame) * shown->time.timescale);
            expectColour(*shown->pixels, 48, 36, greyOf(it.pictures[frame]));
            const bool isAgain = frame > 0 && it.pictures[frame] == it.pictures[frame - 1];
            EXPECT_EQ(shown->pixels == before, isAgain) << frame;
            before = shown->pixels;
        }
        EXPECT_FALSE(reader.nextFrame()) << it.fps;
        EXPECT_EQ(framesWithin(measureFilm(open(film), film, ErrorKind::Input, 100).length, it.wanted),
                  int64_t(it.pictures.size()));
    }
    const std::string lasting = makeFilm("lasting.mp4", 100, small());
    const FilmLength part = measureFilm(open(lasting), lasting, ErrorKind::Input, 1);
    EXPECT_FALSE(part.isWhole) << "read no further";
    EXPECT_GE(framesWithin(part.length, 25), 25);
    EXPECT_LT(framesWithin(part.length, 25), 50);
}

TEST_F(VideoTest, WhatIsKeptOfAFilmIsWhatItShows) {
    constexpr size_t fewPictures = 200'000;  // bytes
    const std::string film = makeFilm("film.mp4", 40, small(64, 48, 30));
    const auto settle = [] { std::this_thread::sleep_for(std::chrono::milliseconds(60)); };
    settle();
    std::minstd_rand random(1);
    for (const int rate : {0, 45}) {
        const VideoReaderSettings settings{.framesPerSecond = rate};
        const auto bytesOf = [](const VideoFrame& frame) {
            return std::vector<uint8_t>(frame.pixels->data(), frame.pixels->data() + size_t{64} * 48 * 4);
        };
        std::vector<std::vector<uint8_t>> pictures;
        keepDecodedFilms(0);
        VideoReader straight(open(film), film, ErrorKind::Input, settings);
        while (const auto frame = straight.nextFrame()) pictures.push_back(bytesOf(*frame));
        keepDecodedFilms(fewPictures);
        for (int run = 0; run < 20; ++run) {
            std::vector<std::pair<size_t, VideoFrame>> later;
            {
                VideoReader reader(open(film), film, ErrorKind::Input, settings);
                reader.start();
                const bool isGivenUp = run > 0 && run % 3 == 0;
                for (size_t index = 0; index < pictures.size() - (isGivenUp ? 9 : 0); ++index) {
                    const auto frame = reader.nextFrame();
                    ASSERT_TRUE(frame) << index;
                    const unsigned chance = random() % 8;
                    if (chance < 2) {
                        EXPECT_EQ(bytesOf(*frame), pictures[index]) << index;
                    }
                    if (chance == 2) later.emplace_back(index, *frame);
                    if (random() % 32 != 0) continue;
                    for (const auto& [at, kept] : later) EXPECT_EQ(bytesOf(kept), pictures[at]) << at;
                }
                EXPECT_EQ(reader.nextFrame().has_value(), isGivenUp);
            }
            for (const auto& [at, kept] : later) EXPECT_EQ(bytesOf(kept), pictures[at]) << "late, " << at;
        }
        VideoReader unseen(open(film), film, ErrorKind::Input, settings);
        for (size_t index = 0; index < pictures.size(); ++index) EXPECT_TRUE(unseen.nextFrame());
        EXPECT_FALSE(unseen.nextFrame());
        EXPECT_EQ(unseen.statistics().frames, 0) << "nobody has looked";
    }
    makeFilm("film.mp4", 7, small(64, 48, 30));
    EXPECT_EQ(countFrames(film), 7);
    settle();
    EXPECT_EQ(countFrames(film), 7);
    keepDecodedFilms(0);
}

TEST_F(VideoTest, TheMiddleIsCutOutOfUprightPictures) {
    const std::string lying = makeFilm("lying.mp4", 1, small(64, 48));
    const std::string upended = turned(lying, {0, -1, 1, 0});
    for (const auto& [film, width, height] : {std::tuple{lying, 24, 48}, std::tuple{upended, 32, 64}}) {
        VideoReader reader(open(film), film, ErrorKind::Input, {.shape = {1, 2}});
        EXPECT_EQ(reader.info().width, width);
        EXPECT_EQ(reader.info().height, height);
        const auto shown = reader.nextFrame();
        ASSERT_TRUE(shown);
        EXPECT_EQ(shown->pixels->width(), width);
        EXPECT_EQ(shown->pixels->height(), height);
        // The quarters still meet in the middle.
        const Corners upright =
            film == lying ? Corners{kRed, kGreen, kBlue, greyOf(0)} : Corners{kGreen, greyOf(0), kRed, kBlue};
        expectCorners(*shown->pixels, upright);
    }
}

TEST_F(VideoTest, LyingTablesAreTheFilmsFaultAndNotForWantOfMemory) {
    std::string bytes = bytesOf(makeFilm("film.mp4", 2, small()));
    bytes.replace(bytes.find("stts") + 8, 4, "\x1f\xff\xff\xff");  // entries
    const std::string many = write("many.mp4", bytes);
    for (const bool isProbe : {true, false}) try {
            if (isProbe)
                probeVideo(open(many), many, ErrorKind::Input);
            else
                measureFilm(open(many), many, ErrorKind::Input, 1);
            ADD_FAILURE() << "taken as whole";
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), ErrorKind::Input) << error.what();
        }
}

TEST_F(VideoTest, OnlyVideosAreOpened) {
    const std::string film = makeFilm("a.mp4", 2, small());
    expectRefused(write("list.mp4", "#EXTM3U\n#EXTINF:1,\n" + film + "\n"), ErrorKind::Template);
    expectRefused(write("concat.mp4", "ffconcat version 1.0\nfile " + film + "\n"), ErrorKind::Input);
    expectRefused(write("text.mp4", "no video at all"), ErrorKind::Input);
    expectRefused(path("missing.mp4"), ErrorKind::Template);
    expectRefused(makeSound("sound.mp4", 44100, 1, 100, [](int64_t, int) { return 0; }), ErrorKind::Template);
}

TEST_F(VideoTest, DamagedFilesGiveWhatTheyHoldAndEnd) {
    VideoWriter::Settings settings = small(320, 240);
    settings.optimiseForNetworkUse = true;
    const std::string film = bytesOf(makeFilm("a.mp4", 60, settings));
    const int left = countFrames(write("short.mp4", film.substr(0, film.size() / 2)));
    EXPECT_GT(left, 0);
    EXPECT_LT(left, 60);
    std::string spoilt = film;
    for (size_t i = film.find("mdat") + 2000; i < film.size(); i += 97) spoilt[i] = static_cast<char>(i * 31);
    EXPECT_LE(countFrames(write("spoilt.mp4", spoilt)), 60);
    expectRefused(write("head.mp4", film.substr(0, 300)), ErrorKind::Template);
}

TEST_F(VideoTest, AReaderCanBeCancelledAndDroppedAtAnyTime) {
    const std::string film = makeFilm("a.mp4", 30, small());
    { VideoReader untouched(open(film), film); }
    {
        VideoReader unread(open(film), film);
        unread.start();
    }
    VideoReader reader(open(film), film);
    const auto held = reader.nextFrame();
    reader.cancel();
    EXPECT_FALSE(reader.nextFrame());
    expectColour(*held->pixels, 48, 36, greyOf(0));
}

}  // namespace
}  // namespace platform
