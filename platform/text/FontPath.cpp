#include "platform/text/FontPath.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangocairo.h>
#include <pango/pangofc-font.h>

#include <algorithm>

#include "platform/text/FontLibrary.h"

namespace platform {

namespace {

template <auto release>
struct Releaser {
    template <typename Object>
    void operator()(Object* object) const {
        release(object);
    }
};
using Pattern = std::unique_ptr<FcPattern, Releaser<FcPatternDestroy>>;
using CharSet = std::unique_ptr<FcCharSet, Releaser<FcCharSetDestroy>>;
using FontObject = std::unique_ptr<PangoFont, Releaser<g_object_unref>>;
using Context = std::unique_ptr<PangoContext, Releaser<g_object_unref>>;

std::string pathOf(FcPattern* pattern) {
    FcChar8* file = nullptr;
    if (!pattern || FcPatternGetString(pattern, FC_FILE, 0, &file) != FcResultMatch) return {};
    return reinterpret_cast<const char*>(file);
}

CharSet setOf(const std::u32string& letters) {
    CharSet set(FcCharSetCreate());
    for (const char32_t letter : letters)
        if (letter > U' ') FcCharSetAddChar(set.get(), letter);
    return set;
}

/// The font that drawn texts take for the name; none when the system has no fonts.
Pattern namedFont(const std::string& name) {
    const FontChoice choice = chooseFont({name, "", 16});
    const Context context(pango_font_map_create_context(choice.map));
    const FontObject font(pango_font_map_load_font(choice.map, context.get(), choice.description.get()));
    if (!font || !PANGO_IS_FC_FONT(font.get())) return nullptr;
    return Pattern(FcPatternDuplicate(pango_fc_font_get_pattern(PANGO_FC_FONT(font.get()))));
}

bool hasAll(FcPattern* font, const FcCharSet* letters) {
    FcCharSet* own = nullptr;
    return font && FcPatternGetCharSet(font, FC_CHARSET, 0, &own) == FcResultMatch &&
           FcCharSetIsSubset(letters, own);
}

void copyProperty(FcPattern* from, FcPattern* to, const char* property) {
    FcValue value;
    if (from && FcPatternGet(from, property, 0, &value) == FcResultMatch)
        FcPatternAdd(to, property, value, FcTrue);
}

/// Coverage counts more than family and style.
std::string coveringFont(FcPattern* named, const FcCharSet* letters) {
    const Pattern wanted(FcPatternCreate());
    for (const char* property : {FC_FAMILY, FC_WEIGHT, FC_SLANT}) copyProperty(named, wanted.get(), property);
    FcPatternAddCharSet(wanted.get(), FC_CHARSET, letters);
    FcPatternAddBool(wanted.get(), FC_OUTLINE, FcTrue);
    FcPatternAddBool(wanted.get(), FC_COLOR, FcFalse);
    FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern);
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const Pattern font(FcFontMatch(nullptr, wanted.get(), &result));
    return pathOf(font.get());
}

}  // namespace

std::string installedFontPath(const std::string& name, const std::u32string& letters) {
    const CharSet set = setOf(letters);
    const Pattern named = namedFont(name);
    return hasAll(named.get(), set.get()) ? pathOf(named.get()) : coveringFont(named.get(), set.get());
}

}  // namespace platform
