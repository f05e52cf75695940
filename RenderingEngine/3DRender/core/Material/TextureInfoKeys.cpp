#include "core/Material/TextureInfoKeys.h"

#include "core/Material/PictureSequence.h"

namespace multiscene {

static constexpr std::string_view textureTypes[] = {"image",
                                                    "text2d",
                                                    "filterImage",
                                                    "textureSerial",
                                                    "mp4Video",
                                                    "currentSceneRenderTexture",
                                                    "nextSceneRenderTexture",
                                                    "RTTTexture"};

static constexpr std::string_view filterTypes[] = {"imageSynthesis", "circularAndStroke", "roundRect"};

static constexpr Key textureInfoKeyList[] = {
    {.name = "textureType",
     .type = KeyType::Choice,
     .meaning = "what is shown",
     .required = true,
     .choices = textureTypes},
    {.name = "texture",
     .type = KeyType::Text,
     .meaning = "image, filterImage, mp4Video: the file",
     .lookup = KeyLookup::UserPath},
    {.name = "textureMapKey",
     .type = KeyType::Text,
     .meaning = "RTTTexture: the \"textureMapKey\" of the node that draws into a texture"},
    {.name = "videoFps",
     .type = KeyType::Integer,
     .unit = "frames a second",
     .fallback = "0",
     .meaning = "mp4Video: the video's frame rate",
     .minimum = 1,
     .maximum = 240},
    // Filters
    {.name = "filterType",
     .type = KeyType::Choice,
     .meaning = "filterImage: how the photo is shaped",
     .choices = filterTypes},
    {.name = "maskPhotoName",
     .type = KeyType::Text,
     .meaning = "imageSynthesis: the picture laid over the photo",
     .lookup = KeyLookup::Path},
    {.name = "circularR",
     .type = KeyType::Number,
     .unit = "canvas pixels",
     .fallback = "0",
     .meaning = "circularAndStroke, roundRect: corner radius",
     .minimum = 0},
    {.name = "strokeW",
     .type = KeyType::Number,
     .unit = "canvas pixels",
     .fallback = "0",
     .meaning = "circularAndStroke: line width, of which the inner half shows",
     .minimum = 0},
    {.name = "strokeColor",
     .type = KeyType::Color,
     .fallback = "0,0,0,0",
     .meaning = "circularAndStroke: colour of the line"},
    {.name = "imageType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "textureSerial: 0 picture files, 2 PVR files",
     .minimum = 0,
     .maximum = 2},
};
const KeyTable textureInfoKeys{"TextureInfo", "What a node shows; \"textureType\" says which keys count.",
                               &pictureSequenceTextureKeys, textureInfoKeyList};

}  // namespace multiscene
