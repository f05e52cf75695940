#include "output/SoundFiles.h"

namespace multiscene {

SoundFiles::Sound SoundFiles::open(const platform::Value& entry) {
    const std::string path = entry.string("audioPath");
    const auto known = files_.find(path);
    if (known != files_.end()) return known->second;
    return files_[path] = read(entry, path);
}

SoundFiles::Sound SoundFiles::read(const platform::Value& entry, const std::string& path) {
    const auto leftOut = [&](const std::string& what) {
        playback_.report().add({.what = what, .name = entry.string("audioPath"), .scene = {}, .node = {}});
    };
    platform::FileGate::Opened opened = playback_.gate().open(path);
    if (!opened.file && opened.verdict != platform::FileGate::Verdict::Missing)
        throw platform::Error(platform::ErrorKind::Template, platform::describe(opened.verdict), path);
    try {
        if (opened.file) return std::make_shared<platform::AudioFile>(std::move(opened.file), path);
        leftOut("missing file");
    } catch (const platform::Error& error) {
        if (error.kind() == platform::ErrorKind::Transient) throw;
        leftOut(error.message());
    }
    return nullptr;
}

}  // namespace multiscene
