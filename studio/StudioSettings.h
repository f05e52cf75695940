#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "studio/StudioLimits.h"

namespace multiscene::studio {

/// How a studio is run. All of it is said at its start.
struct StudioSettings {
    std::filesystem::path home;            ///< the data home
    uint16_t port = 8484;                  ///< 0: any
    bool isListening = false;              ///< in the network, not at this machine alone
    std::string certificateFile, keyFile;  ///< of TLS; empty: without
    std::string
        publicUrl;  ///< what the studio is called from outside, "https://videos.example.org"; empty: nothing
    bool opensPage = false;  ///< leaves a file in its folder that leads a browser to the page
    /// What is told when the pairing code changes, with the address that holds it. Studio queue.
    std::function<void(const std::string& code, const std::string& url)> pairing;

    /// What whoever has started it should know.
    std::function<void(const std::string& text)> notice;

    /// The program whose runs do the work, and the options that each of them is given (besides --home).
    std::filesystem::path program = "/proc/self/exe";
    std::vector<std::string> programOptions;
    std::filesystem::path pageFolder;  ///< empty: of the program's resources

    StudioLimits limits;  ///< what clients may take

    /// Videos that are made at a time; 0: half as many as the machine has cores, at least one.
    int workers = 0;
    /// How long uploads stay after the last job that used them, and videos that nobody has kept.
    std::chrono::seconds photosStay{3600};
    int64_t videosStayDays = 30;

    /// Hosts that webhooks may reach although their addresses are not of the Internet.
    std::vector<std::string> webhookAllow;
    int metricsPort = -1;             ///< where numbers are told at this machine; 0: any, -1: nowhere
    std::filesystem::path accessLog;  ///< empty: none
};

/// The folders of a data home's studio. Each is the owner's alone; names in them are ids.
struct StudioFolders {
    explicit StudioFolders(const std::filesystem::path& home);

    /// Makes those that are missing. Throws platform::Error.
    void make() const;

    std::filesystem::path studio;
    std::filesystem::path database;  ///< a file
    std::filesystem::path uploads, videos, jobs, cache;
};

}  // namespace multiscene::studio
