#include "platform/archive/ZipArchive.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "RawZip.h"
#include "TemporaryFolder.h"
#include "platform/archive/ZipWriter.h"
#include "platform/base/File.h"
#include "platform/base/Paths.h"

namespace platform {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

class ZipArchiveTest : public testing::Test {
  protected:
    void write(const std::string& bytes) { std::ofstream(archive, std::ios::binary) << bytes; }
    /// Why an archive is refused; empty when it was unpacked.
    std::string refusal(const test::RawZip& zip, const ZipLimits& limits = {}) {
        write(zip.bytes());
        return refusal(limits);
    }
    std::string refusal(const ZipLimits& limits = {}) {
        fs::remove_all(target);
        createFolders(target);
        try {
            ZipArchive(archive, ErrorKind::Template, limits).extract(target);
        } catch (const Error& error) {
            EXPECT_EQ(error.kind(), ErrorKind::Template);
            EXPECT_EQ(error.file(), archive.string());
            return error.what();
        }
        return "";
    }
    std::string content(const std::string& name) const {
        std::ifstream stream(target / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    const test::TemporaryFolder temporary;
    const fs::path folder = temporary.path();
    fs::path archive = folder / "a.zip", target = folder / "target";
};

TEST_F(ZipArchiveTest, UnpacksPlainArchives) {
    const std::string text(100'000, 'x');
    EXPECT_EQ(refusal(test::RawZip()
                          .add({"T/", ""})
                          .add({"T/T.plist", "plain"})
                          .add({.name = "T/生日/b.bin", .content = text, .deflated = true, .mode = 0104777})
                          .add({.name = "T/dos", .content = "d", .madeBy = 20, .mode = 0})),
              "");
    EXPECT_EQ(content("T/T.plist"), "plain");
    EXPECT_EQ(content("T/生日/b.bin"), text);
    struct stat info {};
    ASSERT_EQ(::stat((target / "T/生日/b.bin").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07111, 0u) << "an archive can make programs";
}

TEST_F(ZipArchiveTest, RefusesNamesByRule) {
    const std::pair<std::string, const char*> cases[] = {
        {"../evil", "leaves the archive's folder"},
        {"T/../../evil", "leaves the archive's folder"},
        {"T/..", "leaves the archive's folder"},
        {"/etc/evil", "absolute"},
        {"C:evil", "drive letter"},
        {"c:/evil", "drive letter"},
        {"T\\..\\evil", "backslash"},
        {"T/./a", "empty component"},
        {"T//a", "empty component"},
        {std::string("T/a\0.plist", 10), "control character"},
        {"T/\x1b[2Ja", "control character"},
        {"T/a\x7f", "control character"},
        {"T/\xc2\x85", "control character"},
        {"T/\xc9\xfa\xc8\xd5", "not UTF-8"},
        {"T/" + std::string(256, 'n'), "longer than"},
        {std::string(600, 'n') + "/" + std::string(600, 'n'), "longer than"},
    };
    for (const auto& [name, rule] : cases) {
        EXPECT_THAT(refusal(test::RawZip().add({"T/fine", "f"}).add({name, "evil"})), HasSubstr(rule))
            << name;
        EXPECT_TRUE(fs::is_empty(target)) << "something was unpacked before " << rule;
        EXPECT_FALSE(fs::exists(folder / "evil"));
    }
    std::string deep;
    for (int level = 0; level < 40; ++level) deep += "d/";
    EXPECT_THAT(refusal(test::RawZip().add({deep + "f", ""})), HasSubstr("folders deep"));
    EXPECT_EQ(refusal(test::RawZip().add({"T/..a", ""}).add({"T/b..", ""}).add({"T/:", ""})), "");
}

TEST_F(ZipArchiveTest, RefusesNamesThatCollide) {
    EXPECT_THAT(refusal(test::RawZip().add({"T/a", "1"}).add({"T/a", "2"})), HasSubstr("twice"));
    EXPECT_THAT(refusal(test::RawZip().add({"T/a", "1"}).add({"T/A", "2"})), HasSubstr("in case"));
    EXPECT_THAT(refusal(test::RawZip().add({"T/a", "1"}).add({"t/b", "2"})), HasSubstr("in case"));
    EXPECT_THAT(refusal(test::RawZip().add({"É", "1"}).add({"é", "2"})), HasSubstr("in case"));
    EXPECT_THAT(refusal(test::RawZip().add({"\xc3\xa9", "1"}).add({"e\xcc\x81", "2"})), HasSubstr("accents"));
    EXPECT_THAT(refusal(test::RawZip().add({"T/a", "1"}).add({"T/a/b", "2"})), HasSubstr("both a file and"));
    EXPECT_EQ(refusal(test::RawZip().add({"T/b", "1"}).add({"T/", ""})), "");
}

TEST_F(ZipArchiveTest, RefusesLinksDevicesAndUnknownPackings) {
    for (const uint32_t mode : {0120777u, 0020644u, 0060644u, 0010644u, 0140644u})
        EXPECT_THAT(refusal(test::RawZip().add({.name = "T/l", .content = "/etc/passwd", .mode = mode})),
                    HasSubstr("link or a device"));
    EXPECT_THAT(
        refusal(test::RawZip().add({.name = "T/l", .content = "/etc/passwd", .madeBy = 20, .mode = 0120777})),
        HasSubstr("link or a device"));
    EXPECT_THAT(refusal(test::RawZip().add({.name = "T/e", .content = "secret", .flags = 0x0801})),
                HasSubstr("encrypted"));
    EXPECT_THAT(refusal(test::RawZip().add({.name = "T/e", .content = "x", .method = uint16_t(14)})),
                HasSubstr("unknown way"));
}

TEST_F(ZipArchiveTest, RefusesBombsBeforeUnpackingAnything) {
    ZipLimits limits;
    limits.maxRatio = 10;
    limits.ratioFreeBytes = 1000;
    const auto bomb = [](size_t bytes) {
        return test::RawZip()
            .add({"a", "z"})
            .add({.name = "b", .content = std::string(bytes, 'z'), .deflated = true});
    };
    EXPECT_THAT(refusal(bomb(4000), limits), HasSubstr("times its"));
    EXPECT_TRUE(fs::is_empty(target));
    EXPECT_EQ(refusal(bomb(900), limits), "");
    // An entry within another one's data, so that the same bytes are unpacked twice.
    const test::RawZipEntry inner{.name = "b", .content = std::string(1000, 'z')};
    const uint32_t within = 30 + 1;
    test::RawZip shared;
    shared.add({.name = "a", .content = test::RawZip().add(inner).entriesAlone()});
    shared.add({.name = "b", .content = inner.content, .localOffset = within});
    EXPECT_THAT(refusal(shared), HasSubstr("shares its data"));
}

TEST_F(ZipArchiveTest, RefusesNumbersThatLie) {
    const std::string text(3000, 't');
    EXPECT_THAT(refusal(test::RawZip().add({.name = "a", .content = text, .crc = 1u})),
                HasSubstr("check sum"));
    EXPECT_THAT(refusal(test::RawZip().add({.name = "a", .content = text, .deflated = true, .bytes = 100u})),
                HasSubstr("check sum"));
    EXPECT_NE(refusal(test::RawZip().add({.name = "a", .content = text, .deflated = true, .bytes = 9000u})),
              "");
    EXPECT_THAT(refusal(test::RawZip().add({.name = "a", .content = text, .bytes = 100u})),
                HasSubstr("contradict each other"));
    EXPECT_THAT(
        refusal(test::RawZip().add({.name = "a", .content = text, .packedBytes = 90000u, .bytes = 90000u})),
        HasSubstr("outside the archive"));
    EXPECT_THAT(refusal(test::RawZip().add({.name = "a/", .content = text})),
                HasSubstr("contradict each other"));
    test::RawZip elsewhere;
    elsewhere.add({"a", text}).add({.name = "b", .content = text, .localOffset = 7});
    EXPECT_THAT(refusal(elsewhere), HasSubstr("contradicts the archive's directory"));
}

TEST_F(ZipArchiveTest, RefusesWhatProgramsReadDifferently) {
    const test::RawZipEntry first{.name = "T/a", .content = "first"}, second{.name = "T/b", .content = "2"};
    const std::string whole = test::RawZip().add(first).add(second).bytes();
    const auto refusalOf = [&](const std::string& bytes) {
        write(bytes);
        const std::string why = refusal();
        EXPECT_TRUE(!fs::exists(target) || fs::is_empty(target)) << "something was unpacked: " << why;
        return why;
    };
    EXPECT_THAT(refusalOf("#!/bin/sh\n" + whole), HasSubstr("stands before the archive"));
    EXPECT_THAT(refusalOf(whole + whole), HasSubstr("stands before the archive"));
    // The same with places that have been corrected.
    EXPECT_THAT(refusalOf(test::RawZip().addBytes("#!/bin/sh\n").add(first).bytes()), HasSubstr("no entry"));
    EXPECT_THAT(refusalOf(test::RawZip().addBytes(whole).add(first).bytes()), HasSubstr("no entry"));
    EXPECT_THAT(refusalOf(test::RawZip().add(first).addBytes("hidden").add(second).bytes()),
                HasSubstr("no entry"));
    EXPECT_THAT(refusalOf(test::RawZip().add(first).addBytes("hidden").bytes()), HasSubstr("no entry"));

    test::RawZipEntry twoNames = first;
    twoNames.localName = "T/x";
    EXPECT_THAT(refusalOf(test::RawZip().add(twoNames).bytes()), HasSubstr("own name differs"));
    test::RawZipEntry elsewhere = first;
    elsewhere.disk = 1;
    EXPECT_THAT(refusalOf(test::RawZip().add(elsewhere).bytes()), HasSubstr("another part"));
    EXPECT_THAT(refusalOf(test::RawZip().add(first).bytes(1)), HasSubstr("one part of several"));
}

TEST_F(ZipArchiveTest, TakesWhatOtherProgramsWrite) {
    const fs::path file = folder / "T" / "a.txt";
    createFolders(file.parent_path());
    std::ofstream(file) << "content";
    // Sizes behind the data; and the end record, or all numbers, of large archives in a small one.
    const std::string piped = "cd " + folder.string() + " && rm -f a.zip && ";
    const std::string streamed = piped +
                                 "python3 -c \"import sys, zipfile\nclass Pipe:\n def write(s, b): return "
                                 "sys.stdout.buffer.write(b)\n def flush(s): pass\n"
                                 "with zipfile.ZipFile(Pipe(), 'w', 8) as z: z.write('T/a.txt')\" > a.zip";
    const std::string large = piped +
                              "python3 -c \"import zipfile\nzipfile.ZIP_FILECOUNT_LIMIT = 0\n"
                              "with zipfile.ZipFile('a.zip', 'w', 8) as z: z.write('T/a.txt')\"";
    const std::string throughout =
        piped +
        "echo more > T/b.txt && python3 -c \"import zipfile\nzipfile.ZIP64_LIMIT = 0\n"
        "with zipfile.ZipFile('a.zip', 'w', 8) as z: z.write('T/b.txt'); "
        "z.write('T/a.txt')\"";
    for (const std::string& command : {streamed, large, throughout}) {
        ASSERT_EQ(std::system(command.c_str()), 0);
        EXPECT_EQ(refusal(), "") << command;
        EXPECT_EQ(content("T/a.txt"), "content");
    }
}

TEST_F(ZipArchiveTest, EveryPrefixAndEveryFlippedByteIsRefusedOrHarmless) {
    const std::string whole = test::RawZip()
                                  .add({"T/T.plist", "content"})
                                  .add({.name = "T/b", .content = std::string(50, 'b'), .deflated = true})
                                  .bytes();
    for (size_t length = 0; length < whole.size(); ++length) {
        write(whole.substr(0, length));
        EXPECT_NE(refusal(), "") << length << " of " << whole.size() << " bytes pass for the archive";
    }
    for (size_t index = 0; index < whole.size(); ++index) {
        std::string damaged = whole;
        damaged[index] = static_cast<char>(damaged[index] ^ 0x41);
        write(damaged);
        if (!refusal().empty()) continue;
        // Names, times and attributes have no check sum; the content has.
        for (const auto& file : fs::recursive_directory_iterator(target))
            if (file.is_regular_file()) {
                EXPECT_THAT(content(fs::relative(file, target)),
                            testing::AnyOf("content", std::string(50, 'b')));
            }
    }
}

TEST_F(ZipArchiveTest, UnpacksOnlyWhatIsWantedAndNeverOverALink) {
    write(test::RawZip().add({"T/a", "a"}).add({"__MACOSX/T/._a", "junk"}).bytes());
    createFolders(target);
    ZipArchive zip(archive);
    ASSERT_EQ(zip.entries().size(), 2u);
    zip.extract(target, {.wanted = [](const ZipEntry& entry) { return entry.name.starts_with("T/"); }});
    EXPECT_EQ(content("T/a"), "a");
    EXPECT_FALSE(fs::exists(target / "__MACOSX"));
    EXPECT_THROW(zip.extract(target), Error) << "a file was overwritten";

    fs::remove_all(target / "T");
    fs::create_directory_symlink(folder, target / "T");
    EXPECT_THROW(zip.extract(target), Error);
    EXPECT_FALSE(fs::exists(folder / "a"));
    EXPECT_THROW(zip.extract(target, {.isCancelled = [] { return true; }}), Error);
    EXPECT_THROW(zip.extract(folder / "nowhere"), Error);
    fs::remove(target / "T");
    zip.extract(target, {.isCancelled = [] { return false; }});
    EXPECT_EQ(content("T/a"), "a");
    EXPECT_THROW(ZipArchive(folder / "nothing.zip"), Error);
    EXPECT_THROW(ZipArchive{folder}, Error);
}

TEST_F(ZipArchiveTest, WritesTheSameBytesWhateverTheFilesTimes) {
    const fs::path file = folder / "b.txt", picture = folder / "p.png", second = folder / "b.zip";
    std::ofstream(file) << std::string(5000, 'b');
    std::ofstream(picture) << "picture";
    writeZip(archive, {{"T/b.txt", file}, {"T/p.png", picture}});
    fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(1000));
    fs::permissions(file, fs::perms::owner_all);
    writeZip(second, {{"T/p.png", picture}, {"T/b.txt", file}});
    EXPECT_EQ(readFile(archive, 1 << 20), readFile(second, 1 << 20));
    EXPECT_EQ(refusal(), "");
    EXPECT_EQ(content("T/b.txt"), std::string(5000, 'b'));
    EXPECT_EQ(content("T/p.png"), "picture");

    fs::create_symlink(file, folder / "link");
    EXPECT_THROW(writeZip(second, {{"T/b.txt", folder / "link"}}), Error);
    EXPECT_EQ(readFile(archive, 1 << 20), readFile(second, 1 << 20)) << "a failed write replaced the archive";
}

}  // namespace
}  // namespace platform
