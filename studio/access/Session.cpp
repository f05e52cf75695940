#include "studio/access/Session.h"

namespace multiscene::studio {

const char* wordOf(Access access) {
    switch (access) {
        case Access::Read:
            return "read";
        case Access::Make:
            return "make";
        case Access::Admin:
            return "admin";
        case Access::Public:
            break;
    }
    return "public";
}

const char* wordOf(Session::Kind kind) {
    switch (kind) {
        case Session::Kind::Paired:
            return "paired";
        case Session::Kind::Token:
            return "token";
        case Session::Kind::Local:
            break;
    }
    return "local";
}

}  // namespace multiscene::studio
