// Archives, lists and shaders.
#include "tests/program/LimitTrial.h"

#include <fstream>

#include "platform/archive/ZipArchive.h"
#include "platform/base/Json.h"
#include "platform/base/PropertyList.h"
#include "platform/base/Xml.h"
#include "platform/gl/ShaderCost.h"
#include "tests/platform/RawZip.h"

namespace multiscene::test {

using platform::test::RawZip;

namespace {

Trial ofArchive(const std::string& limit, uint64_t platform::ZipLimits::*changed, uint64_t most,
                std::function<RawZip(uint64_t)> zip) {
    return {limit,
            kTemplate,
            {"a.zip"},
            [=](const PlayLimitsTest& test, uint64_t number) {
                platform::ZipLimits limits;
                limits.*changed = most;
                if (changed == &platform::ZipLimits::ratioFreeBytes) limits.maxRatio = 2;
                if (changed == &platform::ZipLimits::maxRatio) limits.ratioFreeBytes = 1;
                const std::string file = test.written("a.zip", zip(number).bytes());
                return verdictOf([&] {
                    const platform::ZipArchive archive(file, platform::ErrorKind::Template, limits);
                    return std::string();
                });
            },
            most};
}

Trial ofList(const std::string& limit, platform::PropertyListLimits limits, uint64_t most,
             std::function<std::string(uint64_t)> content) {
    return {limit,
            kTemplate,
            {"a.plist"},
            [=](const PlayLimitsTest&, uint64_t number) {
                const std::string text = "<plist version=\"1.0\">" + content(number) + "</plist>";
                return verdictOf([&] {
                    platform::parsePropertyList({reinterpret_cast<const uint8_t*>(text.data()), text.size()},
                                                "a.plist", platform::ErrorKind::Template, limits);
                    return std::string();
                });
            },
            most};
}

std::string mainOf(const std::string& body) { return "void main(){" + body + "}"; }

/// Statements of so many words.
std::string shaderWords(uint64_t words) {
    constexpr uint64_t longest = 1000;
    std::string text;
    for (; words > longest; words -= longest) text += repeated("x ", longest) + ";";
    return text + repeated("x ", words) + ";";
}

Trial ofShader(const std::string& limit, std::function<std::string(uint64_t)> text) {
    return {limit, kTemplate, {}, [=](const PlayLimitsTest&, uint64_t number) {
                return verdictOf([&] { return platform::shaderTextProblem(text(number)); });
            }};
}

std::vector<Trial> archives() {
    using Limits = platform::ZipLimits;
    const auto filled = [](const std::string& name, uint64_t bytes, bool packed = false) {
        return platform::test::RawZipEntry{
            .name = name, .content = std::string(bytes, 'z'), .deflated = packed};
    };
    const auto one = [=](const std::string& name) { return RawZip().add(filled(name, 1)); };
    return {
        ofArchive("maxArchiveBytes", &Limits::maxArchiveBytes, 300,
                  [=](uint64_t bytes) {
                      return RawZip().add(filled("a", bytes - RawZip().add(filled("a", 0)).bytes().size()));
                  }),
        ofArchive("maxEntries", &Limits::maxEntries, 5,
                  [=](uint64_t number) {
                      RawZip zip;
                      for (uint64_t at = 0; at < number; ++at) zip.add(filled(std::to_string(at), 1));
                      return zip;
                  }),
        ofArchive("maxEntryBytes", &Limits::maxEntryBytes, 5000,
                  [=](uint64_t bytes) { return RawZip().add(filled("a", bytes)); }),
        ofArchive(
            "maxTotalBytes", &Limits::maxTotalBytes, 8000,
            [=](uint64_t bytes) { return RawZip().add(filled("a", 5000)).add(filled("b", bytes - 5000)); }),
        ofArchive("ratioFreeBytes", &Limits::ratioFreeBytes, 2000,
                  [=](uint64_t bytes) { return RawZip().add(filled("a", bytes, true)); }),
        ofArchive("maxRatio", &Limits::maxRatio, 10,
                  [=](uint64_t tenths) {
                      auto entry = filled("a", 1000, true);
                      const uint64_t packed = RawZip().add(entry).entriesAlone().size() - 31;
                      entry.bytes = static_cast<uint32_t>(packed * 10 + tenths - 10);
                      return RawZip().add(entry);
                  }),
        ofArchive("maxNameBytes", &Limits::maxNameBytes, 20,
                  [=](uint64_t bytes) { return one("a/" + std::string(bytes - 2, 'b')); }),
        ofArchive("maxComponentBytes", &Limits::maxComponentBytes, 10,
                  [=](uint64_t bytes) { return one("a/" + std::string(bytes, 'b')); }),
        ofArchive("maxDepth", &Limits::maxDepth, 4,
                  [=](uint64_t depth) { return one(repeated("a/", depth - 1) + "a"); }),
    };
}

std::vector<Trial> lists() {
    return {
        ofList("maxListBytes", {.maxBytes = 2000}, 2000,
               [](uint64_t bytes) { return "<string>" + std::string(bytes - 46, 'a') + "</string>"; }),
        ofList("maxListDepth", {.maxDepth = 5}, 5,
               [](uint64_t depth) { return repeated("<array>", depth) + repeated("</array>", depth); }),
        ofList("maxListValues", {.maxValues = 100}, 100,
               [](uint64_t values) {
                   return "<!-- <true/> --><array>" + repeated("<true/>", values - 1) + "</array>";
               }),
        {"maxJsonDepth",
         kInput,
         {"a.json"},
         [](const PlayLimitsTest&, uint64_t depth) {
             return verdictOf([&] {
                 platform::parseJson(std::string(depth, '[') + std::string(depth, ']'), "a.json",
                                     platform::ErrorKind::Input);
                 return std::string();
             });
         }},
        {"maxXmlDepth",
         kTemplate,
         {"too deep"},
         [](const PlayLimitsTest&, uint64_t depth) {
             const std::string text = repeated("<a>", depth) + repeated("</a>", depth);
             return Verdict{platform::parseXml({text.begin(), text.end()}) ? kAccepted : kTemplate,
                            "too deep: " + std::to_string(depth - 1)};
         }},
        {"maxMediaFileBytes",
         kInput,
         {"a.json"},
         [](const PlayLimitsTest& test, uint64_t bytes) {
             const std::string file = test.written("a.json", "{}" + std::string(bytes - 2, ' '));
             return test.verdict({"frames", SmallTemplate().write(test.folder.path()), "--at", "0", "--media",
                                  file, "-o", test.folder.file("out")});
         }},
        {"maxSettingsBytes",
         1,
         {"settings.json"},
         [](const PlayLimitsTest& test, uint64_t bytes) {
             fs::create_directories(test.folder.path() / "home");
             test.written("home/settings.json", "{}" + std::string(bytes - 2, ' '));
             return test.verdict({"templates", "list"});
         }},
        {"maxTextOverRoom",
         kInput,
         {"title", "5"},  // the small template has room for 5
         [](const PlayLimitsTest& test, uint64_t characters) {
             return test.verdict({"frames", SmallTemplate().write(test.folder.path()), "--at", "0", "--text",
                                  "title=" + std::string(characters, 'a'), "-o", test.folder.file("out")});
         },
         10},
    };
}

std::vector<Trial> shaders() {
    // A "main" around a body has six words.
    constexpr uint64_t around = 6;
    return {
        ofShader("maxShaderWords",
                 [](uint64_t words) {
                     return mainOf(repeated("x;", (words - around) / 2)) + (words % 2 ? ";" : "");
                 }),
        ofShader("maxShaderStatementWords",
                 [](uint64_t words) { return mainOf("x" + repeated("+", words - 1) + ";"); }),
        ofShader("maxShaderInlinedWords",
                 [](uint64_t words) {
                     // A call is three words, and the function's own besides.
                     constexpr uint64_t own = 4093, calls = 15;
                     return "void f(){" + shaderWords(own) + "}" +
                            mainOf(repeated("f();", calls) + shaderWords(words - calls * (own + 3)));
                 }),
        ofShader("maxShaderWork",
                 [](uint64_t words) {
                     constexpr uint64_t turns = 1000, head = 14, own = 1900;
                     return mainOf("for(int i=0;i<" + std::to_string(turns) + ";i++){" + shaderWords(own) +
                                   "}" + "for(int i=0;i<10;i++){" +
                                   shaderWords((words - turns * (head + own)) / 10 - head) + "}" +
                                   shaderWords((words - turns * (head + own)) % 10));
                 }),
        ofShader("maxShaderDepth",
                 [](uint64_t depth) {
                     return mainOf(repeated("{", depth - 1) + "x;" + repeated("}", depth - 1));
                 }),
        ofShader("maxMacroDepth",
                 [](uint64_t depth) {
                     std::string text = "#define m0 x\n";
                     for (uint64_t level = 1; level < depth; ++level)
                         text +=
                             "#define m" + std::to_string(level) + " m" + std::to_string(level - 1) + "\n";
                     return text + mainOf("m" + std::to_string(depth - 1) + ";");
                 }),
        ofShader("maxShaderArray",
                 [](uint64_t size) { return mainOf("float a[" + std::to_string(size) + "];"); }),
    };
}

}  // namespace

std::vector<Trial> fileTrials() {
    std::vector<Trial> all = archives();
    for (const auto& more : {lists(), shaders()}) all.insert(all.end(), more.begin(), more.end());
    return all;
}

}  // namespace multiscene::test
