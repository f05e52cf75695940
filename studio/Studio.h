// The studio: a server for a page and an API, where its parts meet.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "studio/StudioSettings.h"

namespace multiscene::studio {

/// Serves while it lives. One for each data home: a second one is refused.
///
/// Its folder, <home>/studio, is the owner's alone. In it: "lock", held while it runs; "address", the page's
/// address with the key that lets the person at this machine in.
class Studio {
  public:
    /// `workbench`: the folder of a template that its author writes (workbenchFolder); the page is its
    /// workbench then. Throws platform::Error: Failed when one runs already, when the port is taken, or when
    /// the folder or the certificate are of no use; Usage for wrong settings.
    explicit Studio(StudioSettings settings, std::filesystem::path workbench = {});
    /// stop() without patience.
    ~Studio();
    Studio(const Studio&) = delete;
    Studio& operator=(const Studio&) = delete;

    // Until stop():
    uint16_t port() const;
    /// Of StudioSettings::metricsPort; 0: none.
    uint16_t metricsPort() const;
    /// The page's address with the key, as it is now. Whoever has it is let in.
    std::string address() const;
    /// The file that holds it.
    std::filesystem::path addressFile() const;
    /// A file that leads a browser there, of StudioSettings::opensPage.
    std::filesystem::path openerFile() const;

    /// Ends what runs: child programs are asked to, requests are waited for, no longer than that.
    void stop(std::chrono::milliseconds patience = std::chrono::milliseconds(4000));

  private:
    struct Core;
    std::unique_ptr<Core> core_;
};

}  // namespace multiscene::studio
