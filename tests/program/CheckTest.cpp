#include "app/Check/Checker.h"

#include <fstream>
#include <functional>

#include "tests/program/ProgramTest.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Value;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

struct Fault {
    const char* name;
    std::string keyPath;  ///< of one finding
    std::string text;     ///< in its message or remedy
    std::function<void(SmallTemplate&)> make;
};

void PrintTo(const Fault& fault, std::ostream* stream) { *stream << fault.name; }

/// Changes the photo's node.
std::function<void(SmallTemplate&)> node(const std::function<void(Value::Dictionary&)>& change) {
    return [change](SmallTemplate& small) {
        Value::Dictionary changed = small.nodes[1].dictionary();
        change(changed);
        small.nodes[1] = changed;
    };
}

std::function<void(SmallTemplate&)> nodeWith(const std::string& key, const Value& value) {
    return node([=](Value::Dictionary& dictionary) { dictionary[key] = value; });
}

/// Makes the photo's node one of another type, with a dictionary of that type.
std::function<void(SmallTemplate&)> nodeOfType(const std::string& type, const std::string& key,
                                               const Value& value) {
    return node([=](Value::Dictionary& dictionary) {
        dictionary["type"] = type;
        dictionary[key] = value;
    });
}

std::function<void(SmallTemplate&)> clockWith(const std::string& key, const Value& value) {
    return [=](SmallTemplate& small) { small.clock[key] = value; };
}

std::function<void(SmallTemplate&)> group(const Value::Array& entries) {
    return [=](SmallTemplate& small) {
        small.description["sceneGroup"] = entries;
        small.moreRecords = {recordOf(8, "small", "scene.plist", SmallTemplate::frames)};
    };
}

Value entry(int sId, const std::string& identifier, int transitionFrames = 0, int type = 0) {
    Value::Dictionary entry{{"mainSceneId", sId}, {"sceneIdentifier", identifier}, {identifier, identifier}};
    if (transitionFrames)
        entry["sceneTansitionsInfo"] = Value::Dictionary{
            {"tansitionsSceneId", 8}, {"fpsTotal", transitionFrames}, {"sceneTansitionsType", type}};
    return entry;
}

Value frames(int start, int end) { return Value::Dictionary{{"sartFps", start}, {"endFps", end}}; }

Value range(int start, int end) { return Value::Dictionary{{"startFps", start}, {"endFps", end}}; }

Value childStartingAt(int start) {
    Value::Dictionary child = quad("child", "photo");
    child["FpsInfo"] = range(start, 5);
    return child;
}

std::function<void(SmallTemplate&)> cameraMove(Value::Dictionary move) {
    move.insert({{"sartFps", 0}, {"endFps", 3}});
    return [move](SmallTemplate& small) { small.camera["LookAtAnimation"] = Value::Array{move}; };
}

std::function<void(SmallTemplate&)> shader(const std::string& source) {
    return [source](SmallTemplate& small) {
        nodeWith("FpsInfo",
                 Value::Dictionary{{"customShaderPath", "$(currentScenePlistROOT)/own.plist"}})(small);
        small.shaderSource = source;
    };
}

std::function<void(SmallTemplate&)> texture(Value::Dictionary info) { return nodeWith("TextureInfo", info); }

std::function<void(SmallTemplate&)> image(const std::string& path) {
    return texture({{"textureType", "image"}, {"texture", path}});
}

std::function<void(SmallTemplate&)> recordWith(const std::string& key, const Value& value) {
    return [=](SmallTemplate& small) { small.record[key] = value; };
}

std::function<void(SmallTemplate&)> inputWith(size_t index, const std::string& key, const Value& value) {
    return [=](SmallTemplate& small) {
        Value::Array inputs = small.description["userInputArray"].array();
        inputs[index] = inputs[index].with(key, value);
        small.description["userInputArray"] = inputs;
    };
}

/// A motion along the path 30001, which leads through x and y.
std::function<void(SmallTemplate&)> pathTo(const std::string& end, const std::string& name = "30001") {
    return node([=](Value::Dictionary& dictionary) {
        dictionary["TransformArray"] = Value::Array{frames(0, 3).with("endTranslate", end)};
        dictionary["BezierArray"] =
            Value::Array{Value::Dictionary{{"bezierIdentifier", name},
                                           {"interpolationTotal", 10},
                                           {"interpolationXYZ", 21},
                                           {"controlPoints", Value::Array{"0,0", "1,1"}}}};
    });
}

