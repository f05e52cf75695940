// Tokens: what lets programs use the studio's API.
#include "cli/Commands.h"
#include "cli/Table.h"
#include "platform/base/Paths.h"
#include "studio/StudioSettings.h"
#include "studio/access/SessionStore.h"
#include "studio/store/Names.h"

namespace multiscene::cli {

using platform::Error;
using platform::ErrorKind;
using studio::Access;
using studio::SessionStore;

namespace {

constexpr size_t kMostNameBytes = 100;

SessionStore openSessions() {
    const studio::StudioFolders folders(platform::dataHome());
    folders.make();
    return SessionStore(folders.database);
}

/// Those with a token, which lives on when the studio does not.
std::vector<SessionStore::Known> tokensOf(SessionStore& sessions) {
    std::vector<SessionStore::Known> all = sessions.known();
    std::erase_if(all, [](const auto& each) { return each.session.kind != studio::Session::Kind::Token; });
    return all;
}

Access scopeOf(const std::string& word) {
    for (const Access scope : {Access::Read, Access::Make, Access::Admin})
        if (word == studio::wordOf(scope)) return scope;
    throw Error(ErrorKind::Usage, "\"" + word + "\" is none of read, make, admin");
}

class TokenAddCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("NAME", "What the program is called that will use the token",
                       [this](const std::string& value) {
                           if (value.empty() || value.size() > kMostNameBytes)
                               throw Error(ErrorKind::Usage, "a name has 1 to 100 letters");
                           name_ = value;
                       });
        arguments.option(
            "--scope", "SCOPE", "read: what is there; make: videos, too; admin: everything",
            [this](const std::string& value) { scope_ = scopeOf(value); }, Occurs::AtMostOnce);
        arguments.example("multiscene studio token add my-service --scope make");
    }
    bool isResultPrinted() const override { return true; }

  protected:
    int run(Console& console, std::stop_token) override {
        const std::string token = openSessions().addToken(name_, scope_);
        if (console.isJson())
            console.event("token", {{"name", name_}, {"scope", studio::wordOf(scope_)}, {"token", token}});
        else
            console.line(token);
        return 0;
    }

  private:
    std::string name_;
    Access scope_ = Access::Make;
};

class TokenListCommand : public Command {
  public:
    void declare(Arguments& arguments) override { arguments.example("multiscene studio token list"); }
    bool isResultPrinted() const override { return true; }

  protected:
    int run(Console& console, std::stop_token) override {
        SessionStore sessions = openSessions();
        Table table({"NAME", "SCOPE", "SINCE", "USED"});
        for (const auto& each : tokensOf(sessions)) {
            const std::string scope = studio::wordOf(each.session.scope),
                              since = studio::timeText(each.created);
            const std::string used = each.seen > 0 ? studio::timeText(each.seen) : "";
            console.event("token", {{"name", each.session.name},
                                    {"scope", scope},
                                    {"created", since},
                                    {"seen", used.empty() ? platform::Value() : platform::Value(used)}});
            table.add({printable(each.session.name), scope, since, used.empty() ? "never" : used});
        }
        if (!console.isJson()) console.write(table.text());
        return 0;
    }
};

class TokenRemoveCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.word("NAME", "As in the list", [this](const std::string& value) { name_ = value; });
        arguments.example("multiscene studio token remove my-service");
    }

  protected:
    int run(Console& console, std::stop_token) override {
        SessionStore sessions = openSessions();
        for (const auto& each : tokensOf(sessions)) {
            if (each.session.name != name_) continue;
            sessions.revoke(each.session.id);
            console.status("removed the token " + name_);
            return 0;
        }
        throw Error(ErrorKind::Usage, "there is no token \"" + name_ + "\" (multiscene studio token list)",
                    "", "NAME");
    }

  private:
    std::string name_;
};

}  // namespace

std::unique_ptr<Command> makeStudioTokenAddCommand() { return std::make_unique<TokenAddCommand>(); }
std::unique_ptr<Command> makeStudioTokenListCommand() { return std::make_unique<TokenListCommand>(); }
std::unique_ptr<Command> makeStudioTokenRemoveCommand() { return std::make_unique<TokenRemoveCommand>(); }

}  // namespace multiscene::cli
