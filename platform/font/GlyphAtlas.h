// Pictures of letters side by side in one bitmap. For the files of this folder.
#pragma once

#include <map>

#include "platform/font/LetterFont.h"
#include "platform/font/Letters.h"

namespace platform {

/// Fills an atlas with the letters that are loaded, and makes two triangles of each that is placed.
class GlyphAtlas : public GlyphSink {
  public:
    static constexpr int width = 1024, maxHeight = 4096;  ///< pixels

    void load(unsigned int glyph, FT_GlyphSlotRec_* outline) override;
    void place(unsigned int glyph, double x, double y) override;

    /// The triangles in the font's units; u and v are set. Ends the atlas.
    std::vector<LetterVertex> takeTriangles();
    Bitmap takeAtlas() { return std::move(atlas_); }

  private:
    /// A letter's picture with its clear border: where in the atlas, and where from the letter's origin.
    struct Piece {
        int x, y, width, height;
        int left, top;
    };
    bool findRoom(Piece& piece);

    Bitmap atlas_;
    int nextX_ = 0, rowY_ = 0, rowHeight_ = 0;
    std::map<unsigned int, Piece> pieces_;
    std::vector<LetterVertex> triangles_;
};

}  // namespace platform
