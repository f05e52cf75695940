#pragma once

#include <functional>
#include <string>
#include <utility>

#include "studio/Parts.h"
#include "studio/access/Gate.h"
#include "studio/access/Pairing.h"
#include "studio/access/RateLimit.h"
#include "studio/access/StartKey.h"
#include "studio/api/Route.h"

namespace multiscene::studio {

/// How browsers and devices become known.
class SessionsApi : public Resource {
  public:
    /// `key`: see Studio; `pairing`: null where no device is let in. All of it outlives the resource.
    SessionsApi(const Parts& parts, const Origins& origins, StartKey& key, Pairing* pairing);

    std::vector<Route> routes() override;
    /// Called with the session of whoever is let in no more.
    void setOnRevoked(std::function<void(const std::string& session)> call) { onRevoked_ = std::move(call); }

  private:
    platform::http::Answer forget(const ApiRequest& request);
    void begin(ApiRequest& request, platform::http::Responder& responder);
    Session admit(const ApiRequest& request);
    Session admitPaired(const ApiRequest& request, const std::string& code);
    platform::Value list(const ApiRequest& request);

    SessionStore& sessions_;
    const uint64_t mostDevices_;
    const Origins& origins_;
    StartKey& key_;
    Pairing* pairing_;
    RateLimit tries_, triesOfAll_;
    std::function<void(const std::string&)> onRevoked_;
};

}  // namespace multiscene::studio
