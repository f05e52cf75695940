// Every limit of the program, in one table. --limits prints it; whoever keeps a limit asks the table for it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace platform {

/// Far above what any template, input or server needs, and low enough that what is within it ends in time and
/// fits into memory.
struct Limit {
    std::string_view name;
    uint64_t value;
    std::string_view unit;
    std::string_view meaning;
    std::string_view beyond;  ///< what becomes of what goes beyond it
};

namespace limits {

inline constexpr uint64_t kKilo = uint64_t{1} << 10, kMega = uint64_t{1} << 20, kGiga = uint64_t{1} << 30;
inline constexpr std::string_view kRefused = "refused, as whoever's file it is",
                                  kLeftOut = "the rest is left out",
                                  kLeftOutTold = "the rest is left out, and told",
                                  kMissing = "counts as missing, and is told", kSmaller = "made smaller",
                                  kNearest = "taken as just so much", kUsage = "wrong usage",
                                  kBroken = "counts as broken: the next try", kGivenUp = "given up, may pass",
                                  kEnded = "ended", kFails = "the call fails";

inline constexpr Limit kAll[] = {
    // What a template comes in.
    {"maxArchiveBytes", 2 * kGiga, "bytes", "the archive itself", kRefused},
    {"maxEntries", 10'000, "entries", "files and folders in an archive", kRefused},
    {"maxEntryBytes", kGiga, "bytes", "one file of an archive, unpacked", kRefused},
    {"maxTotalBytes", 4 * kGiga, "bytes", "all files of an archive, unpacked", kRefused},
    {"maxRatio", 200, "times", "that a file, and the archive, may grow when it is unpacked", kRefused},
    {"ratioFreeBytes", kMega, "bytes", "up to which a file may grow by any ratio", "maxRatio holds"},
    {"maxNameBytes", 1024, "bytes", "a name in an archive with its folders", kRefused},
    {"maxComponentBytes", 255, "bytes", "one file or folder name in an archive", kRefused},
    {"maxDepth", 32, "folders", "inside each other in an archive", kRefused},

    // What is written in its files.
    {"maxListBytes", 32 * kMega, "bytes", "a property list, or what its texts unfold to", kRefused},
    {"maxListDepth", 64, "levels", "a property list's, inside each other", kRefused},
    {"maxListValues", 2'000'000, "values", "in a property list", kRefused},
    {"maxMediaFileBytes", 4 * kMega, "bytes", "the file of --media", kRefused},
    {"maxSettingsBytes", kMega, "bytes", "the program's settings", kRefused},
    {"maxJsonDepth", 64, "levels", "of JSON, inside each other", kRefused},
    {"maxXmlDepth", 64, "levels", "a track's XML, inside each other", kMissing},
    {"maxTrackBytes", 64 * kMega, "bytes", "a track", kMissing},
    {"maxRecords", 1000, "records", "of a template for the catalogue", kRefused},
    {"maxToldBytes", 64 * kMega, "bytes", "of what a template says, in the catalogue", kRefused},
    {"maxCatalogueBytes", kGiga, "bytes", "the catalogue", kRefused},
    {"maxGroupScenes", 1000, "scenes", "in a group", kRefused},
    {"maxSceneNodes", 20'000, "nodes", "in a scene, cameras and clock included", kRefused},
    {"maxSceneFiles", 2000, "names", "of files in a scene", kRefused},
    {"maxTargetSide", 4096, "pixels", "of what a node draws into", kNearest},
    {"maxSceneTargetBytes", 512 * kMega, "bytes", "of all that a scene's nodes draw into, 4 a pixel",
     kRefused},
    {"maxCurveSamples", 100'000, "samples", "of a curve", kNearest},
    {"maxSceneCurveSamples", 2'000'000, "samples", "of all curves in a scene", kRefused},
    {"maxCurvePoints", 100, "points", "that a curve is made of", kLeftOut},
    {"maxSceneCurveSteps", 200'000'000, "steps", "a scene's curves: samples times their points' square",
     kRefused},
    {"maxSequencePictures", 10'000, "pictures", "of a sequence that are judged", "the rest is not judged"},
    {"maxFilters", 8, "filters", "of a picture", kLeftOut},
    {"maxLights", 8, "lights", "that light a node", kLeftOut},

    // Shaders of a template.
    {"maxShaderBytes", 64 * kKilo, "bytes", "a shader's description, and each source", kRefused},
    {"maxShaderWords", 16'384, "words", "of a shader source, macros expanded", kRefused},
    {"maxShaderStatementWords", 1024, "words", "of a statement in a shader, macros expanded", kRefused},
    {"maxShaderInlinedWords", 65'536, "words",
     "of a function with those that it calls put where it calls them", kRefused},
    {"maxShaderDepth", 64, "levels", "of blocks in a shader, inside each other", kRefused},
    {"maxMacroDepth", 200, "levels", "of macros in a shader, inside each other", kRefused},
    {"maxShaderArray", 1024, "elements", "of an array in a shader", kRefused},
    {"maxShaderWork", 2'000'000, "words", "that a pixel goes through, each turn of a loop counted", kRefused},

    // Pictures, a user's photos among them.
    {"maxPictureBytes", 256 * kMega, "bytes", "a picture's file", kRefused},
    {"maxPicturePixels", 400'000'000, "pixels", "of a picture", kRefused},
    {"maxPictureSide", 65'535, "pixels", "a picture's width, and its height", kRefused},
    {"maxPictureHeldBytes", 400'000'000, "bytes", "of a picture that cannot be read strip by strip",
     kRefused},
    {"maxDecodedPixels", 64'000'000, "pixels", "of a picture that is wanted whole", kRefused},
    {"maxPngParts", 250'000, "parts", "of a PNG's file", kRefused},
    {"maxPngProfileBytes", 4 * kMega, "bytes", "of colours' description in a PNG", kLeftOut},
    {"maxPngExifBytes", kMega, "bytes", "of a camera's notes in a PNG", kLeftOut},
    {"maxCanvasSide", 4096, "pixels", "of a picture in a scene", kSmaller},
    {"maxFilteredSide", 2048, "pixels", "of a picture with filters", kSmaller},
    {"maxPvrBytes", 128 * kMega, "bytes", "a PVR picture, unpacked", kRefused},
    {"maxPvrSide", 8192, "pixels", "a PVR picture's width, and its height", kRefused},
    {"maxPvrPixels", 4096 * 4096, "pixels", "of a PVR picture", kRefused},
    {"maxPvrLevels", 16, "levels", "smaller copies in a PVR picture", kRefused},
    {"maxColorTableBytes", 2 * kMega, "bytes", "a film look's table", kMissing},
    {"maxColorTableSide", 33, "entries", "of a film look's table, along each colour", kMissing},
    {"maxThumbnailBytes", 32 * kMega, "bytes", "a template's thumbnail", kRefused},

    // Texts.
    {"maxTextCharacters", 4096, "characters", "of a text that is drawn", kLeftOutTold},
    {"maxCharacterCodePoints", 32, "code points", "of a character with its marks", kLeftOutTold},
    {"maxTextOverRoom", 2, "times", "as long as a template has room for", kRefused},
    {"maxFontSize", 2048, "pixels", "of a text in a picture", kNearest},
    {"maxTextStroke", 512, "pixels", "of the outline of a text in a picture", kNearest},
    {"maxTextBlur", 256, "pixels", "of the shadow of a text in a picture", kNearest},
    {"maxTextTextureSide", 2048, "pixels", "of a text's picture that grows with it", kSmaller},
    {"maxTextBitmapSide", 1024, "pixels", "in which a text's picture is drawn", kSmaller},
    {"maxLetterCorners", 1'500'000, "corners", "of a text's solid letters", kLeftOutTold},
    {"maxBevelSteps", 8, "steps", "of the edge of solid letters", kNearest},
    {"maxFontFiles", 64, "files", "with fonts of templates", "another font is used, and told"},

    // Films and sounds.
    {"maxFilmPixels", 8192 * 4608, "pixels", "of a film", kRefused},
    {"maxFilmSide", 16'384, "pixels", "a user's film's width, and its height", kRefused},
    {"maxPictureSeconds", 60, "seconds", "that one picture of a user's film stands", kRefused},
    {"maxUserFilmSeconds", 900, "seconds", "of a user's film that gives the length", kRefused},
    {"minSoundRate", 1000, "hertz", "samples a second of a sound, at the least", kRefused},
    {"maxSoundRate", 768'000, "hertz", "samples a second of a sound", kRefused},
    {"maxSoundChannels", 64, "channels", "of a sound", kRefused},
    {"maxSoundSeconds", 7200, "seconds", "of a sound", kLeftOut},
    {"maxSoundsAtOnce", 100, "sounds", "that are heard at one time", kRefused},

    // Meshes.
    {"maxMeshFileBytes", 64 * kMega, "bytes", "a mesh's file, and each that it names", kRefused},
    {"maxMeshBytes", 96 * kMega, "bytes", "of all buffers of a mesh, and of its pictures", kRefused},
    {"maxMeshValues", 500'000, "values", "in a mesh's JSON", kRefused},
    {"maxMeshTriangles", 500'000, "triangles", "that are drawn: what several nodes show counts again",
     kRefused},
    {"maxMeshNumbers", 32'000'000, "numbers", "that are read from a mesh's buffers", kRefused},
    {"maxMeshNodes", 4096, "nodes", "of a mesh", kRefused},
    {"maxMeshDepth", 256, "nodes", "of a mesh, inside each other", kRefused},
    {"maxMeshParts", 4096, "parts", "of a mesh, each of one material", kRefused},
    {"maxMeshMaterials", 1024, "materials", "of a mesh", kRefused},
    {"maxMeshPictures", 64, "pictures", "of a mesh", kRefused},
    {"maxMeshPictureSide", 2048, "pixels", "of a mesh's picture", kSmaller},
    {"maxMeshAnimations", 256, "animations", "of a mesh", kRefused},
    {"maxMeshTracks", 16'384, "tracks", "of a mesh's animations", kRefused},

    // The video that is made.
    {"maxVideoPixels", 4096 * 2304, "pixels", "of the video", kRefused},
    {"maxVideoSide", 8192, "pixels", "the video's width, and its height", kRefused},
    {"maxFramesPerSecond", 1000, "frames", "a second of the video", kRefused},
    {"minBitRate", 1000, "bits", "a second of the video, at the least", kUsage},
    {"maxBitRate", 500'000'000, "bits", "a second of the video", kUsage},
    {"maxMusicSeconds", 86'400, "seconds", "of --music-start and --music-fade", kUsage},

    // Servers.
    {"maxDownloadSeconds", 4 * 3600, "seconds", "of a download, all its tries together", kGivenUp},
    {"maxListSeconds", 600, "seconds", "of the download of a server's list", kGivenUp},
    {"minDownloadSpeed", 1000, "bytes", "a second of a download, at the least", kBroken},
    {"maxStallSeconds", 30, "seconds", "that a download may be slower than that", kBroken},
    {"maxConnectSeconds", 20, "seconds", "until a server answers", kBroken},
    {"maxDownloadTries", 5, "connections", "for a download", kGivenUp},
    {"maxRedirects", 5, "addresses", "that a server sends a download to", "refused"},

    {"maxWatchedFolders", 1000, "folders", "of a template that play --watch looks at", kLeftOut},

    // What the process that does a job may take: a start, and more for what it makes, up to a most. These can
    // be changed (platform/fence/WorkerLimits.h).
    {"jobMemory", 2 * kGiga, "bytes", "of memory that any job may take", "see maxJobMemory"},
    {"jobMemoryPerPixel", 256, "bytes", "and more for each pixel of its frames' size", "see maxJobMemory"},
    {"maxJobMemory", 4 * kGiga, "bytes", "at the most; --limit maxJobMemory=N gives a job just that", kEnded},
    {"jobSeconds", 3600, "seconds", "time, and processor time, that any job may take", "see maxJobSeconds"},
    {"jobMillisecondsPerFrame", 2000, "milliseconds", "and more for each frame", "see maxJobSeconds"},
    {"jobNanosecondsPerPixel", 10'000, "nanoseconds", "and for each pixel of each frame",
     "see maxJobSeconds"},
    {"maxJobCpuSeconds", 48 * 3600, "seconds", "processor time at the most, or just that if given", kEnded},
    {"maxJobSeconds", 24 * 3600, "seconds", "time at the most, or just that if given", kEnded},
    {"maxStepCpuSeconds", 120, "seconds", "processor time of a job for one frame or file", kEnded},
    {"maxStepSeconds", 300, "seconds", "time of a job for one frame or file", kEnded},
    {"jobFileBytes", kGiga, "bytes", "of each file that any job may write", "see maxJobFileBytes"},
    {"jobFileBytesPerPixel", 4, "bytes", "and more for each pixel of all its frames", "see maxJobFileBytes"},
    {"maxJobFileBytes", 16 * kGiga, "bytes", "at the most, or just that if given", kFails},
    {"maxJobOpenFiles", 1024, "files", "that a job has open", kFails},
    {"maxJobThreads", 1024, "threads", "of a job", kEnded},
};

}  // namespace limits

/// A limit's value, by its name in the table; a name that is not there does not compile.
template <typename Number = uint64_t>
consteval Number limitOf(std::string_view name) {
    for (const Limit& limit : limits::kAll)
        if (limit.name == name) return static_cast<Number>(limit.value);
    throw "there is no such limit";
}

/// "holds 1001 scenes, more than the 1000 that are allowed".
std::string beyondLimit(uint64_t count, const std::string& things, uint64_t limit);

}  // namespace platform
