// Tables of three dimensions that make colours into others, as cameras' and film looks' are exchanged.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/File.h"
#include "platform/base/Limits.h"
#include "platform/pixels/Surface.h"

namespace platform {

/// What every mixture of red, green and blue becomes; between its entries colours are mixed.
class ColorTable {
  public:
    static constexpr uint64_t maxBytes = limitOf("maxColorTableBytes");  ///< of a file
    static constexpr int maxSide =
        limitOf<int>("maxColorTableSide");  ///< entries along each colour; 2 are the least

    /// The text of a .cube file: "LUT_3D_SIZE 17", then 17 * 17 * 17 lines of red, green and blue, each 0 to
    /// 1, red changing first. Titles and comments are read over. Throws Error(Template), naming the line, for
    /// any other text.
    static ColorTable parse(std::string_view text);
    static ColorTable read(const std::filesystem::path& file);
    /// An opened file; `name` is for errors.
    static ColorTable read(const FileHandle& file, const std::string& name);

    int side() const { return side_; }
    /// A square of red (to the right) and green (down) for each blue, one beside the other.
    Surface picture() const;

  private:
    int side_ = 0;
    std::vector<uint8_t> pixels_;
};

}  // namespace platform
