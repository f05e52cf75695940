#include "platform/pixels/PictureFilter.h"
#include "platform/pixels/TilePainter.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/pixels/filters/FilterLoops.cpp"
#include <hwy/foreach_target.h>  // compiles this file once for each instruction set

#include "platform/pixels/filters/Pixel-inl.h"
//
#include "platform/pixels/filters/Adjust-inl.h"
#include "platform/pixels/filters/Blur-inl.h"
#include "platform/pixels/filters/ColorShift-inl.h"
#include "platform/pixels/filters/Duotone-inl.h"
#include "platform/pixels/filters/Edges-inl.h"
#include "platform/pixels/filters/Film-inl.h"
#include "platform/pixels/filters/Glow-inl.h"
#include "platform/pixels/filters/Grain-inl.h"
#include "platform/pixels/filters/Grey-inl.h"
#include "platform/pixels/filters/LightLeak-inl.h"
#include "platform/pixels/filters/Negative-inl.h"
#include "platform/pixels/filters/Pixelate-inl.h"
#include "platform/pixels/filters/Posterise-inl.h"
#include "platform/pixels/filters/Sepia-inl.h"
#include "platform/pixels/filters/Sharpen-inl.h"
#include "platform/pixels/filters/Sketch-inl.h"
#include "platform/pixels/filters/Swirl-inl.h"
#include "platform/pixels/filters/Temperature-inl.h"
#include "platform/pixels/filters/TiltShift-inl.h"
#include "platform/pixels/filters/Vignette-inl.h"
#include "platform/pixels/filters/Wave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace platform::HWY_NAMESPACE::filter {

struct NamedLoop {
    std::string_view name;
    FilterLoop loop;
};

FilterLoop loopNamed(std::string_view name) {
    static constexpr NamedLoop loops[] = {
        {"adjust", byColour<AdjustFilter>},
        {"blur", byColour<BlurFilter>},
        {"colorShift", byColour<ColorShiftFilter>},
        {"duotone", byColour<DuotoneFilter>},
        {"edges", byColour<EdgesFilter>},
        {"film", byColour<FilmFilter>},
        {"glow", byColour<GlowFilter>},
        {"grain", byColour<GrainFilter>},
        {"grey", byColour<GreyFilter>},
        {"lightLeak", byColour<LightLeakFilter>},
        {"negative", byColour<NegativeFilter>},
        {"pixelate", byColour<PixelateFilter>},
        {"posterise", byColour<PosteriseFilter>},
        {"sepia", byColour<SepiaFilter>},
        {"sharpen", byColour<SharpenFilter>},
        {"sketch", byColour<SketchFilter>},
        {"swirl", byPlace<SwirlFilter>},
        {"temperature", byColour<TemperatureFilter>},
        {"tiltShift", byColour<TiltShiftFilter>},
        {"vignette", byColour<VignetteFilter>},
        {"wave", byPlace<WaveFilter>},
    };
    for (const NamedLoop& each : loops)
        if (each.name == name) return each.loop;
    return nullptr;
}

}  // namespace platform::HWY_NAMESPACE::filter

namespace platform::HWY_NAMESPACE {

FilterLoop findLoop(std::string_view name) { return filter::loopNamed(name); }

}  // namespace platform::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace platform {

HWY_EXPORT(findLoop);

FilterLoop filterLoopNamed(std::string_view name) { return HWY_DYNAMIC_DISPATCH(findLoop)(name); }

void filterPicture(const FilterPass& pass, FilterLoop loop, TilePainter& threads) {
    constexpr int kRows = 16;
    const int height = pass.picture.height;
    threads.share((height + kRows - 1) / kRows, [&](int piece) {
        const int bottom = std::min(piece * kRows + kRows, height);
        for (int row = piece * kRows; row < bottom; ++row) loop(pass, row);
    });
}

}  // namespace platform
#endif
