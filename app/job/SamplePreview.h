// What a template looks like with the inputs that it brings along in sample/inputs.json.
#pragma once

#include <filesystem>
#include <stop_token>

#include "app/job/JobObserver.h"
#include "app/template/TemplateFolder.h"

namespace multiscene {

/// Renders the whole video into a file and returns how many frames it has. A template without sample inputs
/// is played without any. Main thread; pumps the main queue. Throws platform::Error, Cancelled when a stop
/// was requested.
int64_t renderSampleVideo(const TemplateFolder& folder, const std::filesystem::path& video,
                          JobObserver& observer, const std::stop_token& stop);

/// Renders one frame of that video as a PNG picture.
void renderSamplePicture(const TemplateFolder& folder, int64_t frame, const std::filesystem::path& picture,
                         JobObserver& observer, const std::stop_token& stop);

}  // namespace multiscene
