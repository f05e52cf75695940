#include "platform/text/FontFile.h"

#include <fontconfig/fontconfig.h>
#include <pango/pangofc-fontmap.h>
#include <sys/stat.h>

#include <list>
#include <mutex>
#include <tuple>

#include "platform/base/Limits.h"
#include "platform/text/TextRasterizer.h"

namespace platform {

namespace {

/// More font files than any template needs, and few enough to stay open.
constexpr size_t maxFontFiles = limitOf<size_t>("maxFontFiles");

using Identity = std::tuple<dev_t, ino_t, off_t, time_t, long>;

struct LoadedFont {
    Identity identity;
    FileHandle file;
    FontFile font;
};

Identity identify(const FileHandle& file) {
    struct stat status {};
    fstat(file.descriptor(), &status);
    return {status.st_dev, status.st_ino, status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec};
}

/// The file's first face that is not a variable font as such.
FcPattern* firstFace(FcConfig* configuration) {
    const FcFontSet* fonts = FcConfigGetFonts(configuration, FcSetApplication);
    for (int i = 0; fonts && i < fonts->nfont; ++i) {
        FcBool variable = FcFalse;
        FcPatternGetBool(fonts->fonts[i], FC_VARIABLE, 0, &variable);
        if (!variable) return fonts->fonts[i];
    }
    return nullptr;
}

/// Empty when the file is no font.
FontFile load(const FileHandle& file) {
    FcConfig* configuration = FcInitLoadConfigAndFonts();
    const std::string path = file.path();
    const bool added = FcConfigAppFontAddFile(configuration, reinterpret_cast<const FcChar8*>(path.c_str()));
    FcPattern* face = added ? firstFace(configuration) : nullptr;
    if (face) return {configuration, pango_fc_font_description_from_pattern(face, FALSE)};
    FcConfigDestroy(configuration);
    return {nullptr, nullptr};
}

}  // namespace

const FontFile* openFontFile(FileHandle handle) {
    static std::mutex mutex;
    static std::list<LoadedFont> loaded;
    if (!handle) return nullptr;
    const Identity identity = identify(handle);
    const std::lock_guard lock(mutex);
    for (const LoadedFont& font : loaded)
        if (font.identity == identity) return &font.font;
    if (loaded.size() == maxFontFiles || !isFontFile(handle)) return nullptr;
    const FontFile font = load(handle);
    if (!font.configuration) return nullptr;
    return &loaded.emplace_back(LoadedFont{identity, std::move(handle), font}).font;
}

bool isFontFile(const FileHandle& file) {
    int faces = 0;
    FcPattern* face =
        FcFreeTypeQuery(reinterpret_cast<const FcChar8*>(file.path().c_str()), 0, nullptr, &faces);
    if (face) FcPatternDestroy(face);
    return face != nullptr;
}

}  // namespace platform