std::vector<Fault> faults() {
    const Value turned = Value::Dictionary{{"sartFps", 0}, {"endFps", 2}, {"startRotate", "0,0,90"}};
    return {
        {"UnknownKey", "object3D[1].QuadInfos", "did you mean \"QuadInfo\"?",
         nodeWith("QuadInfos", Value::Dictionary{})},
        {"KeyOfAnotherPlace", "object3D[1].modelWidth", "belongs into \"QuadInfo\"",
         nodeWith("modelWidth", 3)},
        {"SpellingOfItems", "object3D[1].TransformArray[0].startFps", "did you mean \"sartFps\"?",
         nodeWith("TransformArray", Value::Array{Value::Dictionary{{"startFps", 0}, {"endFps", 3}}})},
        {"SpellingOfRanges", "object3D[1].FpsInfo.sartFps", "did you mean \"startFps\"?",
         nodeWith("FpsInfo", frames(0, 3))},
        {"WrongType", "object3D[1].QuadInfo.modelWidth", "\"wide\", not a number",
         nodeWith("QuadInfo", Value::Dictionary{{"modelWidth", "wide"}})},
        {"ShortVector", "object3D[1].TransformArray[0].startTranslate", "text of 3 numbers",
         nodeWith("TransformArray",
                  Value::Array{Value::Dictionary{{"sartFps", 0}, {"endFps", 3}, {"startTranslate", "1,2"}}})},
        {"OutOfRange", "object3D[1].FpsInfo.startFps", "at least 0", nodeWith("FpsInfo", range(-1, 3))},
        {"UnknownType", "object3D[1].type", "did you mean \"QVQuadObject3D\"?",
         nodeWith("type", "QVQuadObject3")},
        {"UnknownClock", "TimeSource.type", "did you mean \"QVNullVideoTimeSource\"?",
         clockWith("type", "QVNulVideoTimeSource")},
        {"UnknownChoice", "object3D[1].TextureInfo.textureType", "did you mean \"image\"?",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "imag"}, {"texture", "photo"}})},
        {"NoClock", "", "\"TimeSource\" is missing", [](SmallTemplate& small) { small.clock = {}; }},
        {"ClockWithoutEnd", "TimeSource.FpsInfo", "add the number of the last frame",
         clockWith("FpsInfo", Value::Dictionary{{"startFps", 0}})},
        {"LengthIsNotTheClocks", "installScenes[0].fpsLength", "set it to 6",
         [](SmallTemplate& small) { small.record["fpsLength"] = 5; }},
        {"OddPicture", "installScenes[0].wechartTempletInfo.mediaSize", "odd",
         [](SmallTemplate& small) { small.description["mediaSize"] = "63,96"; }},
        {"EmptyRange", "object3D[1].FpsInfo", "it never happens", nodeWith("FpsInfo", range(4, 2))},
        {"StartsAfterTheEnd", "object3D[1].FpsInfo.startFps", "last frame 5",
         nodeWith("FpsInfo", range(6, 9))},
        {"ChildBeforeParent", "object3D[1].childNode[0].FpsInfo.startFps", "before its parent",
         node([](Value::Dictionary& dictionary) {
             dictionary["FpsInfo"] = range(3, 5);
             dictionary["childNode"] = Value::Array{childStartingAt(1)};
         })},
        {"StalledMotion", "object3D[1].TransformArray[0]", "stalls",
         nodeWith("TransformArray", Value::Array{frames(2, 2), frames(3, 4)})},
        {"PassedOverMotion", "object3D[1].TransformArray[1].sartFps", "passed over",
         nodeWith("TransformArray", Value::Array{frames(0, 2), frames(2, 4)})},
        {"StalledKeys", "object3D[1].AnimationInfo[1].endFps", "stalls",
         nodeWith("AnimationInfo", Value::Array{frames(0, 4), frames(1, 3)})},
        {"RotationWithoutEnd", "object3D[1].TransformArray[0].startRotate", "radians",
         nodeWith("TransformArray", Value::Array{turned})},
        {"MissingFile", "object3D[1].TextureInfo.texture", "does not exist",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"},
                                                   {"texture", "$(currentScenePlistROOT)/none.png"}})},
        {"NoPicture", "object3D[1].TextureInfo.texture", "scene.plist",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"},
                                                   {"texture", "$(currentScenePlistROOT)/scene.plist"}})},
        {"NoMacro", "object3D[1].TextureInfo.texture", "$(currentScenePlistROOT)/red.png",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"}, {"texture", "red.png"}})},
        {"OutsideTheFence", "object3D[1].TextureInfo.texture", "outside",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "image"}, {"texture", "/etc/passwd"}})},
        {"TextureWithoutSource", "object3D[1].TextureInfo", "\"textString\" is missing",
         nodeWith("TextureInfo", Value::Dictionary{{"textureType", "text2d"}})},
        {"NothingToShow", "object3D[1]", "add \"TextureInfo\"",
         node([](Value::Dictionary& dictionary) { dictionary.erase("TextureInfo"); })},
        {"NoSurface", "object3D[1]", "QVPlaneObject3D", node([](Value::Dictionary& dictionary) {
             dictionary = {{"type", "QVMeshObject3D"}};
         })},
        {"BrokenShader", "object3D[1].FpsInfo.customShaderPath", "gl_FragColour",
         shader("void main() { gl_FragColour = vec4(1.0); }")},
        {"UniformThatIsNotListed", "Uniforms", "\"aplae\"",
         shader("uniform mediump float aplae; void main() { gl_FragColor = vec4(aplae); }")},
        {"ColourOf255", "object3D[1].TextureInfo.textColor", "from 0 to 1",
         texture({{"textureType", "text2d"}, {"textString", "title"}, {"textColor", "255,0,0,1"}})},
        {"FontNotInstalled", "object3D[1].TextureInfo.fontName", "not installed",
         texture({{"textureType", "text2d"}, {"textString", "title"}, {"fontName", "Nosuch Unicorn"}})},
        {"EaseWithoutCurve", "object3D[1].TransformArray[0].translateEase", "\"30001\"",
         nodeWith("TransformArray", Value::Array{frames(0, 3).with("translateEase", 30001)})},
        {"PathOfAnotherName", "object3D[1].TransformArray[0].endTranslate", "\"30002\"", pathTo("30002,0,0")},
        {"PathWithoutAxis", "object3D[1].TransformArray[0].endTranslate", "has no z", pathTo("0,0,30001")},
        {"CurveThatNothingNames", "object3D[1].BezierArray[0].bezierIdentifier", "30000 or more",
         pathTo("0,0,0", "swing")},
        {"BoxWithoutHeight", "object3D[1].QuadInfo.modelHeight", "nothing is drawn",
         nodeWith("QuadInfo", Value::Dictionary{{"modelWidth", 5}, {"modelHeight", 0}})},
        {"CameraWithoutWidth", "Camera", "sees nothing",
         [](SmallTemplate& small) { small.camera.erase("OrthWidth"); }},
        {"StretchedPicture", "Camera.aspect", "stretched",
         [](SmallTemplate& small) { small.camera["aspect"] = 1.5; }},
        {"FrameThatNobodyGives", "object3D[1].FpsInfo.endFps", "no input has that key",
         nodeWith("FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", "length"}})},
        {"TextureThatNobodyDraws", "object3D[1].TextureInfo.textureMapKey", "\"card\"",
         texture({{"textureType", "RTTTexture"}, {"textureMapKey", "card"}})},
        {"SceneTextureOutsideATransition", "object3D[1].TextureInfo.textureType", "transition scene",
         texture({{"textureType", "nextSceneRenderTexture"}})},
        {"ChildAfterItsParent", "object3D[1].childNode[0].FpsInfo.startFps", "never drawn",
         node([](Value::Dictionary& dictionary) {
             dictionary["FpsInfo"] = range(0, 2);
             dictionary["childNode"] = Value::Array{childStartingAt(3)};
         })},
        {"MotionAfterTheEnd", "object3D[1].TransformArray[0].sartFps", "never happens",
         nodeWith("TransformArray", Value::Array{frames(7, 9)})},
        {"SoundAfterTheEnd", "object3D[1].ComponentsInfo[0].startFps", "never happens",
         nodeWith("ComponentsInfo",
                  Value::Array{Value::Dictionary{
                      {"type", "QVObject3DSoundSourceComponent"}, {"startFps", 6}, {"endFps", 9}}})},
        {"NameInAnotherCase", "object3D[1].TextureInfo.texture", "did you mean \"red.png\"?",
         image("$(currentScenePlistROOT)/Red.png")},
        {"UnknownMacro", "object3D[1].TextureInfo.texture", "did you mean \"$(currentScenePlistROOT)\"?",
         image("$(currentScenePlistRoot)/red.png")},
        {"NoTrack", "object3D[1].TrackInfo.trackFliePath", "encrypt-track",
         node([](Value::Dictionary& dictionary) {
             dictionary["type"] = "QVQuadTrackObject3D";
             dictionary["TrackInfo"] =
                 Value::Dictionary{{"trackFliePath", "$(currentScenePlistROOT)/red.png"}};
         })},
        {"MusicThatIsNone", "installScenes[0].wechartTempletInfo.bgAudioPath", "sound",
         [](SmallTemplate& small) { small.description["bgAudioPath"] = "$(currentScenePlistROOT)/red.png"; }},
        {"FolderWithoutSlash", "installScenes[0].sceneResourceFolderPath", "does not end in",
         recordWith("sceneResourceFolderPath", "$(multiSceneSceneROOT)/small")},
        {"NoThumbnail", "installScenes[0].sceneThumbnailPath", "$(multiSceneSceneROOT)/small/",
         recordWith("sceneThumbnailPath", "thumbnail.jpg")},
        {"NoSceneFile", "installScenes[0].scenePlistPath", "did you mean \"scene.plist\"?",
         recordWith("scenePlistPath", "$(multiSceneSceneROOT)/small/scenes.plist")},
        {"PhotoShownAsText", "installScenes[0].wechartTempletInfo.userInputArray[0].renderMapKey",
         "shows it as text", inputWith(0, "userInputType", 1)},
        {"HalfAShape", "installScenes[0].wechartTempletInfo.userInputArray[1].aspectWidth", "both sides",
         inputWith(1, "aspectHeight", 0)},
        {"TransitionToNothing", "installScenes[0].wechartTempletInfo.sceneGroup[1].sceneTansitionsInfo",
         "no scene to change to", group({entry(7, "a"), entry(7, "b", 2)})},
        {"UnusedInput", "installScenes[0].wechartTempletInfo.userInputArray[1].renderMapKey",
         "no scene looks", [](SmallTemplate& small) { small.nodes.erase(small.nodes.begin() + 1); }},
        {"UnknownSceneOfGroup", "installScenes[0].wechartTempletInfo.sceneGroup[0].mainSceneId", "99",
         group({entry(99, "a")})},
        {"TransitionTooLong",
         "installScenes[0].wechartTempletInfo.sceneGroup[0].sceneTansitionsInfo.fpsTotal", "longer than",
         group({entry(7, "a", 9), entry(8, "b")})},
        {"TransitionThatNeverStarts",
         "installScenes[0].wechartTempletInfo.sceneGroup[0].sceneTansitionsInfo.fpsTotal",
         "the 5 that the ending scene has", group({entry(7, "a", 6), entry(8, "b")})},
        {"TransitionThatLeavesNothing",
         "installScenes[0].wechartTempletInfo.sceneGroup[0].sceneTansitionsInfo.fpsTotal",
         "the 5 that the following scene has", group({entry(7, "a", 6), entry(8, "b")})},
        {"TransitionsThatMeet",
         "installScenes[0].wechartTempletInfo.sceneGroup[1].sceneTansitionsInfo.fpsTotal",
         "the 2 that the ending scene has", group({entry(7, "a", 3), entry(8, "b", 3), entry(7, "c")})},
        {"SecondOverlay", "installScenes[0].wechartTempletInfo.sceneGroup[1].sceneTansitionsInfo",
         "while an overlay runs", group({entry(7, "a", 1, 1), entry(8, "b", 5, 1), entry(7, "c")})},
        {"IdentifierCollision", "installScenes[0].wechartTempletInfo.sceneGroup", "is the key of another",
         [](SmallTemplate& small) {
             Value::Array inputs = small.description["userInputArray"].array();
             inputs.push_back(Value::Dictionary{{"userInputType", 0}, {"renderMapKey", "titleb"}});
             small.description["userInputArray"] = inputs;
             group({entry(7, "a"), entry(8, "b")})(small);
         }},
        // Keys that change nothing, or something else
        {"TextureMotionWithoutSizes", "object3D[1].TransformArray[0].endTextureOrigin",
         "without \"startTextureSize\" a single point",
         nodeWith("TransformArray", Value::Array{frames(0, 3).with("endTextureOrigin", "0.5,0")})},
        {"TextureSizeThatDoesNotMove", "object3D[1].TransformArray[0].endTextureSize",
         "no effect without \"endTextureOrigin\"",
         nodeWith("TransformArray", Value::Array{frames(0, 3).with("endTextureSize", "1,1")})},
        {"ScaleFromNothing", "object3D[1].MutableTransformArray[0]", "grows from nothing",
         nodeWith("MutableTransformArray",
                  Value::Array{Value::Dictionary{
                      {"transformType", 1}, {"fpsStart", 0}, {"fpsEnd", 3}, {"endScale", "2,2,2"}}})},
        {"CameraMoveWithoutASwitch", "Camera.LookAtAnimation[0].endMoveCameraPosition",
         "no effect without \"isMoveCameraPosition\"", cameraMove({{"endMoveCameraPosition", "0,9,0"}})},
        {"CameraMoveOfNothing", "Camera.LookAtAnimation[0]", "moves nothing", cameraMove({})},
        {"CameraThatIsMovedAsANode", "Camera.TransformArray", "a camera does not play it",
         [](SmallTemplate& small) { small.camera["TransformArray"] = Value::Array{frames(0, 3)}; }},
        {"FactorsWithoutBlending", "object3D[1].FpsInfo.srcBlend", "no effect without \"isChangeBlend\"",
         nodeWith("FpsInfo", Value::Dictionary{{"srcBlend", "ONE"}})},
        {"ShadowThatIsNotShown", "object3D[2].TextureInfo.shadowColor",
         "no effect without \"isShowTextShadow\"",
         [](SmallTemplate& small) {
             Value::Dictionary text = small.nodes[2].dictionary();
             text["TextureInfo"] = text["TextureInfo"].with("shadowColor", "0,0,0,1");
             small.nodes[2] = text;
         }},
        {"ShaderThatIsANumber", "object3D[1].FpsInfo.customShaderPath", "\"5\", not text",
         nodeWith("FpsInfo", Value::Dictionary{{"customShaderPath", 5}})},
        {"EmptyGroup", "installScenes[0].wechartTempletInfo.sceneGroup", "is empty",
         [](SmallTemplate& small) { small.description["sceneGroup"] = Value::Array{}; }},
        {"EmptyChild", "object3D[1].childNode[1]", "\"type\" is missing",
         nodeWith("childNode", Value::Array{childStartingAt(0), Value::Dictionary{}})},
        {"ChildThatIsText", "object3D[1].childNode[1]", "not a dictionary",
         nodeWith("childNode", Value::Array{childStartingAt(0), "star"})},
        {"DepthTestOfManyChildren", "object3D[1].FpsInfo.isEnableDephTest", "give every child",
         node([](Value::Dictionary& dictionary) {
             dictionary["FpsInfo"] = range(0, 5).with("isEnableDephTest", true);
             dictionary["childNode"] = Value::Array{childStartingAt(0), childStartingAt(0)};
         })},
        {"SpotLightWithoutDirection", "object3D[1].LightSourceArray[0]", "straight ahead",
         nodeWith("LightSourceArray",
                  Value::Array{Value::Dictionary{{"lightSourceType", 3}, {"spotLightCutOffAngle", 30}}})},
        {"TooManyLights", "object3D[1].LightSourceArray", "only the first 8",
         nodeWith("LightSourceArray", Value::Array(9, Value::Dictionary{{"lightSourceType", 1}}))},
        // Numbers at their ends
        {"VectorThatIsNoNumber", "object3D[1].FpsInfo.textureSize", "text of 2 numbers",
         nodeWith("FpsInfo",
                  Value::Dictionary{
                      {"isRenderToTexture", true}, {"textureMapKey", "card"}, {"textureSize", "nan,nan"}})},
        {"EndlessLength", "object3D[1].QuadInfo.modelWidth", "\"inf\", not a number",
         nodeWith("QuadInfo", Value::Dictionary{{"modelWidth", "inf"}, {"modelHeight", 3}})},
        {"ClockThatEndsAtTheLastNumber", "installScenes[0].fpsLength", "set it to 9223372036854775807",
         clockWith("FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", INT64_MAX}})},
        {"GroupOfEndlessScenes", "installScenes[0].fpsLength", "set it to 9223372036854775807",
         [](SmallTemplate& small) {
             clockWith("FpsInfo", Value::Dictionary{{"startFps", 0}, {"endFps", INT64_MAX}})(small);
             group({entry(7, "a", 3, 1), entry(8, "b", 3, 0), entry(7, "c", 3, 1), entry(8, "d")})(small);
         }},
        {"SequenceWithoutAnEnd", "object3D[1].TextureInfo.animationName", "does not exist",
         texture({{"textureType", "textureSerial"},
                  {"animationStart", INT64_MIN},
                  {"animationEnd", INT64_MAX},
                  {"animationName", "$(currentScenePlistROOT)/pic"},
                  {"animationExtension", "png"}})},
        // Keys that count under another type only
        {"CornersOfAPlainPicture", "object3D[1].TextureInfo.circularR", "belongs to \"filterImage\"",
         texture({{"textureType", "image"}, {"texture", "photo"}, {"circularR", 8}})},
        {"SequenceKeysOfAPicture", "object3D[1].TextureInfo.animationFps", "belongs to \"textureSerial\"",
         texture({{"textureType", "image"}, {"texture", "photo"}, {"animationFps", 2}})},
        {"TextKeysOfAPicture", "object3D[1].TextureInfo.textColor", "where \"textureType\" is \"image\"",
         texture({{"textureType", "image"}, {"texture", "photo"}, {"textColor", "1,1,1,1"}})},
        {"RateOfAPicture", "object3D[1].TextureInfo.videoFps", "belongs to \"mp4Video\"",
         texture({{"textureType", "image"}, {"texture", "photo"}, {"videoFps", 30}})},
        {"LineOfRoundCorners", "object3D[1].TextureInfo.strokeW", "belongs to \"circularAndStroke\"",
         texture({{"textureType", "filterImage"},
                  {"filterType", "roundRect"},
                  {"texture", "photo"},
                  {"circularR", 8},
                  {"strokeW", 3}})},
        {"PictureWithoutAFile", "object3D[1].TextureInfo", "\"texture\" is missing",
         texture({{"textureType", "image"}, {"texture", ""}})},
        {"FilterWithoutAName", "object3D[1].TextureInfo", "\"filterType\" is missing",
         texture({{"textureType", "filterImage"}, {"texture", "photo"}})},
        {"MaskWithoutAFile", "object3D[1].MaskInfo", "\"texture\" is missing",
         nodeOfType("QVQuadMaskObject3D", "MaskInfo", Value::Dictionary{{"textureType", "image"}})},
        {"MaskFileOfATarget", "object3D[1].MaskInfo.maskTextureName", "no effect",
         nodeOfType(
             "QVQuadMaskObject3D", "MaskInfo",
             Value::Dictionary{
                 {"textureType", "RTTTexture"}, {"textureMapKey", "card"}, {"maskTextureName", "photo"}})},
        {"MaskThatNobodyDraws", "object3D[1].MaskInfo.textureMapKey", "\"card\"",
         nodeOfType("QVQuadMaskObject3D", "MaskInfo",
                    Value::Dictionary{{"textureType", "RTTTexture"}, {"textureMapKey", "card"}})},
        {"FieldOfViewOfAFlatCamera", "Camera.FrustumFov", "belongs to \"QVFrustumCamera\"",
         [](SmallTemplate& small) { small.camera["FrustumFov"] = 60; }},
        {"UnknownCamera", "Camera.type", "did you mean \"QVOrthCamera\"?",
         [](SmallTemplate& small) { small.camera["type"] = "QVOrtCamera"; }},
        {"ConeOfAPointLight", "object3D[1].LightSourceArray[0].spotLightCutOffAngle",
         "where \"lightSourceType\" is \"1\"",
         nodeWith("LightSourceArray",
                  Value::Array{Value::Dictionary{{"lightSourceType", 1}, {"spotLightCutOffAngle", 30}}})},
        {"UnknownLight", "object3D[1].LightSourceArray[0].lightSourceType", "unknown light type \"4\"",
         nodeWith("LightSourceArray", Value::Array{Value::Dictionary{{"lightSourceType", 4}}})},
        {"ScaleOfATranslation", "object3D[1].MutableTransformArray[0].endScale",
         "where \"transformType\" is \"0\"",
         nodeWith("MutableTransformArray",
                  Value::Array{Value::Dictionary{
                      {"transformType", 0}, {"fpsStart", 0}, {"fpsEnd", 3}, {"endScale", "2,2,2"}}})},
        {"KeyOfAnotherNode", "object3D[1].BlendInfo", "belongs to \"QVQuadBlendObject3D\"",
         nodeWith("BlendInfo", Value::Dictionary{{"srcBlend", 1}, {"decBlend", 1}})},
    };
}

