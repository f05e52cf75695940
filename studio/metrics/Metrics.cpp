#include "studio/metrics/Metrics.h"

#include <unistd.h>

#include <fstream>

#include "app/program/ProgramVersion.h"
#include "platform/fence/Landlock.h"
#include "studio/api/Problem.h"

namespace multiscene::studio {

using platform::Value;
using platform::http::Answer;

namespace {

constexpr double kMilli = 0.001, kMicro = 1e-6;

void addProcess(MetricsText& text) {
    long pages = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> pages >> resident;
    timespec used{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    text.family("process_resident_memory_bytes", "gauge", "Memory of the studio itself");
    text.sample(static_cast<double>(resident) * static_cast<double>(::sysconf(_SC_PAGESIZE)));
    text.family("process_cpu_seconds_total", "counter", "Processor time of the studio itself");
    text.sample(static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) * 1e-9);
}

}  // namespace

Metrics::Metrics(std::shared_ptr<Workshop> shop, const WebhookSender& webhooks, ServerCounts counts, int port)
    : shop_(std::move(shop)), webhooks_(webhooks), counts_(std::move(counts)) {
    shop_->queue.addListener([this](const Job& job, const Value& summary) { count(job, summary); });
    if (port < 0) return;
    platform::http::ServerOptions options;
    options.port = static_cast<uint16_t>(port);
    server_ = std::make_unique<platform::http::Server>(options, *this);
}

platform::http::Expectation Metrics::expect(const platform::http::RequestHead& head) {
    if (head.method != "GET" || head.target != "/metrics")
        return Answer::text(404, "only /metrics is here\n");
    return platform::http::NoBody{};
}

void Metrics::handle(platform::http::Request, platform::http::Responder responder) {
    shop_->parts.queue.async(
        [this, waiting = std::make_shared<platform::http::Responder>(std::move(responder))] {
            if (!server_) return;
            try {
                waiting->answer(Answer::text(200, text(), MetricsText::kContentType));
            } catch (...) {
                waiting->answer(answerOf(currentProblem()));
            }
        });
}

void Metrics::count(const Router::Answered& answered) {
    if (!answered.reason.empty()) ++problems_[answered.reason];
    requests_[{answered.pattern, answered.status}].add(static_cast<double>(answered.took.count()) * kMicro);
}

void Metrics::count(const Job& job, const Value& summary) {
    const std::string code = job.problem.string("code");
    ++finished_[{wordOf(job.state), code}];
    frames_ += static_cast<uint64_t>(summary.integer("frames"));
    if (job.started == 0) return;
    wait_.add(static_cast<double>(job.started - job.created) * kMilli);
    duration_.add(static_cast<double>(job.ended - job.started) * kMilli);
}

void Metrics::addJobs(MetricsText& text) {
    text.family("multiscene_jobs", "gauge", "Jobs by state");
    for (const auto& [state, count] : shop_->jobs.countByState())
        text.sample(static_cast<double>(count), {{"state", state}});
    text.family("multiscene_jobs_finished_total", "counter", "Jobs that have ended since the start");
    for (const auto& [which, count] : finished_)
        text.sample(static_cast<double>(count), {{"result", which.first}, {"reason", which.second}});
    text.family("multiscene_job_wait_seconds", "histogram", "From being asked for to its turn");
    text.samples(wait_);
    text.family("multiscene_job_duration_seconds", "histogram", "From its turn to its end");
    text.samples(duration_);
    text.family("multiscene_frames_rendered_total", "counter", "Frames of finished videos");
    text.sample(static_cast<double>(frames_));
    text.family("multiscene_workers", "gauge", "Programs that run");
    text.sample(static_cast<double>(shop_->queue.running(true)), {{"work", "video"}});
    text.sample(static_cast<double>(shop_->queue.running(false)), {{"work", "catalogue"}});
}

void Metrics::addWork(MetricsText& text) {
    const Counters& counters = shop_->counters;
    text.family("multiscene_job_stage_seconds_total", "counter", "Time that jobs have spent in each stage");
    for (const auto& [stage, seconds] : counters.stageSeconds) text.sample(seconds, {{"stage", stage}});
    text.family("multiscene_worker_exits_total", "counter",
                "How programs have ended that drew, or looked at uploads");
    for (const auto& [which, count] : counters.workerExits)
        text.sample(static_cast<double>(count), {{"work", which.first}, {"cause", which.second}});
    text.family("multiscene_previews", "gauge", "Open previews");
    text.sample(static_cast<double>(counters.previews()));
    text.family("multiscene_preview_workers", "gauge", "Programs that hold one");
    text.sample(static_cast<double>(counters.previewWorkers()));
    text.family("multiscene_preview_still_seconds", "histogram",
                "From a still being asked for to its picture");
    text.samples(counters.stills);
    text.family("multiscene_uploads_bytes_total", "counter", "What was uploaded, whatever became of it");
    text.sample(static_cast<double>(counters.uploadedBytes));
}

void Metrics::addStorage(MetricsText& text) {
    text.family("multiscene_storage_bytes", "gauge", "What is kept");
    text.sample(static_cast<double>(shop_->uploads.bytesOfAll()), {{"kind", "uploads"}});
    text.sample(static_cast<double>(shop_->videos.bytesOfAll()), {{"kind", "videos"}});
    text.family("multiscene_webhook_deliveries_total", "counter", "What other servers were told");
    text.sample(static_cast<double>(webhooks_.delivered()), {{"result", "taken"}});
    text.sample(static_cast<double>(webhooks_.failed()), {{"result", "failed"}});
}

void Metrics::addHttp(MetricsText& text) {
    const platform::http::ServerCounts counts = counts_();
    text.family("multiscene_http_connections", "gauge", "Open connections");
    text.sample(static_cast<double>(counts.connections));
    text.family("multiscene_http_streams", "gauge", "Open event streams");
    text.sample(static_cast<double>(counts.streams));
    text.family("multiscene_http_refused_total", "counter", "Requests that were not taken");
    text.sample(static_cast<double>(counts.refusals));
    text.family("multiscene_problems_total", "counter",
                "Requests that were answered with a problem, by its code");
    for (const auto& [code, count] : problems_) text.sample(static_cast<double>(count), {{"code", code}});
    text.family("http_request_duration_seconds", "histogram", "From the head of a request to its answer");
    for (const auto& [which, histogram] : requests_)
        text.samples(histogram, {{"route", which.first}, {"code", std::to_string(which.second)}});
}

std::string Metrics::text() {
    MetricsText text;
    addJobs(text);
    addWork(text);
    addStorage(text);
    addHttp(text);
    addProcess(text);
    text.family("multiscene_sandbox_info", "gauge", "The version of the kernel's Landlock");
    text.sample(1, {{"landlock", std::to_string(platform::landlockVersion())}});
    text.family("multiscene_build_info", "gauge", "The version of the program");
    text.sample(1, {{"version", programVersion()}});
    return text.text();
}

}  // namespace multiscene::studio
