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
#include "tween/Ease.h"
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

constexpr const char* kTracks = R"(
## Corner-pin tracks

A track is written as XML and stored encrypted (`multiscene template encrypt-track TRACK.xml -o FILE`). Every "Frame" holds
the four corners in one frame of the node, 0,0 the bottom left and 1,1 the top right of the unit square that the node's
own scale and place bring to its size; the last one is held.

```xml
<CornerPinInfoDoc>
  <Object>
    <Frame bottomleftx="0.2" bottomlefty="0.3" bottomrightx="0.8" bottomrighty="0.3"
           toprightx="0.8" toprighty="0.7" topleftx="0.2" toplefty="0.7"/>
  </Object>
</CornerPinInfoDoc>
```
)";

constexpr const char* kEases = R"(
## Eases and paths

An ease turns the even progress of a motion into another one. Ids from 31 to 29999 are as even as 0; an id of 30000 or
more is the curve of that name in the "BezierArray" of the same node, whose second coordinate is the progress: with the
points "0,0", "0.3,1.9", "1,1" it overshoots.

A curve is also a path. An "endTranslate" of "30001,30001,0" moves the node along the curve "30001" in x and y (its
"interpolationXYZ" is 21); the node's pace is the motion's ease. The last point itself is not reached: state it in an item
that follows.

| id | ease |
|---|---|
)";

std::string easeRows() {
    std::string rows;
    for (size_t id = 0; id < easeTable().size(); ++id)
        rows += "| " + std::to_string(id) + " | " + std::string(easeTable()[id].name) + " |\n";
    return rows;
}

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
    void section(const KeyTable& table) {
        if (!headings_.emplace(&table, headingFor(table)).second) return;
        if (table.base) section(*table.base);
        write(table);
        for (const Key& key : table.keys)
            if (key.children) section(*key.children);
    }

  private:
    void write(const KeyTable& table) {
        text += "\n### " + headings_.at(&table) + "\n\n" + std::string(table.summary) + "\n";
        if (table.base) text += "\nReads the keys of " + link(*table.base) + " too.\n";
        if (!table.keys.empty()) {
            text +=
                "\n| key | type | given by | unit | default | range | meaning "
                "|\n|---|---|---|---|---|---|---|\n";
            for (const Key& key : table.keys) text += row(key);
        }
        text += "\n```xml\n" + exampleOf(table) + "```\n";
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
    for (const auto& [name, entry] : Types::all()) writer.section(*entry.keys);
}

}  // namespace

std::string sceneFormatReference() {
    Writer writer;
    writer.chapter("Files");
    writer.section(templateFileKeys);
    writer.section(sceneGroupFileKeys);
    writer.section(sceneFileKeys);
    writer.section(shaderFileKeys);
    writeTypes<TimeSourceTypes>(writer, "Clocks");
    writeTypes<NodeTypes>(writer, "Nodes");
    writeTypes<ComponentTypes>(writer, "Components");
    writer.text += kTracks;
    writer.text += kEases;
    writer.text += easeRows();
    return writer.text;
}

}  // namespace multiscene
