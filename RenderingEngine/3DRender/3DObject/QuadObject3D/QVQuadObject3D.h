#pragma once

#include <array>

#include "core/GLESUtils/DrawQuad.h"
#include "core/GLESUtils/FrameEdges.h"
#include "core/QVObject3DTextureBase.h"
#include "opengl2.0/Shader.h"

namespace multiscene {

extern const KeyTable quadKeys;

/// How a quad lies in its box.
enum class QuadContentMode : int32_t {
    Stretch = 0,  ///< fills the box; any other number does the same
    Fit = 1,      ///< inside the box, keeping the picture's proportions
    Fill = 2,     ///< covers the box, keeping the picture's proportions; overhangs it
};

/// A textured rectangle in 3D. Its box is set at configuration and fitted to the picture when that has been
/// loaded. Shaders are made at the first draw and shared by all quads.
class QVQuadObject3D : public QVObject3DTextureBase {
  public:
    using Corners = std::array<float, 12>;  ///< x, y, z of bottom left, bottom right, top right, top left

    const char* className() const override { return "QVQuadObject3D"; }

    void rendInfoWithDic(const platform::Value& info) override;
    void updateData(const platform::CMTime& time) override;
    void renderingBeforeConfig(const platform::CMTime& time) override;
    void render(const platform::CMTime& time) override;
    void renderComplete(const platform::CMTime& time) override;
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
    void renderBgVideo(const platform::CMTime& time);

    float modelWidth() const { return modelWidth_; }     ///< model units
    float modelHeight() const { return modelHeight_; }   ///< model units
    const glm::vec3& anchor() const { return anchor_; }  ///< the quad's centre in model space
    int32_t quadObject3DContentMode() const { return contentMode_; }
    int32_t quadObject3DBackgroundRenderMode() const { return backgroundRenderMode_; }
    const Corners& squareVertices() const { return squareVertices_; }
    const Corners& squareBgVertices() const { return squareBgVertices_; }

    /// Draws the quad with any shader of a textured quad. Uniforms of its own are set before, with the shader
    /// in use. Draws nothing without a texture.
    void drawWith(Shader& shader);
    /// The same for shaders that know the place on the quad: they are given texture coordinates from (0, 0)
    /// at the top left to (1, 1), whatever the material's are, and the texture matrix makes up for it.
    void drawByPlaceWith(Shader& shader);
    /// From the place on the quad, (0, 0) at its top left and (1, 1) at its bottom right, to the texture
    /// coordinates that belong to these of the corners.
    static glm::mat4 coordinatesFromPlace(const float* textureCoordinates);

  protected:
    struct DrawnTexture {
        uint32_t texture = 0;
        bool isPremultiplied = false;
        PictureAlpha alpha = {};
        bool mayRepeat = false;
    };

    /// What is drawn: the material's texture, unless a subclass brings its own.
    virtual DrawnTexture drawnTexture() const;
    /// The shader description in the program's resources, without its extension.
    virtual const char* shaderName() const { return "normal_renderShader"; }
    /// Sets what the shader takes besides the shared uniforms; it is in use.
    virtual void setUniforms(Shader& shader) { shader.setUniform("aplae", 1.0f); }
    virtual void drawQuad(Shader& shader) { drawWith(shader); }
    /// What the class animates, for traces.
    virtual void addTraceValues(platform::Value::Dictionary&) const {}
    /// False where the corners, or the part of the picture that is seen, come from elsewhere.
    virtual bool liesInItsBox() const { return true; }

  private:
    std::shared_ptr<Shader> chosenShader() const;
    Corners cornersOfSize(float width, float height) const;
    void drawCorners(Shader& shader, const QuadCorners& corners, const glm::mat4& textureMatrix);

    float modelWidth_ = 0, modelHeight_ = 0;
    glm::vec3 anchor_{0};
    int32_t contentMode_ = 0, backgroundRenderMode_ = 0;
    Corners squareVertices_{}, squareBgVertices_{};
};

}  // namespace multiscene
