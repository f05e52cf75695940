// What a catalogue screen shows: every template that is installed or offered, once.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/Model/MediaFormat.h"
#include "app/Model/UserInputList.h"
#include "app/Other/QVDownloadInfoManager.h"
#include "app/data/QVDataManager.h"
#include "app/template/TemplateFolder.h"

namespace multiscene {

struct TemplateOverview {
    int64_t sId = 0;         ///< of its first scene
    std::string name;        ///< of its folder and its archive
    std::string title;       ///< in the user's language
    platform::Value titles;  ///< in each that the program speaks, by "en", "zh", "ja"
    bool isInstalled = false, isOffered = false, isNew = false;
    bool isSample = false;           ///< ships with the program
    bool newerOffered = false;       ///< installed, and the server has another archive of it
    bool needsNewerVersion = false;  ///< as offered
    double minVersion = 0;           ///< of the program; 0: any
    double megabytes = 0;            ///< of the offered archive, else of the installed files
    int64_t frames = 0;              ///< below 1: unknown
    int64_t photos = 0;
    MediaFormat format;
    UserInputList inputs;
    bool hasMusic = false;
    std::string thumbnail;    ///< its picture, below its folder; empty: none
    std::string folder;       ///< of a template that is installed, or lies in a folder
    std::string templateUrl;  ///< of an offered one; this and the next are complete
    std::string thumbUrl, videoPreviewUrl, youtubePreviewUrl;

    double seconds() const { return static_cast<double>(frames) / format.framesPerSecond; }
};

/// Installed templates in the order of installation, then the samples that ship with the program, then the
/// others that the server's kept list offers. Throws platform::Error.
std::vector<TemplateOverview> templateOverviews(QVDataManager& catalogue,
                                                const QVDownloadInfoManager& server);

/// A template as it lies in its folder; scenes that it does not bring are looked up in `others`; null:
/// nowhere.
TemplateOverview overviewOf(const TemplateFolder& folder, SceneCatalogue* others);

/// By number, name or title; what is installed comes first, then the samples.
std::optional<TemplateOverview> findTemplateOverview(QVDataManager& catalogue,
                                                     const QVDownloadInfoManager& server,
                                                     const std::string& numberOrName);

}  // namespace multiscene
