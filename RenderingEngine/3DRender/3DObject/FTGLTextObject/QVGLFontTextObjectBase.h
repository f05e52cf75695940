#pragma once

#include <vector>

#include "animation/AnimatedNumber.h"
#include "core/QVObject3DTransformBase.h"
#include "painter/Painter.h"
#include "platform/font/Letters.h"

namespace multiscene {

extern const KeyTable fontObjectKeys;

/// The base of texts whose letters stand in the scene, in its units, with the middle of their lines at the
/// node's origin. The letters are made at the node's first frame and given up at its last.
class QVGLFontTextObjectBase : public QVObject3DTransformBase {
  public:
    void rendInfoWithDic(const platform::Value& info) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;

    float renderAlpha() const { return renderAlpha_.value(); }  ///< 0 transparent to 1

  protected:
    bool isCompletedAt(int64_t frame) const override { return visible() && isDueAt(frame); }
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override { renderAlpha_.updateData(frame, *this); }
    /// The letters that could not be made.
    virtual std::vector<char32_t> makeLetters(const platform::LetterText& text) = 0;
    virtual void drawLetters(Painter& painter) = 0;
    virtual void dropLetters() = 0;

    /// Red, green, blue, and the alpha of the text and of the node.
    glm::vec4 shownColor() const;
    static std::vector<MeshVertex> verticesOf(const std::vector<platform::LetterVertex>& letters);
    void draw(Painter& painter) final {
        if (hasLetters_) drawLetters(painter);
    }

  private:
    platform::LetterText letterText(Playback& playback) const;

    platform::Value fontInfo_;
    platform::Color textColor_;
    AnimatedNumber renderAlpha_{1};
    bool hasLetters_ = false;
};

}  // namespace multiscene
