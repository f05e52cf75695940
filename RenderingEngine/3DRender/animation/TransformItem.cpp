#include "animation/TransformItem.h"

#include "animation/TransformItemKeys.h"

namespace multiscene {

TransformItem TransformItem::read(const platform::Value& item) {
    const KeyReader reader(transformItemKeys, item);
    const auto vector = [&](const char* key) {
        return reader.has(key) ? std::optional(reader.vector3(key)) : std::nullopt;
    };
    TransformItem read{
        .sartFps = reader.integer("sartFps"),
        .endFps = reader.integer("endFps"),
        .translate = {vector("startTranslate"), vector("endTranslate"), reader.int32("translateEase")},
        .scale = {vector("startScale"), vector("endScale"), reader.int32("scaleEase")},
        .rotate = {vector("startRotate"), vector("endRotate"), reader.int32("rotateEase")},
        .texture = {}};
    if (reader.has("endTextureOrigin"))
        read.texture = {.from = {reader.vector2("startTextureOrigin"), reader.vector2("startTextureSize")},
                        .to = {reader.vector2("endTextureOrigin"), reader.vector2("endTextureSize")}};
    // The texture follows the rotation's ease: templates are tuned to it. Without a rotation it is linear.
    if (!read.rotate.end) read.rotate.ease = 0;
    return read;
}

}  // namespace multiscene
