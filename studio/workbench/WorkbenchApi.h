#pragma once

#include <filesystem>
#include <vector>

#include "studio/api/Route.h"
#include "studio/workbench/Bench.h"

namespace multiscene::studio {

/// /workbench: a template while its author writes it. For the person at this machine alone.
class WorkbenchApi : public Resource {
  public:
    WorkbenchApi(const Parts& parts, const std::filesystem::path& folder) : bench_(parts, folder) {}

    std::vector<Route> routes() override;
    void stop() override { bench_.stop(); }

  private:
    Bench bench_;
};

/// The folder of the template that an author names. Nothing of it is read. Throws platform::Error: Usage
/// where there is no folder, Template where it holds no template.
std::filesystem::path workbenchFolder(const std::string& name);

}  // namespace multiscene::studio
