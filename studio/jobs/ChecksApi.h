#pragma once

#include <map>
#include <memory>

#include "studio/api/Route.h"
#include "studio/jobs/Workshop.h"
#include "studio/process/ChildProgram.h"

namespace multiscene::studio {

/// /checks: what is missing, what is wrong, how long it would take, before anything is asked for.
class ChecksApi : public Resource {
  public:
    explicit ChecksApi(std::shared_ptr<Workshop> shop);

    std::vector<Route> routes() override;
    void stop() override { children_.clear(); }

  private:
    using Findings = platform::Value::Array;
    struct Child {
        Findings findings;
        std::vector<std::function<void(const Findings&)>> waiting;
        std::unique_ptr<ChildProgram> program;
    };

    void check(ApiRequest& request, platform::http::Responder& responder);
    /// What "check" finds wrong with a template; asked once.
    void withFindings(const TemplateFacts& facts, std::function<void(const Findings&)> use);
    void start(const TemplateFacts& facts);

    std::shared_ptr<Workshop> shop_;
    std::map<int64_t, Findings> known_;
    std::map<int64_t, Child> children_;
};

}  // namespace multiscene::studio
