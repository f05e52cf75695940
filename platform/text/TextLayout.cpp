#include "platform/text/TextLayout.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <string>

#include "platform/text/FontLibrary.h"

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

TextLine readLine(PangoLayoutLine* line) {
    PangoRectangle logical;
    pango_layout_line_get_extents(line, nullptr, &logical);
    return {line, pango_units_to_double(logical.width), pango_units_to_double(logical.height),
            -pango_units_to_double(logical.y),
            pango_layout_line_get_resolved_direction(line) == PANGO_DIRECTION_RTL};
}

/// A word that has to be broken shows only what was typed.
void forbidHyphens(PangoLayout* layout) {
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_insert_hyphens_new(FALSE));
    pango_layout_set_attributes(layout, attributes);
    pango_attr_list_unref(attributes);
}

}  // namespace

void TextLayout::LayoutDeleter::operator()(PangoLayout* layout) const { g_object_unref(layout); }

TextLayout::TextLayout(const TextLayoutDescription& description, double wrapLength) {
    const std::string text = truncateText(description.text, TextLimits::characters);
    const FontChoice font = chooseFont(description.font);
    const Context context = makeContext(font, text, description.direction);
    layout_.reset(pango_layout_new(context.get()));
    pango_layout_set_font_description(layout_.get(), font.description.get());
    const bool wholeWords = description.wrap == TextWrap::Words;
    pango_layout_set_wrap(layout_.get(), wholeWords ? PANGO_WRAP_WORD : PANGO_WRAP_WORD_CHAR);
    if (wrapLength > 0) pango_layout_set_width(layout_.get(), pango_units_from_double(wrapLength));
    pango_layout_set_justify(layout_.get(), description.alignment == TextAlignment::Justified);
    pango_layout_set_text(layout_.get(), text.c_str(), int(text.size()));
    forbidHyphens(layout_.get());
    readLines(description.maxLines);
}

void TextLayout::readLines(int maxLines) {
    for (GSList* item = pango_layout_get_lines(layout_.get()); item; item = item->next) {
        if (maxLines > 0 && lines_.size() == size_t(maxLines)) break;
        lines_.push_back(readLine(static_cast<PangoLayoutLine*>(item->data)));
        length_ = std::max(length_, lines_.back().length);
        breadth_ += lines_.back().breadth;
    }
}

const char* TextLayout::text() const { return pango_layout_get_text(layout_.get()); }

TextMeasure measureText(const TextLayoutDescription& description, double wrapLength) {
    const TextLayout layout(description, wrapLength);
    const bool vertical = description.direction == TextDirection::Vertical;
    return {
        vertical ? TextSize{layout.breadth(), layout.length()} : TextSize{layout.length(), layout.breadth()},
        int(layout.lines().size())};
}

std::string truncateText(const std::string& text, int maxCharacters) {
    std::string valid = validText(text);
    if (maxCharacters <= 0) return valid;
    const int codePoints = int(g_utf8_strlen(valid.c_str(), -1));
    std::vector<PangoLogAttr> attributes(size_t(codePoints) + 1);
    pango_get_log_attrs(valid.c_str(), int(valid.size()), -1, pango_language_from_string("zh-cn"),
                        attributes.data(), int(attributes.size()));
    int characters = 0;
    for (int i = 1; i < codePoints; ++i)
        if (attributes[size_t(i)].is_cursor_position && ++characters == maxCharacters)
            return valid.substr(0, size_t(g_utf8_offset_to_pointer(valid.c_str(), i) - valid.c_str()));
    return valid;
}

}  // namespace platform
