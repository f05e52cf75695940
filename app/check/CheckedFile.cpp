#include "app/check/CheckedFile.h"

#include "platform/base/PropertyList.h"

namespace multiscene {

using platform::FileGate;
using platform::Value;

Finding findingOf(const platform::Error& error, const std::string& file) {
    // A disk that fails says nothing about the author's work.
    if (error.kind() == platform::ErrorKind::Transient) throw platform::Error(error);
    return {Severity::Error, error.file().empty() ? file : error.file(), error.key(), error.message(), {}};
}

void addFaults(const std::vector<platform::PropertyListFault>& faults, const std::string& file,
               Findings& findings) {
    for (const platform::PropertyListFault& fault : faults)
        findings.push_back(
            {Severity::Error, file, "", "line " + std::to_string(fault.line) + ": " + fault.message, {}});
}

Value readDictionary(const std::string& file, FileGate& gate, Findings& findings) {
    return readDictionary(gate.open(file), file, findings);
}

Value readDictionary(const FileGate::Opened& opened, const std::string& file, Findings& findings) {
    if (opened.verdict != FileGate::Verdict::Allowed) {
        findings.push_back({Severity::Error, file, "", platform::describe(opened.verdict), {}});
        return {};
    }
    try {
        const auto bytes = platform::readFile(opened.file, file, platform::PropertyListLimits().maxBytes);
        const Value content = platform::parsePropertyList(bytes, file);
        addFaults(platform::propertyListFaults(bytes), file, findings);
        if (content.isDictionary()) return content;
        findings.push_back({Severity::Error, file, "", "holds no dictionary", {}});
    } catch (const platform::Error& error) {
        findings.push_back(findingOf(error, file));
    }
    return {};
}

}  // namespace multiscene
