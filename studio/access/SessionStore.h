// Who may ask, and by which secrets they are known.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/store/Database.h"
#include "studio/access/Session.h"

namespace multiscene::studio {

/// Sessions, and the cookies and tokens that stand for them: of these only digests are kept. What another
/// process changes (multiscene studio token) holds at once. Any thread. Everything throws platform::Error.
class SessionStore {
  public:
    static constexpr int64_t kUnusedMs = int64_t{30} * 24 * 3600 * 1000;

    /// Makes the tables that are missing. By a connection of its own.
    explicit SessionStore(const std::filesystem::path& database);

    /// Whom a cookie or a token stands for. One that was not used for 30 days stands for nobody, unless it is
    /// a program's.
    std::optional<Session> find(std::string_view secret);

    /// The session of the person at this machine.
    Session local();
    Session addPaired(const std::string& name);
    /// A new secret that stands for the session.
    std::string addSecret(const Session& session);
    void forget(std::string_view secret);

    /// The token itself, which nobody can be told again. Throws Usage when there is one of that name.
    std::string addToken(const std::string& name, Access scope);

    struct Known {
        Session session;
        int64_t created = 0, seen = 0;  ///< ms since 1970; seen: to a day; 0: never
    };
    /// Who could ask.
    std::vector<Known> known();
    /// Whether anybody could ask as that session.
    bool isKnown(const std::string& id);
    /// Whoever was known as that session no longer is; what they made stays for its time. False: nobody was.
    bool revoke(const std::string& id);

    /// The answer that the person of a session has given; empty: none.
    std::string rating(const Session& session);
    void setRating(const Session& session, const std::string& answer);
    bool setting(const std::string& key);
    void setSetting(const std::string& key, bool value);

  private:
    Session add(Session::Kind kind, const std::string& name, Access scope);
    void touch(const std::string& digest, int64_t seen, int64_t now);

    std::mutex mutex_;
    platform::Database database_;
};

}  // namespace multiscene::studio
