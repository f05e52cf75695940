#include "group/PhotoSlot.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace multiscene {

namespace {

constexpr std::string_view slotPrefix = "fy";
constexpr const char* uncountedPhoto = "fy100.jpg";

bool isPhotoSlot(const std::filesystem::path& path) {
    return path.stem().string().starts_with(slotPrefix) && path.extension().string().ends_with("jpg");
}

int suppliedPhotos(const std::filesystem::path& folder) {
    std::error_code error;
    int entries = 0;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        ++entries;
    return std::filesystem::exists(folder / uncountedPhoto, error) ? entries - 1 : entries;
}

}  // namespace

std::string suppliedPhotoForSlot(const std::string& path) {
    const std::filesystem::path slot(path);
    if (!isPhotoSlot(slot)) return path;
    const int supplied = suppliedPhotos(slot.parent_path());
    if (supplied < 1) return path;
    const long number = std::strtol(slot.stem().string().c_str() + slotPrefix.size(), nullptr, 10);
    const long photo = std::labs(number % supplied) + 1;
    return (slot.parent_path() / ("fy" + std::to_string(photo) + ".jpg")).string();
}

}  // namespace multiscene
