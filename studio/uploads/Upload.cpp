#include "studio/uploads/Upload.h"

#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;

Value valueOf(const Upload& upload) {
    constexpr double milli = 0.001;
    const auto orNull = [](int64_t number) { return number > 0 ? Value(number) : Value(); };
    return Value::Dictionary{
        {"id", upload.id},
        {"kind", upload.kind},
        {"name", upload.name},
        {"bytes", upload.bytes},
        {"width", orNull(upload.width)},
        {"height", orNull(upload.height)},
        {"seconds",
         upload.milliseconds > 0 ? Value(static_cast<double>(upload.milliseconds) * milli) : Value()},
        {"proxy", upload.hasProxy ? Value("/api/v1/uploads/" + upload.id + "/proxy.jpg") : Value()},
        {"expires", timeText(upload.expires)}};
}

}  // namespace multiscene::studio
