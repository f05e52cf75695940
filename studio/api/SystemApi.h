#pragma once

#include <functional>

#include "studio/Parts.h"
#include "studio/access/Origins.h"
#include "studio/access/Pairing.h"
#include "studio/api/Route.h"
#include "studio/api/Router.h"

namespace multiscene::studio {

/// The studio itself: whether it works, its settings, the description of its API.
class SystemApi : public Resource {
  public:
    /// `pairing` may be null, `deviceUrl` empty. `isSharing`: whether the template server wants its timeline
    /// shown. All of it outlives the resource.
    SystemApi(const Parts& parts, const Router& router, const Origins& origins, const Pairing* pairing,
              std::function<std::string()> pairingUrl, std::function<bool()> isSharing);

    std::vector<Route> routes() override;

  private:
    std::vector<Route> stateRoutes();
    std::vector<Route> settingsRoutes();
    platform::http::Answer pairingPicture(const ApiRequest& request) const;
    platform::Value settings(const ApiRequest& request) const;
    platform::Value pairing(const ApiRequest& request) const;

    const Parts parts_;
    const Router& router_;
    const Origins& origins_;
    const Pairing* pairing_;
    std::function<std::string()> pairingUrl_;
    std::function<bool()> isSharing_;
    const std::string fence_;
};

}  // namespace multiscene::studio
