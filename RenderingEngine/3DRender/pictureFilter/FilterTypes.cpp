#include "pictureFilter/FilterTypes.h"

#include <algorithm>

namespace multiscene {

namespace {

constexpr const char* ofSide = "shorter sides";

constexpr Key number(std::string_view name, std::string_view fallback, double minimum, double maximum,
                     std::string_view meaning, std::string_view unit = {}) {
    return {.name = name,
            .type = KeyType::Number,
            .unit = unit,
            .fallback = fallback,
            .meaning = meaning,
            .minimum = minimum,
            .maximum = maximum};
}
constexpr Key color(std::string_view name, std::string_view fallback, std::string_view meaning) {
    return {.name = name, .type = KeyType::Color, .fallback = fallback, .meaning = meaning};
}

// --- colours -------------------------------------------------------------------------------------------

constexpr KeyTable greyKeys{"filter grey", "Brightness alone."};
constexpr KeyTable sepiaKeys{"filter sepia", "Brown, as old prints are."};
constexpr KeyTable negativeKeys{"filter negative", "Every colour by its opposite."};

constexpr Key adjustKeyList[] = {
    number("brightness", "0", -1, 1, "darker below 0, brighter above"),
    number("contrast", "0", -1, 1, "-1 is all grey"),
    number("saturation", "0", -1, 1, "-1 has no colour left"),
};
constexpr KeyTable adjustKeys{"filter adjust", "Brightness, contrast and saturation.", nullptr,
                              adjustKeyList};

constexpr Key temperatureKeyList[] = {
    number("warmth", "0.5", -1, 1, "colder below 0, warmer above"),
    number("tint", "0", -1, 1, "greener below 0, more purple above"),
};
constexpr KeyTable temperatureKeys{"filter temperature", "Warmer or cooler light.", nullptr,
                                   temperatureKeyList};

constexpr Key duotoneKeyList[] = {
    color("darkColor", "0.1,0.1,0.35,1", "of what is black"),
    color("lightColor", "1,0.85,0.6,1", "of what is white"),
};
constexpr KeyTable duotoneKeys{"filter duotone",
                               "Brightness from one colour to another; their alpha says nothing.", nullptr,
                               duotoneKeyList};

constexpr Key posteriseKeyList[] = {
    number("levels", "5", 2, 32, "steps that red, green and blue have each"),
};
constexpr KeyTable posteriseKeys{"filter posterise", "Few steps of colour, as on a printed poster.", nullptr,
                                 posteriseKeyList};

constexpr std::string_view filmLooks[] = {"goldenHour", "fadedPrint", "tealAndOrange",
                                          "moonlight",  "silver",     "pastel"};
constexpr Key filmKeyList[] = {
    {.name = "look",
     .type = KeyType::Choice,
     .fallback = "goldenHour",
     .meaning = "one of the program's own tables",
     .choices = filmLooks},
    {.name = "table",
     .type = KeyType::Text,
     .meaning = "a table of the template instead: a .cube file of 2 to 33 entries a colour",
     .lookup = KeyLookup::Path,
     .file = KeyFile::ColorTable},
};
constexpr KeyTable filmKeys{"filter film", "The look of a film, by a table of colours.", nullptr,
                            filmKeyList};

// --- light and film ------------------------------------------------------------------------------------

constexpr Key vignetteKeyList[] = {
    number("start", "0.45", 0, 1.5, "where it begins: 0 in the middle, 1 in the corners"),
    number("softness", "0.6", 0.01, 2, "how far it takes to its full strength, as \"start\""),
    color("shadeColor", "0,0,0,0.75", "what the corners take on, and how much"),
};
constexpr KeyTable vignetteKeys{"filter vignette", "Corners in the shade.", nullptr, vignetteKeyList};

constexpr Key grainKeyList[] = {
    number("size", "0.0025", 0.0005, 0.02, "of a grain", ofSide),
    number("amount", "0.35", 0, 1, "how far it brightens and darkens"),
};
constexpr KeyTable grainKeys{"filter grain", "The grain of film, another one in each frame.", nullptr,
                             grainKeyList};

constexpr Key lightLeakKeyList[] = {
    number("phase", "0", -1000, 1000, "where the lights are on their round; they are back after 1", "turns"),
    number("size", "0.7", 0.1, 2, "of the lights, as a part of the picture's width"),
    color("warmColor", "1,0.5,0.1,0.9", "of the light at the left"),
    color("glowColor", "1,0.2,0.45,0.6", "of the light at the right"),
};
constexpr KeyTable lightLeakKeys{"filter lightLeak", "Light that came into the camera from the side.",
                                 nullptr, lightLeakKeyList};

constexpr Key glowKeyList[] = {
    number("radius", "0.03", 0, 0.25, "how far what is bright shines", ofSide),
    number("amount", "0.8", 0, 1, "how bright it shines"),
};
constexpr KeyTable glowKeys{"filter glow", "What is bright shines over its edges, as through a soft lens.",
                            nullptr, glowKeyList};

// --- focus ---------------------------------------------------------------------------------------------

constexpr Key blurKeyList[] = {
    number("radius", "0.02", 0, 0.25, "width of the blur", ofSide),
};
constexpr KeyTable blurKeys{"filter blur", "Everything out of focus.", nullptr, blurKeyList};

constexpr Key tiltShiftKeyList[] = {
    number("radius", "0.012", 0, 0.1, "width of the blur", ofSide),
    number("place", "0.5", 0, 1, "middle of the sharp band, from the top"),
    number("band", "0.3", 0, 1, "height of the sharp band, as a part of the picture's"),
    number("softness", "0.2", 0.01, 1, "height of the way from sharp to blurred, likewise"),
};
constexpr KeyTable tiltShiftKeys{"filter tiltShift", "Sharp in a band alone, as of a small model.", nullptr,
                                 tiltShiftKeyList};

constexpr Key sharpenKeyList[] = {
    number("radius", "0.002", 0, 0.05, "width of what stands out", ofSide),
    number("amount", "1", 0, 4, "how far it stands out"),
};
constexpr KeyTable sharpenKeys{"filter sharpen", "Edges and fine lines stand out.", nullptr, sharpenKeyList};

// --- drawings ------------------------------------------------------------------------------------------

constexpr Key pixelateKeyList[] = {
    number("size", "0.03", 0.001, 0.5, "side of a square", ofSide),
};
constexpr KeyTable pixelateKeys{"filter pixelate", "Large squares of one colour.", nullptr, pixelateKeyList};

constexpr Key edgesKeyList[] = {
    number("width", "0.002", 0, 0.02, "of the lines", ofSide),
    number("gain", "2", 0, 8, "how easily something is a line"),
    color("lineColor", "1,1,1,1", "of the lines"),
    color("groundColor", "0,0,0,1", "between the lines; alpha 0 leaves the picture"),
};
constexpr KeyTable edgesKeys{"filter edges", "Outlines.", nullptr, edgesKeyList};

constexpr Key sketchKeyList[] = {
    number("radius", "0.012", 0.001, 0.1, "of the strokes", ofSide),
    number("darkness", "1.3", 0, 3, "of the strokes"),
    color("paperColor", "0.98,0.96,0.92,1", "of the paper; its alpha says nothing"),
    color("pencilColor", "0.2,0.2,0.24,1", "of the pencil; its alpha says nothing"),
};
constexpr KeyTable sketchKeys{"filter sketch", "A pencil's drawing on paper.", nullptr, sketchKeyList};

// --- places --------------------------------------------------------------------------------------------

constexpr Key swirlKeyList[] = {
    number("turns", "0.5", -4, 4, "in the middle of the swirl, clockwise", "turns"),
    number("radius", "0.5", 0.05, 2, "where it ends", ofSide),
    number("centerX", "0.5", 0, 1, "its middle, from the left"),
    number("centerY", "0.5", 0, 1, "its middle, from the top"),
};
constexpr KeyTable swirlKeys{"filter swirl", "The picture stirred round a place.", nullptr, swirlKeyList};

constexpr Key waveKeyList[] = {
    number("height", "0.02", 0, 0.25, "how far rows swing to either side", ofSide),
    number("waves", "3", 0, 50, "from top to bottom"),
    number("phase", "0", -1000, 1000, "how far the waves have run down", "waves"),
};
constexpr KeyTable waveKeys{"filter wave", "Rows swing as seen through water.", nullptr, waveKeyList};

constexpr Key colorShiftKeyList[] = {
    number("reach", "0.01", 0, 0.1, "how far red and blue go to either side", ofSide),
    number("turn", "0", -4, 4, "the way that red goes: 0 to the right, a quarter down", "turns"),
};
constexpr KeyTable colorShiftKeys{"filter colorShift", "Red and blue pulled apart.", nullptr,
                                  colorShiftKeyList};

constexpr FilterType types[] = {
    {"adjust", &adjustKeys},
    {"blur", &blurKeys, FilterAside::Blurred, 1},
    {"colorShift", &colorShiftKeys},
    {"duotone", &duotoneKeys},
    {"edges", &edgesKeys},
    {"film", &filmKeys, FilterAside::Table},
    {"glow", &glowKeys, FilterAside::Blurred, 1},
    {"grain", &grainKeys, FilterAside::Noise},
    {"grey", &greyKeys},
    {"lightLeak", &lightLeakKeys},
    {"negative", &negativeKeys},
    {"pixelate", &pixelateKeys, FilterAside::Blurred, 0.3f},
    {"posterise", &posteriseKeys},
    {"sepia", &sepiaKeys},
    {"sharpen", &sharpenKeys, FilterAside::Blurred, 1},
    {"sketch", &sketchKeys, FilterAside::Blurred, 1},
    {"swirl", &swirlKeys, FilterAside::None, 0, true},
    {"temperature", &temperatureKeys},
    {"tiltShift", &tiltShiftKeys, FilterAside::Blurred, 1},
    {"vignette", &vignetteKeys},
    {"wave", &waveKeys, FilterAside::None, 0, true},
};

}  // namespace

const KeyVariants filterVariants = variantsOfList<types>("filter", "filter");

std::span<const FilterType> filterTypes() { return types; }

const FilterType* filterTypeNamed(std::string_view name) {
    const auto found = std::ranges::find(types, name, &FilterType::name);
    return found == std::end(types) ? nullptr : found;
}

std::vector<const Key*> keysOf(const FilterType& type, KeyType keyType) {
    std::vector<const Key*> keys;
    for (const Key& key : type.keys->keys)
        if (key.type == keyType) keys.push_back(&key);
    return keys;
}

}  // namespace multiscene
