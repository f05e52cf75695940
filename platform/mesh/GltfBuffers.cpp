#include "platform/mesh/GltfBuffers.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "platform/mesh/MeshText.h"

namespace platform {

namespace {

enum ComponentType : int64_t {
    kByte = 5120,
    kUnsignedByte = 5121,
    kShort = 5122,
    kUnsignedShort = 5123,
    kUnsignedInt = 5125,
    kFloat = 5126,
};

/// 0 for a type that is none.
size_t bytesOf(int64_t componentType) {
    switch (componentType) {
        case kByte:
        case kUnsignedByte:
            return 1;
        case kShort:
        case kUnsignedShort:
            return 2;
        case kUnsignedInt:
        case kFloat:
            return 4;
    }
    return 0;
}

size_t componentsOf(const std::string& type) {
    if (type == "SCALAR") return 1;
    if (type == "VEC2") return 2;
    if (type == "VEC3") return 3;
    if (type == "VEC4") return 4;
    return 0;
}

template <typename Stored>
Stored stored(const uint8_t* at) {
    Stored value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

template <typename Stored>
float asFloat(const uint8_t* at, bool isNormalised) {
    const auto value = static_cast<float>(stored<Stored>(at));
    if (!isNormalised) return value;
    return std::max(value / static_cast<float>(std::numeric_limits<Stored>::max()), -1.0f);
}

float numberAt(const uint8_t* at, int64_t componentType, bool isNormalised) {
    switch (componentType) {
        case kByte:
            return asFloat<int8_t>(at, isNormalised);
        case kUnsignedByte:
            return asFloat<uint8_t>(at, isNormalised);
        case kShort:
            return asFloat<int16_t>(at, isNormalised);
        case kUnsignedShort:
            return asFloat<uint16_t>(at, isNormalised);
        case kUnsignedInt:
            return static_cast<float>(stored<uint32_t>(at));
        default:
            return stored<float>(at);
    }
}

/// A number that is none, or below 0, is beyond everything.
uint64_t whole(const Value& number) {
    const int64_t value = number.integerValue();
    return value < 0 ? std::numeric_limits<uint64_t>::max() : static_cast<uint64_t>(value);
}

}  // namespace

GltfBuffers::GltfBuffers(const Value& document, Bytes binary, std::string name, const OpenBeside& openBeside)
    : document_(document), name_(std::move(name)) {
    readBuffers(binary, openBeside);
}

void GltfBuffers::fail(const std::string& message) const { throw Error(ErrorKind::Template, message, name_); }

const Value& GltfBuffers::entry(const char* list, int64_t index, const char* what) const {
    const Value::Array& entries = document_.array(list);
    if (index < 0 || static_cast<uint64_t>(index) >= entries.size())
        fail(std::string(what) + " " + std::to_string(index) + " is not there");
    return entries[static_cast<size_t>(index)];
}

void GltfBuffers::readBuffers(Bytes binary, const OpenBeside& openBeside) {
    constexpr uint64_t most = limitOf("maxMeshBytes");
    uint64_t left = most;
    for (const Value& buffer : document_.array("buffers")) {
        Bytes bytes = binary;
        const std::string uri = buffer.string("uri");
        if (!uri.empty()) {
            auto data = bytesOfDataUri(uri);
            if (!data) {
                const std::string path = relativePathOf(uri);
                const FileHandle file = path.empty() ? FileHandle() : openBeside(path);
                if (!file) fail("its file \"" + uri.substr(0, 100) + "\" is missing or may not be opened");
                data = readFile(file, path, limitOf("maxMeshFileBytes"), ErrorKind::Template);
            }
            if (data->size() > left) fail(beyondLimit(most - left + data->size(), "bytes in all", most));
            bytes = owned_.emplace_back(std::move(*data));
        }
        if (whole(buffer["byteLength"]) > bytes.size())
            fail("buffer " + std::to_string(buffers_.size()) + " is cut short");
        left -= std::min<uint64_t>(left, bytes.size());
        buffers_.push_back(bytes.first(static_cast<size_t>(whole(buffer["byteLength"]))));
    }
}

GltfBuffers::Bytes GltfBuffers::view(int64_t bufferView) const {
    const Value& place = entry("bufferViews", bufferView, "buffer view");
    const uint64_t buffer = whole(place["buffer"]);
    if (buffer >= buffers_.size()) fail("buffer " + place.string("buffer") + " is not there");
    const Bytes bytes = buffers_[static_cast<size_t>(buffer)];
    const uint64_t offset = whole(place["byteOffset"]), length = whole(place["byteLength"]);
    if (offset > bytes.size() || length > bytes.size() - offset)
        fail("buffer view " + std::to_string(bufferView) + " reaches beyond its buffer");
    return bytes.subspan(static_cast<size_t>(offset), static_cast<size_t>(length));
}

/// `place` is an accessor, or a part of a sparse one.
GltfBuffers::Layout GltfBuffers::layoutOf(const Value& place, int64_t bufferView, int64_t componentType,
                                          size_t components, size_t count) const {
    const Bytes bytes = view(bufferView);
    const size_t element = bytesOf(componentType) * components;
    if (element == 0) fail("numbers of type " + std::to_string(componentType) + " are none");
    const uint64_t offset = whole(place["byteOffset"]);
    uint64_t stride = whole(entry("bufferViews", bufferView, "buffer view")["byteStride"]);
    if (stride == 0) stride = element;
    constexpr uint64_t longestStride = 252;
    if (stride < element || (stride > longestStride && stride != element))
        fail("buffer view " + std::to_string(bufferView) + " has a stride of " + std::to_string(stride));
    // The count is small: it was held against the limit of numbers.
    if (offset > bytes.size() || (count - 1) * stride + element > bytes.size() - offset)
        fail("an accessor reaches beyond its buffer view");
    return {.bytes = bytes.subspan(static_cast<size_t>(offset)),
            .stride = static_cast<size_t>(stride),
            .count = count,
            .componentType = componentType};
}

void GltfBuffers::spend(size_t count) {
    if (count > numbersLeft_)
        fail(beyondLimit(limitOf("maxMeshNumbers") + 1, "numbers", limitOf("maxMeshNumbers")));
    numbersLeft_ -= count;
}

void GltfBuffers::readNumbers(const Layout& layout, size_t components, std::vector<float>& values) const {
    const size_t step = bytesOf(layout.componentType);
    for (size_t i = 0; i < layout.count; ++i) {
        const uint8_t* at = layout.bytes.data() + i * layout.stride;
        for (size_t k = 0; k < components; ++k) {
            const float number = numberAt(at + k * step, layout.componentType, layout.isNormalised);
            if (!std::isfinite(number)) fail("an accessor holds what is no number");
            values.push_back(number);
        }
    }
}

std::vector<uint32_t> GltfBuffers::wholeNumbers(const Layout& layout, size_t end) const {
    std::vector<uint32_t> indices;
    indices.reserve(layout.count);
    for (size_t i = 0; i < layout.count; ++i) {
        const uint8_t* at = layout.bytes.data() + i * layout.stride;
        uint32_t index = 0;
        switch (layout.componentType) {
            case kUnsignedByte:
                index = *at;
                break;
            case kUnsignedShort:
                index = stored<uint16_t>(at);
                break;
            case kUnsignedInt:
                index = stored<uint32_t>(at);
                break;
            default:
                fail("indices of type " + std::to_string(layout.componentType) + " are none");
        }
        if (index >= end) fail("index " + std::to_string(index) + " names nothing");
        indices.push_back(index);
    }
    return indices;
}

GltfBuffers::Numbers GltfBuffers::numbers(int64_t accessor, size_t components) {
    const Value& place = entry("accessors", accessor, "accessor");
    const uint64_t count = whole(place["count"]);
    const std::string which = "accessor " + std::to_string(accessor);
    if (componentsOf(place.string("type")) != components) fail(which + " is of another type");
    if (count == 0) fail(which + " is empty");
    if (count > limitOf("maxMeshNumbers"))
        fail(which + " " + beyondLimit(count, "elements", limitOf("maxMeshNumbers")));
    spend(static_cast<size_t>(count) * components);
    Numbers numbers{.values = {}, .count = static_cast<size_t>(count)};
    if (place.has("bufferView")) {
        Layout layout = layoutOf(place, place.integer("bufferView"), place.integer("componentType"),
                                 components, numbers.count);
        layout.isNormalised = place.boolean("normalized");
        numbers.values.reserve(numbers.count * components);
        readNumbers(layout, components, numbers.values);
    } else {
        numbers.values.resize(numbers.count * components);
    }
    if (place.has("sparse")) applySparse(place, components, numbers);
    return numbers;
}

void GltfBuffers::applySparse(const Value& accessor, size_t components, Numbers& numbers) {
    const Value &sparse = accessor["sparse"], &indices = sparse["indices"], &values = sparse["values"];
    const uint64_t count = whole(sparse["count"]);
    if (count == 0) return;
    if (count > numbers.count) fail("a sparse accessor changes more than there is");
    const auto changes = static_cast<size_t>(count);
    const std::vector<uint32_t> places = wholeNumbers(
        layoutOf(indices, indices.integer("bufferView"), indices.integer("componentType"), 1, changes),
        numbers.count);
    Layout layout = layoutOf(values, values.integer("bufferView"), accessor.integer("componentType"),
                             components, changes);
    layout.isNormalised = accessor.boolean("normalized");
    std::vector<float> changed;
    readNumbers(layout, components, changed);
    for (size_t i = 0; i < changes; ++i)
        std::copy_n(&changed[i * components], components, &numbers.values[places[i] * components]);
}

std::vector<uint32_t> GltfBuffers::indices(int64_t accessor, size_t end, uint64_t most) {
    const Value& place = entry("accessors", accessor, "accessor");
    const uint64_t count = whole(place["count"]);
    if (count == 0) return {};
    if (count > most)
        fail("accessor " + std::to_string(accessor) + " " + beyondLimit(count, "elements", most));
    spend(static_cast<size_t>(count));
    return wholeNumbers(layoutOf(place, place.integer("bufferView"), place.integer("componentType"), 1,
                                 static_cast<size_t>(count)),
                        end);
}

}  // namespace platform
