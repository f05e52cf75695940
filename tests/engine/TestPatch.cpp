#include <epoxy/gl.h>

#include <array>

#include "core/QVObject3DFpsBase.h"
#include "core/QVScene3D.h"
#include "format/NodeTypes.h"
#include "other/QVUtil.h"
#include "painter/Painter.h"
#include "tests/engine/PlayFixture.h"

namespace multiscene {

/// A rectangle of one colour.
class TestPatch : public QVObject3DFpsBase {
  public:
    const char* className() const override { return "TestPatch"; }

    void rendInfoWithDic(const platform::Value& info) override {
        QVObject3DFpsBase::rendInfoWithDic(info);
        color_ = vectorOf<4>(info["color"]);
        flickers_ = info.boolean("flickers");
        rectangle_ = info.has("rectangle") ? vectorOf<4>(info["rectangle"]) : glm::vec4(0, 0, 16384, 16384);
    }
    void updateDue(const Tick& tick) override {
        QVObject3DFpsBase::updateDue(tick);
        frame_ = tick.frame;
    }

  protected:
    void draw(Painter& painter) override {
        fill(painter, rectangle_, 1);
        for (int64_t tile = 0; flickers_ && tile < 64; ++tile) {
            const auto x = static_cast<float>(tile % 8 * 8), y = static_cast<float>(tile / 8 * 8);
            fill(painter, {x, y, 8, 8}, static_cast<float>((frame_ * 31 + tile * 17) % 11) / 10);
        }
    }

  private:
    void fill(Painter& painter, const glm::vec4& rectangle, float light) const {
        const auto owner = scene();
        const float left = rectangle.x / owner->halfWidth() - 1,
                    bottom = rectangle.y / owner->halfHeight() - 1;
        const float right = left + rectangle.z / owner->halfWidth(),
                    top = bottom + rectangle.w / owner->halfHeight();
        painter.draw(QuadDraw{.corners = {left, bottom, 0, right, bottom, 0, right, top, 0, left, top, 0},
                              .look = ColorLook{.color = glm::vec4(glm::vec3(color_) * light, color_.a)},
                              .state = {}});
    }

    int64_t frame_ = 0;
    glm::vec4 color_{0}, rectangle_{0};
    bool flickers_ = false;
};

constexpr KeyTable testPatchKeys{"TestPatch", "A coloured rectangle.", &fpsBaseKeys, {}};
QV_REGISTER_NODE_TYPE(TestPatch, testPatchKeys);

namespace testing {

Value patch(const std::string& color, const std::string& rectangle, Dictionary more) {
    more["type"] = "TestPatch";
    more["color"] = color;
    if (!rectangle.empty()) more["rectangle"] = rectangle;
    return Value(std::move(more));
}

std::map<std::string, int> glCensus() {
    constexpr GLuint highestName = 2048;  // names are given from 1 on
    const std::array<std::pair<const char*, GLboolean (*)(GLuint)>, 6> kinds{{
        {"textures", [](GLuint name) { return glIsTexture(name); }},
        {"buffers", [](GLuint name) { return glIsBuffer(name); }},
        {"framebuffers", [](GLuint name) { return glIsFramebuffer(name); }},
        {"renderbuffers", [](GLuint name) { return glIsRenderbuffer(name); }},
        {"programs", [](GLuint name) { return glIsProgram(name); }},
        {"shaders", [](GLuint name) { return glIsShader(name); }},
    }};
    std::map<std::string, int> census;
    for (const auto& [kind, exists] : kinds)
        for (GLuint name = 1; name <= highestName; ++name)
            if (exists(name)) ++census[kind];
    return census;
}

}  // namespace testing
}  // namespace multiscene
