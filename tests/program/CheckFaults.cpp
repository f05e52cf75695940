#include "tests/program/CheckFaults.h"

#include <fstream>

#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/crypto/Cipher.h"
#include "platform/image/ImageWriter.h"
#include "tests/program/ProgramTest.h"
#include "tween/Ease.h"

namespace multiscene::test {

namespace fs = std::filesystem;
using platform::Value;

namespace {

/// Changes the photo's node.
std::function<void(SmallTemplate&)> node(const std::function<void(Value::Dictionary&)>& change) {
    return [change](SmallTemplate& small) {
        Value::Dictionary changed = small.nodes[1].dictionary();
        change(changed);
        small.nodes[1] = changed;
    };
}

}  // namespace

std::function<void(SmallTemplate&)> nodeWith(const std::string& key, const Value& value) {
    return node([=](Value::Dictionary& dictionary) { dictionary[key] = value; });
}

namespace {

/// Makes the photo's node one of another type, with a dictionary of that type.
std::function<void(SmallTemplate&)> nodeOfType(const std::string& type, const std::string& key,
                                               const Value& value) {
    return node([=](Value::Dictionary& dictionary) {
        dictionary["type"] = type;
        dictionary[key] = value;
    });
}

std::function<void(SmallTemplate&)> frameFilters(const Value::Array& filters) {
    return nodeOfType("QVQuadFrameObject3D", "FrameInfo", Value::Dictionary{{"filters", filters}});
}

Value movingFilter(const std::string& filter, const std::string& number, double end) {
    const Value::Dictionary move{{"endFps", 9}, {"number", number}, {"start", 0}, {"end", end}};
    return Value::Dictionary{{"filter", filter}, {"AnimationInfo", Value::Array{move}}};
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

}  // namespace

Value entry(int sId, const std::string& identifier, int transitionFrames, int type) {
    Value::Dictionary entry{{"mainSceneId", sId}, {"sceneIdentifier", identifier}, {identifier, identifier}};
    if (transitionFrames)
        entry["sceneTansitionsInfo"] = Value::Dictionary{
            {"tansitionsSceneId", 8}, {"fpsTotal", transitionFrames}, {"sceneTansitionsType", type}};
    return entry;
}

namespace {

Value frames(int start, int end) { return Value::Dictionary{{"sartFps", start}, {"endFps", end}}; }

}  // namespace

Value range(int start, int end) { return Value::Dictionary{{"startFps", start}, {"endFps", end}}; }

Value childStartingAt(int start) {
    Value::Dictionary child = quad("child", "photo");
    child["FpsInfo"] = range(start, 5);
    return child;
}

namespace {

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

}  // namespace

std::function<void(SmallTemplate&)> image(const std::string& path) {
    return texture({{"textureType", "image"}, {"texture", path}});
}

namespace {

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

}  // namespace

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
        {"NoSurface", "object3D[1]", "\"MeshFileInfo\" is missing", node([](Value::Dictionary& dictionary) {
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
        {"PathBeyondAllNumbers", "object3D[1].TransformArray[0].endTranslate", "\"2147483647\"",
         pathTo("99999999999999999999,0,0")},
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
        {"FilterOfAnUnknownName", "object3D[1].FrameInfo.filters[0].filter", "did you mean \"sepia\"?",
         frameFilters({Value::Dictionary{{"filter", "sepai"}}})},
        {"NumberThatAFilterDoesNotHave", "object3D[1].FrameInfo.filters[1].AnimationInfo[0].number",
         "did you mean \"radius\"?",
         frameFilters({Value::Dictionary{{"filter", "grey"}}, movingFilter("blur", "radios", 0.1)})},
        {"NumberThatLeavesItsRange", "object3D[1].FrameInfo.filters[0].AnimationInfo[0].end",
         "from 0 to 0.25", frameFilters({movingFilter("blur", "radius", 3)})},
        {"TooManyFilters", "object3D[1].FrameInfo.filters", "only the first 8",
         frameFilters(Value::Array(9, Value::Dictionary{{"filter", "grey"}}))},
        {"ColourTableThatIsNone", "object3D[1].FrameInfo.filters[0].table", "line 1 is no colour",
         frameFilters(
             {Value::Dictionary{{"filter", "film"}, {"table", "$(currentScenePlistROOT)/scene.plist"}}})},
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

namespace {

constexpr const char* kTrackKey = "object3D[1].TrackInfo.trackFliePath";
constexpr const char* kCopyingShader =
    "uniform sampler2D videoFrame; void main() { gl_FragColor = texture2D(videoFrame, vec2(0.5)); }";

std::function<void(SmallTemplate&)> mask(const Value::Dictionary& info) {
    return [info](SmallTemplate& small) {
        nodeWith("type", "QVQuadMaskObject3D")(small);
        nodeWith("MaskInfo", info)(small);
    };
}

/// A track of one frame, changed and stored without the judgement of "encrypt-track".
std::function<void(SmallTemplate&)> track(const std::string& right, const std::string& wrong) {
    return [=](SmallTemplate& small) {
        nodeWith("type", "QVQuadTrackObject3D")(small);
        nodeWith("TrackInfo", Value::Dictionary{{"trackFliePath", "$(currentScenePlistROOT)/t.xml"}})(small);
        std::string plain = "<CornerPinInfoDoc><Object><Frame";
        for (const std::string corner : {"topleft", "topright", "bottomleft", "bottomright"})
            plain += " " + corner + "x=\"0.5\" " + corner + "y=\"0.5\"";
        plain += "/></Object></CornerPinInfoDoc>";
        plain.replace(plain.find(right), right.size(), wrong);
        small.more = [plain](const fs::path& at) {
            const auto key = platform::cipherKeyFromText("multiscene corner-pin tracks, 1");
            const auto stored = platform::encryptAES256({plain.begin(), plain.end()}, key);
            std::ofstream(at / "t.xml")
                .write(reinterpret_cast<const char*>(stored.data()),
                       static_cast<std::streamsize>(stored.size()));
        };
    };
}

std::function<void(SmallTemplate&)> curve(int samples, const Value::Array& points) {
    return nodeWith("BezierArray", Value::Array{Value::Dictionary{{"bezierIdentifier", "30001"},
                                                                  {"interpolationTotal", samples},
                                                                  {"interpolationXYZ", 21},
                                                                  {"controlPoints", points}}});
}

/// Letters instead of the photo, with a box that they may shrink to, and one motion.
std::function<void(SmallTemplate&)> letters(Value::Dictionary font, Value::Dictionary motion) {
    return node([=](Value::Dictionary& dictionary) {
        Value::Dictionary text{{"textString", "words"}, {"lineLength", 9}, {"smallestFontSize", 0.5}};
        for (const auto& [key, value] : font) text[key] = value;
        Value::Dictionary item{{"sartFps", 0}, {"endFps", 3}};
        for (const auto& [key, value] : motion) item[key] = value;
        dictionary["type"] = "QVGLFont2DTextureFontObject3D";
        dictionary["TextureFontInfo"] = text;
        dictionary["LetterAnimation"] = Value::Array{item};
        for (const char* key : {"TextureInfo", "QuadInfo"}) dictionary.erase(key);
    });
}

Value overlapping() {
    return Value::Dictionary{{"transformType", "translate"}, {"fpsStart", 0}, {"fpsEnd", 3}};
}

std::function<void(SmallTemplate&)> placedAt(const std::string& place) {
    return nodeWith("TransformArray", Value::Array{frames(0, 5).with("startTranslate", place)});
}

/// A film of 6 pictures at `rate`, played by the picture or the mask of a node at `playedAt`.
std::function<void(SmallTemplate&)> film(const std::string& where, int rate, int playedAt) {
    return [=](SmallTemplate& small) {
        const Value::Dictionary info{{"textureType", "mp4Video"},
                                     {"texture", "$(currentScenePlistROOT)/film.mp4"},
                                     {"videoFps", playedAt}};
        if (where == "MaskInfo")
            mask(info)(small);
        else
            texture(info)(small);
        small.more = [rate](const fs::path& at) { writeVideo(at / "film.mp4", 6, rate); };
    };
}

std::function<void(SmallTemplate&)> soundAt(int start) {
    return [start](SmallTemplate& small) {
        nodeWith("FpsInfo", range(2, 4))(small);
        nodeWith("ComponentsInfo",
                 Value::Array{Value::Dictionary{{"type", "QVObject3DSoundSourceComponent"},
                                                {"startFps", start},
                                                {"endFps", 5},
                                                {"audioVolume", 1},
                                                {"audioFilePath", "$(currentScenePlistROOT)/s.wav"}}})(small);
        small.more = [](const fs::path& at) { writeSound(at / "s.wav", 0.2); };
    };
}

}  // namespace

/// Faults that once were drawn wrongly without a word.
std::vector<Fault> silentFaults() {
    const auto firstFreeEase = static_cast<int64_t>(easeTable().size());
    return {
        {"MaskThatNobodyDraws", "object3D[1].MaskInfo.textureMapKey", "\"card\"",
         mask({{"textureType", "RTTTexture"}, {"textureMapKey", "card"}})},
        {"MaskOfASceneOutsideATransition", "object3D[1].MaskInfo.textureType", "transition scene",
         mask({{"textureType", "currentSceneRenderTexture"}})},
        {"TrackWithAMisspeltCorner", kTrackKey, "has no \"topleftx\"", track("topleftx=", "toplefx=")},
        {"TrackWithADecimalComma", kTrackKey, "\"toprighty\" is \"0,5\"",
         track("toprighty=\"0.5\"", "toprighty=\"0,5\"")},
        {"TrackWithoutANumber", kTrackKey, "\"bottomleftx\" is \"nan\"",
         track("bottomleftx=\"0.5\"", "bottomleftx=\"nan\"")},
        {"TrackWithAnEmptyCorner", kTrackKey, "\"bottomrighty\" is \"\"",
         track("bottomrighty=\"0.5\"", "bottomrighty=\"\"")},
        {"VariableThatIsNotListed", "Uniforms", "\"speed\"",
         shader("uniform mediump float speed; void main() { gl_FragColor = vec4(speed); }")},
        {"PictureThatIsNotTheFirst", "Uniforms", "\"second\"",
         shader("uniform sampler2D second; void main() { gl_FragColor = texture2D(second, vec2(0.5)); }")},
        {"ShaderThatDarkensEdges", "object3D[1].FpsInfo.customShaderPath", "soft edges become dark",
         [](SmallTemplate& small) {
             shader(kCopyingShader)(small);
             texture({{"textureType", "text2d"}, {"textString", "title"}})(small);
         }},
        {"ShaderThatDarkensAPicture", "object3D[1].FpsInfo.customShaderPath", "soft edges become dark",
         [](SmallTemplate& small) {
             shader(kCopyingShader)(small);
             image("$(currentScenePlistROOT)/soft.png")(small);
             small.more = [](const fs::path& at) {
                 platform::writePng(at / "soft.png", platform::Bitmap(16, 16));
             };
         }},
        {"NoSuchEase", "object3D[1].TransformArray[0].translateEase", "no ease 99",
         nodeWith("TransformArray", Value::Array{frames(0, 3).with("translateEase", 99)})},
        {"NoSuchEaseOfAKey", "object3D[1].AnimationInfo[0].ease", "no ease " + std::to_string(firstFreeEase),
         nodeWith("AnimationInfo", Value::Array{frames(0, 3).with("ease", firstFreeEase)})},
        {"NoSuchLetterUnit", "object3D[1].LetterAnimation[0].letterUnit", "did you mean \"word\"",
         letters({}, {{"letterUnit", "wrod"}})},
        {"LetterMotionWithoutLength", "object3D[1].LetterAnimation[0]", "at least two frames",
         letters({}, {{"endFps", 0}})},
        {"LettersThatComeTooLate", "object3D[1].LetterAnimation[0].sartFps", "it never happens",
         letters({}, {{"sartFps", 500}, {"endFps", 600}})},
        {"LettersOnAMissingCurve", "object3D[1].LetterAnimation[0].ease", "no \"BezierArray\"",
         letters({}, {{"ease", 30007}})},
        {"LettersThatShrinkToNothing", "object3D[1].TextureFontInfo.smallestFontSize",
         "no effect without \"lineLength\"", letters({{"lineLength", 0}}, {})},
        {"LettersThatGrow", "object3D[1].TextureFontInfo.smallestFontSize", "is more than \"fontSize\"",
         letters({{"smallestFontSize", 3}}, {})},
        {"LettersTooFarApart", "object3D[1].TextureFontInfo.letterSpacing", "from -0.5 to 3",
         letters({{"letterSpacing", 4}}, {})},
        {"SpacingThatIsNoNumber", "object3D[1].TextureFontInfo.lineSpacing", "not a number",
         letters({{"lineSpacing", "nan"}}, {})},
        {"CutEdgesOfFlatLetters", "object3D[1].TextureFontInfo.bevelWidth", "unknown key",
         letters({{"bevelWidth", 1}}, {})},
        {"NoSuchEaseOfAMotion", "object3D[1].MutableTransformArray[0].iTranslate", "no ease 29999",
         nodeWith("MutableTransformArray", Value::Array{overlapping().with("iTranslate", 29999)})},
        {"NoSuchEaseOfTheCamera", "Camera.LookAtAnimation[0].moveTargetPointEase", "no ease 40",
         [](SmallTemplate& small) {
             small.camera["LookAtAnimation"] =
                 Value::Array{frames(0, 3).with("isMoveTargetPoint", 1).with("moveTargetPointEase", 40)};
         }},
        {"TextureOnACurve", "object3D[1].TransformArray[0].rotateEase", "a texture follows no curve",
         [](SmallTemplate& small) {
             curve(10, {"0,0", "1,1"})(small);
             nodeWith("TransformArray", Value::Array{frames(0, 3)
                                                         .with("rotateEase", 30001)
                                                         .with("endTextureOrigin", "1,0")
                                                         .with("startTextureSize", "1,1")
                                                         .with("endTextureSize", "2,2")})(small);
         }},
        {"EndlessCurve", "object3D[1].BezierArray[0].controlPoints[1]", "\"inf,1\" is no point",
         curve(10, {"0,0", "inf,1"})},
        {"CurveWithoutANumber", "object3D[1].BezierArray[0].controlPoints[0]", "\"nan,nan\" is no point",
         curve(10, {"nan,nan", "1,1"})},
        {"PlaceWithoutANumber", "object3D[1].TransformArray[0].startTranslate", "text of 3 numbers",
         nodeWith("TransformArray", Value::Array{frames(0, 3).with("startTranslate", "nan,0,0")})},
        {"EndlessNumber", "object3D[1].QuadInfo.modelWidth", "\"inf\", not a number",
         nodeWith("QuadInfo", Value::Dictionary{{"modelWidth", "inf"}, {"modelHeight", 3}})},
        {"BeforeTheCamera", "object3D[1]", "the camera sees z from -2500 to 1000", placedAt("0,0,1100")},
        {"BeyondTheCamera", "object3D[1]", "lies at z -2600", placedAt("0,0,-2600")},
        {"MovesBeyondTheCamera", "object3D[1]", "lies at z -2600",
         nodeWith("TransformArray",
                  Value::Array{
                      frames(0, 5).with("startTranslate", "0,0,-2600").with("endTranslate", "9,0,-3000")})},
        {"ChildBeyondTheCamera", "object3D[1].childNode[0]", "lies at z -2600",
         node([](Value::Dictionary& dictionary) {
             const auto at = [](const char* place) {
                 return Value::Array{frames(0, 5).with("startTranslate", place)};
             };
             Value::Dictionary child = quad("child", "photo");
             child["TransformArray"] = at("0,0,-1300");
             dictionary["TransformArray"] = at("0,0,-1300");
             dictionary["childNode"] = Value::Array{child};
         })},
        {"AtTheEyeOfAPerspective", "object3D[1]", "the camera sees z from -2500 to -1",
         [](SmallTemplate& small) {
             small.camera = {{"type", "QVFrustumCamera"}, {"FrustumFov", 60}};
         }},
        {"AtTheEyeOfItsOwnCamera", "object3D[1]", "the camera sees z from -2500 to -1",
         nodeWith("CameraInfo", Value::Dictionary{{"type", "QVFrustumCamera"}, {"FrustumFov", 60}})},
        {"BoxBeforeTheCamera", "object3D[1]", "lies at z 1050",
         [](SmallTemplate& small) {
             nodeWith("type", "QVCubeObject3D")(small);
             nodeWith(
                 "MeshInfo",
                 Value::Dictionary{
                     {"modelWidth", 9}, {"modelHeight", 9}, {"modelDepth", 100}, {"anchorZ", 1100}})(small);
             node([](Value::Dictionary& dictionary) { dictionary.erase("QuadInfo"); })(small);
         }},
        {"FilmOfAnotherRate", "object3D[1].TextureInfo.videoFps", "but the template has 10",
         film("TextureInfo", 5, 5)},
        {"FilmPlayedAtAnotherRate", "object3D[1].TextureInfo.texture", "has 5 frames a second",
         film("TextureInfo", 5, 10)},
        {"MaskFilmOfAnotherRate", "object3D[1].MaskInfo.videoFps", "but the template has 10",
         film("MaskInfo", 5, 5)},
        {"MaskFilmThatIsNone", "object3D[1].MaskInfo.texture", "red.png",
         mask({{"textureType", "mp4Video"},
               {"texture", "$(currentScenePlistROOT)/red.png"},
               {"videoFps", 10}})},
        {"SoundBeforeItsNode", "object3D[1].ComponentsInfo[0].startFps", "only there from frame 2",
         soundAt(1)},
        {"SoundAfterItsNode", "object3D[1].ComponentsInfo[0].startFps", "only there to frame 4", soundAt(5)},
    };
}

}  // namespace multiscene::test
