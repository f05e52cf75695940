#pragma once

#include <memory>
#include <vector>

#include "app/Model/QVUserInputModelBase.h"

namespace multiscene {

/// The inputs of a template in its own order.
using UserInputList = std::vector<std::shared_ptr<const QVUserInputModelBase>>;

/// One model for every element of "userInputArray" that has a known type; the others are skipped.
UserInputList userInputsOf(const platform::Value& wechartTempletInfo);

}  // namespace multiscene
