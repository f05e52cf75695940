#pragma once

#include <string>

namespace multiscene::studio {

/// What a route needs of who asks. Public: nobody is asked. Each of the others includes those before it.
enum class Access { Public, Read, Make, Admin };

/// "read", "make", "admin"; "public".
const char* wordOf(Access access);

/// Who asks: a browser with a cookie, or a program with a token. What is made belongs to a session.
struct Session {
    enum class Kind {
        Local,   ///< the person at this machine: all of their browsers are one session
        Paired,  ///< a device that gave the pairing code
        Token,   ///< a program
    };

    std::string id;  ///< "ses_…"; empty: nobody
    Kind kind = Kind::Local;
    std::string name;
    Access scope = Access::Public;

    bool may(Access wanted) const { return scope >= wanted; }
};

/// "local", "paired", "token".
const char* wordOf(Session::Kind kind);

}  // namespace multiscene::studio
