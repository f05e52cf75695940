#include "app/catalogue/SampleTemplates.h"

#include <algorithm>
#include <filesystem>

#include "platform/base/Error.h"
#include "platform/base/Paths.h"

namespace multiscene {

namespace fs = std::filesystem;

namespace {

bool hasNumber(const TemplateFolder& sample, const std::string& number) {
    return std::any_of(sample.records.begin(), sample.records.end(), [&](const QVTempletDataModel& record) {
        return std::to_string(record.sId()) == number;
    });
}

}  // namespace

std::vector<TemplateFolder> sampleTemplates() {
    std::error_code failure;
    // In the build tree a link leads to them.
    const fs::path folder = fs::canonical(platform::resourcesFolder() / "templates", failure);
    std::vector<TemplateFolder> samples;
    for (auto entry = fs::directory_iterator(folder, failure); !failure && entry != fs::end(entry);
         entry.increment(failure)) {
        try {
            samples.push_back(readTemplateFolder(entry->path()));
        } catch (const platform::Error&) {  // whatever else lies there
        }
    }
    std::sort(samples.begin(), samples.end(),
              [](const TemplateFolder& left, const TemplateFolder& right) { return left.name < right.name; });
    return samples;
}

std::optional<TemplateFolder> findSampleTemplate(const std::string& numberOrName) {
    const std::vector<TemplateFolder> samples = sampleTemplates();
    const auto find = [&](auto condition) { return std::find_if(samples.begin(), samples.end(), condition); };
    auto found = find([&](const TemplateFolder& each) { return each.name == numberOrName; });
    if (found == samples.end())
        found = find([&](const TemplateFolder& each) { return hasNumber(each, numberOrName); });
    if (found == samples.end())
        found = find([&](const TemplateFolder& each) { return displayName(each) == numberOrName; });
    return found == samples.end() ? std::nullopt : std::optional(*found);
}

}  // namespace multiscene
