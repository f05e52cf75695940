#include "platform/base/Limits.h"

namespace platform {

std::vector<LimitRow> limitRows() {
    return {
        {"maxRecords", Limits::maxRecords, "catalogue records of a template"},
        {"maxGroupScenes", Limits::maxGroupScenes, "scenes in a group"},
        {"maxSceneNodes", Limits::maxSceneNodes, "nodes in a scene, cameras and clock included"},
        {"maxSceneFiles", Limits::maxSceneFiles, "times that a scene names a file"},
        {"maxShaderBytes", Limits::maxShaderBytes, "bytes of a shader's description, and of each source"},
        {"maxShaderWords", Limits::maxShaderWords, "words of a shader source, macros expanded"},
        {"maxShaderStatementWords", Limits::maxShaderStatementWords,
         "words of a statement in a shader, macros expanded"},
        {"maxShaderInlinedWords", Limits::maxShaderInlinedWords,
         "words of a shader function with those that it calls put where it calls them"},
        {"maxShaderArray", Limits::maxShaderArray, "elements of an array in a shader"},
        {"maxShaderWork", Limits::maxShaderWork,
         "words that a pixel goes through, each turn of a loop counted"},
        {"maxPictureBytes", Limits::maxPictureBytes, "bytes of a picture's file, a user's photo included"},
        {"jobMemory", Limits::jobMemory, "bytes of memory that any job may take"},
        {"jobMemoryPerPixel", Limits::jobMemoryPerPixel, "and more for each pixel of its frames' size"},
        {"maxJobMemory", Limits::maxJobMemory, "at the most; --limit maxJobMemory=N gives a job just that"},
        {"jobSeconds", Limits::jobSeconds, "time, and processor time, that any job may take"},
        {"jobMillisecondsPerFrame", Limits::jobMillisecondsPerFrame, "and more for each frame"},
        {"jobNanosecondsPerPixel", Limits::jobNanosecondsPerPixel, "and for each pixel of each frame"},
        {"maxJobCpuSeconds", Limits::maxJobCpuSeconds, "processor time at the most, or just that if given"},
        {"maxJobSeconds", Limits::maxJobSeconds, "time at the most, or just that if given"},
        {"maxStepCpuSeconds", Limits::maxStepCpuSeconds, "processor time of a job for one frame or file"},
        {"maxStepSeconds", Limits::maxStepSeconds, "time of a job for one frame or file"},
        {"jobFileBytes", Limits::jobFileBytes, "bytes of each file that any job may write"},
        {"jobFileBytesPerPixel", Limits::jobFileBytesPerPixel, "and more for each pixel of all its frames"},
        {"maxJobFileBytes", Limits::maxJobFileBytes, "at the most, or just that if given"},
        {"maxJobOpenFiles", Limits::maxJobOpenFiles, "files that a job has open"},
        {"maxJobThreads", Limits::maxJobThreads, "threads of a job"},
    };
}

std::string beyondLimit(uint64_t count, const std::string& things, uint64_t limit) {
    return "holds " + std::to_string(count) + " " + things + ", more than the " + std::to_string(limit) +
           " that are allowed";
}

}  // namespace platform
