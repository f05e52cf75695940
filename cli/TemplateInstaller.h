// Installing templates on the console's behalf: progress is shown, the main queue is pumped.
#pragma once

#include <optional>
#include <stop_token>
#include <string>

#include "app/Other/QVSceneInstallManager.h"
#include "cli/Console.h"

namespace multiscene::cli {

class TemplateInstaller {
  public:
    /// With `replaces` an installed template of the same name makes way. The console outlives it.
    TemplateInstaller(Console& console, std::shared_ptr<QVDataManager> catalogue, std::stop_token stop,
                      bool replaces)
        : console_(console), catalogue_(std::move(catalogue)), stop_(std::move(stop)), replaces_(replaces) {}

    InstallReport fromArchive(const std::string& zip) const;
    /// `offeredNumber` is that of the server's list. A failed download tells that the list may be old.
    InstallReport fromUrl(const std::string& url, std::optional<int64_t> offeredNumber = {}) const;

    /// Says what was installed, or that it is installed already: a line, or the event `name` with --json.
    void tell(const InstallResult& result, const std::string& name) const;

  private:
    InstallOptions options() const;
    template <typename Start>
    InstallReport run(Start start) const;

    Console& console_;
    std::shared_ptr<QVDataManager> catalogue_;
    std::stop_token stop_;
    bool replaces_;
};

}  // namespace multiscene::cli
