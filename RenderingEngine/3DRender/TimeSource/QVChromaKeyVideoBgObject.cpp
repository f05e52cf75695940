#include "TimeSource/QVChromaKeyVideoBgObject.h"

namespace multiscene {

static constexpr Key chromaKeyInfoKeyList[] = {
    {.name = "ChromaKeyColor",
     .type = KeyType::Color,
     .fallback = "0,0,0,0",
     .meaning = "the colour to take out",
     .required = true},
    {.name = "maxEclosion",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "width of the soft edge in shares of the key colour",
     .minimum = 0,
     .maximum = 1},
};
constexpr KeyTable chromaKeyInfoKeys{"ChromaKeyInfo", "The colour that is keyed out.", nullptr,
                                     chromaKeyInfoKeyList};

static constexpr Key chromaKeyKeyList[] = {
    {.name = "ChromaKeyInfo",
     .type = KeyType::Dictionary,
     .meaning = "the key",
     .required = true,
     .children = &chromaKeyInfoKeys},
};
constexpr KeyTable chromaKeyKeys{"QVChromaKeyVideoBgObject", "A background video with one colour keyed out.",
                                 &singleVideoKeys, chromaKeyKeyList};

static const TimeSourceTypes::Registration registered(
    "QVChromaKeyVideoBgObject",
    [](const platform::Value& info, const TimeSourceContext& context) -> std::shared_ptr<VideoTimeSource> {
        auto source = std::make_shared<QVChromaKeyVideoBgObject>(context);
        source->setScene(context.scene);
        source->initWithVideoInfo(info["VideoInfo"]);
        return source;
    },
    chromaKeyKeys);

void QVChromaKeyVideoBgObject::rendInfoWithDic(const platform::Value& info) {
    QVSingleVideoBgObject3D::rendInfoWithDic(info);
    const KeyReader reader(chromaKeyInfoKeys, KeyReader(chromaKeyKeys, info).value("ChromaKeyInfo"));
    chromakeyColor_ = reader.vector4("ChromaKeyColor");
    maxEclosion_ = reader.number("maxEclosion");
}

}  // namespace multiscene