class CheckTest : public ::testing::TestWithParam<Fault> {
  protected:
    TemporaryFolder folder;
};

}  // namespace

TEST_P(CheckTest, NamesPlaceFaultAndRemedy) {
    SmallTemplate small;
    GetParam().make(small);
    const Findings findings = checkPath(small.write(folder.path()));
    std::string all;
    for (const Finding& finding : findings) all += describe(finding) + "\n";
    const bool isNamed = std::any_of(findings.begin(), findings.end(), [](const Finding& finding) {
        return finding.keyPath == GetParam().keyPath &&
               (finding.message + "; " + finding.remedy).find(GetParam().text) != std::string::npos;
    });
    EXPECT_TRUE(isNamed) << all;
}

INSTANTIATE_TEST_SUITE_P(All, CheckTest, ::testing::ValuesIn(faults()),
                         [](const auto& fault) { return std::string(fault.param.name); });

TEST(CheckSequence, SaysWhichPictureIsNoneAndWhy) {
    const TemporaryFolder folder;
    SmallTemplate small;
    const std::string place = "$(currentScenePlistROOT)/pic";
    nodeWith("TextureInfo", Value::Dictionary{{"textureType", "textureSerial"},
                                              {"imageType", 2},
                                              {"animationStart", 1},
                                              {"animationEnd", 2},
                                              {"animationName", place},
                                              {"animationExtension", "pvr"}})(small);
    const fs::path path = small.write(folder.path());
    std::ofstream(path / "pic1.pvr") << std::string("PVR\3", 4) + std::string(60, '\0');
    const auto named = [&](const std::string& text) {
        std::string all;
        for (const Finding& finding : checkPath(path)) all += describe(finding) + "\n";
        EXPECT_THAT(all, HasSubstr(text));
    };
    named("pic1.pvr\": is a PVR file of version 3");
    fs::remove(path / "pic1.pvr");
    named("pic1.pvr\" does not exist");
}

