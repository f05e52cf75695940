// The templates that there are, as a run of the program has told them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/Value.h"
#include "studio/Parts.h"
#include "studio/api/Problem.h"
#include "studio/jobs/TemplateFacts.h"
#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// One template: installed, a sample, or offered by the server.
struct BookedTemplate {
    int64_t id = 0;
    platform::Value told;          ///< the "template" line of templates list --json
    std::filesystem::path folder;  ///< where it lies; empty: nowhere

    std::string name() const { return told.string("name"); }
    std::string title(const std::string& language) const { return told["titles"].string(language); }
    /// "installed", "sample", "offered".
    const char* state() const;
};

/// Read once, and again when the catalogue or the server's list has changed. Studio queue.
class TemplateBook {
  public:
    explicit TemplateBook(const Parts& parts);
    ~TemplateBook();

    /// Calls, at once or once the program has told them, when they are as they are now. After a failure
    /// `failed` is called instead, within the same time.
    using Ready = std::function<void()>;
    using Failed = std::function<void(const Problem&)>;
    void refresh(Ready ready, Failed failed);
    /// Something has changed that the time stamps may not show.
    void forget();
    /// Ends what runs.
    void stop();

    // Of the last that was told.
    const std::vector<BookedTemplate>& all() const { return all_; }
    const BookedTemplate* find(int64_t id) const;
    bool isTimelineShared() const { return isTimelineShared_; }
    /// Throws platform::Error (Transient) before anything was told.
    std::optional<TemplateFacts> facts(int64_t id, const std::string& language) const;

  private:
    struct Waiter {
        Ready ready;
        Failed failed;
    };

    std::string stamp() const;
    void read();
    void hear(const platform::Value& line);
    void heard(const ChildProgram::End& end);
    std::filesystem::path folderOf(const platform::Value& told) const;

    const Parts parts_;
    std::vector<BookedTemplate> all_, coming_;
    bool isTimelineShared_ = false, isRead_ = false, isStopped_ = false;
    std::string readAt_, readingAt_;  ///< stamps
    int again_ = 0;                   ///< readings in a row that were late
    std::vector<Waiter> waiting_;
    std::unique_ptr<ChildProgram> reader_;
};

}  // namespace multiscene::studio
