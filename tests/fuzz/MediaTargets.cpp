// Pictures, meshes, films, sounds and fonts, on the ways by which the program hands them to the libraries.
#include <cmath>

#include "platform/audio/AudioFile.h"
#include "platform/image/ImageDecoder.h"
#include "platform/image/PvrPictures.h"
#include "platform/media/FilmLength.h"
#include "platform/media/VideoReader.h"
#include "platform/mesh/MeshFile.h"
#include "platform/text/TextRasterizer.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Scratch.h"

namespace multiscene::fuzz {

using platform::ErrorKind;

void playPvr(Bytes bytes) {
    const platform::PvrFile file(copyOf(bytes));
    for (const platform::Bitmap& picture : platform::pvrPictures(file))
        require(picture.rgba.size() == size_t(picture.width) * size_t(picture.height) * 4,
                "a picture has all of its pixels");
}

void playPhoto(Bytes bytes) {
    const auto file = memoryFile(bytes);
    isTaken([&] {
        const platform::ImageSize size = platform::readImageSize(file);
        require(size.width > 0 && size.height > 0, "a picture has a size");
    });
    isTaken([&] {
        const auto picture = platform::decodeImage(file, {.maxLongSide = 64});
        require(picture.width <= 64 && picture.height <= 64, "a picture is no larger than asked for");
    });
    const auto prepared = scratchFolder() / "photo";
    if (isTaken([&] { platform::prepareUserPhoto(file, prepared, {3, 2}, 32); }))
        require(std::filesystem::remove(prepared), "a prepared photo is there");
}

/// What lies beside it is the file itself: its buffer, its materials, or no such thing.
void playMesh(Bytes bytes) {
    isTaken([&] {
        const auto mesh = platform::readMeshFile(memoryFile(bytes), "mesh",
                                                 [&](const std::string&) { return memoryFile(bytes); });
        const auto isIn = [](int place, size_t count) {
            return place >= -1 && place < static_cast<int>(count);
        };
        for (size_t i = 0; i < mesh.nodes.size(); ++i) {
            require(isIn(mesh.nodes[i].parent, i), "a node's parent lies before it");
            for (const int part : mesh.nodes[i].parts)
                require(part >= 0 && isIn(part, mesh.parts.size()), "a node's parts are there");
        }
        for (const platform::MeshPart& part : mesh.parts) {
            require(part.corners.size() % 3 == 0, "triangles have three corners");
            require(part.material >= 0 && isIn(part.material, mesh.materials.size()), "a material is there");
            for (const platform::MeshCorner& corner : part.corners)
                for (size_t k = 0; k < 3; ++k)
                    require(std::isfinite(corner.place[k]) && std::isfinite(corner.normal[k]), "numbers are");
        }
        for (const platform::MeshMaterial& material : mesh.materials)
            require(isIn(material.picture, mesh.pictures.size()), "a material's picture is there");
        for (const platform::MeshAnimation& animation : mesh.animations)
            for (const platform::MeshTrack& track : animation.tracks) {
                const size_t numbers = (track.property == platform::MeshTrack::Property::Rotation ? 4 : 3) *
                                       (track.way == platform::MeshTrack::Way::Cubic ? 3 : 1);
                require(track.node >= 0 && isIn(track.node, mesh.nodes.size()), "a moved node is there");
                require(!track.times.empty() && track.values.size() >= track.times.size() * numbers,
                        "every time has its values");
            }
    });
}

void playFilm(Bytes bytes) {
    isTaken([&] { platform::measureFilm(memoryFile(bytes), "film", ErrorKind::Template, 5); });
    isTaken([&] {
        constexpr int most = 12;  // pictures
        platform::VideoReader film(memoryFile(bytes), "film", ErrorKind::Template,
                                   {.framesPerSecond = bytes.size() % 2 ? 0 : 30});
        for (int count = 0; count < most; ++count) {
            const auto frame = film.nextFrame();
            if (!frame) break;
            frame->pixels->data();
        }
    });
}

void playSound(Bytes bytes) {
    isTaken([&] {
        const platform::AudioFile file(memoryFile(bytes), "sound");
        require(file.frameCount() >= 0, "a sound has a length");
        platform::AudioFile::Reader reader(file);
        std::vector<float> samples(4096 * platform::kAudioChannels);
        reader.skip(100);
        for (int block = 0; block < 8 && reader.read(samples.data(), 4096) == 4096;) ++block;
    });
}

/// A font stays open until the program ends, and few may be; later ones are only looked at.
void playFont(Bytes bytes) {
    const platform::FontFile* font = platform::openFontFile(memoryFile(bytes));
    if (!font) return;
    platform::TextTextureDescription text;
    text.layout.text = "Afi \xd8\xb9\xe2\x82\xac";
    text.layout.font.file = font;
    text.layout.font.size = 12;
    text.textureSize = {64, 32};
    text.drawRect = {0, 0, 64, 32};
    isTaken([&] { platform::drawText(text, 64, 32, 1); });
}

}  // namespace multiscene::fuzz
