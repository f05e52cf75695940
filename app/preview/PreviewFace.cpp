#include "app/preview/PreviewFace.h"

#include <algorithm>
#include <cmath>

#include "platform/text/TextRasterizer.h"

namespace multiscene {

namespace {

constexpr double kBarHeight = 26, kLetters = 13, kMargin = 8;  // points
constexpr uint32_t kGround = 0x202226, kTrack = 0x3a3e46, kDone = 0x4c8dff, kInk = 0xe8eaed;
constexpr double kSideText = 230;  // points: beside the track, on either side
constexpr const char* kFont = "DejaVu Sans";

platform::Color colorOf(uint32_t rgb) {
    const auto share = [&](int shift) { return static_cast<float>((rgb >> shift) & 255) / 255; };
    return {share(16), share(8), share(0), 1};
}

platform::TextTextureDescription descriptionOf(const std::string& text, double letters, double width,
                                               double height, uint32_t rgb) {
    platform::TextTextureDescription description;
    description.layout = {.text = text,
                          .font = {.name = kFont, .size = static_cast<float>(letters)},
                          .wrap = platform::TextWrap::WordsThenCharacters};
    description.textColor = colorOf(rgb);
    description.textureSize = {width, height};
    description.drawRect = {0, 0, width, height};
    description.horizontalPlacement = platform::TextPlacement::Fill;
    return description;
}

}  // namespace

// Panels

void PreviewPanel::resize(int width, int height) {
    width_ = std::max(width, 0);
    height_ = std::max(height, 0);
    pixels_.assign(static_cast<size_t>(width_) * static_cast<size_t>(height_), 0xff000000U);
    ++version_;
}

void PreviewPanel::fill(int x, int y, int width, int height, uint32_t rgb) {
    const int right = std::min(x + width, width_), lower = std::min(y + height, height_);
    for (int row = std::max(y, 0); row < lower; ++row)
        for (int column = std::max(x, 0); column < right; ++column)
            pixels_[static_cast<size_t>(row) * static_cast<size_t>(width_) + static_cast<size_t>(column)] =
                0xff000000U | rgb;
}

void PreviewPanel::put(const platform::Bitmap& text, int x, int y) {
    for (int row = std::max(0, -y); row < std::min(text.height, height_ - y); ++row)
        for (int column = std::max(0, -x); column < std::min(text.width, width_ - x); ++column) {
            const uint8_t* const ink = text.pixel(column, row);
            uint32_t& pixel = pixels_[static_cast<size_t>(y + row) * static_cast<size_t>(width_) +
                                      static_cast<size_t>(x + column)];
            const auto mixed = [&](int channel, int shift) {
                const uint32_t under = (pixel >> shift) & 255;
                return std::min(ink[channel] + under * (255U - ink[3]) / 255U, 255U) << shift;
            };
            pixel = 0xff000000U | mixed(0, 16) | mixed(1, 8) | mixed(2, 0);
        }
}

platform::Surface PreviewPanel::surface() const {
    return {.pixels = reinterpret_cast<const uint8_t*>(pixels_.data()),
            .stride = ptrdiff_t{width_} * 4,
            .width = width_,
            .height = height_,
            .opaque = true};
}

// The face

int PreviewFace::pixels(double points) const { return static_cast<int>(std::lround(points * scale_)); }

int PreviewFace::barHeight() const { return pixels(kBarHeight); }

platform::Bitmap PreviewFace::drawn(const std::string& text, int width, int height, uint32_t rgb) const {
    if (text.empty() || width <= 0 || height <= 0) return {};
    return platform::drawText(descriptionOf(text, kLetters * scale_, width, height, rgb), width, height, 1);
}

const platform::Bitmap& PreviewFace::line(Line& kept, const std::string& text, int width) {
    if (kept.text != text || kept.picture.width != width) {
        kept.text = text;
        kept.picture = drawn(text, width, pixels(kLetters * 1.4), kInk);
    }
    return kept.picture;
}

const PreviewPanel& PreviewFace::bar(int width, const Bar& bar) {
    const int height = barHeight(), margin = pixels(kMargin), track = pixels(6);
    const int side = std::min(pixels(kSideText), width * 2 / 5);
    bar_.resize(width, height);
    bar_.fill(0, 0, width, height, kGround);
    bar_.fill(0, 0, width, track, kTrack);
    bar_.fill(0, 0, static_cast<int>(std::lround(bar.done * width)), track, kDone);
    const int textTop = track + pixels(2);
    bar_.put(line(left_, bar.left, side), margin, textTop);
    bar_.put(line(right_, bar.right, std::max(width - side - 2 * margin, 0)), side + margin, textTop);
    return bar_;
}

const PreviewPanel& PreviewFace::message(int width, int mostHeight, const std::string& title,
                                         uint32_t titleColor, const std::string& text) {
    const std::string key = std::to_string(width) + " " + std::to_string(mostHeight) + title + "\n" + text;
    if (key == messageKey_) return message_;
    messageKey_ = key;
    const int margin = pixels(kMargin), inner = width - 2 * margin;
    const int titleHeight = title.empty() ? 0 : pixels(kLetters * 1.7);
    const auto measured = platform::measureText(
        descriptionOf(text, kLetters * scale_, inner, mostHeight, kInk).layout, std::max(inner, 1));
    const int textHeight = static_cast<int>(std::ceil(measured.size.height));
    message_.resize(width, std::clamp(textHeight + titleHeight + 2 * margin, 1, std::max(mostHeight, 1)));
    message_.fill(0, 0, width, message_.height(), kGround);
    message_.fill(0, 0, pixels(4), message_.height(), titleColor);
    message_.put(drawn(title, inner, titleHeight, titleColor), margin, margin);
    message_.put(drawn(text, inner, message_.height() - titleHeight - margin, kInk), margin,
                 margin + titleHeight);
    return message_;
}

const PreviewPanel& PreviewFace::overlay(const std::string& text) {
    if (text == overlayKey_) return overlay_;
    overlayKey_ = text;
    const int margin = pixels(kMargin);
    const auto measured =
        platform::measureText(descriptionOf(text, kLetters * scale_, 0, 0, kInk).layout, 0).size;
    const int width = static_cast<int>(std::ceil(measured.width)) + pixels(4);
    const int height = static_cast<int>(std::ceil(measured.height));
    overlay_.resize(width + 2 * margin, height + 2 * margin);
    overlay_.fill(0, 0, overlay_.width(), overlay_.height(), kGround);
    overlay_.put(drawn(text, width, height, kInk), margin, margin);
    return overlay_;
}

}  // namespace multiscene
