#include <algorithm>
#include <filesystem>
#include <map>

#include "app/check/KeyJudge.h"
#include "app/check/MediaReader.h"
#include "app/check/SceneRules.h"
#include "app/template/TemplateKeys.h"
#include "format/DictionaryWalk.h"
#include "opengl2.0/Shader.h"
#include "opengl2.0/ShaderSource.h"
#include "platform/gl/GLContext.h"
#include "sceneFile/SceneFileKeys.h"

namespace multiscene::rules {

namespace {

/// Builds the shaders of a scene's own in a context of its own.
class Shaders : public DictionaryVisitor {
  public:
    Shaders(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const platform::Value& value, const std::string& keyPath) override {
        if (key.name != "customShaderPath" || !value.isString()) return;
        Playback& playback = scene_.media->playback();
        const std::string file =
            playback.settings().multiSceneRenderPathResourcesWithString(value.stringValue(), scene_.folder);
        // A missing file is another rule's.
        if (playback.gate().exists(file)) judge(file, keyPath);
    }

  private:
    struct Built {
        std::vector<std::string> problems;
        bool ignoresPremultiplication = false;
    };

    void judge(const std::string& file, const std::string& keyPath) {
        auto known = built_.find(file);
        if (known == built_.end()) known = built_.emplace(file, build(file)).first;
        for (const std::string& problem : known->second.problems) add(keyPath, problem);
        if (known->second.ignoresPremultiplication) judgeColours(keyPath);
    }

    Built build(const std::string& file) {
        platform::FileGate& gate = scene_.media->playback().gate();
        std::string problem;
        const platform::Value description = readShaderDescription(file, gate, problem);
        if (!problem.empty()) return {{file + ": " + problem}};
        KeyJudge keys(file, findings_);
        walkDictionary(shaderFileKeys, description, "", keys);
        if (!context_) context_ = platform::GLContext::create();
        const platform::GLContextScope scope(*context_);
        const Shader shader(description, std::filesystem::path(file).parent_path().string(), gate);
        Built built;
        for (const ShaderFailure& failure : shader.failures())
            built.problems.push_back((failure.file.empty() ? file : failure.file) + ": " + failure.message);
        if (!built.problems.empty()) return built;
        judgeNames(shader, file);
        const auto names = shader.activeUniforms();
        const auto uses = [&](const char* name) {
            return std::find(names.begin(), names.end(), name) != names.end();
        };
        built.ignoresPremultiplication = uses("videoFrame") && !uses("isPreMultiplication");
        return built;
    }

    /// "videoFrame" is right as it stands, 0; members of arrays and structures are set without being listed.
    void judgeNames(const Shader& shader, const std::string& file) {
        if (shader.attributeHandle("position") == 0)
            findings_.push_back({Severity::Error, file, "Attributes",
                                 "does not list \"position\": nothing is drawn", "add it"});
        for (const std::string& name : shader.activeUniforms())
            if (name != "videoFrame" && name.find_first_of(".[") == std::string::npos &&
                !shader.uniformHandles().contains(name))
                findings_.push_back({Severity::Error, file, "Uniforms",
                                     "does not list \"" + name + "\", which the sources use: it stays 0",
                                     "add it"});
    }

    /// The colours of a picture come multiplied by its alpha, and are blended as if they were not.
    void judgeColours(const std::string& keyPath) {
        if (!showsSoftEdges(keyPath)) return;
        findings_.push_back({Severity::Warning, scene_.file, keyPath,
                             "the shader does not ask for \"isPreMultiplication\", but the colours of this "
                             "picture are multiplied by its alpha: soft edges become dark",
                             "divide the colour by its alpha where \"isPreMultiplication\" is 1"});
    }

    /// Whether the node of this "customShaderPath" shows something that is not opaque.
    bool showsSoftEdges(const std::string& keyPath) const {
        for (const NodeView& node : scene_.nodes) {
            if (node.keyPath + ".FpsInfo.customShaderPath" != keyPath) continue;
            const platform::Value& texture = node.content["TextureInfo"];
            const std::string type = texture.string("textureType");
            if (type == "image")
                return scene_.media->isTransparentPicture(texture.string("texture"), scene_.folder);
            return type == "text2d" || type == "RTTTexture" || type == "filterImage";
        }
        return false;
    }

    void add(const std::string& keyPath, std::string problem) {
        for (char& letter : problem)
            if (letter == '\n') letter = ' ';
        findings_.push_back({Severity::Error, scene_.file, keyPath, std::move(problem), "mend the shader"});
    }

    const SceneView& scene_;
    Findings& findings_;
    std::shared_ptr<platform::GLContext> context_;
    std::map<std::string, Built> built_;  ///< by path
};

}  // namespace

void shadersBuild(const SceneView& scene, Findings& findings) {
    Shaders visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
