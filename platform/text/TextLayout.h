// The lines of a text. For the files of this folder.
#pragma once

#include <memory>
#include <vector>

#include "platform/text/TextRasterizer.h"

using PangoLayout = struct _PangoLayout;
using PangoLayoutLine = struct _PangoLayoutLine;
using PangoAttrList = struct _PangoAttrList;

namespace platform {

/// One line (or column): `length` along the writing direction, `breadth` across it, both in pixels.
struct TextLine {
    PangoLayoutLine* glyphs;  ///< owned by the layout
    double length, breadth;
    double ascent;  ///< from the line's upper (a column's right) edge to its baseline
    bool rightToLeft;
};

/// How far along its free space a line lies.
double alignmentShare(TextAlignment alignment, bool rightToLeft);

/// A text broken into lines; no line is placed yet.
class TextLayout {
  public:
    /// `wrapLength`: pixels of a line or column; 0 or less: only line feeds break.
    TextLayout(const TextLayoutDescription& description, double wrapLength);

    const std::vector<TextLine>& lines() const { return lines_; }
    double length() const { return length_; }    ///< of the longest line
    double breadth() const { return breadth_; }  ///< of all lines together
    const char* text() const;
    /// The letters that no font has, each once; their glyphs are blank and without length.
    const std::vector<char32_t>& missingLetters() const { return missingLetters_; }

  private:
    void balanceLines();
    std::vector<int> lineStarts() const;
    std::vector<int> balancedStarts(int wrapLength);
    void keepTogether(const std::vector<int>& starts);
    void moveLettersApart(const TextLayoutDescription& description);
    void forbidHyphens();
    void readLines(const TextLayoutDescription& description);
    void blankMissingLetters(PangoLayoutLine* line);

    struct LayoutDeleter {
        void operator()(PangoLayout* layout) const;
    };
    struct AttributesDeleter {
        void operator()(PangoAttrList* attributes) const;
    };
    std::unique_ptr<PangoLayout, LayoutDeleter> layout_;
    std::unique_ptr<PangoAttrList, AttributesDeleter> attributes_;  ///< that hold whatever lines are chosen
    std::vector<TextLine> lines_;
    std::vector<char32_t> missingLetters_;
    double length_ = 0, breadth_ = 0;
};

}  // namespace platform
