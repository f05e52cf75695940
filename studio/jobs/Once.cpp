#include "studio/jobs/Once.h"

#include "platform/base/Json.h"
#include "platform/crypto/Secret.h"
#include "studio/store/Names.h"

namespace multiscene::studio {

using platform::Value;

namespace {

constexpr size_t kMostKey = 255;

}  // namespace

Value once(Workshop& shop, const ApiRequest& request, const std::function<Value()>& work) {
    const std::string key = request.head.header("Idempotency-Key");
    if (key.empty()) return work();
    if (key.size() > kMostKey) throw Problem(400, "key-too-long", "an Idempotency-Key has at most 255 bytes");
    const std::string digest =
        platform::textDigest(request.head.target + "\n" + platform::jsonText(request.body));
    Value answer;
    shop.parts.database.transaction([&] {
        const auto known = shop.jobs.remembered(request.session.id, key);
        if (known && known->digest != digest)
            throw Problem(422, "key-used", "this Idempotency-Key was used for another request");
        answer = known ? known->answer : work();
        if (!known) shop.jobs.remember(request.session.id, key, {digest, answer}, nowMs());
    });
    return answer;
}

}  // namespace multiscene::studio
