#include "cli/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <vector>

#include "app/check/Suggestion.h"
#include "app/program/ProgramVersion.h"
#include "cli/Table.h"
#include "platform/base/Error.h"
#include "platform/base/Json.h"
#include "platform/base/Limits.h"
#include "studio/StudioLimits.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;

namespace {

class ParserArguments : public Arguments {
  public:
    /// Adds the names of options that may be given again to `repeatedNames`.
    ParserArguments(CLI::App& app, std::set<std::string, std::less<>>& repeatedNames)
        : app_(app), repeatedNames_(repeatedNames) {}

    void word(const std::string& name, const std::string& help, Handler handler) override {
        const auto word = [take = std::move(handler)](const std::string& value) {
            if (value.empty()) throw Error(ErrorKind::Usage, "is empty");
            take(value);
        };
        app_.add_option_function<std::string>(name, handled(name, word), help)->required();
    }

    void option(const std::string& names, const std::string& valueName, const std::string& help,
                Handler handler, Occurs occurs) override {
        CLI::Option* option = occurs == Occurs::AnyNumber ? repeated(names, help, std::move(handler))
                                                          : single(names, help, std::move(handler));
        option->type_name(valueName);
        if (help.empty()) option->group("");
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
        CLI::Option* option = app_.add_option_function<std::vector<std::string>>(names, each, help)
                                  ->type_size(1)
                                  ->allow_extra_args(false);
        for (const std::string& name : option->get_lnames()) repeatedNames_.insert("--" + name);
        return option;
    }

    CLI::App& app_;
    std::set<std::string, std::less<>>& repeatedNames_;
};

/// A command's name taken apart: "templates list", or "make" without a group.
struct CommandWords {
    std::string_view group, name;
};

CommandWords wordsOf(std::string_view name) {
    const size_t space = name.rfind(' ');
    if (space == std::string_view::npos) return {{}, name};
    return {name.substr(0, space), name.substr(space + 1)};
}

/// The answer to --limits.
class LimitsCall : public CLI::Success {
  public:
    LimitsCall() : CLI::Success("LimitsCall", "limits", CLI::ExitCodes::Success) {}
};

std::string limitsText(bool isJson) {
    std::string text;
    Table table({"LIMIT", "VALUE", "UNIT", "MEANING", "BEYOND IT"});
    std::vector<platform::Limit> all(std::begin(platform::limits::kAll), std::end(platform::limits::kAll));
    for (const auto& row : studio::StudioLimits::rows()) all.push_back(row.limit);
    for (const platform::Limit& limit : all) {
        const std::string name(limit.name), unit(limit.unit), meaning(limit.meaning), beyond(limit.beyond);
        table.add({name, std::to_string(limit.value), unit, meaning, beyond});
        text += platform::jsonText(platform::Value::Dictionary{{"event", "limit"},
                                                               {"name", name},
                                                               {"value", static_cast<int64_t>(limit.value)},
                                                               {"unit", unit},
                                                               {"meaning", meaning},
                                                               {"beyond", beyond}}) +
                "\n";
    }
    return isJson ? text
                  : "What templates, inputs, servers and the studio's clients may ask for, and a job may "
                    "take:\n" +
                        table.text();
}

/// Parser and commands, alive while the words are parsed.
struct Parser {
    CLI::App app{"Turns video templates, texts and photos into short finished videos.", "multiscene"};
    CommandLine result;
    std::map<const CLI::App*, std::unique_ptr<Command>> byApp;
    std::map<std::string, CLI::App*, std::less<>> apps;  ///< of commands and groups, by all their words
    std::set<std::string, std::less<>> repeatedNames;

