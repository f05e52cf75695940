#include "core/Material/QVSignColorMaterial.h"

#include "core/Material/TextureInfoKeys.h"

namespace multiscene {

QVSignColorMaterial::QVSignColorMaterial(const platform::Value& info) : color_(0) {
    const KeyReader reader(textureInfoKeys, info);
    color_ = {reader.number("r"), reader.number("g"), reader.number("b"), reader.number("a")};
}

}  // namespace multiscene
