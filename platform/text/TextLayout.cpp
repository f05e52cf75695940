#include "platform/text/TextLayout.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "platform/text/FontLibrary.h"
#include "platform/text/JoinedLetters.h"
#include "platform/text/LineBalance.h"

namespace platform {

namespace {

struct ContextDeleter {
    void operator()(PangoContext* context) const { g_object_unref(context); }
};
using Context = std::unique_ptr<PangoContext, ContextDeleter>;

/// Chinese, Japanese and Korean share characters that each draws differently; the neighbours tell which.
PangoLanguage* languageOf(const std::string& text) {
    for (const char* at = text.c_str(); *at; at = g_utf8_next_char(at)) {
        const GUnicodeScript script = g_unichar_get_script(g_utf8_get_char(at));
        if (script == G_UNICODE_SCRIPT_HIRAGANA || script == G_UNICODE_SCRIPT_KATAKANA)
            return pango_language_from_string("ja");
        if (script == G_UNICODE_SCRIPT_HANGUL) return pango_language_from_string("ko");
    }
    return pango_language_from_string("zh-cn");
}

/// Neither hinting nor rounding: a text has the same lines at every scale.
void setExactMetrics(PangoContext* context) {
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    pango_cairo_context_set_font_options(context, options);
    cairo_font_options_destroy(options);
    pango_context_set_round_glyph_positions(context, FALSE);
}

Context makeContext(const FontChoice& font, const std::string& text, TextDirection direction) {
    Context context(pango_font_map_create_context(font.map));
    setExactMetrics(context.get());
    pango_context_set_language(context.get(), languageOf(text));
    if (direction == TextDirection::Vertical)
        pango_context_set_base_gravity(context.get(), PANGO_GRAVITY_EAST);
    return context;
}

std::string validText(const std::string& text) {
    char* valid = g_utf8_make_valid(text.data(), gssize(text.size()));
    std::string result(valid);
    g_free(valid);
    return result;
}

template <typename Visit>
void forEachRun(PangoLayoutLine* line, Visit visit) {
    for (GSList* item = line->runs; item; item = item->next) visit(static_cast<PangoLayoutRun*>(item->data));
}

/// Added up here: Pango's own sums of many large letters run over.
double lengthOf(PangoLayoutLine* line) {
    double length = 0;
    forEachRun(line, [&](const PangoLayoutRun* run) {
        for (int i = 0; i < run->glyphs->num_glyphs; ++i)
            length += pango_units_to_double(run->glyphs->glyphs[i].geometry.width);
    });
    return length;
}

TextLine readLine(PangoLayoutLine* line) {
    PangoRectangle logical;
    pango_layout_line_get_extents(line, nullptr, &logical);
    return {line, lengthOf(line), pango_units_to_double(logical.height), -pango_units_to_double(logical.y),
            pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL};
}

/// The byte at which each character begins, and the end.
std::vector<int> characterStarts(const char* text) {
    std::vector<int> starts;
    const char* at = text;
    for (; *at; at = g_utf8_next_char(at)) starts.push_back(int(at - text));
    starts.push_back(int(at - text));
    return starts;
}

/// What an unwrapped layout says of the characters from `first` to before `last`.
std::vector<BreakLetter> readLetters(PangoLayout* layout, PangoLayoutLine* line,
                                     const std::vector<int>& starts, size_t first, size_t last) {
    std::vector<BreakLetter> letters(last - first);
    int count = 0;
    const PangoLogAttr* attributes = pango_layout_get_log_attrs_readonly(layout, &count);
    const bool breaksWords = pango_layout_get_wrap(layout) == PANGO_WRAP_WORD_CHAR;
    for (size_t i = first; i < last && i < size_t(count); ++i) {
        BreakLetter& letter = letters[i - first];
        letter.isBlank = attributes[i].is_white;
        if (attributes[i].is_line_break)
            letter.before = BreakLetter::Before::BetweenWords;
        else if (breaksWords && attributes[i].is_char_break)
            letter.before = BreakLetter::Before::InsideWord;
    }
    forEachRun(line, [&](PangoLayoutRun* run) {
        std::vector<int> widths(size_t(run->item->num_chars));
        pango_glyph_item_get_logical_widths(run, pango_layout_get_text(layout), widths.data());
        const auto begin = std::ranges::lower_bound(starts, run->item->offset) - starts.begin();
        for (size_t i = 0; i < widths.size(); ++i)
            if (const size_t at = size_t(begin) + i - first; at < letters.size())
                letters[at].length = widths[i];
    });
    return letters;
}

}  // namespace

double alignmentShare(TextAlignment alignment, bool rightToLeft) {
    switch (alignment) {
        case TextAlignment::Left:
            return 0;
        case TextAlignment::Center:
            return 0.5;
        case TextAlignment::Right:
            return 1;
        default:
            return rightToLeft ? 1 : 0;
    }
}

void TextLayout::LayoutDeleter::operator()(PangoLayout* layout) const { g_object_unref(layout); }

void TextLayout::AttributesDeleter::operator()(PangoAttrList* attributes) const {
    pango_attr_list_unref(attributes);
}

TextLayout::TextLayout(const TextLayoutDescription& description, double wrapLength)
    : attributes_(pango_attr_list_new()) {
    const std::string text = truncateText(description.text, TextLimits::characters);
    const FontChoice font = chooseFont(description.font);
    const Context context = makeContext(font, text, description.direction);
    layout_.reset(pango_layout_new(context.get()));
    pango_layout_set_font_description(layout_.get(), font.description.get());
    const bool wholeWords = description.wrap == TextWrap::Words,
               justified = description.alignment == TextAlignment::Justified;
    pango_layout_set_wrap(layout_.get(), wholeWords ? PANGO_WRAP_WORD : PANGO_WRAP_WORD_CHAR);
    const bool wraps = wrapLength > 0 && description.wrap != TextWrap::None;
    if (wraps) pango_layout_set_width(layout_.get(), pango_units_from_double(wrapLength));
    pango_layout_set_justify(layout_.get(), justified);
    pango_layout_set_text(layout_.get(), text.c_str(), int(text.size()));
    forbidHyphens();
    moveLettersApart(description);
    pango_layout_set_attributes(layout_.get(), attributes_.get());
    if (wraps && !justified) balanceLines();
    readLines(description);
}

/// A word that has to be broken shows only what was typed.
void TextLayout::forbidHyphens() {
    pango_attr_list_insert(attributes_.get(), pango_attr_insert_hyphens_new(FALSE));
}

void TextLayout::moveLettersApart(const TextLayoutDescription& description) {
    const double spacing = double(description.letterSpacing) * double(description.font.size);
    if (spacing == 0 || !std::isfinite(spacing)) return;
    for (const TextRange& range : separableRanges(text())) {
        PangoAttribute* apart = pango_attr_letter_spacing_new(pango_units_from_double(spacing));
        apart->start_index = guint(range.start);
        apart->end_index = guint(range.end);
        pango_attr_list_insert(attributes_.get(), apart);
    }
}

/// Pango fills each line before it begins the next one. Once the choice of breaks is made, it is kept by
/// forbidding all others: no two lines of a choice with the fewest lines have room on one.
void TextLayout::balanceLines() {
    const int wrapLength = pango_layout_get_width(layout_.get());
    const std::vector<int> filled = lineStarts();
    pango_layout_set_width(layout_.get(), -1);
    const bool wraps = lineStarts().size() < filled.size();
    const std::vector<int> balanced = wraps ? balancedStarts(wrapLength) : filled;
    pango_layout_set_width(layout_.get(), wrapLength);
    if (balanced == filled || balanced.size() != filled.size()) return;
    keepTogether(balanced);
    // A letter may be wider at a line's end than amid the text.
    if (lineStarts() != balanced) pango_layout_set_attributes(layout_.get(), attributes_.get());
}

/// The bytes at which lines begin.
std::vector<int> TextLayout::lineStarts() const {
    std::vector<int> starts;
    for (GSList* item = pango_layout_get_lines_readonly(layout_.get()); item; item = item->next)
        starts.push_back(static_cast<PangoLayoutLine*>(item->data)->start_index);
    return starts;
}

/// The same for lines that are to be about equally long. The layout must not be wrapped.
std::vector<int> TextLayout::balancedStarts(int wrapLength) {
    const std::vector<int> starts = characterStarts(text());
    const auto characterAt = [&](int byte) {
        return size_t(std::ranges::lower_bound(starts, byte) - starts.begin());
    };
    std::vector<int> lines;
    for (GSList* item = pango_layout_get_lines(layout_.get()); item; item = item->next) {
        auto* line = static_cast<PangoLayoutLine*>(item->data);
        const size_t first = characterAt(line->start_index),
                     last = characterAt(line->start_index + line->length);
        if (first == last) lines.push_back(line->start_index);
        if (first == last) continue;
        for (const size_t start :
             balancedLineStarts(readLetters(layout_.get(), line, starts, first, last), wrapLength))
            lines.push_back(starts[first + start]);
    }
    return lines;
}

void TextLayout::keepTogether(const std::vector<int>& starts) {
    PangoAttrList* attributes = pango_attr_list_copy(attributes_.get());
    for (size_t i = 0; i < starts.size(); ++i) {
        PangoAttribute* together = pango_attr_allow_breaks_new(FALSE);
        together->start_index = guint(starts[i]);
        together->end_index = i + 1 < starts.size() ? guint(starts[i + 1]) : guint(std::strlen(text()));
        pango_attr_list_insert(attributes, together);
    }
    pango_layout_set_attributes(layout_.get(), attributes);
    pango_attr_list_unref(attributes);
}

void TextLayout::readLines(const TextLayoutDescription& description) {
    const double spacing = double(description.lineSpacing);
    for (GSList* item = pango_layout_get_lines(layout_.get()); item; item = item->next) {
        if (description.maxLines > 0 && lines_.size() == size_t(description.maxLines)) break;
        auto* line = static_cast<PangoLayoutLine*>(item->data);
        blankMissingLetters(line);
        TextLine read = readLine(line);
        read.ascent += read.breadth * (spacing - 1) / 2;
        read.breadth *= spacing;
        lines_.push_back(read);
        length_ = std::max(length_, read.length);
        breadth_ += read.breadth;
    }
}

/// Instead of the boxes with numbers in them that would stand there.
void TextLayout::blankMissingLetters(PangoLayoutLine* line) {
    forEachRun(line, [&](PangoLayoutRun* run) {
        for (int i = 0; i < run->glyphs->num_glyphs; ++i) {
            PangoGlyphInfo& glyph = run->glyphs->glyphs[i];
            if (!(glyph.glyph & PANGO_GLYPH_UNKNOWN_FLAG)) continue;
            const char32_t letter = glyph.glyph & ~PANGO_GLYPH_UNKNOWN_FLAG;
            if (std::ranges::find(missingLetters_, letter) == missingLetters_.end())
                missingLetters_.push_back(letter);
            glyph.glyph = PANGO_GLYPH_EMPTY;
            glyph.geometry = {};
        }
    });
}

const char* TextLayout::text() const { return pango_layout_get_text(layout_.get()); }

TextMeasure measureText(const TextLayoutDescription& description, double wrapLength) {
    const TextLayout layout(description, wrapLength);
    const bool vertical = description.direction == TextDirection::Vertical;
    return {
        vertical ? TextSize{layout.breadth(), layout.length()} : TextSize{layout.length(), layout.breadth()},
        int(layout.lines().size()), layout.missingLetters()};
}

namespace {

constexpr size_t kLongestCodePoint = 4;  // bytes

/// The end of what is kept of a character: it may carry any number of marks, and shaping them takes time that
/// grows with their square.
const char* firstCodePoints(const char* begin, const char* end) {
    for (int count = 0; count < TextLimits::codePoints && begin < end; ++count)
        begin = g_utf8_next_char(begin);
    return begin;
}

/// Where each character begins that a reader counts.
std::vector<const char*> readersCharacters(const std::string& valid) {
    const auto codePoints = size_t(g_utf8_strlen(valid.c_str(), -1));
    std::vector<PangoLogAttr> attributes(codePoints + 1);
    pango_get_log_attrs(valid.c_str(), int(valid.size()), -1, pango_language_from_string("zh-cn"),
                        attributes.data(), int(attributes.size()));
    std::vector<const char*> characters;
    const char* at = valid.c_str();
    for (size_t i = 0; i < codePoints; ++i, at = g_utf8_next_char(at))
        if (i == 0 || attributes[i].is_cursor_position) characters.push_back(at);
    return characters;
}

}  // namespace

std::string truncateText(const std::string& text, int maxCharacters) {
    if (maxCharacters <= 0) return validText(text);
    const size_t mostBytes = size_t(maxCharacters) * TextLimits::codePoints * kLongestCodePoint;
    const std::string valid = validText(text.substr(0, mostBytes));
    std::vector<const char*> characters = readersCharacters(valid);
    const size_t count = std::min(characters.size(), size_t(maxCharacters));
    characters.push_back(valid.c_str() + valid.size());
    std::string result;
    for (size_t i = 0; i < count; ++i)
        result.append(characters[i], firstCodePoints(characters[i], characters[i + 1]));
    return result;
}

int countCharacters(const std::string& text) { return int(readersCharacters(validText(text)).size()); }

}  // namespace platform
