#include "studio/Studio.h"

#include <future>
#include <optional>
#include <vector>

#include "platform/base/DispatchQueue.h"
#include "platform/base/Error.h"
#include "platform/base/Paths.h"
#include "platform/http/Server.h"
#include "platform/store/FileLock.h"
#include "studio/Parts.h"
#include "studio/access/Gate.h"
#include "studio/access/NetworkAddress.h"
#include "studio/access/Pairing.h"
#include "studio/access/StartKey.h"
#include "studio/api/Router.h"
#include "studio/api/SessionsApi.h"
#include "studio/api/SystemApi.h"
#include "studio/events/EventsApi.h"
#include "studio/jobs/ChecksApi.h"
#include "studio/jobs/JobsApi.h"
#include "studio/jobs/Workshop.h"
#include "studio/metrics/AccessLog.h"
#include "studio/metrics/Metrics.h"
#include "studio/page/PageApi.h"
#include "studio/previews/PreviewsApi.h"
#include "studio/store/StudioDatabase.h"
#include "studio/templates/TemplatesApi.h"
#include "studio/uploads/UploadsApi.h"
#include "studio/videos/VideosApi.h"
#include "studio/webhooks/WebhooksApi.h"
#include "studio/workbench/WorkbenchApi.h"

namespace multiscene::studio {

namespace fs = std::filesystem;
using platform::Error;
using platform::ErrorKind;
using platform::FileLock;

namespace {

constexpr std::chrono::seconds kMostSecondsToRead{4};
constexpr const char *kAddress = "address", *kOpener = "open.html", *kWorkbenchPage = "workbench.html";

/// The folders, with a database that this version knows.
FileLock takeFolders(const StudioFolders& folders, const StudioSettings& settings) {
    folders.make();
    auto lock = FileLock::acquire(folders.studio / "lock");
    if (!lock)
        throw Error(ErrorKind::Failed,
                    "a studio runs already with these data; the address of its page is in this file",
                    (folders.studio / kAddress).string());
    const std::string notice = prepareDatabase(folders);
    if (!notice.empty() && settings.notice) settings.notice(folders.database.string() + ": " + notice);
    return std::move(*lock);
}

/// "videos.example.org" of "https://videos.example.org".
std::string hostOf(const std::string& url) {
    if (url.empty()) return {};
    for (const std::string_view scheme : {"https://", "http://"}) {
        if (!url.starts_with(scheme)) continue;
        const std::string host = url.substr(scheme.size());
        if (!host.empty() && host.find_first_of("/?#@ ") == std::string::npos)
            return host.find(':') == std::string::npos ? host + (scheme.size() == 8 ? ":443" : ":80") : host;
    }
    throw Error(ErrorKind::Usage, "\"" + url + "\" is no address of the form https://name[:port]", "",
                "--public-url");
}

StudioSettings withoutSlash(StudioSettings settings) {
    if (settings.publicUrl.ends_with('/')) settings.publicUrl.pop_back();
    return settings;
}

std::vector<std::string> hostsOf(const StudioSettings& settings) {
    std::vector<std::string> hosts = {"127.0.0.1", "[::1]", "localhost"};
    if (const std::string host = hostOf(settings.publicUrl); !host.empty()) hosts.push_back(host);
    if (!settings.isListening) return hosts;
    for (std::string& address : networkAddresses()) hosts.push_back(std::move(address));
    if (const std::string name = hostName(); !name.empty()) {
        hosts.push_back(name);
        hosts.push_back(name + ".local");
    }
    return hosts;
}

platform::http::ServerOptions serverOptions(const StudioSettings& settings) {
    platform::http::ServerOptions options;
    // "::" takes IPv4, too.
    if (settings.isListening)
        options.addresses = {platform::isThere("/proc/net/if_inet6") ? "::" : "0.0.0.0"};
    options.port = settings.port;
    options.hosts = hostsOf(settings);
    options.certificateFile = settings.certificateFile;
    options.keyFile = settings.keyFile;
    const StudioLimits& limits = settings.limits;
    options.limits.connections = limits.connections;
    options.limits.connectionsPerAddress = limits.connectionsOfAddress;
    options.limits.streams = limits.streams;
    options.limits.headBytes = limits.headBytes;
    options.limits.headTime = std::chrono::seconds(limits.headSeconds);
    options.limits.keepAlive = std::chrono::seconds(limits.idleSeconds);
    options.limits.rate = limits.rate;
    options.limits.rateSpan = std::chrono::seconds(limits.rateSeconds);
    return options;
}

fs::path pageFolderOf(const StudioSettings& settings) {
    return settings.pageFolder.empty() ? platform::resourcesFolder().parent_path() / "multiscene-page"
                                       : settings.pageFolder;
}

}  // namespace

struct Studio::Core {
    Core(StudioSettings given, fs::path workbenchFolder);
    ~Core() { stop(std::chrono::milliseconds(0)); }

