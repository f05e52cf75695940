// A template of 64x96 pixels and a few frames, written from code so that a test can break any part of it.
#pragma once

#include <filesystem>
#include <functional>
#include <string>

#include "platform/base/Value.h"

namespace multiscene::test {

struct SmallTemplate {
    static constexpr int frames = 6;
    static constexpr int sId = 7;

    std::string name = "small";
    platform::Value::Dictionary record;       ///< the first catalogue record
    platform::Value::Dictionary description;  ///< its "wechartTempletInfo"
    platform::Value::Dictionary camera;       ///< "Camera"
    platform::Value::Dictionary clock;        ///< "TimeSource"; empty: none
    platform::Value::Array nodes;             ///< "object3D"
    platform::Value::Array moreRecords;
    std::string shaderSource;  ///< of the fragment shader of "own.plist"; empty: there is none

    /// Called with the folder when everything else is written.
    std::function<void(const std::filesystem::path&)> more;

    /// A red picture behind a photo ("photo", 1:1) and a text ("title", 5 characters in a line).
    SmallTemplate();

    platform::Value::Dictionary scene() const;
    /// Writes PARENT/NAME with its pictures; returns the folder.
    std::filesystem::path write(const std::filesystem::path& parent) const;
};

/// A node that shows `texture` (a path or a key) from frame 0 on.
platform::Value::Dictionary quad(const std::string& name, const std::string& texture);
platform::Value::Dictionary clockOf(int frames);
platform::Value::Dictionary recordOf(int sId, const std::string& folder, const std::string& sceneFile,
                                     int frames);

void writePicture(const std::filesystem::path& file, uint32_t rgb, int width = 16, int height = 16);
/// An H.264 film of plain pictures.
void writeVideo(const std::filesystem::path& file, int frames, int framesPerSecond);
/// A tone, mono, 16 bit.
void writeSound(const std::filesystem::path& file, double seconds);

}  // namespace multiscene::test
