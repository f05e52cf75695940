#include "cli/Command.h"

#include "cli/SignalWatch.h"

namespace multiscene::cli {

int Command::execute(Console& console, const JobSettings&) {
    const SignalWatch signals;
    return run(console, signals.stopToken());
}

}  // namespace multiscene::cli