    void inQueue(const std::function<void()>& work);
    void makeResources();
    void readTemplates();
    void add(std::unique_ptr<Resource> resource);
    void stop(std::chrono::milliseconds patience);
    std::string pageUrl(const std::string& host) const;
    std::string pairingUrl(const std::string& code) const;

    const StudioSettings settings;
    const fs::path workbench;  ///< empty: none
    const StudioFolders folders;
    const FileLock lock;
    SessionStore sessions;
    platform::Database database;
    const Origins origins;
    Gate gate;
    platform::DispatchQueue queue{"studio"};
    std::unique_ptr<Timers> timers;
    Router router;
    std::unique_ptr<platform::http::Server> server;
    // On the queue.
    std::unique_ptr<StartKey> key;
    std::unique_ptr<Pairing> pairing;
    std::shared_ptr<TemplateBook> book;
    std::shared_ptr<Workshop> shop;
    std::vector<std::unique_ptr<Resource>> resources;
    std::unique_ptr<AccessLog> accessLog;
    std::unique_ptr<Metrics> metrics;
};

Studio::Core::Core(StudioSettings given, fs::path workbenchFolder)
    : settings(withoutSlash(std::move(given))),
      workbench(std::move(workbenchFolder)),
      folders(settings.home),
      lock(takeFolders(folders, settings)),
      sessions(folders.database),
      database(folders.database.string(), kDatabasePatienceMs),
      origins(settings.publicUrl),
      gate(sessions, origins),
      timers(std::make_unique<Timers>(queue)),
      router(gate, queue, settings.limits.bodyBytes),
      server(std::make_unique<platform::http::Server>(serverOptions(settings), router)) {
    database.execute("PRAGMA foreign_keys=ON");
    inQueue([this] { makeResources(); });
    readTemplates();
    inQueue([this] { shop->queue.recover(); });
    router.open();
}

/// What fails there ends the studio.
void Studio::Core::inQueue(const std::function<void()>& work) {
    std::exception_ptr failure;
    queue.sync([&] {
        try {
            work();
        } catch (...) {
            failure = std::current_exception();
        }
    });
    if (!failure) return;
    stop(std::chrono::milliseconds(0));
    std::rethrow_exception(failure);
}

/// Whoever asks first, and what was interrupted, finds them. They are read again when that fails.
void Studio::Core::readTemplates() {
    const auto ended = std::make_shared<std::promise<void>>();
    queue.sync([&] {
        book->refresh([ended] { ended->set_value(); }, [ended](const Problem&) { ended->set_value(); });
    });
    ended->get_future().wait_for(kMostSecondsToRead);
}

/// The one place where the parts of the API are listed.
void Studio::Core::makeResources() {
    const std::string page = pageUrl("127.0.0.1") + (workbench.empty() ? "" : kWorkbenchPage);
    key = std::make_unique<StartKey>(page, folders.studio / kAddress,
                                     settings.opensPage ? folders.studio / kOpener : fs::path());
    if (settings.isListening || !settings.publicUrl.empty())
        pairing = std::make_unique<Pairing>([this](const std::string& code) {
            if (settings.pairing) settings.pairing(code, pairingUrl(code));
        });
    const Parts parts{settings, folders, queue, *timers, database, sessions};
    book = std::make_shared<TemplateBook>(parts);
    add(std::make_unique<SystemApi>(
        parts, router, origins, pairing.get(), [this] { return pairingUrl(pairing->code()); },
        [this] { return book->isTimelineShared(); }));
    auto entrance = std::make_unique<SessionsApi>(parts, origins, *key, pairing.get());
    entrance->setOnRevoked([this](const std::string& session) { shop->events.end(session); });
    add(std::move(entrance));
    shop = std::make_shared<Workshop>(
        parts, [this](int64_t id, const std::string& language) { return book->facts(id, language); });
    shop->queue.addListener([this](const Job& job, const platform::Value&) {
        if (job.kind == JobKind::Install || job.kind == JobKind::Refresh) book->forget();
    });
    add(std::make_unique<UploadsApi>(shop));
    add(std::make_unique<ChecksApi>(shop));
    auto previews = std::make_unique<PreviewsApi>(shop);
    PreviewsApi* const pictures = previews.get();
    add(std::move(previews));
    add(std::make_unique<JobsApi>(shop));
    add(std::make_unique<VideosApi>(shop));
    add(std::make_unique<EventsApi>(shop));
    auto webhooks = std::make_unique<WebhooksApi>(shop);
    metrics = std::make_unique<Metrics>(
        shop, webhooks->sender(), [this] { return server->counts(); }, settings.metricsPort);
    add(std::move(webhooks));
    if (!settings.accessLog.empty()) accessLog = std::make_unique<AccessLog>(settings.accessLog);
    router.onAnswered([this, pictures](const Router::Answered& answered) {
        if (answered.pattern == "/api/v1/templates/{id}" && answered.status == 200) pictures->startAhead();
        metrics->count(answered);
        if (accessLog) accessLog->write(answered);
    });
    add(std::make_unique<TemplatesApi>(parts, book));
    if (!workbench.empty()) add(std::make_unique<WorkbenchApi>(parts, workbench));
    add(std::make_unique<PageApi>(pageFolderOf(settings)));
}

void Studio::Core::add(std::unique_ptr<Resource> resource) {
    router.add(resource->routes());
    resources.push_back(std::move(resource));
}

void Studio::Core::stop(std::chrono::milliseconds patience) {
    if (!server) return;
    router.close();
    queue.sync([this] {
        if (metrics) metrics->stop();
        for (const auto& resource : resources) resource->stop();
    });
    server->stop(patience);
    server.reset();
    timers->stop();  // what waits in the queue may still ask them
    queue.sync([this] {
        metrics.reset();
        accessLog.reset();
        while (!resources.empty()) resources.pop_back();
        shop.reset();
        book.reset();
        pairing.reset();
        key.reset();
    });
}

std::string Studio::Core::pageUrl(const std::string& host) const {
    const std::string scheme = settings.certificateFile.empty() ? "http://" : "https://";
    return scheme + host + ":" + std::to_string(server->port()) + "/";
}

std::string Studio::Core::pairingUrl(const std::string& code) const {
    const std::vector<std::string> addresses = networkAddresses();
    const std::string page = !settings.publicUrl.empty()
                                 ? settings.publicUrl + "/"
                                 : pageUrl(addresses.empty() ? hostName() : addresses.front());
    return page + "#code=" + code;
}

Studio::Studio(StudioSettings settings, fs::path workbench)
    : core_(std::make_unique<Core>(std::move(settings), std::move(workbench))) {}
Studio::~Studio() = default;
uint16_t Studio::port() const { return core_->server->port(); }
uint16_t Studio::metricsPort() const { return core_->metrics->port(); }

std::string Studio::address() const {
    std::string url;
    core_->queue.sync([&] { url = core_->key->url(); });
    return url;
}

fs::path Studio::addressFile() const { return core_->folders.studio / kAddress; }
fs::path Studio::openerFile() const { return core_->folders.studio / kOpener; }

void Studio::stop(std::chrono::milliseconds patience) { core_->stop(patience); }

}  // namespace multiscene::studio