class CheckProgramTest : public ProgramTest {};

TEST_F(CheckProgramTest, ExitCodeTellsWhetherAnythingIsWrong) {
    SmallTemplate small;
    const fs::path path = small.write(folder.path());
    const Result clean = multiscene({"check", path});
    EXPECT_EQ(clean.exitCode, 0) << clean.output;
    EXPECT_EQ(multiscene({"check", path / "scene.plist"}).exitCode, 0);

    small.record["fpsLength"] = 1;
    small.write(folder.path());
    const Result faulty = multiscene({"check", path, "--json"});
    EXPECT_EQ(faulty.exitCode, 3);
    ASSERT_EQ(faulty.jsonLines().size(), 2u);
    EXPECT_EQ(faulty.jsonLines()[0].string("key"), "installScenes[0].fpsLength");
    EXPECT_EQ(faulty.jsonLines()[1].integer("errors"), 1);
}

TEST_F(CheckProgramTest, BrokenSyntaxAndStrangeFilesAreFindings) {
    const std::pair<const char*, const char*> files[] = {{"a.plist", "<plist><dict>"},
                                                         {"b.plist", "<plist><array/></plist>"},
                                                         {"c.plist", "<plist><dict/></plist>"}};
    for (const auto& [name, text] : files) {
        std::ofstream(folder.path() / name) << text;
        const Result result = multiscene({"check", folder.file(name)});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_THAT(result.output, HasSubstr(name));
    }
    EXPECT_EQ(multiscene({"check", folder.file("none.plist")}).exitCode, 3);
}

TEST(SampleTemplates, AreClean) {
    for (const auto& entry : fs::directory_iterator(MULTISCENE_SOURCE "/templates")) {
        if (!entry.is_directory()) continue;
        for (const Finding& finding : checkPath(entry.path())) ADD_FAILURE() << describe(finding);
    }
}

}  // namespace multiscene::test
