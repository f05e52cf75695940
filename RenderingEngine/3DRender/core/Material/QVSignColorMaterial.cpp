#include "core/Material/QVSignColorMaterial.h"

namespace multiscene {

static constexpr Key signColorKeyList[] = {
    {.name = "r", .type = KeyType::Number, .fallback = "0", .meaning = "red", .minimum = 0, .maximum = 1},
    {.name = "g", .type = KeyType::Number, .fallback = "0", .meaning = "green", .minimum = 0, .maximum = 1},
    {.name = "b", .type = KeyType::Number, .fallback = "0", .meaning = "blue", .minimum = 0, .maximum = 1},
    {.name = "a", .type = KeyType::Number, .fallback = "0", .meaning = "opacity", .minimum = 0, .maximum = 1},
};
const KeyTable signColorKeys{"ColorInfo", "One colour.", nullptr, signColorKeyList};

QVSignColorMaterial::QVSignColorMaterial(const platform::Value& info) : color_(0) {
    const KeyReader reader(signColorKeys, info);
    color_ = {reader.number("r"), reader.number("g"), reader.number("b"), reader.number("a")};
}

}  // namespace multiscene
