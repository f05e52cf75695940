// What a subcommand tells about its arguments. The parser behind it is included in CommandLine.cpp alone.
#pragma once

#include <functional>
#include <string>

namespace multiscene::cli {

enum class Occurs { AtMostOnce, Once, AnyNumber };

/// The arguments of one command, declared before parsing. Handlers run while the command line is parsed; a
/// platform::Error that one throws is reported as wrong usage of its option.
class Arguments {
  public:
    using Handler = std::function<void(const std::string&)>;

    virtual ~Arguments() = default;

    /// A word without an option name, as "TEMPLATE".
    virtual void word(const std::string& name, const std::string& help, Handler handler) = 0;
    /// An option with a value: "--size", "WxH". Without a help text it is left out of the help.
    virtual void option(const std::string& names, const std::string& valueName, const std::string& help,
                        Handler handler, Occurs occurs = Occurs::AtMostOnce) = 0;
    virtual void flag(const std::string& names, const std::string& help, bool& target) = 0;
    /// An example, shown below the help text.
    virtual void example(const std::string& text) = 0;
};

}  // namespace multiscene::cli
