#include "platform/font/Letters.h"

#include <cmath>
#include <mutex>

#include "platform/font/GlyphAtlas.h"
#include "platform/font/GlyphMesh.h"
#include "platform/font/LetterLines.h"

namespace platform {

namespace {

/// The code points of valid UTF-8.
std::u32string codePoints(const std::string& utf8) {
    std::u32string points;
    for (const char byte : utf8) {
        const auto bits = static_cast<uint8_t>(byte);
        if ((bits & 0xC0) == 0x80)
            points.back() = points.back() << 6 | (bits & 0x3F);
        else
            points.push_back(bits < 0x80   ? bits
                             : bits < 0xE0 ? bits & 0x1F
                             : bits < 0xF0 ? bits & 0x0F
                                           : bits & 7);
    }
    return points;
}

/// Lays the text out into the sink; `unit` becomes the model units of one unit of the font.
LetterBlock layOut(const LetterText& text, GlyphSink& sink, float unit) {
    // FreeType's library is one for the whole process, and FTGL's are not made for several threads.
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    const std::u32string letters = codePoints(truncateText(text.text, TextLimits::characters));
    const LetterFont font(findFontSource(text.font, letters), sink);
    const LineBlock block =
        drawLines(breakLines(letters, font, double(text.lineLength / unit)), font, text.alignment);
    return {float(block.width) * unit, float(block.height) * unit};
}

/// Model units of one unit of the font.
float unitOf(const LetterText& text) {
    const float size = std::isfinite(text.font.size) && text.font.size > 0 ? text.font.size : 1;
    return size / float(LetterFont::em);
}

std::vector<LetterVertex> scaled(std::vector<LetterVertex> vertices, float unit) {
    for (LetterVertex& vertex : vertices) {
        vertex.x *= unit;
        vertex.y *= unit;
        vertex.z *= unit;
    }
    return vertices;
}

}  // namespace

FlatLetters flatLetters(const LetterText& text) {
    const float unit = unitOf(text);
    GlyphAtlas atlas;
    const LetterBlock block = layOut(text, atlas, unit);
    return {scaled(atlas.takeTriangles(), unit), atlas.takeAtlas(), block};
}

SolidLetters solidLetters(const LetterText& text, float depth) {
    const float unit = unitOf(text);
    GlyphMesh mesh(double(depth / unit));
    const LetterBlock block = layOut(text, mesh, unit);
    return {scaled(mesh.takeTriangles(), unit), block};
}

}  // namespace platform
