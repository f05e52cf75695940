
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iomanip>
#include <sstream>

#include "tests/program/ProgramTest.h"

// What the sample templates look like, as a small grid of colours for some frames of each. A change of looks
// that is meant is written down with MULTISCENE_WRITE_SAMPLES=1, which keeps the frames that samples/NAME.txt
// names; look at the frames first.

namespace multiscene::test {

namespace {

constexpr int kLongSide = 16, kShortSide = 9;  // cells of the grid
constexpr int kTolerance = 3;                  // levels of a cell's red, green or blue

using Rows = std::vector<std::string>;  // of cells: six hexadecimal digits each
using Looks = std::map<int, Rows>;      // by frame

fs::path source(const std::string& path) { return fs::path(MULTISCENE_SOURCE) / path; }

std::vector<std::string> samples() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(source("templates")))
        names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
}

Looks recorded(const fs::path& file) {
    Looks looks;
    std::ifstream in(file);
    Rows* rows = nullptr;
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("frame ", 0) == 0)
            rows = &looks[std::stoi(line.substr(6))];
        else if (rows)
            rows->push_back(line);
    }
    return looks;
}

void record(const fs::path& file, const Looks& looks) {
    std::ofstream out(file);
    for (const auto& [frame, rows] : looks) {
        out << "frame " << frame << '\n';
        for (const std::string& row : rows) out << row << '\n';
    }
}

std::string frameFile(int frame) {
    std::ostringstream name;
    name << "frame-" << std::setw(6) << std::setfill('0') << frame << ".png";
    return name.str();
}

int difference(const uint8_t* one, const uint8_t* other) {
    int largest = 0;
    for (int channel = 0; channel < 3; ++channel)
        largest = std::max(largest, std::abs(one[channel] - other[channel]));
    return largest;
}

/// Something ends here, in this picture or beside it: painters smooth edges in their own ways.
bool isEdge(const platform::Bitmap& picture, int x, int y) {
    constexpr int step = 12;  // levels
    const uint8_t* here = picture.pixel(x, y);
    return (x > 0 && difference(here, picture.pixel(x - 1, y)) > step) ||
           (y > 0 && difference(here, picture.pixel(x, y - 1)) > step) ||
           (x + 1 < picture.width && difference(here, picture.pixel(x + 1, y)) > step) ||
           (y + 1 < picture.height && difference(here, picture.pixel(x, y + 1)) > step);
}

void expectSamePicture(const platform::Bitmap& one, const platform::Bitmap& other) {
    ASSERT_EQ(one.size(), other.size());
    int64_t sum = 0, different = 0, compared = 0;
    for (int y = 0; y < one.height; ++y)
        for (int x = 0; x < one.width; ++x) {
            const uint8_t *first = one.pixel(x, y), *second = other.pixel(x, y);
            for (int channel = 0; channel < 3; ++channel) sum += std::abs(first[channel] - second[channel]);
            if (isEdge(one, x, y) || isEdge(other, x, y)) continue;
            ++compared;
            different += difference(first, second) > 3;
        }
    EXPECT_LT(static_cast<double>(sum) / (3.0 * one.width * one.height), 0.5) << "levels of 255, the mean";
    EXPECT_LE(static_cast<double>(different), 0.001 * static_cast<double>(compared))
        << "pixels away from edges";
}

Rows gridOf(const fs::path& picture) {
    const platform::FileHandle file(::open(picture.c_str(), O_RDONLY));
    const platform::ImageSize size = platform::readImageSize(file);
    platform::DecodeOptions averaged;
    averaged.canvas = size.width < size.height ? platform::ImageSize{kShortSide, kLongSide}
                                               : platform::ImageSize{kLongSide, kShortSide};
    const platform::Bitmap grid = platform::decodeImage(file, averaged);
    Rows rows;
    for (int y = 0; y < grid.height; ++y) {
        std::ostringstream row;
        for (int x = 0; x < grid.width; ++x)
            for (int channel = 0; channel < 3; ++channel)
                row << std::hex << std::setw(2) << std::setfill('0') << int{grid.pixel(x, y)[channel]};
        rows.push_back(row.str());
    }
    return rows;
}

/// The largest difference of two cells' channels.
int difference(const std::string& one, const std::string& other) {
    int largest = 0;
    for (size_t at = 0; at < 6; at += 2)
        largest = std::max(largest, std::abs(std::stoi(one.substr(at, 2), nullptr, 16) -
                                             std::stoi(other.substr(at, 2), nullptr, 16)));
    return largest;
}

void expectAlike(const Rows& now, const Rows& before) {
    ASSERT_EQ(now.size(), before.size());
    for (size_t y = 0; y < now.size(); ++y) {
        ASSERT_EQ(now[y].size(), before[y].size());
        for (size_t x = 0; 6 * x < now[y].size(); ++x) {
            const std::string is = now[y].substr(6 * x, 6), was = before[y].substr(6 * x, 6);
            EXPECT_LE(difference(is, was), kTolerance)
                << "column " << x << ", row " << y << " is " << is << ", was " << was;
        }
    }
}

std::string listed(const Looks& looks) {
    std::string frames;
    for (const auto& [frame, rows] : looks) frames += (frames.empty() ? "" : ",") + std::to_string(frame);
    return frames;
}

std::string testName(const ::testing::TestParamInfo<std::string>& sample) {
    std::string name = sample.param;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

class SamplesTest : public ProgramTest, public ::testing::WithParamInterface<std::string> {};

}  // namespace

TEST_P(SamplesTest, LookAsRecorded) {
    const fs::path file = source("tests/program/samples") / (GetParam() + ".txt");
    Looks looks = recorded(file);
    ASSERT_FALSE(looks.empty()) << "name frames worth seeing in " << file << ": lines such as \"frame 60\"";
    const fs::path sample = source("templates") / GetParam();
    const Result result = multiscene({"frames", sample, "--media", sample / "sample/inputs.json", "--at",
                                      listed(looks), "-o", folder.file("frames")});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const bool writes = std::getenv("MULTISCENE_WRITE_SAMPLES") != nullptr;
    for (auto& [frame, rows] : looks) {
        SCOPED_TRACE("frame " + std::to_string(frame));
        const Rows now = gridOf(folder.path() / "frames" / frameFile(frame));
        if (writes)
            rows = now;
        else
            expectAlike(now, rows);
    }
    if (writes) record(file, looks);
}

TEST_P(SamplesTest, BothPaintersDrawTheSame) {
    const Looks looks = recorded(source("tests/program/samples") / (GetParam() + ".txt"));
    const fs::path sample = source("templates") / GetParam();
    for (const char* renderer : {"gl", "software"}) {
        const Result result =
            multiscene({"frames", sample, "--media", sample / "sample/inputs.json", "--at", listed(looks),
                        "--renderer", renderer, "-o", folder.file(renderer)});
        ASSERT_EQ(result.exitCode, 0) << result.errors;
    }
    for (const auto& [frame, rows] : looks) {
        SCOPED_TRACE("frame " + std::to_string(frame));
        expectSamePicture(pictureIn(folder.path() / "gl" / frameFile(frame)),
                          pictureIn(folder.path() / "software" / frameFile(frame)));
    }
}

INSTANTIATE_TEST_SUITE_P(Templates, SamplesTest, ::testing::ValuesIn(samples()), testName);

}  // namespace multiscene::test
