#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/http/Responder.h"
#include "studio/templates/KeptFiles.h"
#include "studio/templates/TemplateBook.h"

namespace multiscene::studio {

/// What a template looks like: its own picture and video; of one that is only offered those of the server; of
/// one that brings no video a small one of its sample inputs. Studio queue.
class TemplateMedia {
  public:
    using Waiting = std::shared_ptr<platform::http::Responder>;

    explicit TemplateMedia(const Parts& parts) : parts_(parts), pictures_(parts), videos_(parts) {}

    static bool hasPicture(const BookedTemplate& booked);
    static bool hasVideo(const BookedTemplate& booked);

    /// Answer, at once or later; what is not to be had is a problem.
    void picture(const BookedTemplate& booked, const Waiting& waiting);
    void video(const BookedTemplate& booked, const Waiting& waiting);
    void stop();

  private:
    void find(KeptFiles& files, const std::string& file, std::vector<std::string> words,
              const Waiting& waiting);

    const Parts parts_;
    KeptFiles pictures_, videos_;  ///< apart: a picture waits for no video
};

}  // namespace multiscene::studio
