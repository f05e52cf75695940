#include "app/Model/UserInputList.h"

namespace multiscene {

UserInputList userInputsOf(const platform::Value& wechartTempletInfo) {
    UserInputList inputs;
    for (const platform::Value& element : wechartTempletInfo.array("userInputArray"))
        if (auto input = QVUserInputModelBase::inputModelWithDic(element)) inputs.push_back(std::move(input));
    return inputs;
}

}  // namespace multiscene
