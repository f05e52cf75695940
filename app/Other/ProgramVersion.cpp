#include "app/Other/ProgramVersion.h"

#include "platform/base/Value.h"

namespace multiscene {

std::string programVersion() { return MULTISCENE_VERSION; }

float programVersionNumber() { return platform::Value(MULTISCENE_VERSION).floatValue(); }

}  // namespace multiscene
