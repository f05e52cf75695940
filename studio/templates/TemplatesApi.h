#pragma once

#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "studio/Parts.h"
#include "studio/api/Route.h"
#include "studio/process/ChildProgram.h"
#include "studio/templates/TemplateBook.h"
#include "studio/templates/TemplateMedia.h"

namespace multiscene::studio {

/// The templates for whoever chooses one: cards, details, pictures. Installing is a job's.
class TemplatesApi : public Resource {
  public:
    TemplatesApi(const Parts& parts, std::shared_ptr<TemplateBook> book);

    std::vector<Route> routes() override;
    void stop() override;

  private:
    using Responder = platform::http::Responder;
    using Waiting = TemplateMedia::Waiting;
    /// Studio queue; answers, or throws what is answered as a problem.
    using Answering = std::function<void(const ApiRequest&, const Waiting&)>;

    /// A handler that is called once the book is as the catalogue is.
    std::function<void(ApiRequest&, Responder&)> whenRead(Answering answer);
    const BookedTemplate& wanted(const ApiRequest& request) const;
    platform::http::Answer cards(const ApiRequest& request) const;
    void detail(const ApiRequest& request, const Waiting& waiting);
    void check(const BookedTemplate& booked);
    void remove(ApiRequest& request, Responder& responder);
    void run(std::vector<std::string> words, ChildProgram::Line line, ChildProgram::Ended ended);

    const Parts parts_;
    const std::shared_ptr<TemplateBook> book_;
    TemplateMedia media_;
    std::list<std::unique_ptr<ChildProgram>> runs_;
    bool isStopped_ = false;

    /// What check says, by the folder, until the book is another.
    struct Judged {
        platform::Value told;  ///< the line of the template that was judged
        platform::Value::Array findings;
    };
    std::map<std::string, Judged> judged_;
    /// Who waits for what it says of a template, by the template's line: it is asked once.
    std::map<std::string, std::vector<std::function<void(const platform::Value::Array&)>>> beingJudged_;
};

}  // namespace multiscene::studio
