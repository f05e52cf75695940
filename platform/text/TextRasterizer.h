// Lays out and draws text: any script, colour emoji, right-to-left and vertical writing, with fallback to the
// installed fonts for what the chosen font lacks. Draws the same pixels for the same input and fonts. Any
// thread; each thread keeps its own fonts.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "platform/image/Image.h"

namespace platform {

enum class TextAlignment { Left = 0, Center = 1, Right = 2, Justified = 3, Natural = 4 };
enum class TextDrawingMode { Fill = 0, Stroke = 1, FillStroke = 2, Invisible = 3 };
/// Lines from left to right and top to bottom, or columns from top to bottom and right to left.
enum class TextDirection { Horizontal = 0, Vertical = 1 };
/// Where lines may break beside line feeds: nowhere, between words, or also inside a word that is wider than
/// the line. Lines that break are about equally long, in as few lines as can be.
enum class TextWrap { None, Words, WordsThenCharacters };
/// Where the block of lines lies along one axis of its box: left or top, middle, right or bottom. Fill: lines
/// are aligned within the box and not within their block (along the lines; across them it is Start).
enum class TextPlacement { Start = 0, Middle = 1, End = 2, Fill = 3 };

struct TextShadow {
    float offsetX = 0, offsetY = 0;  ///< pixels to the right and down
    float blurRadius = 0;            ///< pixels over which the edge fades; 0: a sharp shadow
    Color color{0, 0, 0, 1.0f / 3};
};

/// A font file that has been opened (openFontFile).
struct FontFile;

/// Which font, and how large. `file` wins over `name`.
struct TextFont {
    /// An installed family with an optional style ("Noto Serif Bold"), or a PostScript name. Unknown names
    /// give the system's default font.
    std::string name;
    /// A font that need not be installed; none: by its name.
    const FontFile* file = nullptr;
    float size = 0;  ///< pixels
};

struct TextRect {
    double x = 0, y = 0, width = 0, height = 0;
};

struct TextSize {
    double width = 0, height = 0;
};

/// All that decides about the lines.
struct TextLayoutDescription {
    std::string text;  ///< UTF-8; malformed bytes become U+FFFD; cut after TextLimits::characters
    TextFont font;
    TextAlignment alignment = TextAlignment::Left;
    TextDirection direction = TextDirection::Horizontal;
    TextWrap wrap = TextWrap::WordsThenCharacters;
    int maxLines = 0;  ///< further lines are not drawn; 0: no limit
    /// Room between letters, in shares of the font's size; less than 0 brings them closer. Letters of scripts
    /// that join them keep their places.
    float letterSpacing = 0;
    float lineSpacing = 1;  ///< from line to line, in shares of what the font wants
};

struct TextLimits {
    static constexpr int characters = limitOf<int>("maxTextCharacters");
    static constexpr int codePoints = limitOf<int>(
        "maxCharacterCodePoints");  ///< of one character with its marks; further ones are left out
    static constexpr float fontSize = limitOf<float>("maxFontSize"),
                           strokeWidth = limitOf<float>("maxTextStroke"),
                           blurRadius = limitOf<float>("maxTextBlur");
    static constexpr float leastLetterSpacing = -0.5f, letterSpacing = 3, lineSpacing = 10;
};

/// A text with all that is needed to draw it as a texture. Lengths are pixels of the texture.
struct TextTextureDescription {
    TextLayoutDescription layout;
    Color textColor{0, 0, 0, 1};
    Color strokeColor{0, 0, 0, 1};
    float strokeWidth = 0;  ///< half of it lies outside the letters
    TextDrawingMode drawingMode = TextDrawingMode::Fill;
    std::optional<Color> background;  ///< behind each line
    std::optional<TextShadow> shadow;

    TextSize textureSize;
    /// The box of the lines, in the texture's pixels divided by drawScale; they are wrapped at its width.
    TextRect drawRect;
    double drawScale = 1;  ///< the whole text drawn larger or smaller
    TextPlacement horizontalPlacement = TextPlacement::Fill, verticalPlacement = TextPlacement::Start;
};

struct TextMeasure {
    TextSize size;  ///< of the block of lines, without stroke and shadow
    int lineCount = 0;
    /// The letters that no font has, each once; they take no room and are not drawn.
    std::vector<char32_t> missingLetters;
};

/// The size of the text when it is wrapped at `wrapLength` pixels (of a line or column; 0: never wrapped).
TextMeasure measureText(const TextLayoutDescription& layout, double wrapLength);

/// Draws into a new bitmap of the given size; `scale` is bitmap pixels a texture pixel.
Bitmap drawText(const TextTextureDescription& description, int bitmapWidth, int bitmapHeight, double scale);

/// The text with malformed UTF-8 replaced and cut after `maxCharacters` characters as a reader counts them
/// (an emoji of several code points is one), each within TextLimits::codePoints; 0: not cut.
std::string truncateText(const std::string& text, int maxCharacters);

/// How many characters a reader counts in the text; malformed UTF-8 counts as what replaces it.
int countCharacters(const std::string& text);

/// Whether `name` is an installed family (with or without style words) or a PostScript name.
bool isFontInstalled(const std::string& name);
/// The font in an open file; null when it is none. The same file is loaded once, however often it is opened,
/// and stays until the program ends. Any thread.
const FontFile* openFontFile(FileHandle file);
/// Whether the file holds a font that can be used.
bool isFontFile(const FileHandle& file);

}  // namespace platform
