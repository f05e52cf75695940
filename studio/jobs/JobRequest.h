// What a video is asked for with: judged when it is asked for, turned into a run of the program when its turn
// has come.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "platform/base/Value.h"
#include "studio/StudioLimits.h"
#include "studio/jobs/Job.h"
#include "studio/jobs/TemplateFacts.h"
#include "studio/uploads/UploadStore.h"

namespace multiscene::studio {

namespace request {

/// The bodies of the API: "values" and "music" of templates, of which jobs, previews and checks are made.
platform::Value valuesSchema(const StudioLimits& limits);
platform::Value musicSchema();
platform::Value sizeSchema();
platform::Value jobSchema(const StudioLimits& limits);

struct Planned {
    Job job;                           ///< without id, session and times
    std::vector<std::string> uploads;  ///< that it uses
    int64_t pixels = 0;                ///< of a frame
};

/// Judges values against what the template asks for and what the session has sent: the uploads used. Throws
/// Problem 422 with a pointer for each fault.
std::vector<std::string> judgeValues(const platform::Value& values, const TemplateFacts& facts,
                                     UploadStore& uploads, const std::string& session);

/// A job of a body that is as jobSchema() says. Throws Problem.
Planned plan(const platform::Value& body, const TemplateFacts& facts, UploadStore& uploads,
             const std::string& session, const StudioLimits& limits);

/// Of a frame of what a body asks for, which is as jobSchema() says.
int64_t pixelsOf(const platform::Value& body, const TemplateFacts& facts);

/// What a "--media" file holds for these values. Uploads that are gone are left out.
platform::Value mediaOf(const platform::Value& values, UploadStore& uploads, const std::string& session);

/// The words of "make", but for --media and -o.
std::vector<std::string> wordsOf(const Job& job, const TemplateFacts& facts, UploadStore& uploads);

/// The request again, with null in place of uploads that are gone.
platform::Value asked(const Job& job, UploadStore& uploads);

}  // namespace request

}  // namespace multiscene::studio
