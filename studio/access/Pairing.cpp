#include "studio/access/Pairing.h"

#include "platform/crypto/Secret.h"

namespace multiscene::studio {

namespace {

constexpr size_t kDigits = 6;
/// Few enough that to guess is hopeless, and more than anybody mistypes.
constexpr int kMostWrong = 10;

}  // namespace

Pairing::Pairing(std::function<void(const std::string&)> changed) : changed_(std::move(changed)) { renew(); }

void Pairing::renew() {
    code_ = platform::randomDigits(kDigits);
    wrong_ = 0;
    if (changed_) changed_(code_);
}

bool Pairing::take(const std::string& code) {
    const bool isRight = platform::sameSecret(code, code_);
    if (isRight || ++wrong_ >= kMostWrong) renew();
    return isRight;
}

}  // namespace multiscene::studio
