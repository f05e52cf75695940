#include "app/program/ProgramVersion.h"

#include <sstream>

#include "platform/base/Error.h"
#include "platform/base/Value.h"

namespace multiscene {

std::string programVersion() { return MULTISCENE_VERSION; }

float programVersionNumber() { return platform::Value(MULTISCENE_VERSION).floatValue(); }

std::string versionsText(float minVersion) {
    std::ostringstream text;
    text << minVersion << " is needed, this is " << programVersion();
    return text.str();
}

void requireProgramVersion(float minVersion, const std::string& templateName) {
    if (minVersion > programVersionNumber())
        throw platform::Error(platform::ErrorKind::Failed,
                              "needs a newer version of the program: " + versionsText(minVersion),
                              templateName);
}

}  // namespace multiscene
