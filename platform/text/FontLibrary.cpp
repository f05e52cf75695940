#include "platform/text/FontLibrary.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <map>
#include <string>

#include "platform/text/FontFile.h"

namespace platform {

namespace {

constexpr const char* defaultFamily = "Sans";

struct PatternDeleter {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
struct FontSetDeleter {
    void operator()(FcFontSet* set) const { FcFontSetDestroy(set); }
};
using Fonts = std::unique_ptr<FcFontSet, FontSetDeleter>;

/// The installed fonts whose `property` is `name`.
Fonts installedFonts(const char* property, const char* name) {
    const std::unique_ptr<FcPattern, PatternDeleter> pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), property, reinterpret_cast<const FcChar8*>(name));
    FcObjectSet* wanted =
        FcObjectSetBuild(FC_FAMILY, FC_STYLE, FC_WEIGHT, FC_WIDTH, FC_SLANT, FC_VARIABLE, nullptr);
    Fonts fonts(FcFontList(nullptr, pattern.get(), wanted));
    FcObjectSetDestroy(wanted);
    return fonts;
}

bool isInstalled(const char* property, const char* name) {
    const Fonts fonts = installedFonts(property, name);
    return fonts && fonts->nfont > 0;
}

FontDescription describePostScriptName(const std::string& name) {
    const Fonts fonts = installedFonts(FC_POSTSCRIPT_NAME, name.c_str());
    if (!fonts || fonts->nfont == 0) return nullptr;
    return FontDescription(pango_fc_font_description_from_pattern(fonts->fonts[0], FALSE));
}

FontDescription describeFamily(const char* family) {
    FontDescription description(pango_font_description_new());
    pango_font_description_set_family(description.get(), family);
    return description;
}

/// A whole family name first: words such as "Bold" or "Condensed" may belong to it.
FontDescription describe(const std::string& name) {
    if (name.empty()) return describeFamily(defaultFamily);
    if (isInstalled(FC_FAMILY, name.c_str())) return describeFamily(name.c_str());
    if (FontDescription exact = describePostScriptName(name)) return exact;
    FontDescription parsed(pango_font_description_from_string(name.c_str()));
    if (!pango_font_description_get_family(parsed.get()))
        pango_font_description_set_family(parsed.get(), defaultFamily);
    return parsed;
}

struct FontMapDeleter {
    void operator()(PangoFontMap* map) const { g_object_unref(map); }
};

PangoFontMap* mapOf(const FontFile& file) {
    thread_local std::map<const FontFile*, std::unique_ptr<PangoFontMap, FontMapDeleter>> maps;
    auto& map = maps[&file];
    if (!map) {
        map.reset(pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT));
        pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(map.get()), const_cast<FcConfig*>(file.configuration));
    }
    return map.get();
}

}  // namespace

void FontDescriptionDeleter::operator()(PangoFontDescription* description) const {
    pango_font_description_free(description);
}

FontChoice chooseFont(const TextFont& font) {
    FontChoice choice = font.file
                            ? FontChoice{mapOf(*font.file),
                                         FontDescription(pango_font_description_copy(font.file->description))}
                            : FontChoice{pango_cairo_font_map_get_default(), describe(font.name)};
    const float size = std::isfinite(font.size) ? std::clamp(font.size, 1.0f, TextLimits::fontSize) : 1.0f;
    pango_font_description_set_absolute_size(choice.description.get(), double(size) * PANGO_SCALE);
    return choice;
}

bool isFontInstalled(const std::string& name) {
    if (isInstalled(FC_FAMILY, name.c_str()) || isInstalled(FC_POSTSCRIPT_NAME, name.c_str())) return true;
    const FontDescription parsed(pango_font_description_from_string(name.c_str()));
    const char* family = pango_font_description_get_family(parsed.get());
    if (!family) return false;
    const std::string_view generic[] = {"Sans", "Serif", "Monospace"};
    return isInstalled(FC_FAMILY, family) || std::ranges::find(generic, family) != std::end(generic);
}

}  // namespace platform
