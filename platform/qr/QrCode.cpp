#include "platform/qr/QrCode.h"

#include <qrencode.h>

#include <cerrno>
#include <memory>

#include "platform/base/Error.h"

namespace platform {

namespace {

constexpr size_t kRim = 4;

}  // namespace

QrCode::QrCode(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw Error(ErrorKind::Usage, "a QR code holds no NUL");
    const std::unique_ptr<QRcode, void (*)(QRcode*)> code(
        QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_M), QRcode_free);
    if (!code && errno == ERANGE) throw Error(ErrorKind::Usage, "too long for a QR code");
    if (!code) throw errnoError(errno, "cannot make a QR code", "");
    size_ = static_cast<size_t>(code->width);
    for (size_t index = 0; index < size_ * size_; ++index) dark_.push_back((code->data[index] & 1) != 0);
}

std::string QrCode::svg() const {
    const std::string side = std::to_string(size_ + 2 * kRim);
    std::string text = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + side + " " + side +
                       "\" shape-rendering=\"crispEdges\"><path fill=\"#fff\" d=\"M0 0h" + side + "v" + side +
                       "H0z\"/><path d=\"";
    for (size_t row = 0; row < size_; ++row)
        for (size_t column = 0; column < size_; ++column)
            if (isDark(column, row))
                text += "M" + std::to_string(column + kRim) + " " + std::to_string(row + kRim) + "h1v1h-1z";
    return text + "\"/></svg>\n";
}

bool QrCode::isDrawnDark(size_t column, size_t row) const {
    return column >= kRim && row >= kRim && column < size_ + kRim && row < size_ + kRim &&
           isDark(column - kRim, row - kRim);
}

/// Most terminals are dark, and a code may be read either way by few cameras: so the light is drawn.
std::string QrCode::terminalText() const {
    std::string text;
    const size_t side = size_ + 2 * kRim;
    for (size_t row = 0; row < side; row += 2) {
        for (size_t column = 0; column < side; ++column) {
            const bool isUpperLight = !isDrawnDark(column, row);
            const bool isLowerLight = row + 1 < side && !isDrawnDark(column, row + 1);
            text += isUpperLight ? (isLowerLight ? "█" : "▀") : (isLowerLight ? "▄" : " ");
        }
        text += "\n";
    }
    return text;
}

}  // namespace platform
