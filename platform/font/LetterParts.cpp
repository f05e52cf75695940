#include "platform/font/LetterParts.h"

#include <algorithm>
#include <utility>

#include "platform/text/LetterBreaks.h"

namespace platform {

namespace {

/// Where in a text a letter stands: numbers that grow as it is read, with gaps.
struct Place {
    size_t line, word, letter;
};

size_t lastUpTo(const std::vector<size_t>& starts, size_t byte) {
    return size_t(std::ranges::upper_bound(starts, byte) - starts.begin());
}

bool isBlank(const ShapedText& text, const GlyphPlacement& letter) {
    return !(text.ink(letter.glyph).width > 0);
}

/// Numbers without gaps for those that occur.
class Ranks {
  public:
    explicit Ranks(std::vector<size_t> numbers) : known_(std::move(numbers)) {
        std::ranges::sort(known_);
        known_.erase(std::unique(known_.begin(), known_.end()), known_.end());
    }
    size_t of(size_t number) const {
        const auto found = std::ranges::lower_bound(known_, number) - known_.begin();
        return std::min(size_t(found), known_.empty() ? 0 : known_.size() - 1);
    }
    size_t count() const { return known_.size(); }

  private:
    std::vector<size_t> known_;
};

class PartMaker {
  public:
    PartMaker(const ShapedText& text, std::optional<LetterUnit> unit) : text_(text), unit_(unit) {
        const LetterBreaks breaks = letterBreaks(text.text());
        for (const GlyphPlacement& letter : text.placements())
            places_.push_back({letter.line, lastUpTo(breaks.words, letter.textStart),
                               lastUpTo(breaks.letters, letter.textStart)});
    }

    LetterParts parts() {
        const Ranks words = ranks([](const Place& place) { return place.word; });
        const Ranks lines = ranks([](const Place& place) { return place.line; });
        const Ranks numbers = ranks([this](const Place& place) { return numberOf(place); });
        LetterParts result;
        result.parts.resize(std::max<size_t>(numbers.count(), 1));
        std::vector<bool> isKnown(result.parts.size());
        for (size_t i = 0; i < places_.size(); ++i) {
            const GlyphPlacement& letter = text_.placements()[i];
            const size_t number = numbers.of(numberOf(places_[i]));
            result.ofPlacement.push_back(number);
            if (isBlank(text_, letter)) continue;
            LetterPart& part = result.parts[number];
            const LineEdges& line = text_.lines()[letter.line];
            const LetterPart box{.left = float(letter.x),
                                 .right = float(letter.x + letter.advance),
                                 .bottom = float(line.bottom),
                                 .top = float(line.top),
                                 .word = words.of(places_[i].word),
                                 .line = lines.of(places_[i].line)};
            part = isKnown[number] ? around(part, box) : box;
            isKnown[number] = true;
        }
        return result;
    }

  private:
    size_t numberOf(const Place& place) const {
        if (!unit_) return 0;
        switch (*unit_) {
            case LetterUnit::Letter:
                return place.letter;
            case LetterUnit::Word:
                return place.word;
            case LetterUnit::Line:
                return place.line;
        }
        return 0;
    }

    template <typename NumberOf>
    Ranks ranks(NumberOf number) const {
        std::vector<size_t> numbers;
        for (size_t i = 0; i < places_.size(); ++i)
            if (!isBlank(text_, text_.placements()[i])) numbers.push_back(number(places_[i]));
        return Ranks(std::move(numbers));
    }

    static LetterPart around(const LetterPart& a, const LetterPart& b) {
        return {.left = std::min(a.left, b.left),
                .right = std::max(a.right, b.right),
                .bottom = std::min(a.bottom, b.bottom),
                .top = std::max(a.top, b.top),
                .word = std::min(a.word, b.word),
                .line = std::min(a.line, b.line)};
    }

    const ShapedText& text_;
    std::optional<LetterUnit> unit_;
    std::vector<Place> places_;
};

}  // namespace

LetterParts letterParts(const ShapedText& text, std::optional<LetterUnit> unit) {
    return PartMaker(text, unit).parts();
}

}  // namespace platform
