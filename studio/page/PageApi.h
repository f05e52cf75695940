#pragma once

#include <filesystem>

#include "studio/api/Route.h"

namespace multiscene::studio {

/// The page's files, as its build has left them: index.html and a few others by name, and assets whose names
/// change with their content.
class PageApi : public Resource {
  public:
    /// The folder need not be there: then the page is a line that says so.
    explicit PageApi(std::filesystem::path folder);

    std::vector<Route> routes() override;

  private:
    Route routeTo(const std::string& pattern, const std::string& file) const;
    platform::http::Answer file(const ApiRequest& request, const std::string& name, bool isHashed) const;

    const std::filesystem::path folder_;
};

}  // namespace multiscene::studio
