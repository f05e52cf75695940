#include "platform/font/LetterFont.h"

#include <FTGL/ftgl.h>

#include <array>

namespace platform {

namespace {

/// What FTGL takes for a text: one letter and the end.
using OneLetter = std::array<wchar_t, 2>;

OneLetter textOf(char32_t letter) { return {static_cast<wchar_t>(letter), 0}; }

class Glyph : public FTGlyph {
  public:
    Glyph(FT_GlyphSlot slot, GlyphSink& sink)
        : FTGlyph(slot), sink_(sink), number_(slot->glyph_index), advance_(FTGlyph::Advance(), 0) {
        sink_.load(number_, slot);
    }

    const FTPoint& Render(const FTPoint& pen, int) override {
        sink_.place(number_, pen.X(), pen.Y());
        return advance_;
    }

  private:
    GlyphSink& sink_;
    unsigned int number_;
    FTPoint advance_;
};

}  // namespace

class LetterFont::Font : public FTFont {
  public:
    Font(const char* path, GlyphSink& sink) : FTFont(path), sink_(sink) { prepare(); }
    Font(const std::vector<uint8_t>& bytes, GlyphSink& sink)
        : FTFont(bytes.data(), bytes.size()), sink_(sink) {
        prepare();
    }

    FTGlyph* MakeGlyph(FT_GlyphSlot slot) override {
        face_ = slot->face;
        return new Glyph(slot, sink_);
    }

    /// None for a file that is no font: nothing else may be asked of FTGL then.
    FT_Face face() const { return face_; }

  private:
    void prepare() {
        if (Error() != 0) return;
        // Neither hinting nor rounding: a text keeps its proportions at every size.
        GlyphLoadFlags(FT_LOAD_NO_HINTING | FT_LOAD_NO_BITMAP);
        if (FaceSize(em)) Advance(textOf(U' ').data());
    }

    GlyphSink& sink_;
    FT_Face face_ = nullptr;
};

LetterFont::LetterFont(FontSource source, GlyphSink& sink)
    : source_(std::move(source)),
      font_(source_.bytes.empty() ? std::make_unique<Font>(source_.path.c_str(), sink)
                                  : std::make_unique<Font>(source_.bytes, sink)) {}

LetterFont::~LetterFont() = default;

double LetterFont::ascender() const { return font_->face() ? double(font_->Ascender()) : 0; }
double LetterFont::descender() const { return font_->face() ? double(font_->Descender()) : 0; }

bool LetterFont::has(char32_t letter) const {
    return font_->face() && FT_Get_Char_Index(font_->face(), letter) != 0;
}

double LetterFont::advance(char32_t letter) const {
    return has(letter) ? double(font_->Advance(textOf(letter).data())) : 0;
}

/// Asked of FreeType: FTGL keeps a table of kernings that it fills before it knows the size.
double LetterFont::kerning(char32_t left, char32_t right) const {
    if (!has(left) || !has(right)) return 0;
    FT_Vector kerning{};
    FT_Get_Kerning(font_->face(), FT_Get_Char_Index(font_->face(), left),
                   FT_Get_Char_Index(font_->face(), right), FT_KERNING_UNFITTED, &kerning);
    return static_cast<double>(kerning.x) / 64;
}

void LetterFont::draw(char32_t letter, double x, double y) const {
    if (has(letter)) font_->Render(textOf(letter).data(), -1, FTPoint(x, y));
}

}  // namespace platform
