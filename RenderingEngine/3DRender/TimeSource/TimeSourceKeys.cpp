#include "TimeSource/TimeSourceKeys.h"

namespace multiscene {

static constexpr Key videoInfoKeyList[] = {
    {.name = "msaterVideoPath",
     .type = KeyType::Text,
     .meaning = "the video",
     .lookup = KeyLookup::Path,
     .required = true,
     .file = KeyFile::Video},
    {.name = "videoFps",
     .type = KeyType::Integer,
     .unit = "frames a second",
     .fallback = "0",
     .meaning = "the video's frame rate",
     .required = true,
     .minimum = 1,
     .maximum = 240},
};
const KeyTable videoInfoKeys{"VideoInfo", "The video that clocks a scene.", nullptr, videoInfoKeyList};

static constexpr Key maskVideoInfoKeyList[] = {
    {.name = "maskVideoPath",
     .type = KeyType::Text,
     .meaning = "the video whose brightness is the opacity; as long as the other",
     .lookup = KeyLookup::Path,
     .required = true,
     .file = KeyFile::Video},
};
const KeyTable maskVideoInfoKeys{"VideoInfo of a mask video", "The video that clocks a scene, and its mask.",
                                 &videoInfoKeys, maskVideoInfoKeyList};

}  // namespace multiscene
