// Which archive each installed template came from, so that a newer one is noticed.
#pragma once

#include <map>
#include <string>

#include "app/data/QVDataManager.h"

namespace multiscene {

/// Kept in the catalogue's own database. All operations throw platform::Error.
class InstalledArchives {
  public:
    explicit InstalledArchives(QVDataManager& catalogue) : catalogue_(catalogue) {}

    /// Both inside the transaction that changes the template's rows.
    void remember(platform::Database& database, const std::string& name, const std::string& digest);
    void forget(platform::Database& database, const std::string& name);

    /// The archives' SHA-256 by the names of the templates. A template that was installed before digests were
    /// kept has none.
    std::map<std::string, std::string> digests();

  private:
    QVDataManager& catalogue_;
};

}  // namespace multiscene
