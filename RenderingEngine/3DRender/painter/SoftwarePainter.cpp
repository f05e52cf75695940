#include "painter/SoftwarePainter.h"

#include <algorithm>
#include <array>
#include <utility>

#include "painter/ColorBytes.h"
#include "painter/MeshPaints.h"
#include "painter/PlaceOnQuad.h"
#include "painter/QuadPaints.h"
#include "platform/pixels/SharedEdges.h"

namespace multiscene {

using platform::QuadPaint;

/// GL's blur gives colours that alpha multiplies. A blurred copy gives what the blend function wants, which
/// is the same under these.
static bool isBlurAlike(const BlendFunction& blend) {
    using Factor = platform::BlendFactor;
    const auto [source, destination] = paintedBlend(blend);
    if (source == Factor::One) return true;
    return (source == Factor::SrcAlpha || source == Factor::Zero) && destination != Factor::SrcColor &&
           destination != Factor::OneMinusSrcColor;
}

/// A draw, and what the processor paints for it.
struct SoftwarePainter::Piece {
    std::variant<QuadDraw, LettersDraw, MeshDraw> draw;
    size_t firstPaint = 0, paintCount = 0;
    size_t firstMesh = 0, meshCount = 0;
    bool byGL = false;
    StillPaints::Owner still = nullptr;  ///< of a picture that stays as it is

    const DrawState& state() const {
        return std::visit([](const auto& any) -> const DrawState& { return any.state; }, draw);
    }
    /// It is in a layer that GL has drawn, or nowhere.
    void leaveToLayer() {
        paintCount = 0;
        meshCount = 0;
        still = nullptr;
    }
};

struct SoftwarePainter::Picture {
    CanvasSize size;
    uint32_t background = 0;
    QVFrameBufferToTexture* target = nullptr;  ///< none: the frame
    std::vector<Piece> pieces;
    std::vector<QuadPaint> paints;
    std::vector<platform::MeshPaint> meshes;
    MadeCorners corners;
    /// Of painted targets, which may be painted anew before this picture is.
    std::vector<std::shared_ptr<const void>> memory;
    std::vector<std::vector<uint8_t>> layers;  ///< pixels of what GL has drawn
    size_t usedLayers = 0;
    std::vector<platform::PreparedPaint> prepared;
    std::vector<StillPaints::Owner> owners;  ///< of the prepared ones, as StillPaints wants them
    std::vector<platform::PreparedMesh> preparedMeshes;
    size_t usedMeshes = 0;

    void begin(const CanvasSize& newSize, uint32_t newBackground, QVFrameBufferToTexture* newTarget) {
        size = newSize;
        background = newBackground;
        target = newTarget;
    }
    void end() {
        pieces.clear();
        paints.clear();
        meshes.clear();
        corners.clear();
        memory.clear();
        owners.clear();
        usedLayers = 0;
    }

