// What the program says: lines for people or JSON lines for programs, a progress bar on a terminal.
#pragma once

#include <atomic>
#include <string>

#include "app/check/Finding.h"
#include "app/job/JobObserver.h"
#include "app/job/JobSummary.h"
#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace multiscene::cli {

/// Main thread, except where another is named.
class Console : public JobObserver {
  public:
    explicit Console(bool isJson);

    /// Keeps standard output for the command's own lines: progress is not shown, notes go to standard error.
    void reserveOutput() { isReserved_ = true; }
    bool isReserved() const { return isReserved_; }
    bool isJson() const { return isJson_; }
    /// Before something else is written to the terminal.
    void clearBar();

    /// The command's own lines on standard output. Any thread.
    void line(const std::string& text) { write(text + "\n"); }
    virtual void write(const std::string& text);
    /// Throws Error when not all of that could be written, unless somebody has closed a pipe.
    void requireWritten() const;
    /// {"event": name, …}, with --json only.
    void event(const std::string& name, platform::Value::Dictionary fields);

    /// What is wrong with a template, a line each.
    virtual void finding(const Finding& finding);
    /// What the program is doing now, a line of its own.
    void status(const std::string& text);
    /// Bytes of a download, `total` is 0 when the server does not say; `seconds` since it began.
    virtual void downloadProgress(uint64_t received, uint64_t total, double seconds);

    void jobProgress(const JobProgress& progress) override;
    void jobFinding(const Finding& finding) override;
    void jobNote(const std::string& text) override;
    /// The result of a job: "made FILE: …" and what was left out.
    void jobDone(const JobSummary& summary);
    /// One line on standard error.
    void error(const platform::Error& error);

  private:
    void drawBar(double done, const std::string& text);
    void printProgress(const JobProgress& progress);
    void printSummary(const JobSummary& summary);

    std::atomic<int> writeFailure_ = 0;  ///< an errno value
    bool isJson_, isTerminal_, isReserved_ = false, hasBar_ = false;
    double printedSeconds_ = 0;
    int64_t printedFrame_ = -1;
};

}  // namespace multiscene::cli
