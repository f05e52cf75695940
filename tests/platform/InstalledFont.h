#pragma once

#include <fontconfig/fontconfig.h>

#include <string>

namespace platform::test {

/// The file of an installed font of this name and weight.
inline std::string installedFontFile(const char* family, int weight = FC_WEIGHT_NORMAL) {
    FcPattern* wanted =
        FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, family, FC_WEIGHT, FcTypeInteger, weight, nullptr);
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result{};
    FcPattern* found = FcFontMatch(nullptr, wanted, &result);
    FcChar8* file = nullptr;
    FcPatternGetString(found, FC_FILE, 0, &file);
    const std::string path(reinterpret_cast<char*>(file));
    FcPatternDestroy(wanted);
    FcPatternDestroy(found);
    return path;
}

}  // namespace platform::test
