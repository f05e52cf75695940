#pragma once

#include <optional>
#include <span>
#include <vector>

#include "animation/AnimatedNumber.h"
#include "animation/LetterAnimation.h"
#include "core/QVObject3DTransformBase.h"
#include "painter/Painter.h"
#include "platform/font/Letters.h"

namespace multiscene {

extern const KeyTable fontObjectKeys;

/// Letters as they are drawn: triangles, those of one part in one piece after the other.
struct DrawnLetters {
    std::vector<MeshVertex> corners;
    std::vector<platform::LetterLayer::Piece> pieces;

    static DrawnLetters of(const platform::LetterLayer& layer);
};

/// The base of texts whose letters stand in the scene, in its units. The letters are made at the node's first
/// frame and given up at its last; in between nothing is laid out: letters that move have poses.
class QVGLFontTextObjectBase : public QVObject3DTransformBase {
  public:
    void rendInfoWithDic(const platform::Value& info) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;

    /// Makes the letters of another text that the user has given, if they are there. `frame` is the one that
    /// is shown.
    void reloadLetters(int64_t frame);
    const platform::Value& fontInfo() const { return fontInfo_; }

    float renderAlpha() const { return renderAlpha_.value(); }  ///< 0 transparent to 1

  protected:
    /// What all letters made have besides their shapes.
    struct Made {
        platform::LetterBlock block;
        std::vector<platform::LetterPart> parts;
        std::vector<char32_t> leftOut;  ///< those that could not be made
    };

    bool isCompletedAt(int64_t frame) const override { return visible() && isDueAt(frame); }
    void updateDue(const Tick& tick) override;
    void completeDue(const Tick& tick) override;
    void animationWithInfo(const platform::Value::Array& keys) override;
    void updateKeyFrames(int64_t frame) override { renderAlpha_.updateData(frame, *this); }
    virtual Made makeLetters(const platform::LetterText& text) = 0;
    virtual void drawLetters(Painter& painter) = 0;
    virtual void dropLetters() = 0;

    /// Red, green, blue, and the alpha of the text and of the node.
    glm::vec4 shownColor() const;
    /// Calls `visit` with corners that are drawn together and their pose; what cannot be seen is left out.
    template <typename Visit>
    void forEachRun(const DrawnLetters& letters, Visit visit) const {
        for (size_t first = 0; first < letters.pieces.size();) {
            const LetterPose& pose = poseOf(letters.pieces[first]);
            size_t end = first + 1;
            while (end < letters.pieces.size() && poseOf(letters.pieces[end]) == pose) ++end;
            const auto& last = letters.pieces[end - 1];
            const size_t from = letters.pieces[first].first;
            if (pose.opacity > 0)
                visit(std::span(letters.corners).subspan(from, last.first + last.count - from), pose);
            first = end;
        }
    }
    /// From the letters' own place to the node's.
    glm::mat4 placed(const LetterPose& pose) const;
    void draw(Painter& painter) final {
        if (hasLetters_) drawLetters(painter);
    }

  private:
    void loadLetters(Playback& played);
    const LetterPose& poseOf(const platform::LetterLayer::Piece& piece) const {
        return piece.part < poses_.size() ? poses_[piece.part] : still_;
    }

    platform::Value fontInfo_;
    platform::Color textColor_;
    AnimatedNumber renderAlpha_{1};
    LetterAnimation animation_;
    std::vector<LetterPose> poses_;  ///< of the parts; none: all stand still
    LetterPose still_;
    glm::vec3 offset_{0};
    bool hasLetters_ = false;
};

}  // namespace multiscene
