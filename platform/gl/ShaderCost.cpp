#include "platform/gl/ShaderCost.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "platform/base/Limits.h"
#include "platform/gl/ShaderTokens.h"

namespace platform {

namespace {

using Words = std::vector<std::string>;

constexpr uint64_t kEndless = uint64_t{1} << 40;

uint64_t sum(uint64_t left, uint64_t right) { return std::min(left + right, kEndless); }
uint64_t product(uint64_t left, uint64_t right) {
    return left != 0 && right > kEndless / left ? kEndless : left * right;
}

std::optional<int64_t> literal(const std::string& word) {
    int64_t value = 0;
    const auto result = std::from_chars(word.data(), word.data() + word.size(), value);
    if (result.ec == std::errc::result_out_of_range) return static_cast<int64_t>(kEndless);
    if (result.ptr == word.data()) return std::nullopt;  // "64u", "64.0" are 64
    return std::min(value, static_cast<int64_t>(kEndless));
}

struct Cost {
    uint64_t words = 0;  ///< for the compiler
    uint64_t work = 0;   ///< for a pixel: each word as often as its loops turn

    void add(const Cost& other, uint64_t times = 1, uint64_t turns = 1) {
        words = sum(words, product(other.words, times));
        work = sum(work, product(other.work, turns));
    }
};

/// What a piece of the text costs without the functions that it calls, and how often it calls them.
struct Piece {
    Cost own;
    std::map<std::string, Cost, std::less<>> calls;  ///< "words": how often in the text, "work": for a pixel

    void add(const Piece& other, uint64_t turns = 1) {
        own.add(other.own, 1, turns);
        for (const auto& [name, times] : other.calls) calls[name].add(times, 1, turns);
    }
};

class Judge {
  public:
    explicit Judge(const Words& words) : words_(words), product_(productCost(words)) {}

    std::string problem() {
        while (at_ < words_.size() && problem_.empty()) topLevel();
        for (const auto& [name, piece] : functions_)
            if (problem_.empty()) judge(costOf(name));
        return problem_;
    }

  private:
    /// A product of matrices takes a compiler as long as all its parts, measured, and several times that when
    /// one follows the other. Which products are of matrices is not told here.
    static Cost productCost(const Words& words) {
        uint64_t parts = 1;
        for (const std::string& word : words)
            for (const auto& [type, count] : {std::pair{"mat4", 256}, {"mat3", 108}, {"mat2", 32}})
                if (word.starts_with(type)) parts = std::max<uint64_t>(parts, static_cast<uint64_t>(count));
        return {parts, parts};
    }

    bool is(const char* word) const { return at_ < words_.size() && words_[at_] == word; }
    bool isAt(size_t at, const char* word) const { return at < words_.size() && words_[at] == word; }
    void refuse(const std::string& problem) {
        if (problem_.empty()) problem_ = problem;
    }

    static std::string beyond(uint64_t limit, const std::string& things) {
        return "has more than the " + std::to_string(limit) + " " + things + " that are allowed";
    }

    /// With the functions that it calls put where they are called. One that calls itself is no valid text.
    Cost costOf(const std::string& name) {
        if (const auto known = costs_.find(name); known != costs_.end()) return known->second;
        costs_[name] = {1, 1};
        const Piece& piece = functions_.at(name);
        Cost cost = piece.own;
        for (const auto& [called, times] : piece.calls)
            if (functions_.contains(called)) cost.add(costOf(called), times.words, times.work);
        return costs_[name] = cost;
    }

    void judge(const Cost& cost) {
        if (cost.words > limitOf("maxShaderInlinedWords"))
            refuse(beyond(limitOf("maxShaderInlinedWords"), "words, functions put where they are called,"));
        else if (cost.work > limitOf("maxShaderWork"))
            refuse("its loops turn too often: a pixel goes through more than the " +
                   std::to_string(limitOf("maxShaderWork")) + " words that are allowed");
    }

    /// A function, or anything else up to its end.
    void topLevel() {
        const size_t start = at_;
        std::string name;
        while (at_ < words_.size() && !is(";") && !is("{")) {
            if (isAt(at_ + 1, "(") && name.empty()) name = words_[at_];
            noteConstant();
            noteSize();
            ++at_;
        }
        requireShort(at_ - start);
        const bool isFunction = is("{") && !name.empty();
        const Piece piece = is("{") ? block(0) : Piece();
        if (is(";")) ++at_;
        if (isFunction) functions_[name].add(piece);  // all of that name
    }

    void requireShort(size_t words) {
        if (words > limitOf("maxShaderStatementWords"))
            refuse(beyond(limitOf("maxShaderStatementWords"), "words in a statement, macros expanded,"));
    }

    /// "const int turns = 8".
    void noteConstant() {
        if (!is("const")) return;
        size_t name = at_ + 1;
        while (isAt(name, "highp") || isAt(name, "mediump") || isAt(name, "lowp")) ++name;
        if (!isAt(name, "int") || !isAt(name + 2, "=")) return;
        size_t end = name + 3;
        while (end < words_.size() && words_[end] != ";" && words_[end] != ",") ++end;
        if (const auto value = valueOf(name + 3, end)) constants_[words_[name + 1]] = *value;
    }

    /// "[1000]".
    void noteSize() {
        if (!is("[")) return;
        size_t end = at_ + 1;
        while (end < words_.size() && words_[end] != "]") ++end;
        const auto value = valueOf(at_ + 1, end);
        if (value && *value > static_cast<int64_t>(limitOf("maxShaderArray")))
            refuse(beyond(limitOf("maxShaderArray"), "elements in an array"));
    }