    template <typename Draw>
    static bool needsDepths(const Draw&) {
        return false;
    }
    static bool needsDepths(const MeshDraw& mesh) { return mesh.comparesDepths; }
    /// Adds a draw with what it is painted as. In targets depths are compared only by what needs it.
    template <typename Draw>
    void add(Draw draw, const Texture* texture) {
        if (target) draw.state.depthTest = needsDepths(draw);
        Piece piece{.draw = draw, .firstPaint = paints.size(), .firstMesh = meshes.size()};
        if (texture && texture->isStill()) piece.still = texture->memoryOwner();
        piece.byGL = !addPaints(draw) && !addMeshesOf(draw);
        piece.paintCount = paints.size() - piece.firstPaint;
        piece.meshCount = meshes.size() - piece.firstMesh;
        pieces.push_back(std::move(piece));
    }
    template <typename Draw>
    bool addPaints(const Draw& draw) {
        return multiscene::addPaints(draw, size, paints);
    }
    bool addPaints(const MeshDraw&) { return false; }
    bool addMeshesOf(const QuadDraw& quad) { return addMeshes(quad, size, meshes, corners); }
    template <typename Draw>
    bool addMeshesOf(const Draw& draw) {
        return addMeshes(draw, size, meshes);
    }
    /// Layers were added last; they belong where their pieces are.
    void orderPaints() {
        std::vector<QuadPaint> ordered;
        for (const Piece& piece : pieces) {
            const auto first = paints.begin() + static_cast<ptrdiff_t>(piece.firstPaint);
            ordered.insert(ordered.end(), first, first + static_cast<ptrdiff_t>(piece.paintCount));
        }
        paints = std::move(ordered);
    }
    /// How many shapes show.
    size_t prepare() {
        size_t count = 0;
        usedMeshes = 0;
        const QuadPaint* paint = paints.data();
        for (const Piece& piece : pieces) {
            for (size_t i = 0; i < piece.paintCount; ++i, ++paint) {
                if (prepared.size() == count) prepared.emplace_back();
                if (!platform::preparePaint(*paint, size.width, size.height, prepared[count])) continue;
                owners.push_back(piece.still);
                ++count;
            }
            for (size_t i = 0; i < piece.meshCount; ++i) prepareMesh(meshes[piece.firstMesh + i], count);
        }
        return count;
    }
    void prepareMesh(const platform::MeshPaint& mesh, size_t shapesBelow) {
        if (preparedMeshes.size() == usedMeshes) preparedMeshes.emplace_back();
        platform::PreparedMesh& seen = preparedMeshes[usedMeshes];
        if (!platform::prepareMesh(mesh, size.width, size.height, seen)) return;
        seen.shapesBelow = shapesBelow;
        ++usedMeshes;
    }
    void keep(const Texture* texture) {
        if (texture && texture->memoryOwner()) memory.push_back(texture->memoryOwner());
    }
};

SoftwarePainter::SoftwarePainter(GLPainter::MakeContext makeContext, platform::FileGate& gate, int threads)
    : gl_(std::move(makeContext), gate, GLPainter::PictureMemory::Kept), tiles_(threads) {}

SoftwarePainter::~SoftwarePainter() = default;

void SoftwarePainter::makeCurrent() {
    if (!gl_.device().empty()) gl_.makeCurrent();
}

void SoftwarePainter::release() {
    pictures_.clear();
    spare_.clear();
    blurred_ = {};
    filtered_ = {};
    stills_ = {};
    gl_.release();
}

// --- gathering -----------------------------------------------------------------------------------------

SoftwarePainter::Picture& SoftwarePainter::current() { return *pictures_.back(); }

void SoftwarePainter::begin(const CanvasSize& size, uint32_t background, QVFrameBufferToTexture* target) {
    if (spare_.empty()) spare_.push_back(std::make_unique<Picture>());
    pictures_.push_back(std::move(spare_.back()));
    spare_.pop_back();
    current().begin(size, background, target);
}

void SoftwarePainter::beginFrame(int width, int height, uint32_t background) {
    while (!pictures_.empty()) drop();  // a frame that was given up
    begin({width, height}, background, nullptr);
    resetState();
}

void SoftwarePainter::beginTarget(QVFrameBufferToTexture& target) {
    begin({target.fboWidth(), target.fboHeight()}, 0, &target);
}

void SoftwarePainter::drop() {
    current().end();
    spare_.push_back(std::move(pictures_.back()));
    pictures_.pop_back();
}

void SoftwarePainter::endFrame(const platform::Canvas& picture) {
    finish(current(), picture);
    drop();
    ++frame_;
}

void SoftwarePainter::endTarget() {
    QVFrameBufferToTexture& target = *current().target;
    finish(current(), target.canvas());
    target.setPainted();
    drop();
}

void SoftwarePainter::paint(const QuadDraw& quad) {
    if (pictures_.empty()) return;
    Picture& picture = current();
    if (std::holds_alternative<ColorLook>(quad.look)) return paintColor(quad);
    if (quad.filters && !quad.texture->levels().empty()) {
        QuadDraw shown = quad;
        shown.texture = &filtered_.of(*quad.texture, *quad.filters, isUpsideDown(quad), frame_, tiles_);
        shown.filters = nullptr;
        return paint(shown);
    }
    picture.keep(quad.texture);
    if (const auto* mask = std::get_if<MaskLook>(&quad.look)) picture.keep(mask->mask);
    const auto* blur = std::get_if<BlurLook>(&quad.look);
    if (!blur || quad.texture->levelsOrFilm().empty() || !quad.texture->isPremultiplied() ||
        !(quad.texture->isOpaque() || isBlurAlike(quad.state.blend)))
        return picture.add(quad, quad.texture);
    QuadDraw shown = quad;
    shown.texture = &blurred_.of(*quad.texture, *blur, tiles_);
    shown.look = PlainLook{};
    picture.keep(shown.texture);
    picture.add(shown, nullptr);
}

/// Some blend functions tell a colour's own alpha from the opacity: then it is painted as a picture.
void SoftwarePainter::paintColor(const QuadDraw& quad) {
    const auto& look = std::get<ColorLook>(quad.look);
    using Factor = platform::BlendFactor;
    constexpr std::array alike{Factor::Zero, Factor::One, Factor::SrcAlpha, Factor::SrcAlphaSaturate};
    if (std::ranges::find(alike, paintedBlend(quad.state.blend).source) != alike.end())
        return current().add(quad, nullptr);
    platform::Bitmap texel(1, 1);
    std::ranges::copy(colorBytes(look.color), texel.rgba.begin());
    std::vector<platform::Bitmap> levels;
    levels.push_back(std::move(texel));
    Texture texture;
    texture.setLevels(std::move(levels), false);
    QuadDraw shown = quad;
    shown.texture = &texture;
    shown.look = PlainLook{.opacity = look.opacity};
    current().keep(&texture);
    current().add(shown, nullptr);
    current().pieces.back().draw = quad;
}

void SoftwarePainter::paint(const LettersDraw& letters) {
    if (pictures_.empty()) return;
    current().keep(letters.atlas);
    current().add(letters, letters.atlas);
}

void SoftwarePainter::paint(const MeshDraw& mesh) {
    if (pictures_.empty()) return;
    current().keep(mesh.texture);
    current().keep(mesh.emissionTexture);
    current().add(mesh, nullptr);
}

// --- layers of GL --------------------------------------------------------------------------------------

namespace {

bool isOver(const BlendFunction& blend) { return blend == BlendFunction(); }

/// Then what is clear in a layer changes nothing where it is blended, and its colours come out as they were
/// drawn.
bool fitsLayer(const BlendFunction& blend) {
    using Factor = platform::BlendFactor;
    const auto [source, destination] = paintedBlend(blend);
    if (source == Factor::One && destination == Factor::OneMinusSrcColor) return true;
    return (source == Factor::One || source == Factor::SrcAlpha) &&
           (destination == Factor::One || destination == Factor::OneMinusSrcAlpha);
}

/// How that is drawn into its layer, whose colours are multiplied by alpha.
BlendFunction blendInLayer(const BlendFunction& blend) {
    const BlendFunction asItIs{1, BlendFunction().destination};
    return paintedBlend(blend).source == platform::BlendFactor::One ? asItIs : BlendFunction();
}

/// A canvas's part painted as it is.
QuadPaint paintOf(const platform::Surface& surface, const PixelBounds& bounds, const BlendFunction& blend) {
    const double left = bounds.left, top = bounds.top, right = bounds.right, bottom = bounds.bottom;
    QuadPaint paint;
    paint.picture = surface;
    paint.corners = {{{.x = left, .y = bottom, .u = 0, .v = 1},
                      {.x = right, .y = bottom, .u = 1, .v = 1},
                      {.x = right, .y = top, .u = 1, .v = 0},
                      {.x = left, .y = top, .u = 0, .v = 0}}};
    paint.smooth = {false, false, false, false};
    paint.blend = paintedBlend(blend);
    return paint;
}

}  // namespace

/// Where GL draws something that compares depths, all that does so shares a layer with what is drawn between
/// it. Others share one as long as they are laid over each other; a draw with another blend function has a
/// layer of its own, which is blended so. Where that is not the same, GL draws all that lies under it, too.
void SoftwarePainter::drawLayers(Picture& picture) {
    std::vector<Piece>& pieces = picture.pieces;
    struct Shared {
        size_t first = 0, end = 0;
        bool has(size_t place) const { return first <= place && place < end; }
    };
    Shared ground, deep;
    const bool hasDepth =
        std::ranges::any_of(pieces, [](const Piece& piece) { return piece.byGL && piece.state().depthTest; });
    bool isDeepOver = true;
    for (size_t at = 0; at < pieces.size(); ++at) {
        if (hasDepth && pieces[at].state().depthTest) deep = {deep.end > 0 ? deep.first : at, at + 1};
        if (pieces[at].byGL && !fitsLayer(pieces[at].state().blend)) ground.end = at + 1;
    }
    for (size_t at = deep.first; at < deep.end; ++at) isDeepOver &= isOver(pieces[at].state().blend);
    if (deep.end > 0 && (!isDeepOver || deep.first < ground.end)) {
        ground.end = std::max(ground.end, deep.end);
        deep = {};
    }
    for (size_t at = 0; at < pieces.size(); ++at) pieces[at].byGL |= ground.has(at) || deep.has(at);

    for (size_t first = 0; first < pieces.size();) {
        size_t end = first + 1;
        if (!pieces[first].byGL) {
            first = end;
            continue;
        }
        const bool isGround = ground.has(first);
        if (isGround)
            end = ground.end;
        else if (deep.has(first))
            end = deep.end;
        else if (isOver(pieces[first].state().blend))
            while (end < pieces.size() && pieces[end].byGL && isOver(pieces[end].state().blend) &&
                   !deep.has(end))
                ++end;
        drawLayer(picture, first, end, isGround);
        first = end;
    }
}

/// The ground holds the background, too.
void SoftwarePainter::drawLayer(Picture& picture, size_t first, size_t end, bool isGround) {
    const CanvasSize& size = picture.size;
    const bool isAlone = end == first + 1 && !isGround;
    PixelBounds bounds;
    if (isGround) bounds = {0, 0, size.width, size.height};
    for (size_t i = first; i < end; ++i)
        bounds.include(
            std::visit([&](const auto& draw) { return boundsOf(draw, size); }, picture.pieces[i].draw));
    for (size_t i = first; i < end; ++i) picture.pieces[i].leaveToLayer();
    if (bounds.isEmpty()) return;
    if (picture.layers.size() == picture.usedLayers) picture.layers.emplace_back();
    std::vector<uint8_t>& pixels = picture.layers[picture.usedLayers++];
    const int width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
    pixels.resize(static_cast<size_t>(width) * static_cast<size_t>(height) * 4);
    gl_.beginPart(size.width, size.height, {bounds.left, size.height - bounds.bottom, width, height},
                  isGround ? std::exchange(picture.background, 0) : 0);
    for (size_t i = first; i < end; ++i)
        std::visit(
            [&](auto draw) {
                if (isAlone) draw.state.blend = blendInLayer(draw.state.blend);
                gl_.replay(draw);
            },
            picture.pieces[i].draw);
    const ptrdiff_t stride = ptrdiff_t{width} * 4;
    gl_.endFrame({.pixels = pixels.data(), .stride = stride, .width = width, .height = height});
    Piece& piece = picture.pieces[first];
    piece.firstPaint = picture.paints.size();
    piece.paintCount = 1;
    picture.paints.push_back(
        paintOf({.pixels = pixels.data(), .stride = stride, .width = width, .height = height}, bounds,
                isAlone ? piece.state().blend : BlendFunction()));
}

// --- painting ------------------------------------------------------------------------------------------

void SoftwarePainter::finish(Picture& picture, const platform::Canvas& canvas) {
    if (std::ranges::any_of(picture.pieces, &Piece::byGL)) {
        drawLayers(picture);
        picture.orderPaints();
    }
    platform::shareEdges(picture.paints);
    const size_t count = picture.prepare();
    const std::span prepared(picture.prepared.data(), count);
    stills_.replace(prepared, picture.owners, canvas.width, canvas.height, frame_, tiles_);
    tiles_.paint(prepared, std::span(picture.preparedMeshes.data(), picture.usedMeshes), picture.background,
                 canvas);
}

}  // namespace multiscene
