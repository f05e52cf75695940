#include "core/Material/PhotoFilterKeys.h"

#include "core/Material/TextureInfoKeys.h"

namespace multiscene {

namespace {

constexpr Key maskPhotoNameKey{.name = "maskPhotoName",
                               .type = KeyType::Text,
                               .meaning = "the picture laid over the photo",
                               .lookup = KeyLookup::Path,
                               .required = true,
                               .file = KeyFile::Picture};
constexpr Key circularRKey{.name = "circularR",
                           .type = KeyType::Number,
                           .unit = "1024ths of the longer side",
                           .fallback = "0",
                           .meaning = "corner radius, at most half of the shorter side",
                           .minimum = 0,
                           .maximum = 4096};
constexpr Key strokeWKey{.name = "strokeW",
                         .type = KeyType::Number,
                         .unit = "1024ths of the longer side",
                         .fallback = "0",
                         .meaning = "line width, of which the inner half shows",
                         .minimum = 0,
                         .maximum = 4096};
constexpr Key strokeColorKey{
    .name = "strokeColor", .type = KeyType::Color, .fallback = "0,0,0,0", .meaning = "colour of the line"};

constexpr Key synthesisKeyList[] = {maskPhotoNameKey};
constexpr KeyTable synthesisKeys{"imageSynthesis", "A photo with a picture over it.", nullptr,
                                 synthesisKeyList};
constexpr Key circularAndStrokeKeyList[] = {circularRKey, strokeWKey, strokeColorKey};
constexpr KeyTable circularAndStrokeKeys{"circularAndStroke", "A photo with round corners and a line.",
                                         nullptr, circularAndStrokeKeyList};
constexpr Key roundRectKeyList[] = {circularRKey};
constexpr KeyTable roundRectKeys{"roundRect", "A photo with round corners.", nullptr, roundRectKeyList};

struct Filter {
    std::string_view name;
    const KeyTable* keys;
};
constexpr Filter filters[] = {{"imageSynthesis", &synthesisKeys},
                              {"circularAndStroke", &circularAndStrokeKeys},
                              {"roundRect", &roundRectKeys}};
constexpr KeyVariants filterVariants = variantsOfList<filters>("filter", "filterType");

constexpr Key filterTypeKey{
    .name = "filterType", .type = KeyType::Choice, .meaning = "how the photo is shaped", .required = true};
constexpr Key filterImageKeyList[] = {textureFileKey(KeyFile::Picture, "the photo"), filterTypeKey};
constexpr Key photoFilterKeyList[] = {filterTypeKey, maskPhotoNameKey, circularRKey, strokeWKey,
                                      strokeColorKey};

}  // namespace

const KeyTable photoFilterKeys{"filters", "What any filter reads.", nullptr, photoFilterKeyList};
constexpr KeyTable filterImageKeys{"filterImage", "A photo brought into a shape.", nullptr,
                                   filterImageKeyList, &filterVariants};

}  // namespace multiscene