    Piece block(int depth) {
        Piece cost;
        ++at_;
        while (at_ < words_.size() && !is("}") && problem_.empty()) cost.add(statement(depth + 1));
        ++at_;
        return cost;
    }

    Piece statement(int depth) {
        constexpr int deepest = limitOf<int>("maxShaderDepth");
        if (depth > deepest) refuse("is nested more than " + std::to_string(deepest) + " deep");
        if (!problem_.empty() || at_ >= words_.size()) return {};
        if (is("{")) return block(depth);
        if (is("while") || is("do")) {
            refuse("uses \"" + words_[at_] +
                   "\": how often it turns cannot be told; use \"for\" with constant bounds");
            return {};
        }
        if (is("for")) return loop(depth);
        if (is("if")) return choice(depth);
        return plain(depth);
    }

    Piece loop(int depth) {
        ++at_;
        const size_t open = at_;
        Piece cost;
        const Piece header = parentheses();
        const uint64_t turns = turnsOf(open, at_);
        cost.add(header, turns);
        cost.add(statement(depth + 1), turns);
        return cost;
    }

    Piece choice(int depth) {
        ++at_;
        Piece cost = parentheses();
        cost.add(statement(depth + 1));
        // A chain of them is as deep for a compiler as it is long.
        if (!is("else")) return cost;
        ++at_;
        cost.add(statement(depth + 1));
        return cost;
    }

    /// From "(" to its ")".
    Piece parentheses() {
        Piece cost;
        const size_t start = at_;
        int depth = 0;
        while (at_ < words_.size()) {
            depth += is("(") ? 1 : is(")") ? -1 : 0;
            word(cost);
            if (depth <= 0) break;
        }
        requireShort(at_ - start);
        return cost;
    }

    Piece plain(int depth) {
        Piece cost;
        const size_t start = at_;
        while (at_ < words_.size() && !is(";") && !is("{") && !is("}")) word(cost);
        requireShort(at_ - start);
        if (is("{")) cost.add(block(depth));
        if (is(";")) ++at_;
        return cost;
    }

    void word(Piece& piece) {
        noteConstant();
        noteSize();
        piece.own.add(is("*") ? product_ : Cost{1, 1});
        if (isAt(at_ + 1, "(")) piece.calls[words_[at_]].add({1, 1});
        ++at_;
    }

    /// "( int i = 0 ; i < 8 ; i ++ )"; 1 where it cannot be told, and the time that a frame may take has to
    /// do.
    uint64_t turnsOf(size_t open, size_t close) const {
        std::vector<size_t> parts{open};
        for (size_t at = open; at < close; ++at)
            if (words_[at] == ";") parts.push_back(at);
        if (parts.size() != 3) return 1;
        const auto first = std::find(words_.begin() + static_cast<std::ptrdiff_t>(open),
                                     words_.begin() + static_cast<std::ptrdiff_t>(parts[1]), "=");
        const auto from = valueOf(static_cast<size_t>(first - words_.begin()) + 1, parts[1]);
        size_t sign = parts[1] + 1;
        while (sign < parts[2] && words_[sign] != "<" && words_[sign] != ">" && words_[sign] != "!") ++sign;
        const bool hasEqual = isAt(sign + 1, "=");
        const auto to = valueOf(sign + (hasEqual ? 2 : 1), parts[2]);
        if (!to) return 1;
        const int64_t length = std::abs(*to - from.value_or(0)) + (hasEqual ? 1 : 0);
        const int64_t step = std::max<int64_t>(1, stepOf(parts[2], close));
        return static_cast<uint64_t>(std::max<int64_t>(1, length / step));
    }

    /// "i += 2".
    int64_t stepOf(size_t start, size_t end) const {
        for (size_t at = start; at + 1 < end; ++at)
            if (words_[at] == "=") return valueOf(at + 1, end - 1).value_or(1);
        return 1;
    }

    /// A whole number, or a sum or product of such; nothing where a name is not known.
    std::optional<int64_t> valueOf(size_t start, size_t end) const {
        std::optional<int64_t> total, factor;
        int64_t sign = 1;
        bool divides = false;
        const auto flush = [&] {
            if (factor) total = total.value_or(0) + sign * *factor;
            factor.reset();
        };
        for (size_t at = start; at < end; ++at) {
            const std::string& word = words_[at];
            if (word == "(" || word == ")" || word == "*" || word == "int" || word == "float") continue;
            if (word == "/") {
                divides = true;
                continue;
            }
            if (word == "+" || word == "-") {
                flush();
                sign = word == "-" ? -1 : 1;
                continue;
            }
            const auto known = constants_.find(word);
            const auto value = known == constants_.end() ? literal(word) : std::optional(known->second);
            if (!value) return std::nullopt;
            const auto size = static_cast<uint64_t>(std::abs(*value));
            if (divides && factor)
                factor = *factor / std::max<int64_t>(1, static_cast<int64_t>(size));
            else
                factor = static_cast<int64_t>(product(static_cast<uint64_t>(factor.value_or(1)), size)) *
                         (*value < 0 ? -1 : 1);
            divides = false;
        }
        flush();
        return total;
    }

    const Words& words_;
    Cost product_;
    size_t at_ = 0;
    std::string problem_;
    std::map<std::string, Piece, std::less<>> functions_;
    std::map<std::string, Cost, std::less<>> costs_;
    std::map<std::string, int64_t, std::less<>> constants_;
};

}  // namespace

std::string shaderTextProblem(std::string_view text) {
    const ShaderTokens tokens = shaderTokens(text, limitOf("maxShaderWords"));
    if (!tokens.problem.empty()) return tokens.problem;
    return Judge(tokens.words).problem();
}

}  // namespace platform
