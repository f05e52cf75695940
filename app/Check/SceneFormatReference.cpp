#include "app/Check/SceneFormatReference.h"

#include <cctype>
#include <map>
#include <vector>

#include "app/Check/KeyExample.h"
#include "app/Check/KeyJudge.h"
#include "app/Model/TemplateKeys.h"
#include "core/NodeTypes.h"
#include "core/QVObject3DFpsBase.h"
#include "core/VideoTimeSource.h"
#include "core/component/QVObject3DComponentBase.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene {

namespace {

constexpr const char* kIntroduction =
    R"(# The scene format

Every file, dictionary and key of a template, written from the tables through which the program itself reads them
(`multiscene scene-format` prints this page). Names are spelt as the format spells them.

Readings are lenient: a number may be written as text, and a missing key reads as its default. Vectors and colours are
text with commas, "0,0.5,1". `multiscene check` names every key that is unknown, of the wrong type or out of range.

In the column "given by": *user* means that a text is first looked up among the user's values (under the key followed by
the scene's identifier); *path* means that it is a path with macros: `$(currentScenePlistROOT)/` the template's folder,
`$(mainBundleResourcePathROOT)/` the program's resources, `$(multiSceneSceneROOT)/` all installed scenes,
`$(currentSceneGroupPlistROOT)/` and `$(currentSceneGroupUserResourcePathROOT)/` the folder of the scene group,
`$(multiSceneUserResourcesROOT)/`, `$(MultiSceneTemplateROOT)/` and `$(multiSceneRootROOT)/` the other folders of the data
home.
)";

std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char letter : heading) {
        const auto code = static_cast<unsigned char>(letter);
        if (std::isalnum(code) || letter == '_' || letter == '-')
            anchor += static_cast<char>(std::tolower(code));
        if (letter == ' ') anchor += '-';
    }
    return anchor;
}

std::string cell(std::string_view text) {
    std::string escaped;
    for (const char letter : text) escaped += letter == '|' ? "\\|" : std::string(1, letter);
    return escaped;
}

std::string lookupText(KeyLookup lookup) {
    static constexpr const char* texts[] = {"", "user", "path", "user, path"};
    return texts[static_cast<int>(lookup)];
}

class Writer {
  public:
    std::string text = kIntroduction;

    void chapter(const std::string& heading) { text += "\n## " + heading + "\n"; }

    /// A table and, after it, those of the dictionaries in it that were not written yet.
    void section(const KeyTable& table, const std::string& type = {}) {
        if (!headings_.emplace(&table, headingFor(table)).second) return;
        if (table.base) section(*table.base);
        write(table, type);
        for (const Key& key : table.keys)
            if (key.children) section(*key.children);
    }

  private:
    void write(const KeyTable& table, const std::string& type) {
        text += "\n### " + headings_.at(&table) + "\n\n" + std::string(table.summary) + "\n";
        if (table.base) text += "\nReads the keys of " + link(*table.base) + " too.\n";
        if (!table.keys.empty()) {
            text +=
                "\n| key | type | given by | unit | default | range | meaning "
                "|\n|---|---|---|---|---|---|---|\n";
            for (const Key& key : table.keys) text += row(key);
        }
        text += "\n```xml\n" + exampleOf(table, type) + "```\n";
    }

    std::string row(const Key& key) {
        std::string meaning(key.meaning);
        if (key.required) meaning += " (required)";
        if (key.children) meaning += "; keys: " + link(*key.children);
        return "| `" + std::string(key.name) + "` | " + typeText(key.type) + " | " + lookupText(key.lookup) +
               " | " + cell(key.unit) + " | " + cell(key.fallback) + " | " + cell(rangeOrChoices(key)) +
               " | " + cell(meaning) + " |\n";
    }

    static std::string rangeOrChoices(const Key& key) {
        std::string text = rangeText(key);
        for (const std::string_view choice : key.choices)
            text += (text.empty() ? "" : ", ") + std::string(choice);
        return text;
    }

    std::string link(const KeyTable& table) {
        const std::string heading = headingFor(table);
        return "[" + heading + "](#" + anchorOf(heading) + ")";
    }

    /// The owner's name, with a number where several tables share it.
    std::string headingFor(const KeyTable& table) {
        if (const auto known = names_.find(&table); known != names_.end()) return known->second;
        const std::string owner(table.owner);
        const int count = ++owners_[owner];
        return names_[&table] = count == 1 ? owner : owner + " (" + std::to_string(count) + ")";
    }

    std::map<const KeyTable*, std::string> headings_, names_;
    std::map<std::string, int> owners_;
};

template <typename Types>
void writeTypes(Writer& writer, const std::string& heading) {
    writer.chapter(heading);
    for (const auto& [name, entry] : Types::all()) writer.section(*entry.keys, name);
}

}  // namespace

std::string sceneFormatReference() {
    Writer writer;
    writer.chapter("Files");
    writer.section(templateFileKeys);
    writer.section(sceneGroupFileKeys);
    writer.section(sceneFileKeys);
    writeTypes<TimeSourceTypes>(writer, "Clocks");
    writeTypes<NodeTypes>(writer, "Nodes");
    writeTypes<ComponentTypes>(writer, "Components");
    return writer.text;
}

}  // namespace multiscene
