#include "app/check/SceneFormatReference.h"
#include "cli/Commands.h"

namespace multiscene::cli {

namespace {

class SceneFormatCommand : public Command {
  public:
    void declare(Arguments& arguments) override {
        arguments.example("multiscene scene-format > scene-format.md");
    }
    bool isResultPrinted() const override { return true; }

    int run(Console& console, std::stop_token) override {
        console.write(sceneFormatReference());
        return 0;
    }
};

}  // namespace

std::unique_ptr<Command> makeSceneFormatCommand() { return std::make_unique<SceneFormatCommand>(); }

}  // namespace multiscene::cli
