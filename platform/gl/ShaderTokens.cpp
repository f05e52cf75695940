#include "platform/gl/ShaderTokens.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <optional>
#include <set>

#include "platform/base/Limits.h"

namespace platform {

namespace {

using Words = std::vector<std::string>;

bool isWordLetter(char letter) { return std::isalnum(static_cast<unsigned char>(letter)) || letter == '_'; }
bool isBlank(char letter) { return letter == ' ' || letter == '\t' || letter == '\v' || letter == '\f'; }

/// Lines joined where they end in a backslash, comments turned into blanks, line ends of every system into
/// one.
std::string plainText(std::string_view text) {
    std::string plain;
    for (size_t at = 0; at < text.size(); ++at) {
        const std::string_view rest = text.substr(at);
        if (rest.starts_with("\\\r\n")) {
            at += 2;
        } else if (rest.starts_with("\\\n") || rest.starts_with("\\\r")) {
            at += 1;
        } else if (rest.starts_with("//")) {
            at = std::min(text.find_first_of("\r\n", at), text.size()) - 1;
        } else if (rest.starts_with("/*")) {
            const size_t end = text.find("*/", at + 2);
            at = end == std::string_view::npos ? text.size() : end + 1;
            plain += ' ';
        } else {
            plain += text[at] == '\r' ? '\n' : text[at];
        }
    }
    return plain;
}

/// A letter sequence, a number, or one sign.
Words wordsOf(std::string_view line) {
    Words words;
    for (size_t at = 0; at < line.size();) {
        if (isBlank(line[at])) {
            ++at;
            continue;
        }
        const bool isNumber = std::isdigit(static_cast<unsigned char>(line[at])) != 0;
        size_t end = at + 1;
        if (isWordLetter(line[at]))
            while (end < line.size() && (isWordLetter(line[end]) || (isNumber && line[end] == '.'))) ++end;
        words.emplace_back(line.substr(at, end - at));
        at = end;
    }
    return words;
}

struct Macro {
    std::optional<Words> parameters;  ///< none: no parentheses follow the name
    Words body;
};

/// Reads the definitions and expands the rest.
class Expansion {
  public:
    explicit Expansion(size_t most) : most_(most) {}

    ShaderTokens of(std::string_view text) {
        std::vector<Words> lines;
        const std::string plain = plainText(text);
        for (size_t start = 0; start <= plain.size();) {
            const size_t end = std::min(plain.find('\n', start), plain.size());
            lines.push_back(wordsOf(std::string_view(plain).substr(start, end - start)));
            readDirective(lines.back(), std::string_view(plain).substr(start, end - start));
            start = end + 1;
        }
        Words all;
        for (const Words& line : lines)
            if (line.empty() || line.front() != "#") all.insert(all.end(), line.begin(), line.end());
        if (result_.problem.empty()) expand(all, result_.words);
        isTooMuch(result_.words);  // with the last one
        return std::move(result_);
    }

  private:
    void readDirective(const Words& words, std::string_view line) {
        if (words.empty() || words.front() != "#") return;
        // Joined words could become any other; GLSL ES has no such operator.
        for (size_t at = 1; at + 1 < words.size(); ++at)
            if (words[at] == "#" && words[at + 1] == "#") refuse("joins words with ##");
        if (words.size() < 3 || words[1] != "define") return;
        Macro macro;
        size_t at = 3;
        // Parameters follow the name at once, a body that begins with a parenthesis after a blank.
        const size_t after = line.find(words[2], line.find("define") + 6) + words[2].size();
        if (after < line.size() && line[after] == '(') {
            macro.parameters.emplace();
            for (at = 4; at < words.size() && words[at] != ")"; ++at)
                if (words[at] != ",") macro.parameters->push_back(words[at]);
            ++at;
        }
        if (at < words.size())
            macro.body.assign(words.begin() + static_cast<std::ptrdiff_t>(at), words.end());
        macros_[words[2]].push_back(std::move(macro));
    }

