#include <filesystem>

#include "app/Check/DictionaryWalk.h"
#include "app/Check/KeyJudge.h"
#include "app/Check/SceneRules.h"
#include "app/Model/TemplateKeys.h"
#include "opengl2.0/Shader.h"
#include "opengl2.0/ShaderSource.h"
#include "other/QVMultiSceneRenderShareSettings.h"
#include "platform/base/FileGate.h"
#include "platform/gl/GLContext.h"
#include "videoRenderCore/SceneFileKeys.h"

namespace multiscene::rules {

namespace {

/// Builds the shaders of a scene's own in a context of its own.
class Shaders : public DictionaryVisitor {
  public:
    Shaders(const SceneView& scene, Findings& findings) : scene_(scene), findings_(findings) {}

    void known(const Key& key, const platform::Value& value, const std::string& keyPath) override {
        if (key.name != "customShaderPath" || !value.isString()) return;
        const std::string file = QVMultiSceneRenderShareSettings::multiSceneRenderPathResourcesWithString(
            value.stringValue(), scene_.folder);
        // A missing file is another rule's.
        if (platform::FileGate::shared().exists(file)) judge(file, keyPath);
    }

  private:
    void judge(const std::string& file, const std::string& keyPath) {
        std::string problem;
        const platform::Value description = readShaderDescription(file, problem);
        if (!problem.empty()) return add(file, keyPath, problem);
        KeyJudge keys(file, findings_);
        walkDictionary(shaderFileKeys, description, "", keys);
        if (!context_) context_ = platform::GLContext::create();
        const platform::GLContextScope scope(*context_);
        const Shader shader(description, std::filesystem::path(file).parent_path().string());
        for (const ShaderFailure& failure : shader.failures())
            add(failure.file.empty() ? file : failure.file, keyPath, failure.message);
        if (shader.failures().empty()) judgeNames(shader, file);
    }

    /// What the program would set if the description listed it; "videoFrame" is right as it stands, 0.
    void judgeNames(const Shader& shader, const std::string& file) {
        if (shader.attributeHandle("position") == 0)
            findings_.push_back({Severity::Error, file, "Attributes",
                                 "does not list \"position\": nothing is drawn", "add it"});
        for (const char* name : {"u_mvpMatrix", "u_textureMatrix", "isPreMultiplication", "aplae"})
            if (shader.uniformLocationStructOrArray(name) >= 0 && !shader.hasUniform(name))
                findings_.push_back(
                    {Severity::Error, file, "Uniforms",
                     "does not list \"" + std::string(name) + "\", which the sources use: it stays 0",
                     "add it"});
    }

    void add(const std::string& file, const std::string& keyPath, std::string problem) {
        for (char& letter : problem)
            if (letter == '\n') letter = ' ';
        findings_.push_back(
            {Severity::Error, scene_.file, keyPath, file + ": " + problem, "mend the shader"});
    }

    const SceneView& scene_;
    Findings& findings_;
    std::shared_ptr<platform::GLContext> context_;
};

}  // namespace

void shadersBuild(const SceneView& scene, Findings& findings) {
    Shaders visitor(scene, findings);
    walkDictionary(sceneFileKeys, scene.content, "", visitor);
}

}  // namespace multiscene::rules
