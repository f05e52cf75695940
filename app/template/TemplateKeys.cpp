#include "app/template/TemplateKeys.h"

#include "app/Model/MediaFormat.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene {

namespace {

constexpr Key inputKeyList[] = {
    {.name = "userInputType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "0 a text, 1 a photo, 3 a video",
     .required = true,
     .minimum = 0,
     .maximum = 3},
    {.name = "renderMapKey",
     .type = KeyType::Text,
     .meaning = "the key under which the scenes look the value up",
     .required = true},
    {.name = "maxLenght",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "characters that there is room for, as a reader counts them; up to twice as many are drawn "
                "smaller, more are refused; 0: no limit",
     .minimum = 0},
    {.name = "maxLine",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "lines that there is room for; up to twice as many are drawn smaller, more are refused; 0: "
                "no limit",
     .minimum = 0},
    {.name = "is3DText", .type = KeyType::Bool, .fallback = "0", .meaning = "the text becomes a solid"},
    {.name = "aspectWidth",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "width of the shape that a photo or video is cropped to; 0: its own",
     .minimum = 0},
    {.name = "aspectHeight",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "height of that shape",
     .minimum = 0},
    {.name = "englishPlaceholder", .type = KeyType::Text, .meaning = "shown while the input is empty"},
    {.name = "chinesePlaceholder", .type = KeyType::Text, .meaning = "the same in Chinese"},
    {.name = "japanesePlaceholder", .type = KeyType::Text, .meaning = "the same in Japanese"},
};
constexpr KeyTable inputKeys{"userInputArray", "One thing that the user is asked for.", nullptr,
                             inputKeyList};

}  // namespace

static constexpr std::string_view fitNames[] = {"blur", "pad", "crop", "stretch"};

static constexpr Key descriptionKeyList[] = {
    {.name = "PIPTempletType", .type = KeyType::Integer, .fallback = "0", .meaning = "kind of template"},
    {.name = "mediaSize",
     .type = KeyType::Vector2,
     .unit = "pixels",
     .fallback = "720,1280",
     .meaning = "size of the video, two even numbers",
     .minimum = 2,
     .maximum = kLongestSide},
    {.name = "videoFrameRate",
     .type = KeyType::Integer,
     .unit = "frames a second",
     .fallback = "30",
     .meaning = "rate of the video",
     .minimum = 1,
     .maximum = platform::limitOf<int>("maxFramesPerSecond")},
    {.name = "fit",
     .type = KeyType::Choice,
     .fallback = "blur",
     .meaning =
         "how the picture lies in a video of another shape: whole before a blurred copy of itself, whole "
         "with black beside it, cut, or drawn in that shape",
     .choices = fitNames},
    {.name = "userInputArray",
     .type = KeyType::Array,
     .meaning = "what the user is asked for",
     .children = &inputKeys},
    {.name = "sceneGroup",
     .type = KeyType::Array,
     .meaning = "the scenes that are played; none: the template's own alone",
     .children = &sceneEntryKeys},
    {.name = "bgAudioPath",
     .type = KeyType::Text,
     .meaning = "background music; none: bg-audio.mp3 in the template's folder, if it is there",
     .lookup = KeyLookup::Path},
};
const KeyTable templateDescriptionKeys{"wechartTempletInfo", "What the template asks for and makes.", nullptr,
                                       descriptionKeyList};

static constexpr Key recordKeyList[] = {
    {.name = "sId",
     .type = KeyType::Integer,
     .meaning = "catalogue number, one of its own for every scene",
     .required = true,
     .minimum = 0},
    {.name = "scenePlistPath",
     .type = KeyType::Text,
     .meaning = "the scene file",
     .lookup = KeyLookup::Path,
     .required = true},
    {.name = "sceneResourceFolderPath",
     .type = KeyType::Text,
     .meaning = "the template's folder, ends in \"/\""},
    {.name = "sceneThumbnailPath", .type = KeyType::Text, .meaning = "a picture of the template"},
    {.name = "eName", .type = KeyType::Text, .meaning = "the name in English"},
    {.name = "cName", .type = KeyType::Text, .meaning = "the name in Chinese"},
    {.name = "jName", .type = KeyType::Text, .meaning = "the name in Japanese"},
    {.name = "fpsLength",
     .type = KeyType::Integer,
     .unit = "frames",
     .fallback = "0",
     .meaning = "length of the scene: \"endFps\" of its clock + 1"},
    {.name = "sourceType",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "catalogue group; 7: the length comes from the user's video"},
    {.name = "photoTotal",
     .type = KeyType::Integer,
     .fallback = "0",
     .meaning = "number of photos asked for",
     .minimum = 0},
    {.name = "videoPreviewUrl", .type = KeyType::Text, .meaning = "address of a preview"},
    {.name = "youtubePreviewUrl", .type = KeyType::Text, .meaning = "address of a second preview"},
    {.name = "wechartTempletInfo",
     .type = KeyType::Dictionary,
     .meaning = "inputs and video; read of the first record",
     .children = &templateDescriptionKeys},
};
const KeyTable catalogueRecordKeys{"installScenes", "A catalogue record: one scene of the template.", nullptr,
                                   recordKeyList};

static constexpr Key templateFileKeyList[] = {
    {.name = "installScenes",
     .type = KeyType::Array,
     .meaning = "the catalogue records; the first is the template itself",
     .required = true,
     .children = &catalogueRecordKeys},
    {.name = "minVersion",
     .type = KeyType::Number,
     .fallback = "0",
     .meaning = "lowest version of the program that can play the template, as a decimal number",
     .minimum = 0},
};
const KeyTable templateFileKeys{"Template file", "NAME/NAME.plist, the description of a template.", nullptr,
                                templateFileKeyList};

static constexpr Key shaderFileKeyList[] = {
    {.name = "Files",
     .type = KeyType::TextArray,
     .meaning = "the sources, beside this file: \"….vsh\" a vertex shader, \"….fsh\" a fragment shader, GLSL "
                "ES 1.00",
     .required = true},
    {.name = "Attributes",
     .type = KeyType::TextArray,
     .meaning = "attributes of the vertex shader: position (vec4), inputTextureCoordinate (vec4)",
     .required = true},
    {.name = "Uniforms",
     .type = KeyType::TextArray,
     .meaning =
         "uniforms that are set; one that is not listed stays 0. u_mvpMatrix and u_textureMatrix (mat4), "
         "videoFrame (sampler2D, the picture), isPreMultiplication (int, 1: its colours are multiplied by "
         "alpha), aplae (float, the opacity, or the variable of a QVQuadCustomShaderOneVariable)",
     .required = true},
};
const KeyTable shaderFileKeys{
    "Shader description",
    "The file of a \"customShaderPath\". What its fragment shader gives is not multiplied by alpha.", nullptr,
    shaderFileKeyList};

}  // namespace multiscene
