#include "ObviousPainter.h"

#include <algorithm>
#include <cmath>

namespace platform::obvious {

namespace {

int scaled(int colour, int level) {
    const int product = colour * level + 128;
    return (product + (product >> 8)) >> 8;
}

int mixed(int a, int b, int part) { return (a * (256 - part) + b * part + 128) >> 8; }

Pixel mixed(const Pixel& a, const Pixel& b, int part) {
    return {mixed(a.blue, b.blue, part), mixed(a.green, b.green, part), mixed(a.red, b.red, part),
            mixed(a.alpha, b.alpha, part)};
}

int wrapped(int place, int size, Wrap wrap) {
    if (wrap == Wrap::Clamp) return std::clamp(place, 0, size - 1);
    return ((place % size) + size) % size;
}

Pixel texel(const Surface& picture, int x, int y, Wrap wrap) {
    const uint8_t* bytes = picture.pixels + wrapped(y, picture.height, wrap) * picture.stride +
                           wrapped(x, picture.width, wrap) * 4;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

int32_t fixedPoint(double texels) {
    return static_cast<int32_t>(std::lrint(std::clamp(texels, -32000.0, 32000.0) * 65536));
}

struct Place {
    int32_t u, v;
};

// A line of a place matrix, counted from the left column of a tile on.
float along(const PlaceMatrix& m, size_t line, int x, int y) {
    const int left = x / 1024 * 1024;
    const auto first = static_cast<float>(m[line * 3] * left + m[line * 3 + 1] * y + m[line * 3 + 2]);
    const float far = static_cast<float>(m[line * 3]) * static_cast<float>(x - left);
    return first + far;
}

int32_t fixedPlace(float texels) {
    const float bounded = std::clamp(texels - 0.5f, -32000.0f, 32000.0f);
    return static_cast<int32_t>(std::floor(bounded * 65536.0f));
}

Place straightPlace(const PlacedPicture& picture, int x, int y) {
    const auto& m = picture.toTexel;
    const int left = x / 1024 * 1024;
    double u = m[0] * left + m[1] * y + m[2] - 0.5, v = m[3] * left + m[4] * y + m[5] - 0.5;
    if (picture.wrap == Wrap::Repeat) {
        u -= picture.surface.width * std::floor(u / picture.surface.width);
        v -= picture.surface.height * std::floor(v / picture.surface.height);
    }
    const auto step = [&](double texels) {
        return fixedPoint(std::clamp(texels, -256.0, 256.0)) * (x - left);
    };
    return {fixedPoint(u) + step(m[0]), fixedPoint(v) + step(m[3])};
}

Place deepPlace(const PlacedPicture& picture, int x, int y) {
    const float near = 1 / along(picture.toTexel, 2, x, y);
    return {fixedPlace(along(picture.toTexel, 0, x, y) * near),
            fixedPlace(along(picture.toTexel, 1, x, y) * near)};
}

float sineOfTurns(float x) {
    const float turn = x - std::floor(x + 0.5f), size = std::abs(turn);
    const float angle = std::copysign(std::min(size, 0.5f - size), turn) * 6.2831853f;
    const float square = angle * angle;
    float sum = square * (1.0f / 362880) + -1.0f / 5040;
    for (const float next : {1.0f / 120, -1.0f / 6, 1.0f}) sum = square * sum + next;
    return angle * sum;
}

Place filteredPlace(const PreparedPaint& paint, int x, int y) {
    const FilterPaint& filter = *paint.filter;
    const Surface& picture = paint.picture.surface;
    const float near = 1 / along(paint.picture.toTexel, 2, x, y), down = along(paint.toPlace, 1, x, y) * near;
    float u = along(paint.picture.toTexel, 0, x, y) * near, v = along(paint.picture.toTexel, 1, x, y) * near;
    if (filter.reflection && down > 0.5f) v = static_cast<float>(picture.height) - v;
    if (filter.type == 4) {
        const double side = std::max(filter.pixelSize, 1.0f);
        const auto towards = [&](float texel, double tileSide) {
            const auto tile = static_cast<float>(tileSide);
            const float middle = (std::floor(texel / tile) + 0.5f) * tile;
            return texel + (middle - texel) * filter.range;
        };
        u = towards(u, side / filter.pictureWidth * picture.width);
        v = towards(v, side / filter.pictureHeight * picture.height);
    }
    if (filter.type == 5) {
        const float swing = filter.range * 0.05f * static_cast<float>(picture.width);
        u += sineOfTurns(down * 3.0f - filter.time) * swing;
    }
    return {fixedPlace(u), fixedPlace(v)};
}

Pixel texelsAt(const PlacedPicture& picture, const Place& place) {
    const int left = place.u >> 16, upper = place.v >> 16;
    const auto column = [&](int at) {
        return mixed(texel(picture.surface, at, upper, picture.wrap),
                     texel(picture.surface, at, upper + 1, picture.wrap), (place.v >> 8) & 255);
    };
    return mixed(column(left), column(left + 1), (place.u >> 8) & 255);
}

Pixel sample(const PlacedPicture& picture, bool perspective, int x, int y) {
    return texelsAt(picture, perspective ? deepPlace(picture, x, y) : straightPlace(picture, x, y));
}

struct Colour {
    float blue, green, red, alpha;
};

float bounded(float number, float least, float most) { return std::min(std::max(number, least), most); }
int rounded(float number) { return static_cast<int>(bounded(number, 0, 255) + 0.5f); }

Pixel rounded(const Colour& c) {
    return {rounded(c.blue), rounded(c.green), rounded(c.red), rounded(c.alpha)};
}

Colour real(const Pixel& p) {
    return {static_cast<float>(p.blue), static_cast<float>(p.green), static_cast<float>(p.red),
            static_cast<float>(p.alpha)};
}

float brightness(const Colour& c) { return c.red * 0.299f + c.green * 0.587f + c.blue * 0.114f; }

Pixel multipliedByAlpha(const Pixel& p) {
    return {scaled(p.blue, p.alpha), scaled(p.green, p.alpha), scaled(p.red, p.alpha), p.alpha};
}

Colour straight(const Pixel& pixel, bool premultiplied) {
    const Colour c = real(pixel);
    if (!premultiplied) return c;
    const float part = 255 / std::max(c.alpha, 1.0f);
    const auto divided = [&](float colour) { return std::min(colour * part, 255.0f); };
    return {divided(c.blue), divided(c.green), divided(c.red), c.alpha};
}

float between(float a, float b, float part) { return a + (b - a) * part; }

// What of a pixel stays, 0 to 1, and its colour without the key's.
float takeKeyOut(const KeyPaint& key, Colour& c) {
    const float kr = key.color[0], kg = key.color[1], kb = key.color[2];
    const float keyDifferences[3] = {kr - kg, kg - kb, kb - kr};
    float saturation = 0, cut, freed;
    for (const float difference : keyDifferences) saturation = std::max(saturation, std::abs(difference));
    if (saturation < 0.04f) {
        const auto square = [](float colour, float keyed) {
            const float far = colour * (1.0f / 255) - keyed;
            return far * far;
        };
        cut = bounded(1.0f - std::sqrt(square(c.red, kr) + square(c.green, kg) + square(c.blue, kb)), 0, 1);
        freed = cut;
    } else {
        const float differences[3] = {c.red - c.green, c.green - c.blue, c.blue - c.red};
        float sum = 0, counted = 0, least = 1;
        for (int i = 0; i < 3; ++i) {
            if (std::abs(keyDifferences[i]) < 0.5f * saturation) continue;
            const float share = differences[i] * (1 / (255 * keyDifferences[i]));
            sum += share;
            least = std::min(least, share);
            ++counted;
        }
        const float mean = sum * (1 / counted);
        cut = bounded(least, 0, 1);
        freed = bounded(std::min(between(least, mean, 0.3f) + std::max(least, 0.0f) * 2, mean), 0, 1);
    }
    const float scale = 1 / std::max(1.0f - freed, 0.25f);
    const auto front = [&](float colour, float keyed) {
        return bounded((colour - freed * (keyed * 255)) * scale, 0, 255);
    };
    c = {front(c.blue, kb), front(c.green, kg), front(c.red, kr), c.alpha};
    const float edge = std::min(std::max(key.softEdge, 0.001f), 0.75f);
    return bounded((0.75f - cut) * (1 / edge), 0, 1);
}

void filterColour(const PreparedPaint& paint, int x, int y, Colour& c) {
    const FilterPaint& filter = *paint.filter;
    const float grey = brightness(c);
    Colour other = c;
    if (filter.type == 1) other = {grey, grey, grey, 0};
    if (filter.type == 2)
        other = {std::min(grey * 0.8f, 255.0f), std::min(grey, 255.0f), std::min(grey * 1.2f, 255.0f), 0};
    if (filter.type == 3) other = {255 - c.blue, 255 - c.green, 255 - c.red, 0};
    const auto& colour = filter.pictureColor;
    c = {between(c.blue, other.blue, filter.range) * colour[2],
         between(c.green, other.green, filter.range) * colour[1],
         between(c.red, other.red, filter.range) * colour[0], c.alpha * colour[3]};
    const float shorter = std::min(filter.frameWidth, filter.frameHeight),
                near = 1 / along(paint.toPlace, 2, x, y);
    const float border = filter.borderWidth * shorter, radius = filter.cornerRadius * shorter;
    const auto fromMiddle = [&](size_t line, float size) {
        return std::abs(along(paint.toPlace, line, x, y) * near - 0.5f) * size;
    };
    const float across = fromMiddle(0, filter.frameWidth), down = fromMiddle(1, filter.frameHeight);
    const auto within = [&](float margin, float round) {
        const float right = across - (0.5f * filter.frameWidth - margin - round);
        const float lower = down - (0.5f * filter.frameHeight - margin - round);
        const float a = std::max(right, 0.0f), b = std::max(lower, 0.0f);
        const float distance = std::sqrt(a * a + b * b) + std::min(std::max(right, lower), 0.0f) - round;
        return bounded(0.5f - distance * filter.pixelsAUnit, 0, 1);
    };
    if (border > 0) {
        const auto& under = filter.borderColor;
        const float inner = within(border, std::max(radius - border, 0.0f));
        const float alpha = between(under[3] * 255, c.alpha, inner);
        const float share = inner * c.alpha / std::max(alpha, 0.001f);
        c = {between(under[2] * 255, c.blue, share), between(under[1] * 255, c.green, share),
             between(under[0] * 255, c.red, share), alpha};
    }
    const bool isCorner =
        across - (0.5f * filter.frameWidth - radius) > 0 && down - (0.5f * filter.frameHeight - radius) > 0;
    if (radius > 0 && isCorner) c.alpha *= within(0, radius);
}

float maskOpacity(const PreparedPaint& paint, int x, int y) {
    const Colour c = real(sample(paint.mask->picture, paint.perspective, x, y));
    return paint.mask->timesAlpha ? brightness(c) * (c.alpha * (1.0f / 255)) : brightness(c);
}

float gradientOpacity(const PreparedPaint& paint, int x, int y) {
    const GradientPaint& gradient = *paint.gradient;
    const float place =
        along(paint.toPlace, gradient.vertical ? 1 : 0, x, y) * (1 / along(paint.toPlace, 2, x, y));
    const float beyond = place - static_cast<float>(gradient.startPlace);
    const double span = gradient.endPlace - gradient.startPlace;
    float progress = beyond < 0 ? 0.0f : 1.0f;
    if (std::abs(span) >= 0.0001) progress = bounded(beyond * static_cast<float>(1 / span), 0, 1);
    if (gradient.soft) progress = progress * progress * (3.0f - (progress + progress));
    return between(static_cast<float>(gradient.startOpacity), static_cast<float>(gradient.endOpacity),
                   progress);
}

// The picture's colour as the blend function wants it, and what multiplies it, 0 to 255.
Pixel treated(const PreparedPaint& paint, int x, int y, float& opacity) {
    const Surface& picture = paint.picture.surface;
    Pixel pixel{255, 255, 255, 255};
    if (picture.pixels && paint.filter &&
        (paint.filter->reflection || paint.filter->type == 4 || paint.filter->type == 5))
        pixel = texelsAt(paint.picture, filteredPlace(paint, x, y));
    else if (picture.pixels)
        pixel = sample(paint.picture, paint.perspective, x, y);
    bool premultiplied = paint.premultiplied && !picture.opaque && picture.pixels;
    if (paint.key) {
        Colour colour = straight(pixel, premultiplied);
        opacity *= takeKeyOut(*paint.key, colour);
        pixel = rounded(colour);
        premultiplied = false;
    }
    if (paint.filter) {
        Colour colour = straight(pixel, premultiplied);
        filterColour(paint, x, y, colour);
        pixel = rounded(colour);
        premultiplied = false;
    }
    if (premultiplied == paint.paintsPremultiplied) return pixel;
    return premultiplied ? rounded(straight(pixel, true)) : multipliedByAlpha(pixel);
}

Pixel front(const PreparedPaint& paint, int x, int y) {
    float opacity = paint.mask ? maskOpacity(paint, x, y) : 255.0f;
    if (paint.gradient) opacity *= gradientOpacity(paint, x, y);
    const Pixel pixel = treated(paint, x, y, opacity);
    const auto& levels = paint.levels;
    const int each = rounded(opacity), colours = paint.fadesColours ? each : 255;
    return {scaled(scaled(pixel.blue, levels[0]), colours), scaled(scaled(pixel.green, levels[1]), colours),
            scaled(scaled(pixel.red, levels[2]), colours), scaled(scaled(pixel.alpha, levels[3]), each)};
}

int factor(BlendFactor kind, int colour, int under, const Pixel& front, const Pixel& back) {
    switch (kind) {
        case BlendFactor::Zero:
            return 0;
        case BlendFactor::One:
            return 255;
        case BlendFactor::SrcColor:
            return colour;
        case BlendFactor::OneMinusSrcColor:
            return 255 - colour;
        case BlendFactor::SrcAlpha:
            return front.alpha;
        case BlendFactor::OneMinusSrcAlpha:
            return 255 - front.alpha;
        case BlendFactor::DstAlpha:
            return back.alpha;
        case BlendFactor::OneMinusDstAlpha:
            return 255 - back.alpha;
        case BlendFactor::DstColor:
            return under;
        case BlendFactor::OneMinusDstColor:
            return 255 - under;
        case BlendFactor::SrcAlphaSaturate:
            return std::min(front.alpha, 255 - back.alpha);
    }
    return 0;
}

int divided(int sum) { return std::min((sum + 127) / 255, 255); }

Pixel blended(const BlendFunction& function, const Pixel& front, const Pixel& back) {
    const auto sum = [&](int colour, int under) {
        return divided(colour * factor(function.source, colour, under, front, back) +
                       under * factor(function.destination, colour, under, front, back));
    };
    return {sum(front.blue, back.blue), sum(front.green, back.green), sum(front.red, back.red),
            divided(front.alpha * 255 + back.alpha * (255 - front.alpha))};
}

float coverage(const PaintEdge& edge, int x, int y) {
    const float rest = edge.y * static_cast<float>(y) + edge.away;
    const float distance = edge.x * static_cast<float>(x) + rest;
    if (!edge.smooth) return distance > 0 || (distance == 0 && edge.hasLine()) ? 1.0f : 0.0f;
    return std::clamp(distance + 0.5f, 0.0f, 1.0f);
}

int coverage(const PreparedPaint& paint, int x, int y) {
    float level = 255;
    for (const auto& [first, second] : paint.edgePairs)
        level *= std::max(coverage(first, x, y) + coverage(second, x, y) - 1.0f, 0.0f);
    return rounded(level);
}

}  // namespace

void paint(const PreparedPaint& paint, Picture& picture) {
    for (int y = paint.top; y < paint.bottom; ++y)
        for (int x = paint.left; x < paint.right; ++x) {
            const int covered = coverage(paint, x, y);
            if (covered == 0) continue;
            const Pixel back = picture.at(x, y), met = blended(paint.blend, front(paint, x, y), back);
            const auto partly = [&](int was, int is) {
                return divided(was * (255 - covered) + is * covered);
            };
            picture.set(x, y,
                        {partly(back.blue, met.blue), partly(back.green, met.green),
                         partly(back.red, met.red), partly(back.alpha, met.alpha)});
        }
}

}  // namespace platform::obvious
