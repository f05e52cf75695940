// What a template should look well with besides its own sample inputs.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "app/Model/UserInputList.h"
#include "app/job/JobInputs.h"

namespace multiscene {

/// "sample", "empty", then, as far as the inputs give cause: "longest" (texts as long as there is room for),
/// other scripts by their names, odd photos by theirs. Made on the inputs that the template brings in
/// `sampleFile` (need not exist); "empty" has none.
struct TrialInputs {
    std::string name;
    JobInputs inputs;
};
std::vector<TrialInputs> trialsOf(const UserInputList& inputs, const std::filesystem::path& sampleFile);

}  // namespace multiscene
