#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "platform/base/DispatchQueue.h"
#include "platform/image/Image.h"

namespace multiscene {

/// Keeps the last text texture of a job as a JPEG file "text.jpg" in the job's own folder, written by a
/// worker so that rendering does not wait. A copy that cannot be written is let go. Any thread.
class TextPictureCopy {
  public:
    TextPictureCopy() = default;
    /// Returns when no copy is being written any more: the folder has to stay until then.
    ~TextPictureCopy() = default;
    TextPictureCopy(const TextPictureCopy&) = delete;
    TextPictureCopy& operator=(const TextPictureCopy&) = delete;

    /// Where copies go. Before the first one; without it they go nowhere.
    void setFolder(const std::string& folder) { folder_ = folder; }
    void write(const platform::Bitmap& picture);

  private:
    void writeLatest();

    std::string folder_;
    std::mutex mutex_;
    platform::Bitmap latest_;                          ///< empty once it is written
    std::unique_ptr<platform::DispatchQueue> worker_;  ///< from the first copy on; ends first
};

}  // namespace multiscene
