#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace multiscene {

/// What the user gives a template, as the command line says it.
struct JobInputs {
    struct Given {
        std::string key, value;
    };

    std::vector<Given> texts;         ///< value: the text itself
    std::vector<Given> photos;        ///< value: a file
    std::vector<Given> videos;        ///< value: a file
    std::filesystem::path mediaFile;  ///< a JSON object from key to text, number or path; empty: none
};

}  // namespace multiscene
