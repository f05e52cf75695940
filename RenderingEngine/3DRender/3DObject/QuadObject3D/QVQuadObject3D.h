#pragma once

#include <array>

#include "core/QVObject3DTextureBase.h"
#include "painter/Draw.h"

namespace multiscene {

extern const KeyTable quadKeys;

/// How a quad lies in its box.
enum class QuadContentMode : int32_t {
    Stretch = 0,  ///< fills the box; any other number does the same
    Fit = 1,      ///< inside the box, keeping the picture's proportions
    Fill = 2,     ///< covers the box, keeping the picture's proportions; overhangs it
};

/// A textured rectangle in 3D. Its box is set at configuration and fitted to the picture when that has been
/// loaded.
class QVQuadObject3D : public QVObject3DTextureBase {
  public:
    using Corners = std::array<float, 12>;  ///< x, y, z of bottom left, bottom right, top right, top left

    const char* className() const override { return "QVQuadObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void renderingBeforeConfig(Painter& painter, const Tick& tick) override;
    void addTraceFields(platform::Value::Dictionary& fields) override;
    ShownBox largestShownBox() override;
    void loadTextureFinsh() override { computeVertices(); }

    /// Reads "QuadInfo".
    void modelBaseInfo(const platform::Value& info);
    /// Sets both sets of corners to the whole box.
    void initVerticesAndBgShader();
    /// Fits the quad to its picture; without a picture the corners stay.
    void computeVertices();
    /// Replaces the corners, as tracked quads do on every frame. Glossary: "force refresh".
    void forceRefushSquareVertices(const Corners& corners) { squareVertices_ = corners; }
    /// Draws the blurred picture over the whole box.
    void renderBgVideo(Painter& painter, const Tick& tick);

    float modelWidth() const { return modelWidth_; }     ///< model units
    float modelHeight() const { return modelHeight_; }   ///< model units
    const glm::vec3& anchor() const { return anchor_; }  ///< the quad's centre in model space
    int32_t quadObject3DContentMode() const { return contentMode_; }
    const Corners& squareVertices() const { return squareVertices_; }

    /// Draws the quad so.
    void drawWith(Painter& painter, Look look);

  protected:
    /// What is drawn: the material's texture, unless a subclass brings its own.
    virtual Texture* drawnTexture() const { return texture(); }
    /// Whether it can be repeated where coordinates leave it; videos and render targets cannot.
    virtual bool mayRepeat() const;
    /// What is done to the picture before.
    virtual std::shared_ptr<const FilterChain> filters() const { return nullptr; }
    /// How it is drawn.
    virtual Look look() const { return PlainLook{}; }
    void draw(Painter& painter) override { drawWith(painter, look()); }
    /// What the class animates, for traces.
    virtual void addTraceValues(platform::Value::Dictionary&) const {}
    /// False where the corners, or the part of the picture that is seen, come from elsewhere.
    virtual bool liesInItsBox() const { return true; }

  private:
    Corners cornersOfSize(float width, float height) const;
    void drawCorners(Painter& painter, const Corners& corners, Look look,
                     std::shared_ptr<const FilterChain> filters = nullptr);

    float modelWidth_ = 0, modelHeight_ = 0;
    glm::vec3 anchor_{0};
    int32_t contentMode_ = 0, backgroundRenderMode_ = 0;
    Corners squareVertices_{}, squareBgVertices_{};
};

}  // namespace multiscene
