#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/base/DispatchQueue.h"
#include "platform/image/Image.h"

namespace multiscene {

/// Keeps the last text texture of a job as a JPEG file "text.jpg" in the job's own folder, written by a
/// worker so that rendering does not wait. A copy that cannot be written is let go. All operations are safe
/// from any thread.
class TextPictureCopy {
  public:
    static TextPictureCopy& shared();

    /// Where copies go; empty: nowhere, which is how it starts. Returns when no copy is being written any
    /// more, so that the former folder may be removed.
    void setFolder(const std::string& folder);
    void write(platform::Bitmap picture);

  private:
    TextPictureCopy() = default;

    std::mutex mutex_;
    std::string folder_;
    std::unique_ptr<platform::DispatchQueue> worker_;  // from the first copy on
};

}  // namespace multiscene
