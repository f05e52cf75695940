// What an installation was about to do, so that the next start can finish or undo it.
#pragma once

#include <string>
#include <vector>

#include "app/data/QVDataManager.h"

namespace multiscene {

/// One change of a template's folder that has been announced and not yet tidied up.
struct PendingChange {
    std::string name;         ///< the template
    std::string newIdentity;  ///< of the folder that moves in; empty for a removal
    bool committed = false;   ///< the catalogue has the change: finish it; else undo it
};

/// Kept in the catalogue's own database, so that the mark "committed" and the rows that it stands for appear
/// in one step. All operations throw platform::Error.
class InstallJournal {
  public:
    explicit InstallJournal(QVDataManager& catalogue) : catalogue_(catalogue) {}

    /// Announces a change, in a transaction of its own. The caller holds the template's lock.
    void announce(const std::string& name, const std::string& newIdentity);
    /// Inside the transaction that changes the rows.
    void markCommitted(platform::Database& database, const std::string& name);
    void forget(const std::string& name);
    std::vector<PendingChange> pending();

  private:
    void transaction(const std::function<void(platform::Database&)>& work);
    QVDataManager& catalogue_;
};

}  // namespace multiscene
