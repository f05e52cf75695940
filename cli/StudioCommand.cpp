#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <semaphore>

#include "cli/Commands.h"
#include "cli/OpenedPage.h"
#include "cli/SignalWatch.h"
#include "platform/base/Paths.h"
#include "platform/qr/QrCode.h"
#include "studio/Studio.h"
#include "studio/workbench/WorkbenchApi.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
using studio::Studio;
using studio::StudioSettings;

namespace {

uint16_t portOf(const std::string& value) {
    uint16_t port = 0;
    const auto [end, failure] = std::from_chars(value.data(), value.data() + value.size(), port);
    if (failure != std::errc() || end != value.data() + value.size())
        throw Error(ErrorKind::Usage, "\"" + value + "\" is no port: 0 to 65535");
    return port;
}

int64_t numberWithin(const std::string& value, int64_t least, int64_t most) {
    int64_t number = 0;
    const auto [end, failure] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (failure != std::errc() || end != value.data() + value.size() || number < least || number > most)
        throw Error(ErrorKind::Usage, "\"" + value + "\" is no number from " + std::to_string(least) +
                                          " to " + std::to_string(most));
    return number;
}

/// A connection may have a file beside it, and programs, stores and the log have theirs: the usual 1024 are
/// too few.
void takeDescriptors(size_t connections) {
    constexpr rlim_t others = 512;
    const rlim_t wanted = 2 * connections + others;
    rlimit files{};
    if (::getrlimit(RLIMIT_NOFILE, &files) != 0 || files.rlim_cur >= wanted) return;
    files.rlim_cur = std::min(files.rlim_max, wanted);
    ::setrlimit(RLIMIT_NOFILE, &files);
}

class StudioCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        // A word that may be missing.
        arguments.option("DIR", "",
                         "The folder of a template that you write: opens its workbench, which follows what "
                         "is saved",
                         [this](const std::string& value) { template_ = value; });
        arguments.option("--port", "N", "Where it listens, 8484 unless told otherwise; 0: any that is free",
                         [this](const std::string& value) { settings_.port = portOf(value); });
        arguments.flag("--listen", "Serve devices of the network, too: they are let in by a pairing code",
                       settings_.isListening);
        arguments.flag("--service", "Print no address that lets anybody in, and open nothing", isService_);
        arguments.flag("--no-open", "Do not open the page", staysClosed_);
        arguments.option("--tls-cert", "FILE", "Serve HTTPS with this certificate, PEM, with those above it",
                         [this](const std::string& value) { settings_.certificateFile = value; });
        arguments.option("--tls-key", "FILE", "The certificate's key, PEM",
                         [this](const std::string& value) { settings_.keyFile = value; });
        arguments.option("--public-url", "URL",
                         "What a server in front of it calls it: https://videos.example.org",
                         [this](const std::string& value) { settings_.publicUrl = value; });
        arguments.option("--workers", "N",
                         "Videos that are made at a time, 1 to 64; half as many as cores if not given",
                         [this](const std::string& value) {
                             settings_.workers = static_cast<int>(numberWithin(value, 1, 64));
                         });
        arguments.option("--photos-stay", "S",
                         "Seconds that uploads stay after the last job that used them; 3600 if not given",
                         [this](const std::string& value) {
                             settings_.photosStay = std::chrono::seconds(numberWithin(value, 0, 31'536'000));
                         });
        arguments.option("--metrics-port", "N", "Tell numbers for monitoring at this port of this machine",
                         [this](const std::string& value) { settings_.metricsPort = portOf(value); });
        arguments.option("--access-log", "FILE", "A line for each request",
                         [this](const std::string& value) { settings_.accessLog = value; });
        arguments.option(
            "--webhook-allow", "HOST", "Tell this host of jobs, too, although it is none of the Internet",
            [this](const std::string& value) { settings_.webhookAllow.push_back(value); }, Occurs::AnyNumber);
        arguments.example("multiscene studio");
        arguments.example("multiscene studio my-template");
        arguments.example("multiscene studio --listen");
        arguments.example("multiscene studio token add my-service --scope make");
    }

    int execute(Console& console, const JobSettings& settings) override {
        if (settings_.certificateFile.empty() != settings_.keyFile.empty())
            throw Error(ErrorKind::Usage, "HTTPS needs both --tls-cert and --tls-key", "",
                        settings_.keyFile.empty() ? "--tls-key" : "--tls-cert");
        std::filesystem::path workbench;
        if (!template_.empty()) workbench = studio::workbenchFolder(template_);
        const SignalWatch signals;
        settings_.home = platform::dataHome();
        settings_.programOptions = settings.words;
        settings_.limits.setThoseOf(settings.words);
        takeDescriptors(settings_.limits.connections);
        settings_.opensPage = !isService_ && !staysClosed_ && hasDisplay();
        settings_.pairing = [&](const std::string& code, const std::string& url) {
            if (isForSomebody(console)) tellPairing(console, code, url);
        };
        settings_.notice = [&](const std::string& text) { console.jobNote(text); };
        Studio studio(settings_, workbench);
        tell(console, studio);
        if (settings_.opensPage) openPage(studio.openerFile());
        waitFor(signals.stopToken());
        studio.stop();
        return 0;
    }

  private:
    void tell(Console& console, const Studio& studio) const {
        if (console.isJson())
            return console.event("studio",
                                 {{"port", studio.port()}, {"addressFile", studio.addressFile().string()}});
        if (!isForSomebody(console))
            return console.line("the studio serves at port " + std::to_string(studio.port()) +
                                "; the address that opens its page is in " + studio.addressFile().string());
        console.line("the studio: " + studio.address());
        console.line("That address opens the page once; the next is in " + studio.addressFile().string() +
                     ". Ctrl-C ends the studio.");
    }

    /// What lets anybody in is for the eyes of a person, and for no log.
    bool isForSomebody(const Console& console) const {
        return !isService_ && !console.isJson() && ::isatty(STDOUT_FILENO) == 1;
    }

    static void tellPairing(Console& console, const std::string& code, const std::string& url) {
        console.line("To pair a device of the network: " + url + " (code " + code + ")");
        console.write(platform::QrCode(url).terminalText());
    }

    static void waitFor(const std::stop_token& stop) {
        std::binary_semaphore signalled{0};
        const std::stop_callback release(stop, [&] { signalled.release(); });
        signalled.acquire();
    }

    StudioSettings settings_;
    std::string template_;
    bool isService_ = false, staysClosed_ = false;
};

}  // namespace

std::unique_ptr<Command> makeStudioCommand() { return std::make_unique<StudioCommand>(); }

}  // namespace multiscene::cli
