// A template's records on their way from the worker that has read them to the program, which does not read
// what templates write.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/template/TemplateFolder.h"
#include "cli/FencedWork.h"

namespace multiscene::cli {

/// In the worker.
void tellRecords(const TemplateFolder& folder, const Workplace& place);

/// In the program: takes down what it is told, within bounds, and believes nothing.
class ToldTemplate {
  public:
    ToldTemplate(std::string name, std::filesystem::path folder);

    /// One request of tellRecords(). Throws platform::Error for anything else, or too much.
    void hear(const std::vector<std::string>& request);
    /// Throws platform::Error when no record was told.
    const TemplateFolder& folder();

  private:
    void hearRecord(const std::vector<std::string>& fields);
    void hearInfo(const std::string& piece);
    void finishInfo();

    TemplateFolder told_;
    std::string info_;  ///< of the last record
    size_t bytes_ = 0;
};

}  // namespace multiscene::cli