    Parser() {
        app.set_version_flag("--version", "multiscene " + programVersion());
        app.require_subcommand(1);
        app.fallthrough();
        app.add_option_function<std::string>(
               "--home",
               [this](const std::string& folder) {
                   if (folder.empty()) throw Error(ErrorKind::Usage, "is empty", "", "--home");
                   result.home = folder;
               },
               "Data folder: catalogue, installed templates, running jobs")
            ->type_name("DIR");
        app.add_flag("-v,--verbose", result.isVerbose, "Say more on standard error");
        app.add_flag("--json", result.isJson, "Progress and result as JSON lines on standard output");
        app.add_option_function<std::vector<std::string>>(
               "--limit",
               [this](const std::vector<std::string>& all) {
                   for (const std::string& each : all) {
                       if (studio::StudioLimits::knows(each))
                           studio::StudioLimits().set(each);
                       else
                           result.settings.limits.set(each);
                       result.settings.words.insert(result.settings.words.end(), {"--limit", each});
                   }
               },
               "Change what a job or the studio may take: maxJobMemory=8589934592; --limits lists them")
            ->type_name("NAME=N")
            ->type_size(1)
            ->allow_extra_args(false);
        app.add_flag_callback(
            "--no-fence",
            [this] {
                result.settings.isFenced = false;
                result.settings.words.emplace_back("--no-fence");
            },
            "Do the work in the program itself, where nothing stops it: for debuggers");
        app.add_flag_callback(
            "--limits", [] { throw LimitsCall(); },
            "Show every limit, and what becomes of what is beyond it");
        for (const CommandEntry& entry : commands()) add(entry);
    }

    /// The place of a command's last word: the program itself, a command that has others below it, or a
    /// group.
    CLI::App& parentOf(std::string_view group) {
        if (group.empty()) return app;
        if (const auto known = apps.find(group); known != apps.end()) return *known->second;
        CLI::App& made = addApp(group, std::string(summaryOfGroup(group)));
        made.require_subcommand(1);
        return made;
    }

    CLI::App& addApp(std::string_view name, const std::string& summary) {
        const CommandWords words = wordsOf(name);
        CLI::App* sub = parentOf(words.group).add_subcommand(std::string(words.name), summary);
        sub->fallthrough();
        sub->footer("");  // not the examples of what it is below
        apps.emplace(name, sub);
        return *sub;
    }

    void add(const CommandEntry& entry) {
        CLI::App& sub = addApp(entry.name, entry.summary);
        if (!*entry.summary) sub.group("");
        auto command = entry.make();
        ParserArguments arguments(sub, repeatedNames);
        command->declare(arguments);
        byApp.emplace(&sub, std::move(command));
    }

