#include "other/QVUtil.h"

#include <sys/xattr.h>

#include <algorithm>
#include <map>

#include "platform/base/File.h"
#include "platform/base/Paths.h"

namespace multiscene {

namespace {

std::string bundleRoot() { return platform::resourcesFolder().string() + "/"; }

using RootMaker = std::string (*)(const std::string& scenePath);

const std::map<std::string, RootMaker, std::less<>>& roots() {
    static const std::map<std::string, RootMaker, std::less<>> table{
        {"$(multiSceneRootROOT)", [](const std::string&) { return QVUtil::multiSceneRootPath(); }},
        {"$(multiSceneSceneROOT)", [](const std::string& scenePath) { return scenePath; }},
        {"$(multiSceneUserResourcesROOT)", [](const std::string&) { return QVUtil::userResourcesPath(); }},
        {"$(mainBundleResourcePathROOT)", [](const std::string&) { return bundleRoot(); }},
        {"$(MultiSceneTemplateROOT)", [](const std::string&) { return QVUtil::templatePath(); }},
    };
    return table;
}

}  // namespace

std::string_view QVUtil::firstComponent(std::string_view path) { return path.substr(0, path.find('/')); }

std::string QVUtil::removingMacro(const std::string& path, std::string_view component) {
    const std::string prefix = std::string(component) + "/";
    std::string rest;
    size_t from = 0;
    for (size_t at; (at = path.find(prefix, from)) != std::string::npos; from = at + prefix.size())
        rest.append(path, from, at - from);
    return rest.append(path, from, std::string::npos);
}

std::string QVUtil::multiScenePathWithString(const std::string& path) {
    return multiScenePathWithString(path, scenePath());
}

std::string QVUtil::multiScenePathWithString(const std::string& path, const std::string& scenePath) {
    if (path.empty() || path.front() == '/') return path;
    const std::string_view component = firstComponent(path);
    const auto root = roots().find(component);
    return root == roots().end() ? std::string() : root->second(scenePath) + removingMacro(path, component);
}

std::vector<std::string_view> QVUtil::pathMacros() {
    std::vector<std::string_view> macros;
    for (const auto& [macro, root] : roots()) macros.push_back(macro);
    return macros;
}

std::string QVUtil::multiSceneRootPath() { return platform::dataHome().string() + "/qvMultiSceneRender/"; }

std::string QVUtil::scenePath() { return multiSceneRootPath() + "scene/"; }
std::string QVUtil::userResourcesPath() { return multiSceneRootPath() + "UserResources/"; }
std::string QVUtil::templatePath() { return multiSceneRootPath() + "MultiSceneTemplate/"; }
std::string QVUtil::dataPath() { return multiSceneRootPath() + "data/"; }

void QVUtil::createMultiSceneLocalPaths() {
    const std::string root = multiSceneRootPath();
    for (const std::string& folder : {root, dataPath(), scenePath(), userResourcesPath(), templatePath()}) {
        platform::createFolders(folder);
        addSkipBackupAttributeToDirectory(folder);
    }
}

void QVUtil::addSkipBackupAttributeToDirectory(const std::string& folder) {
    static constexpr std::string_view no = "false";
    (void)::setxattr(folder.c_str(), "user.xdg.robots.backup", no.data(), no.size(), 0);
}

void QVUtil::getpagame(std::string_view text, float* data, int count) {
    std::fill_n(data, count, 0.0f);
    for (int index = 0; index < count; ++index) {
        const size_t comma = text.find(',');
        data[index] = platform::Value(text.substr(0, comma)).floatValue();
        if (comma == std::string_view::npos) return;
        text.remove_prefix(comma + 1);
    }
}

}  // namespace multiscene
