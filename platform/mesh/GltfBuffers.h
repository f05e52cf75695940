// Private to platform/mesh: the numbers in a glTF file's buffers. Whatever the file says about them is
// checked before memory is taken.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/base/Limits.h"
#include "platform/base/Value.h"
#include "platform/mesh/MeshFile.h"

namespace platform {

class GltfBuffers {
  public:
    using Bytes = std::span<const uint8_t>;

    /// `binary`: the buffer that lies in the file itself. Throws Error, as all does here.
    GltfBuffers(const Value& document, Bytes binary, std::string name, const OpenBeside& openBeside);

    /// An accessor's numbers, `components` for each of its elements; normalised integers become 0 to 1 or -1
    /// to 1. All are finite.
    struct Numbers {
        std::vector<float> values;
        size_t count = 0;  ///< elements
    };
    Numbers numbers(int64_t accessor, size_t components);
    /// Of an accessor with at most `most` whole numbers, each less than `end`.
    std::vector<uint32_t> indices(int64_t accessor, size_t end, uint64_t most);
    /// The bytes of a buffer view.
    Bytes view(int64_t bufferView) const;
    /// Entry `index` of one of the document's lists; `what` names it in messages.
    const Value& entry(const char* list, int64_t index, const char* what) const;

    [[noreturn]] void fail(const std::string& message) const;

  private:
    struct Layout {
        Bytes bytes;  ///< from the first element on
        size_t stride = 0, count = 0;
        int64_t componentType = 0;
        bool isNormalised = false;
    };
    void readBuffers(Bytes binary, const OpenBeside& openBeside);
    Layout layoutOf(const Value& place, int64_t bufferView, int64_t componentType, size_t components,
                    size_t count) const;
    void spend(size_t count);
    void applySparse(const Value& accessor, size_t components, Numbers& numbers);
    std::vector<uint32_t> wholeNumbers(const Layout& layout, size_t end) const;
    void readNumbers(const Layout& layout, size_t components, std::vector<float>& values) const;

    const Value& document_;
    const std::string name_;
    std::vector<std::vector<uint8_t>> owned_;
    std::vector<Bytes> buffers_;
    uint64_t numbersLeft_ = limitOf("maxMeshNumbers");
};

}  // namespace platform
