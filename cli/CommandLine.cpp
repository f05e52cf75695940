#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <string_view>
#include <vector>

#include "app/Check/Suggestion.h"
#include "app/Other/ProgramVersion.h"
#include "platform/base/Error.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

class ParserArguments : public Arguments {
  public:
    explicit ParserArguments(CLI::App& app) : app_(app) {}

    void word(const std::string& name, const std::string& help, Handler handler) override {
        app_.add_option_function<std::string>(name, handled(name, std::move(handler)), help)->required();
    }

    void option(const std::string& names, const std::string& valueName, const std::string& help,
                Handler handler, Occurs occurs) override {
        CLI::Option* option = occurs == Occurs::AnyNumber ? repeated(names, help, std::move(handler))
                                                          : single(names, help, std::move(handler));
        option->type_name(valueName);
        option->required(occurs == Occurs::Once);
    }

    void flag(const std::string& names, const std::string& help, bool& target) override {
        app_.add_flag(names, target, help);
    }

    void example(const std::string& text) override {
        const std::string before = app_.get_footer();
        app_.footer(before.empty() ? "Example:\n  " + text : before + "\n  " + text);
    }

  private:
    /// Names the option in the errors of its handler.
    static Handler handled(const std::string& names, Handler handler) {
        return [name = names.substr(names.find("--") == std::string::npos ? 0 : names.find("--")),
                handler = std::move(handler)](const std::string& value) {
            try {
                handler(value);
            } catch (const Error& error) {
                throw Error(ErrorKind::Usage, error.message(), "", name);
            }
        };
    }

    CLI::Option* single(const std::string& names, const std::string& help, Handler handler) {
        return app_.add_option_function<std::string>(names, handled(names, std::move(handler)), help);
    }

    CLI::Option* repeated(const std::string& names, const std::string& help, Handler handler) {
        const auto each = [take =
                               handled(names, std::move(handler))](const std::vector<std::string>& values) {
            for (const std::string& value : values) take(value);
        };
        return app_.add_option_function<std::vector<std::string>>(names, each, help)
            ->type_size(1)
            ->allow_extra_args(false);
    }

    CLI::App& app_;
};

/// Parser and commands, alive while the words are parsed.
struct Parser {
    CLI::App app{"Turns video templates, texts and photos into short finished videos.", "multiscene"};
    CommandLine result;
    std::map<CLI::App*, std::unique_ptr<Command>> byApp;

    Parser() {
        app.set_version_flag("--version", "multiscene " + programVersion());
        app.require_subcommand(1);
        app.fallthrough();
        app.add_option("--home", result.home, "Data folder: catalogue, installed templates, running jobs")
            ->type_name("DIR");
        app.add_flag("-v,--verbose", result.isVerbose, "Say more on standard error");
        app.add_flag("--json", result.isJson, "Progress and result as JSON lines on standard output");
        for (const CommandEntry& entry : commands()) add(entry);
    }

    void add(const CommandEntry& entry) {
        CLI::App* sub = app.add_subcommand(entry.name, entry.summary);
        sub->fallthrough();
        if (!*entry.summary) sub->group("");
        auto command = entry.make();
        ParserArguments arguments(*sub);
        command->declare(arguments);
        byApp.emplace(sub, std::move(command));
    }
};

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

/// The first word that is neither an option nor the value of --home.
std::string_view commandWord(int count, const char* const* words) {
    for (int at = 1; at < count; ++at) {
        const std::string_view word = words[at];
        if (word == "--home")
            ++at;
        else if (!word.starts_with('-'))
            return word;
    }
    return {};
}

/// What stands where a command should, when it is none.
std::string unknownCommand(std::string_view word) {
    std::vector<std::string_view> names;
    for (const CommandEntry& entry : commands()) names.push_back(entry.name);
    if (word.empty() || std::find(names.begin(), names.end(), word) != names.end()) return {};
    const std::string remedy = didYouMean(word, names);
    return "unknown command \"" + std::string(word) + "\"" + (remedy.empty() ? "" : "; " + remedy);
}

}  // namespace

CommandLine parseCommandLine(int count, const char* const* words) {
    Parser parser;
    try {
        parser.app.parse(count, words);
    } catch (const CLI::Success& call) {  // --help, --version
        std::ostringstream text;
        parser.app.exit(call, text, text);
        parser.result.text = text.str();
        return std::move(parser.result);
    } catch (const CLI::ParseError& error) {
        const std::string unknown = unknownCommand(commandWord(count, words));
        throw Error(ErrorKind::Usage,
                    (unknown.empty() ? oneLine(error.what()) : unknown) + " (see multiscene --help)");
    }
    parser.result.command = std::move(parser.byApp.at(parser.app.get_subcommands().front()));
    return std::move(parser.result);
}

bool asksForJson(int count, const char* const* words) {
    return std::any_of(words, words + count, [](std::string_view word) { return word == "--json"; });
}

}  // namespace multiscene::cli
