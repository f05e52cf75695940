#pragma once

#include <optional>
#include <string>

#include "platform/http/RequestHead.h"
#include "studio/access/Origins.h"
#include "studio/access/SessionStore.h"

namespace multiscene::studio {

/// Says who asks, and whether they may. Any thread.
class Gate {
  public:
    /// Both outlive the gate.
    Gate(SessionStore& sessions, const Origins& origins) : sessions_(sessions), origins_(origins) {}

    /// Who asks; nobody where nobody has to and nobody is known. Throws Problem: 401, 403.
    Session judge(const platform::http::RequestHead& head, Access wanted) const;

    const Origins& origins() const { return origins_; }

    /// The cookie's secret; empty: there is none.
    static std::string cookie(const platform::http::RequestHead& head);
    static std::string cookieName(const platform::http::RequestHead& head);
    /// What a page says in X-Studio-Token with every change: only who may read the studio's answers can know
    /// it.
    static std::string pageToken(const std::string& cookie);

  private:
    std::optional<Session> whoAsks(const platform::http::RequestHead& head, bool changes) const;

    SessionStore& sessions_;
    const Origins& origins_;
};

}  // namespace multiscene::studio
