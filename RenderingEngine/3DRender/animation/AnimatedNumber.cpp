#include "animation/AnimatedNumber.h"

namespace multiscene {

void AnimatedNumber::read(const platform::Value::Array& keys, const KeyTable& table, const char* startKey,
                          const char* endKey) {
    keys_ = {keys, [&](const platform::Value& key) {
                 const KeyReader reader(table, key);
                 return Move<float>{.start = reader.number(startKey), .end = reader.number(endKey)};
             }};
}

void AnimatedNumber::updateData(int64_t frame, const TweenTarget& easeTarget) {
    keys_.updateData(frame, &easeTarget, [this](const Move<float>& move, const KeyProgress& progress) {
        value_ = move.at(progress.eased);
    });
}

}  // namespace multiscene
