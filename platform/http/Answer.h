// What a request is answered with.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/File.h"
#include "platform/http/RequestHead.h"

namespace platform::http {

/// A status, header lines, and a body in memory or of a file. The server adds the date, the length and what
/// keeps browsers from doing with an answer what it is not meant for; it heeds HEAD, If-None-Match by the
/// "ETag" given here, and for files one Range. Copies share their file.
class Answer {
  public:
    explicit Answer(int status = 204) : status_(status) {}
    static Answer text(int status, std::string body,
                       const std::string& contentType = "text/plain; charset=utf-8");
    /// The file as it is when the answer begins. Throws Error when its size cannot be told.
    static Answer ofFile(FileHandle file, const std::string& contentType);

    /// Replaces a line of that name, but for "Set-Cookie", of which there may be several. Unless told
    /// otherwise by a "Cache-Control", nobody keeps the answer. Throws Error for what would not be one line,
    /// and for the lines that are the server's own.
    Answer& with(const std::string& name, const std::string& value) &;
    Answer&& with(const std::string& name, const std::string& value) &&;

    int status() const { return status_; }
    const std::vector<Field>& fields() const { return fields_; }
    /// Empty: there is none.
    std::string field(std::string_view name) const;
    bool isFile() const { return file_ != nullptr; }
    const FileHandle& file() const { return *file_; }
    const std::string& body() const { return body_; }
    uint64_t size() const { return isFile() ? fileSize_ : body_.size(); }

  private:
    friend class Outgoing;

    int status_;
    std::vector<Field> fields_;
    std::string body_;
    std::shared_ptr<const FileHandle> file_;
    uint64_t fileSize_ = 0;
};

}  // namespace platform::http
