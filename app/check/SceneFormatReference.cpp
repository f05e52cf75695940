#include "app/check/SceneFormatReference.h"

#include <cctype>
#include <map>
#include <set>
#include <vector>

#include "app/check/FormatExamples.h"
#include "app/check/KeyJudge.h"
#include "app/template/TemplateKeys.h"
#include "core/Material/TextureInfoKeys.h"
#include "core/QVLightBase.h"
#include "core/QVObject3DTextureBase.h"
#include "core/carmera/QVCamera3D.h"
#include "core/component/QVObject3DComponentBase.h"
#include "format/NodeTypes.h"
#include "playback/VideoTimeSource.h"
#include "sceneFile/SceneFileKeys.h"
#include "tween/Ease.h"

namespace multiscene {

namespace {

constexpr const char* kIntroduction =
    R"(# The scene format

Every file, dictionary and key of a template, written from the tables through which the program itself reads them
(`multiscene scene-format` prints this page). Names are spelt as the format spells them.

Readings are lenient: a number may be written as text, and a missing key reads as its default. Vectors and colours are
text with commas, "0,0.5,1". Which keys a dictionary may hold depends on its type where it has one: an "image" has other
keys than a "text2d". `multiscene check` names every key that is unknown, that belongs to another type, that is of the
wrong type or out of range. It exits 0 when it finds nothing, or warnings alone (with `--strict` 3), and 3 for an error.

In the column "given by": *user* means that a text is first looked up among the user's values (under the key followed by
the scene's identifier); *path* means that it is a path with macros: `$(currentScenePlistROOT)/` the template's folder,
`$(mainBundleResourcePathROOT)/` the program's resources, `$(multiSceneSceneROOT)/` all installed scenes,
`$(currentSceneGroupPlistROOT)/` and `$(currentSceneGroupUserResourcePathROOT)/` the folder of the scene group,
`$(multiSceneUserResourcesROOT)/`, `$(MultiSceneTemplateROOT)/` and `$(multiSceneRootROOT)/` the other folders of the data
home.

The examples are cut out of one template that plays, `resources/examples/birthday`; lists of dictionaries are cut after
two.

## Words

- **Frames** are counted from 0, and both ends of a range belong to it.
- **Model units** are those of the camera: x points to the right, y up, z towards the viewer. With a `QVOrthCamera` 0,0 is
  the middle of the picture, and the picture is "OrthWidth" units wide.
- **The eye** stands at 0,0,0 and looks towards 0,0,-1 until a "LookAtAnimation" moves it. A `QVFrustumCamera` shows what
  lies from 1 to 2500 units before the eye, so that something at z 0 is seen from further back only, say from 0,0,900. A
  `QVOrthCamera` shows what lies from 2500 units before the eye to 1000 behind it: z from -2500 to 1000.
- **Texture units** are parts of a texture: it is 1 wide and 1 high. 0,0 is the upper left of pictures, texts and films,
  with y pointing down; it is the lower left of what a scene or node has drawn, with y pointing up.
- **Nothing drawn** is black in the video. The pictures of `frames` show what the video shows; with `--alpha` they are
  transparent there. Textures that nodes and scenes are drawn into are transparent where nothing is drawn.
- **A node drawn into a texture** is drawn as the camera sees it: the whole picture, squeezed into "textureSize". Give
  that the picture's proportions.
- **Both motion lists** may be given. The node is scaled, turned and moved by "TransformArray", and what comes out of
  that by the items of "MutableTransformArray", the last one first.
- **Light** falls on meshes, curved surfaces, planes, cubes and letters with a depth. Quads, flat letters and films are shown as they are, unless
  a shader of the template lights them.
- **Texts** are broken at line feeds and where they would be too wide: [how text is laid out](text-layout.md).
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

std::string easesText() {
    return R"(
## Eases and paths

An ease turns the even progress of a motion into another one. Ids from )" +
           std::to_string(easeTable().size()) + " to " + std::to_string(firstBezierEase - 1) +
           R"( are as even as 0; an id of 30000 or
more is the curve of that name in the "BezierArray" of the same node, whose second coordinate is the progress: with the
points "0,0", "0.3,1.9", "1,1" it overshoots. For a motion of the texture such an id is as even as 0.

A curve is also a path. An "endTranslate" of "30001,30001,0" moves the node along the curve "30001" in x and y (its
"interpolationXYZ" is 21); the node's pace is the motion's ease. The last point itself is not reached: state it in an item
that follows.

| id | ease |
|---|---|
)";
}

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

