// Writes the source text of the one-pass Gaussian blur at run time.
#pragma once

#include <optional>
#include <string>

namespace multiscene {

/// Class operations only. Glossary: "Creater" is creator. Pairs of taps are sampled between two texels; the
/// first seven pairs get their coordinates from the vertex shader.
class QVObject3DShaderCreater {
  public:
    /// None when the radius (in texels) is 0.
    static std::optional<std::string> vertexShaderForOptimizedBlurOfRadius(unsigned int radius, double sigma);
    static std::optional<std::string> fragmentShaderForOptimizedBlurOfRadius(unsigned int radius,
                                                                             double sigma);
};

}  // namespace multiscene