    void refuse(const std::string& problem) {
        if (result_.problem.empty()) result_.problem = problem;
    }

    bool isTooMuch(const Words& words) {
        // Empty macros add no words, but take time all the same.
        constexpr size_t stepsForAWord = 16;
        if (words.size() <= most_ && ++steps_ <= most_ * stepsForAWord) return false;
        refuse("is longer than the " + std::to_string(most_) + " words that are allowed, macros expanded");
        return true;
    }

    void expand(const Words& words, Words& expanded) {
        for (size_t at = 0; at < words.size() && result_.problem.empty(); ++at) {
            if (isTooMuch(expanded)) return;
            const auto macro = macros_.find(words[at]);
            if (macro == macros_.end() || open_.contains(words[at]))
                expanded.push_back(words[at]);
            else
                at = expandMacro(macro->first, macro->second, words, at, expanded);
        }
    }

    /// Returns the place of the last word that was used.
    size_t expandMacro(const std::string& name, const std::vector<Macro>& definitions, const Words& words,
                       size_t at, Words& expanded) {
        constexpr auto deepest = limitOf<size_t>("maxMacroDepth");
        if (++depth_ > deepest)
            refuse("has macros within macros, more than " + std::to_string(deepest) + " deep");
        const bool takesArguments =
            std::ranges::any_of(definitions, [](const Macro& macro) { return macro.parameters.has_value(); });
        const bool isCalled = takesArguments && at + 1 < words.size() && words[at + 1] == "(";
        size_t last = at;
        const std::vector<Words> given = isCalled ? argumentsAt(words, at + 1, last) : std::vector<Words>();
        open_.insert(name);
        bool usesArguments = false, isMacro = false;
        for (const Macro& macro : definitions) {
            if (macro.parameters && !isCalled) continue;
            isMacro = true;
            usesArguments = usesArguments || macro.parameters;
            expand(macro.parameters ? filledIn(macro, given) : macro.body, expanded);
        }
        if (!isMacro) expanded.push_back(name);  // one with parameters that is not called
        open_.erase(name);
        --depth_;
        return usesArguments ? last : at;
    }

    Words filledIn(const Macro& macro, const std::vector<Words>& given) {
        Words body;
        for (const std::string& word : macro.body) {
            const auto parameter = std::find(macro.parameters->begin(), macro.parameters->end(), word);
            const auto index = static_cast<size_t>(parameter - macro.parameters->begin());
            if (parameter == macro.parameters->end())
                body.push_back(word);
            else if (index < given.size())
                body.insert(body.end(), given[index].begin(), given[index].end());
            if (isTooMuch(body)) return {};
        }
        return body;
    }

    /// What stands between the parentheses, expanded, as it is before it is put in.
    std::vector<Words> argumentsAt(const Words& words, size_t open, size_t& last) {
        std::vector<Words> given(1);
        int depth = 0;
        for (last = open; last < words.size(); ++last) {
            const std::string& word = words[last];
            if (word == "(" && ++depth == 1) continue;
            if (word == ")" && --depth == 0) break;
            if (word == "," && depth == 1)
                given.emplace_back();
            else
                given.back().push_back(word);
            // Calls within calls gather the same words again and again.
            if (isTooMuch(given.back())) break;
        }
        last = std::min(last, words.size() - 1);
        for (Words& argument : given) {
            Words expanded;
            expand(argument, expanded);
            argument = std::move(expanded);
        }
        return given;
    }

    size_t most_, steps_ = 0, depth_ = 0;
    std::map<std::string, std::vector<Macro>, std::less<>> macros_;
    std::set<std::string, std::less<>> open_;
    ShaderTokens result_;
};

}  // namespace

ShaderTokens shaderTokens(std::string_view text, size_t most) { return Expansion(most).of(text); }

}  // namespace platform
