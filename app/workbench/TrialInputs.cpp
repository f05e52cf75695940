#include "app/workbench/TrialInputs.h"

#include <algorithm>
#include <functional>

#include "app/Model/QVUserTextInputModel.h"
#include "platform/base/File.h"
#include "platform/base/Paths.h"
#include "platform/text/TextRasterizer.h"

namespace multiscene {

namespace fs = std::filesystem;
using platform::Value;

namespace {

constexpr int64_t kText = 0, kPhoto = 1;  // types of inputs
constexpr int64_t kRoomOfUnlimited = 60;  // characters
constexpr const char* kLongWords[] = {"Wonderful", "moments", "with", "everybody", "we", "love"};

struct Script {
    const char *name, *words;
};
constexpr Script kScripts[] = {
    {"chinese", "愿你今天阳光灿烂，心中充满温暖与喜悦"},
    {"japanese", "きょうも素敵な一日になりますように"},
    {"arabic", "أتمنى لك يومًا مشرقًا مليئًا بالفرح"},
    {"hebrew", "שיהיה לך יום מואר ומלא שמחה"},
    {"hindi", "आपका दिन खुशियों से भरा हो"},
    {"thai", "ขอให้วันนี้เป็นวันที่สดใสและมีความสุข"},
    {"emoji", "🎉👩‍👩‍👧‍👦❤️🌈👋🏽🎂🥳🇯🇵✨🐶"},
};
constexpr const char* kPhotos[] = {"panorama", "portrait", "tiny", "transparent"};

int64_t roomOf(const QVUserInputModelBase& input) {
    const auto* text = dynamic_cast<const QVUserTextInputModel*>(&input);
    return text && text->maxLenght() > 0 ? text->maxLenght() : kRoomOfUnlimited;
}

/// Words up to exactly so many letters.
std::string longText(int64_t letters) {
    std::string text;
    for (size_t word = 0; std::ssize(text) < letters; ++word)
        text += (word > 0 ? " " : "") + std::string(kLongWords[word % std::size(kLongWords)]);
    text.resize(static_cast<size_t>(letters));
    if (text.back() == ' ') text.back() = '!';
    return text;
}

class Trials {
  public:
    Trials(const UserInputList& inputs, const fs::path& sampleFile) : inputs_(inputs) {
        if (platform::isFile(sampleFile)) sample_.mediaFile = sampleFile;
        trials_.push_back({"sample", sample_});
        trials_.push_back({"empty", {}});
    }

    void add(const char* name, int64_t type,
             const std::function<Value(const QVUserInputModelBase&)>& valueOf) {
        Value::Dictionary values;
        for (const auto& input : inputs_)
            if (input->userInputType() == type) values[input->renderMapKey()] = valueOf(*input);
        if (values.empty()) return;
        JobInputs given = sample_;
        given.media = Value(std::move(values));
        trials_.push_back({name, std::move(given)});
    }

    std::vector<TrialInputs> take() { return std::move(trials_); }

  private:
    const UserInputList& inputs_;
    JobInputs sample_;
    std::vector<TrialInputs> trials_;
};

}  // namespace

std::vector<TrialInputs> trialsOf(const UserInputList& inputs, const fs::path& sampleFile) {
    Trials trials(inputs, sampleFile);
    trials.add("longest", kText, [](const auto& input) { return longText(roomOf(input)); });
    for (const Script& script : kScripts)
        trials.add(script.name, kText, [&](const auto& input) {
            return platform::truncateText(script.words, static_cast<int>(roomOf(input)));
        });
    for (const char* photo : kPhotos)
        trials.add(photo, kPhoto, [&](const auto&) {
            return (platform::resourcesFolder() / "trial" / photo).string() + ".png";
        });
    return trials.take();
}

}  // namespace multiscene
