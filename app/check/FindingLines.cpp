#include "app/check/FindingLines.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>

#include "platform/base/Error.h"
#include "platform/base/File.h"
#include "platform/base/FileGate.h"
#include "platform/base/PropertyList.h"
#include "platform/base/PropertyListLines.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::FileGate;

namespace {

using Lines = std::map<std::string, size_t>;

Lines linesIn(const std::string& file, const std::set<std::string>& keyPaths, FileGate& gate) {
    try {
        const auto opened = gate.open(file);
        if (opened.verdict != FileGate::Verdict::Allowed) return {};
        return platform::propertyListLines(
            platform::readFile(opened.file, file, platform::PropertyListLimits().maxBytes), keyPaths);
    } catch (const platform::Error&) {
        return {};  // what is wrong with the file has been found
    }
}

/// "line 12: …", as faults of the file itself are told.
size_t lineInMessage(const std::string& message) {
    constexpr std::string_view begin = "line ";
    size_t at = message.find(begin), line = 0;
    if (at == std::string::npos) return 0;
    const auto [end, failure] =
        std::from_chars(message.data() + at + begin.size(), message.data() + message.size(), line);
    return failure == std::errc() && *end == ':' ? line : 0;
}

}  // namespace

std::vector<size_t> linesOf(const Findings& findings, const fs::path& judged) {
    FileGate gate;
    gate.allowFolder(platform::isFolder(judged) ? judged : fs::absolute(judged).parent_path());
    std::map<std::string, std::set<std::string>> keyPaths;
    for (const Finding& finding : findings)
        if (!finding.keyPath.empty()) keyPaths[finding.file].insert(finding.keyPath);
    std::map<std::string, Lines> known;
    for (const auto& [file, wanted] : keyPaths) known[file] = linesIn(file, wanted, gate);
    std::vector<size_t> lines;
    for (const Finding& finding : findings) {
        const Lines& ofFile = known[finding.file];
        const auto found = ofFile.find(finding.keyPath);
        lines.push_back(found == ofFile.end() ? lineInMessage(finding.message) : found->second);
    }
    return lines;
}

}  // namespace multiscene