    std::unique_ptr<Command> chosen() {
        const CLI::App* sub = &app;
        while (!sub->get_subcommands().empty()) sub = sub->get_subcommands().front();
        return std::move(byApp.at(sub));
    }
};

/// "KEY=VALUE", and no path.
bool isPair(std::string_view word) {
    const size_t equals = word.find('=');
    return equals != std::string_view::npos && equals > 0 && word.front() != '-' &&
           word.substr(0, equals).find('/') == std::string_view::npos;
}

/// "--text a=1 b=2" spelt out as "--text a=1 --text b=2". The parser's own way would swallow TEMPLATE too.
std::vector<std::string> spelledOut(int count, const char* const* words,
                                    const std::set<std::string, std::less<>>& repeatedNames) {
    std::vector<std::string> all;
    std::string repeated;  // the option that the next pair belongs to
    for (int at = 1; at < count; ++at) {
        const std::string word = words[at];
        const std::string name = word.substr(0, word.find('='));
        const bool follows = !repeated.empty() && isPair(word);
        if (follows && all.back() != repeated) all.push_back(repeated);
        if (repeatedNames.contains(name))
            repeated = name;
        else if (!follows)
            repeated.clear();
        // "--music=": the parser would take the next word for the value that is empty.
        const bool isEmpty = word.starts_with("--") && name.size() + 1 == word.size();
        all.push_back(isEmpty ? name : word);
        if (isEmpty) all.emplace_back();
    }
    return all;
}

std::string oneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

/// The first two words that are neither an option nor the value of one that stands before commands.
CommandWords commandWords(int count, const char* const* words) {
    std::vector<std::string_view> found(2);
    auto next = found.begin();
    for (int at = 1; at < count && next != found.end(); ++at) {
        const std::string_view word = words[at];
        if (word == "--home" || word == "--limit")
            ++at;
        else if (!word.starts_with('-'))
            *next++ = word;
    }
    return {found[0], found[1]};
}

std::string unlessKnown(std::string_view word, const std::vector<std::string_view>& names) {
    if (word.empty() || std::find(names.begin(), names.end(), word) != names.end()) return {};
    const std::string remedy = didYouMean(word, names);
    return "unknown command \"" + std::string(word) + "\"" + (remedy.empty() ? "" : "; " + remedy);
}

std::string_view firstWord(std::string_view words) { return words.substr(0, words.find(' ')); }

/// What stands where a command should, when it is none.
std::string unknownCommand(const CommandWords& given) {
    std::vector<std::string_view> firsts, seconds;
    bool takesWords = false;  // what follows may be something else than a command
    for (const CommandEntry& entry : commands()) {
        const std::string_view name(entry.name), first = firstWord(name);
        takesWords = takesWords || name == given.group;
        // One that is left out of the help is not what somebody has meant.
        if (!*entry.summary && first != given.group) continue;
        firsts.push_back(first);
        if (first == given.group && first.size() < name.size())
            seconds.push_back(firstWord(name.substr(first.size() + 1)));
    }
    const std::string unknown = unlessKnown(given.group, firsts);
    return unknown.empty() && !seconds.empty() && !takesWords ? unlessKnown(given.name, seconds) : unknown;
}

/// The words of the command that was understood, as "multiscene templates show".
std::string programWords(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app.get_name() : app.get_name() + " " + programWords(*chosen.front());
}

const CLI::App& innermost(const CLI::App& app) {
    const auto chosen = app.get_subcommands();
    return chosen.empty() ? app : innermost(*chosen.front());
}

std::string unexpectedWord(const CLI::App& app, const std::string& word) {
    if (!word.starts_with('-'))
        return "\"" + word +
               "\" is one word too many; a value that holds blanks needs quotes: \"KEY=two words\"";
    std::vector<std::string> names;
    for (const CLI::Option* option : innermost(app).get_options())
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    const std::string given = word.substr(0, word.find('='));
    const std::string remedy = didYouMean(given, {names.begin(), names.end()});
    return "unknown option " + given + (remedy.empty() ? "" : "; " + remedy);
}

/// What is wrong, in words of our own where the parser's are hard to read.
std::string faultOf(const CLI::App& app, const CLI::ParseError& error) {
    const std::vector<std::string> rest = app.remaining(true);
    const auto option =
        std::find_if(rest.begin(), rest.end(), [](const std::string& word) { return word.starts_with('-'); });
    if (option != rest.end()) return unexpectedWord(app, *option);
    if (!rest.empty()) return unexpectedWord(app, rest.front());
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error)) {
        const std::string text = oneLine(error.what()), name = text.substr(0, text.find(':'));
        const bool isTooMuch = text.find("At Most", name.size()) != std::string::npos;
        return name + (isTooMuch ? " is given more than once" : " needs a value");
    }
    return oneLine(error.what());
}

}  // namespace

CommandLine parseCommandLine(int count, const char* const* words) {
    Parser parser;
    try {
        std::vector<std::string> all = spelledOut(count, words, parser.repeatedNames);
        std::reverse(all.begin(), all.end());  // as the parser wants them
        parser.app.parse(std::move(all));
    } catch (const LimitsCall&) {
        parser.result.text = limitsText(asksForJson(count, words));
        return std::move(parser.result);
    } catch (const CLI::Success& call) {  // --help, --version
        std::ostringstream text;
        parser.app.exit(call, text, text);
        parser.result.text = text.str();
        return std::move(parser.result);
    } catch (const CLI::ParseError& error) {
        const std::string unknown = unknownCommand(commandWords(count, words));
        throw Error(ErrorKind::Usage, (unknown.empty() ? faultOf(parser.app, error) : unknown) + " (see " +
                                          programWords(parser.app) + " --help)");
    }
    parser.result.command = parser.chosen();
    return std::move(parser.result);
}

bool asksForJson(int count, const char* const* words) {
    return std::any_of(words, words + count, [](std::string_view word) { return word == "--json"; });
}

}  // namespace multiscene::cli
