// The standard easing equations (Robert Penner's families) in the precision that the format fixes: single,
// with the transcendental functions and the parts that say so in double.
#include "tween/Ease.h"

#include <array>
#include <cmath>

namespace multiscene {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double halfPi = pi / 2;
constexpr double elasticTurns = 13 * halfPi;

float single(double value) { return static_cast<float>(value); }
double powerOfTwo(float exponent) { return std::pow(2.0, static_cast<double>(exponent)); }

float linearInterpolation(float p) { return p; }

float quadraticEaseIn(float p) { return p * p; }
float quadraticEaseOut(float p) { return -(p * (p - 2)); }
float quadraticEaseInOut(float p) { return p < 0.5f ? 2 * p * p : 4 * p - 2 * p * p - 1; }

float cubicEaseIn(float p) { return p * p * p; }
float cubicEaseOut(float p) {
    const float f = p - 1;
    return f * f * f + 1;
}
float cubicEaseInOut(float p) {
    if (p < 0.5f) return 4 * p * p * p;
    const double f = 2 * p - 2;
    return single(0.5 * f * f * f + 1);
}

float quarticEaseIn(float p) { return p * p * p * p; }
float quarticEaseOut(float p) {
    const float f = p - 1;
    return f * f * f * (1 - p) + 1;
}

float quinticEaseOut(float p) {
    const float f = p - 1;
    return f * f * f * f * f + 1;
}
float quinticEaseInOut(float p) {
    if (p < 0.5f) return 16 * p * p * p * p * p;
    const double f = 2 * p - 2;
    return single(0.5 * f * f * f * f * f + 1);
}

float sineEaseIn(float p) { return single(std::sin((p - 1.0) * halfPi) + 1); }
float sineEaseOut(float p) { return single(std::sin(p * halfPi)); }
float sineEaseInOut(float p) { return single(0.5 * (1 - std::cos(p * pi))); }

float circularEaseIn(float p) { return 1 - std::sqrt(1 - p * p); }
float circularEaseOut(float p) { return std::sqrt((2 - p) * p); }
float circularEaseInOut(float p) {
    if (p < 0.5f) return 0.5f * (1 - std::sqrt(1 - 4 * p * p));
    return 0.5f * (std::sqrt(-(2 * p - 3) * (2 * p - 1)) + 1);
}

float exponentialEaseIn(float p) { return p == 0 ? 0 : single(powerOfTwo(10 * (p - 1))); }
float exponentialEaseOut(float p) { return p == 1 ? 1 : single(1 - powerOfTwo(-10 * p)); }
float exponentialEaseInOut(float p) {
    if (p == 0 || p == 1) return p;
    if (p < 0.5f) return single(0.5 * powerOfTwo(20 * p - 10));
    return single(-0.5 * powerOfTwo(10 - 20 * p) + 1);
}

float elasticEaseIn(float p) { return single(std::sin(elasticTurns * p) * powerOfTwo(10 * (p - 1))); }
float elasticEaseOut(float p) { return single(std::sin(-elasticTurns * (p + 1)) * powerOfTwo(-10 * p) + 1); }
float elasticEaseInOut(float p) {
    if (p < 0.5f) return single(0.5 * std::sin(elasticTurns * (2 * p)) * powerOfTwo(10 * (2 * p - 1)));
    return single(0.5 * (std::sin(-elasticTurns * (2 * p)) * powerOfTwo(-10 * (2 * p - 1)) + 2));
}

double backOvershoot(float f) { return f * f * f - f * std::sin(f * pi); }
float backEaseIn(float p) { return single(backOvershoot(p)); }
float backEaseOut(float p) { return single(1 - backOvershoot(1 - p)); }
float backEaseInOut(float p) {
    if (p < 0.5f) return single(0.5 * backOvershoot(2 * p));
    return single(0.5 * (1 - backOvershoot(1 - (2 * p - 1))) + 0.5);
}

float bounceEaseOut(float p) {
    const double x = p;
    if (x < 4 / 11.0) return single(121 * x * x / 16);
    if (x < 8 / 11.0) return single(363 / 40.0 * x * x - 99 / 10.0 * x + 17 / 5.0);
    if (x < 9 / 10.0) return single(4356 / 361.0 * x * x - 35442 / 1805.0 * x + 16061 / 1805.0);
    return single(54 / 5.0 * x * x - 513 / 25.0 * x + 268 / 25.0);
}
float bounceEaseIn(float p) { return 1 - bounceEaseOut(1 - p); }
float bounceEaseInOut(float p) {
    if (p < 0.5f) return 0.5f * bounceEaseIn(p * 2);
    return 0.5f * bounceEaseOut(p * 2 - 1) + 0.5f;
}

constexpr auto eases = std::to_array<Ease>({
    {"LinearInterpolation", linearInterpolation},
    {"QuadraticEaseIn", quadraticEaseIn},
    {"QuadraticEaseOut", quadraticEaseOut},
    {"QuadraticEaseInOut", quadraticEaseInOut},
    {"CubicEaseIn", cubicEaseIn},
    {"CubicEaseOut", cubicEaseOut},
    {"CubicEaseInOut", cubicEaseInOut},
    {"QuarticEaseIn", quarticEaseIn},
    {"QuarticEaseOut", quarticEaseOut},
    {"QuadraticEaseInOut", quadraticEaseInOut},  // 9 repeats 3: templates are tuned to it
    {"CubicEaseIn", cubicEaseIn},                // 10 repeats 4, likewise
    {"QuinticEaseOut", quinticEaseOut},
    {"QuinticEaseInOut", quinticEaseInOut},
    {"SineEaseIn", sineEaseIn},
    {"SineEaseOut", sineEaseOut},
    {"SineEaseInOut", sineEaseInOut},
    {"CircularEaseIn", circularEaseIn},
    {"CircularEaseOut", circularEaseOut},
    {"CircularEaseInOut", circularEaseInOut},
    {"ExponentialEaseIn", exponentialEaseIn},
    {"ExponentialEaseOut", exponentialEaseOut},
    {"ExponentialEaseInOut", exponentialEaseInOut},
    {"ElasticEaseIn", elasticEaseIn},
    {"ElasticEaseOut", elasticEaseOut},
    {"ElasticEaseInOut", elasticEaseInOut},
    {"BackEaseIn", backEaseIn},
    {"BackEaseOut", backEaseOut},
    {"BackEaseInOut", backEaseInOut},
    {"BounceEaseIn", bounceEaseIn},
    {"BounceEaseOut", bounceEaseOut},
    {"BounceEaseInOut", bounceEaseInOut},
});

}  // namespace

std::span<const Ease> easeTable() { return eases; }

EaseFunction easeFunction(int32_t ease) {
    const auto id = static_cast<uint32_t>(ease);
    return id < eases.size() ? eases[id].function : linearInterpolation;
}

}  // namespace multiscene
