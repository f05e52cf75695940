// Pictures and tables of colours.
#include "tests/program/LimitTrial.h"

#include <cmath>

#include "platform/image/ColorTable.h"
#include "platform/image/PngFile.h"
#include "platform/image/PvrFile.h"
#include "tests/platform/PngBytes.h"

namespace multiscene::test {

namespace {

using platform::test::png, platform::test::pngChunk;

const std::string grey8("\x08\x00\x00\x00\x00", 5), interlacedRgba8("\x08\x06\x00\x00\x01", 5);

Trial ofPicture(const std::string& limit, std::function<std::string(uint64_t)> bytes) {
    return {limit, kInput, {"a.png"}, [=](const PlayLimitsTest& test, uint64_t number) {
                return verdictOf([&] {
                    const auto file = test.opened("a.png", bytes(number));
                    platform::readImageSize(file, {.name = "a.png"});
                    return std::string();
                });
            }};
}

/// Two sides of a picture of so many pixels, or of so few more that it has two; fewer, when `isLess`.
std::pair<uint64_t, uint64_t> sidesOf(uint64_t pixels, bool isLess) {
    const uint64_t longest = limitOf("maxPictureSide");
    for (;; pixels += isLess ? -1 : 1)
        for (auto side = static_cast<uint64_t>(std::sqrt(pixels)); side >= pixels / longest; --side)
            if (pixels % side == 0 && pixels / side <= longest) return {side, pixels / side};
}

/// What is kept of a PNG's chunk of so many bytes.
Trial ofChunk(const std::string& limit, const std::string& name) {
    return {limit, kTemplate, {}, [=](const PlayLimitsTest& test, uint64_t bytes) {
                const std::string content = png(8, 8, grey8, pngChunk(name, std::string(bytes, 'a')));
                uint64_t kept = 0;
                for (const auto& range : platform::picturePartsOfPng(test.opened("a.png", content)))
                    kept += range.length;
                return Verdict{kept == content.size() ? kAccepted : kTemplate,
                               "left out: more than " + std::to_string(bytes - 1)};
            }};
}

std::string pvr(uint64_t width, uint64_t height, uint64_t levels, uint64_t bytes) {
    std::string file;
    for (const uint64_t field : std::initializer_list<uint64_t>{52, height, width, levels, 0x16, bytes, 8, 0,
                                                                0, 0, 0, 0x21525650, 1})
        for (int shift = 0; shift < 32; shift += 8) file += static_cast<char>(field >> shift);
    return file + std::string(bytes, '\0');
}

Trial ofPvr(const std::string& limit, std::function<std::string(uint64_t)> bytes) {
    return {limit, kTemplate, {}, [=](const PlayLimitsTest&, uint64_t number) {
                const std::string file = bytes(number);
                return verdictOf([&] { return platform::PvrFile({file.begin(), file.end()}).problem(); });
            }};
}

}  // namespace

std::vector<Trial> pictureTrials() {
    return {
        ofPicture("maxPictureSide", [](uint64_t side) { return png(side, 1, grey8); }),
        ofPicture("maxPicturePixels",
                  [](uint64_t pixels) {
                      const auto [width, height] = sidesOf(pixels, pixels <= limitOf("maxPicturePixels"));
                      return png(width, height, grey8);
                  }),
        ofPicture("maxPictureHeldBytes",
                  [](uint64_t bytes) {
                      const bool isLess = bytes <= limitOf("maxPictureHeldBytes");
                      const auto [width, height] = sidesOf(isLess ? bytes / 4 : bytes / 4 + 1, isLess);
                      return png(width, height, interlacedRgba8);
                  }),
        ofPicture("maxPngParts",
                  [](uint64_t parts) {  // three are there anyway
                      return png(8, 8, grey8, repeated(pngChunk("tEXt", ""), parts - 3));
                  }),
        ofChunk("maxPngProfileBytes", "iCCP"),
        ofChunk("maxPngExifBytes", "eXIf"),
        ofPvr("maxPvrSide", [](uint64_t side) { return pvr(side, 1, 0, side); }),
        ofPvr("maxPvrPixels",
              [](uint64_t pixels) {
                  const uint64_t row = 4096, rows = (pixels + row - 1) / row;
                  return pvr(row, rows, 0, row * rows);
              }),
        ofPvr("maxPvrLevels", [](uint64_t levels) { return pvr(1, 1, levels, levels + 1); }),
        {"maxColorTableSide",
         kTemplate,
         {"line 1"},
         [](const PlayLimitsTest&, uint64_t side) {
             const std::string text =
                 "LUT_3D_SIZE " + std::to_string(side) + "\n" + repeated("0 0 0\n", side * side * side);
             return verdictOf([&] { return platform::ColorTable::parse(text), std::string(); });
         }},
        {"maxColorTableBytes",
         kTemplate,
         {"a.cube"},
         [](const PlayLimitsTest& test, uint64_t bytes) {
             std::string text = "LUT_3D_SIZE 2\n" + repeated("0 0 0\n", 8) + "#";
             text.resize(bytes, ' ');
             return verdictOf([&] {
                 return platform::ColorTable::read(fs::path(test.written("a.cube", text))), std::string();
             });
         }},
    };
}

}  // namespace multiscene::test
