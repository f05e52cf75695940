#pragma once

#include <string>

namespace multiscene {

/// "%20" and the like become the bytes they stand for; everything else stays.
std::string percentDecoded(const std::string& text);

/// The path of a URL for a path of files: "/" stays, what a URL cannot hold is written as "%20" and the like.
std::string percentEncoded(const std::string& path);

/// The name of the template in an archive's URL: its last path component without the extension.
std::string templateNameOfUrl(const std::string& url);

}  // namespace multiscene
