#pragma once

#include <sys/resource.h>

namespace platform::test {

/// The process can open no further file while this lives.
class NoFilesLeft {
  public:
    NoFilesLeft() {
        ::getrlimit(RLIMIT_NOFILE, &before_);
        const rlimit none{0, before_.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoFilesLeft() { ::setrlimit(RLIMIT_NOFILE, &before_); }
    NoFilesLeft(const NoFilesLeft&) = delete;
    NoFilesLeft& operator=(const NoFilesLeft&) = delete;

  private:
    rlimit before_{};
};

}  // namespace platform::test
