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
        {"maxJobMemory", Limits::maxJobMemory, "bytes of memory that a job may take; --limit changes it"},
        {"maxJobCpuSeconds", Limits::maxJobCpuSeconds, "processor time of a job; --limit changes it"},
        {"maxJobSeconds", Limits::maxJobSeconds, "time of a job; --limit changes it"},
        {"maxStepCpuSeconds", Limits::maxStepCpuSeconds,
         "processor time for one frame or file; --limit changes it"},
        {"maxStepSeconds", Limits::maxStepSeconds, "time for one frame or file; --limit changes it"},
        {"maxJobFileBytes", Limits::maxJobFileBytes, "bytes of a file that a job writes; --limit changes it"},
        {"maxJobOpenFiles", Limits::maxJobOpenFiles, "files that a job has open; --limit changes it"},
        {"maxJobThreads", Limits::maxJobThreads, "threads of a job; --limit changes it"},
    };
}

std::string beyondLimit(uint64_t count, const std::string& things, uint64_t limit) {
    return "holds " + std::to_string(count) + " " + things + ", more than the " + std::to_string(limit) +
           " that are allowed";
}

}  // namespace platform