/// A heading and the tables below it, each with the tables that it leads to.
struct Chapter {
    const char* heading;
    std::vector<const KeyTable*> tables;
};

std::vector<Chapter> chapters() {
    return {{"Files", {&templateFileKeys, &sceneGroupFileKeys, &sceneFileKeys, &shaderFileKeys}},
            {"Cameras and lights", {&cameraKeys, &lightKeys}},
            {"What nodes have in common", {&containerKeys, &fpsBaseKeys, &transformKeys}},
            {"Textures", {&textureBaseKeys, &textureInfoKeys}},
            {"Clocks", {&timeSourceKeys}},
            {"Nodes", {&nodeKeys}},
            {"Components", {&componentKeys}}};
}

class Writer {
  public:
    Writer() {
        for (const Chapter& chapter : chapters()) later_.insert(chapter.tables.begin(), chapter.tables.end());
    }

    std::string text = kIntroduction;

    void write(const Chapter& chapter) {
        text += "\n## " + std::string(chapter.heading) + "\n";
        for (const KeyTable* table : chapter.tables) {
            later_.erase(table);
            section(*table);
        }
    }

  private:
    /// A table and those that it leads to, unless they were written or have a chapter of their own to come.
    void section(const KeyTable& table) {
        if (later_.contains(&table) || !written_.insert(&table).second) return;
        if (table.base) section(*table.base);
        if (!table.keys.empty() || !table.variants) writeTable(table);
        for (const Key& key : table.keys)
            if (key.children) section(*key.children);
        if (!table.variants) return;
        for (const std::string_view name : table.variants->names()) section(*table.variants->find(name));
    }

    void writeTable(const KeyTable& table) {
        text += "\n### " + headingFor(table) + "\n\n" + std::string(table.summary) + "\n";
        if (table.base) text += "\nReads the keys of " + link(*table.base) + " too.\n";
        if (table.variants) text += "\nReads besides, " + variantLinks(*table.variants) + ".\n";
        if (!table.keys.empty()) {
            text +=
                "\n| key | type | given by | unit | default | range | meaning "
                "|\n|---|---|---|---|---|---|---|\n";
            for (const Key& key : table.keys) text += row(table, key);
        }
        if (const std::string example = examples_.of(table); !example.empty())
            text += "\n```xml\n" + example + "```\n";
    }

    std::string variantLinks(const KeyVariants& variants) {
        std::string links = "by \"" + std::string(variants.key) + "\": ";
        const auto names = variants.names();
        for (const std::string_view name : names)
            links += (name == names.front() ? "" : ", ") + std::string(name) + " those of " +
                     link(*variants.find(name));
        return links;
    }

    std::string row(const KeyTable& table, const Key& key) {
        std::string meaning(key.meaning);
        if (!key.onlyWith.empty()) meaning += "; only with `" + std::string(key.onlyWith) + "`";
        if (key.required) meaning += " (required)";
        if (key.children) meaning += "; keys: " + link(*key.children);
        return "| `" + std::string(key.name) + "` | " + typeText(key.type) + " | " + lookupText(key.lookup) +
               " | " + cell(key.unit) + " | " + cell(key.fallback) + " | " +
               cell(rangeOrChoices(table, key)) + " | " + cell(meaning) + " |\n";
    }

    static std::string rangeOrChoices(const KeyTable& table, const Key& key) {
        std::string text = rangeText(key);
        std::vector<std::string_view> choices(key.choices.begin(), key.choices.end());
        if (key.type == KeyType::Choice && table.variants && table.variants->key == key.name)
            choices = table.variants->names();
        for (const std::string_view choice : choices)
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

    const FormatExamples examples_;
    std::set<const KeyTable*> later_, written_;
    std::map<const KeyTable*, std::string> names_;
    std::map<std::string, int> owners_;
};

}  // namespace

std::string sceneFormatReference() {
    Writer writer;
    for (const Chapter& chapter : chapters()) writer.write(chapter);
    writer.text += kTracks;
    writer.text += easesText();
    writer.text += easeRows();
    return writer.text;
}

}  // namespace multiscene
