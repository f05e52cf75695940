// What nodes draw, as values: a painter may draw them at once, or gather a frame's and draw them later, each
// as often as it likes.
#pragma once

#include <array>
#include <cstdint>
#include <glm/glm.hpp>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "core/GLESUtils/Geometry.h"
#include "core/GLESUtils/Texture.h"
#include "opengl2.0/UniformValue.h"
#include "pictureFilter/Filter.h"

namespace multiscene {

class Shader;

/// Factors as GL numbers them. Alpha always gathers by (ONE, ONE_MINUS_SRC_ALPHA), so that what is drawn into
/// a texture keeps a usable alpha.
struct BlendFunction {
    uint32_t source = 0x0302, destination = 0x0303;  ///< SRC_ALPHA, ONE_MINUS_SRC_ALPHA

    bool operator==(const BlendFunction&) const = default;
};

/// What a node's bracket sets for all that is drawn within it.
struct DrawState {
    BlendFunction blend;
    bool depthTest = false;
};

// --- how a quad looks ----------------------------------------------------------------------------------
// "Place" is where a point lies on the quad: (0, 0) at its upper left corner, (1, 1) at its lower right one.

/// The picture with an opacity, 0 to 1.
struct PlainLook {
    float opacity = 1;
};

/// The picture where a second one is bright; that one lies on the quad, however the texture matrix moves the
/// picture.
struct MaskLook {
    Texture* mask = nullptr;
    std::array<float, 8> maskCoordinates{};  ///< of the corners
    bool countsAlpha = true;                 ///< where the mask is transparent it hides too
    float opacity = 1;
};

/// An opacity that changes between two places along an axis.
struct GradientLook {
    glm::vec2 start{0}, end{0};  ///< place along the axis, opacity there
    int32_t interpolation = 0;   ///< 0 to the right, 1 down, 2 and 3 the same with soft ends
};

/// The picture through an image filter, within a border, with round corners.
struct FilterLook {
    static constexpr float borderAlone = 1;  ///< a border so wide hides the picture, which need not be there

    int type = 0;            ///< 0 none, 1 grey, 2 sepia, 3 negative, 4 mosaic, 5 wave
    float range = 1;         ///< how much of the filter shows, 0 to 1
    float pixelSize = 1;     ///< of a mosaic's tile, pixels of the picture
    float borderWidth = 0;   ///< part of the quad's shorter side
    float cornerRadius = 0;  ///< part of the quad's shorter side
    glm::vec4 pictureColor{1}, borderColor{0};
    bool isReflection = false;
    float time = 0;  ///< 0 to 1
    glm::vec2 pictureSize{1};
    float opacity = 1;
};

/// The picture without one colour.
struct KeyLook {
    glm::vec4 color{0};
    float softEdge = 0;  ///< in shares of the colour, 0 to 1
};

/// The picture blurred along its diagonal.
struct BlurLook {
    glm::vec2 pictureSize{1};  ///< pixels
};

/// One colour, not multiplied by its alpha; no picture.
struct ColorLook {
    glm::vec4 color{0};
    float opacity = 1;
};

using Uniforms = std::vector<std::pair<std::string, UniformValue>>;

/// A program that only GL has, such as a template's own.
struct ShaderLook {
    std::shared_ptr<Shader> shader;
    Uniforms uniforms;
};

using Look =
    std::variant<PlainLook, MaskLook, GradientLook, FilterLook, KeyLook, BlurLook, ColorLook, ShaderLook>;

// --- what is drawn -------------------------------------------------------------------------------------

/// A flat rectangle, or what became of one, anywhere in space.
struct QuadDraw {
    std::array<float, 12> corners{};            ///< x, y, z of bottom left, bottom right, top right, top left
    std::array<float, 8> textureCoordinates{};  ///< u, v of the same
    glm::mat4 mvpMatrix{1}, textureMatrix{1};
    Texture* texture = nullptr;  ///< none: a colour or a border alone draws
    bool mayRepeat = false;      ///< the picture repeats itself beyond its edges; else it ends there
    /// What is done to the picture before; none: nothing.
    std::shared_ptr<const FilterChain> filters = {};
    Look look;
    DrawState state;  ///< the painter's
};

/// Flat letters from an atlas: white with their coverage as alpha, or with colours of their own. Six corners
/// a letter: two triangles that make a rectangle. The corners are the node's; they stay as they are until the
/// frame has been drawn.
struct LettersDraw {
    std::span<const MeshVertex> corners;
    Texture* atlas = nullptr;
    glm::vec4 color{1};  ///< multiplies the atlas; not multiplied by its alpha
    glm::mat4 mvpMatrix{1};
    DrawState state;
};

/// Which sides of a mesh are seen.
enum class MeshSides {
    Outer,  ///< those whose corners run counter-clockwise
    Both,   ///< the inner ones too; without depths they are in order where the shape is convex
};

/// Numbered as the shader of lit surfaces does.
enum class LightKind : int32_t { Point = 1, Directional = 2, Spot = 3 };

/// A light that falls on a mesh. Colours are what a white surface gives back of it.
struct Light {
    LightKind kind = LightKind::Point;
    glm::vec3 position{0};  ///< in the world; of a directional light: towards it
    glm::vec3 ambient{0}, diffuse{0}, specular{0};
    float shininess = 0;
    glm::vec3 spotDirection{0};  ///< away from the light; 0: straight ahead, into the picture
    float spotExponent = 0;
    float spotAngle = 0;  ///< radians, from the middle of the cone to its edge
};

/// Triangles with normals, lit. The corners stay as they are until the frame has been drawn.
struct MeshDraw {
    std::span<const MeshVertex> corners;
    Geometry* kept = nullptr;  ///< the same corners, where they stay for many frames: GL keeps them
    MeshSides sides = MeshSides::Outer;
    bool isSmooth = false;  ///< normals change within triangles: they are brought to length 1 everywhere
    /// Depths are compared whatever the bracket says, and in targets: what hides what is not in order.
    bool comparesDepths = false;
    std::string shader;              ///< GL's description among the program's own, without the extension
    std::optional<glm::vec4> color;  ///< multiplies the texture, or stands for it; straight
    float fade = 0;                  ///< what is taken from the alpha: 0 nothing, 1 all
    Texture* texture = nullptr;
    glm::vec3 emission{0};                     ///< light of its own, added to all other
    Texture* emissionTexture = nullptr;        ///< multiplies it
    std::array<float, 8> cornerCoordinates{};  ///< where the texture may repeat itself: u, v that are reached
    glm::mat4 mvpMatrix{1}, textureMatrix{1};
    glm::mat4 modelMatrix{1}, normalMatrix{1};  ///< to the world, where the lights are
    glm::vec3 eye{0};                           ///< in the world
    std::vector<Light> lights;                  ///< none: colours stay as they are
    bool mayRepeat = false;
    bool isOpaque = false;        ///< alpha is 1 everywhere
    bool alphaIsOpacity = false;  ///< the texture's alpha fades what is drawn, whatever the blend function is
    DrawState state;
};

}  // namespace multiscene
