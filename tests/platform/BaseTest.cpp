#include <glib.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <map>
#include <new>
#include <thread>

#include "platform/base/File.h"
#include "platform/base/FileGate.h"
#include "platform/base/Json.h"
#include "platform/base/Memory.h"
#include "platform/base/NotificationCenter.h"
#include "platform/base/PartFile.h"
#include "platform/base/Paths.h"
#include "platform/base/PropertyList.h"
#include "platform/base/PropertyListFaults.h"
#include "platform/fence/WorkerLimits.h"
#include "tests/platform/NoFilesLeft.h"
#include "tests/platform/TemporaryFolder.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

class BaseTest : public ::testing::Test {
  protected:
    fs::path write(const std::string& name, const std::string& text) const {
        fs::create_directories((folder / name).parent_path());
        std::ofstream(folder / name) << text;
        return folder / name;
    }
    const test::TemporaryFolder temporary;
    const fs::path folder = temporary.path();
};

std::span<const uint8_t> bytes(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

TEST(Value, ReadingsAreLenient) {
    const Value info(
        Value::Dictionary{{"a", "12.5abc"}, {"b", " -7"}, {"c", 1e30}, {"d", "YES"}, {"e", 0.75}});
    EXPECT_EQ(info.integer("a"), 12);
    EXPECT_EQ(info.real("a"), 12.5f);
    EXPECT_EQ(info.int32("b"), -7);
    EXPECT_EQ(info.integer("c"), INT64_MAX);
    EXPECT_EQ(info.int32("c"), INT32_MAX);
    EXPECT_EQ(Value("99999999999999999999").integerValue(), INT64_MAX);
    EXPECT_TRUE(info.boolean("d"));
    EXPECT_EQ(info.integer("e"), 0);
    EXPECT_TRUE(info.boolean("e"));
    EXPECT_EQ(info.integer("missing"), 0);
    for (const char* word : {"nan", "-nan", "inf", "-infinity"}) {
        EXPECT_EQ(Value(word).doubleValue(), 0) << word;
        EXPECT_EQ(Value(word).floatValue(), 0) << word;
    }
    EXPECT_EQ(Value(1e300).floatValue(), std::numeric_limits<float>::max());
    EXPECT_TRUE(Value(5)["key"].isNone());
    EXPECT_EQ(Value("0.1").floatValue(), 0.1f);
}

TEST(Value, EqualsNothingOfAnotherKind) {
    const Value::Array values{Value(),
                              Value(true),
                              Value(1),
                              Value(1.0),
                              Value("1<&\"b"),
                              Value(Value::Data{{1}}),
                              Value(Value::Date{1}),
                              Value(Value::Array{Value(1)}),
                              Value(Value::Dictionary{{"1", 1}})};
    for (const Value& left : values)
        for (const Value& right : values)
            EXPECT_EQ(left == right, &left == &right) << typeName(left.type()) << typeName(right.type());
    EXPECT_EQ(jsonText(Value(values)), R"([null,true,1,1.0,"1<&\"b","\u0001",1.0,[1],{"1":1}])");
    for (const Value& value : values)
        if (!value.isNone()) {
            const std::string xml = propertyListXml(value);
            EXPECT_EQ(parsePropertyList(bytes("\xEF\xBB\xBF" + xml + "\n\n"), "round"), value);
        }
}

TEST(PropertyList, FaultsNameTheFileAndTheLine) {
    try {
        parsePropertyList(bytes("<plist>\n<dict>\n<key>a</key></string>\n</dict></plist>"), "scene.plist");
        FAIL();
    } catch (const Error& fault) {
        EXPECT_EQ(fault.kind(), ErrorKind::Template);
        EXPECT_NE(std::string(fault.what()).find("scene.plist: "), std::string::npos) << fault.what();
        EXPECT_NE(std::string(fault.what()).find("line 3"), std::string::npos) << fault.what();
    }
}

TEST(PropertyList, WhatTheReaderPassesOverIsFound) {
    const auto faultOf = [](const std::string& content) {
        const auto faults = propertyListFaults(bytes("<plist>\n<dict>\n" + content + "\n</dict>\n</plist>"));
        if (faults.size() != 1) return std::to_string(faults.size()) + " faults";
        return std::to_string(faults[0].line) + " " + faults[0].message;
    };
    const auto expectFault = [&](const std::string& content, const std::string& text) {
        EXPECT_TRUE(faultOf(content).starts_with("3 ")) << faultOf(content);
        EXPECT_NE(faultOf(content).find(text), std::string::npos) << faultOf(content);
    };
    expectFault("<key>a</key><integer>8x9</integer>", "8x9");
    expectFault("<key>a</key><real>0,5</real>", "0,5");
    expectFault("<key>a</key><float>1</float>", "<float>");
    expectFault("<key>a</key><true/><key>a</key><true/>", "given twice");
    expectFault("<key>a</key><key>b</key><true/>", "\"a\" has no value");
    expectFault("<true/>", "without a key");
    expectFault("<key>a</key><string>Tom & Anna</string>", "&amp;");
    expectFault("<key>a</key><string>caf\xe9</string>", "UTF-8");
    EXPECT_EQ(faultOf("<key>a</key><real> -1.5e3 </real><!-- a & b --><key>b</key><string>&lt;&#233;</string>"
                      "<key>c</key><integer>0x1F</integer>"),
              "0 faults");
}

/// A binary list of `levels` arrays, each naming the next one `copies` times; the last names `tail`.
std::string nestedBinary(uint8_t levels, uint8_t copies, uint8_t tail) {
    std::string list = "bplist00";
    std::string offsets;
    for (uint8_t i = 0; i < levels; ++i) {
        offsets += static_cast<char>(list.size());
        list += static_cast<char>(0xA0 | copies);
        list += std::string(copies, static_cast<char>(i + 1 < levels ? i + 1 : tail));
    }
    offsets += static_cast<char>(list.size());
    list += '\x09';  // true
    const auto table = static_cast<char>(list.size());
    list += offsets + std::string(6, '\0') + '\1' + '\1' + std::string(7, '\0') +
            static_cast<char>(levels + 1) + std::string(8, '\0') + std::string(7, '\0') + table;
    return list;
}

TEST(PropertyList, BinaryListsThatUnfoldOrCycleAreRefused) {
    EXPECT_EQ(parsePropertyList(bytes(nestedBinary(2, 3, 2)), "small").array().size(), 3u);
    EXPECT_THROW(parsePropertyList(bytes(nestedBinary(12, 14, 12)), "bomb"), Error);
    EXPECT_THROW(parsePropertyList(bytes(nestedBinary(3, 1, 0)), "cycle"), Error);
    EXPECT_THROW(parsePropertyList(bytes(nestedBinary(3, 1, 200)), "dangling"), Error);
    const std::string whole = nestedBinary(4, 2, 4);
    for (size_t size = 0; size < whole.size(); ++size)
        EXPECT_THROW(parsePropertyList(bytes(whole.substr(0, size)), "prefix"), Error) << size;
}

/// A folder that everybody may write would be anybody's who makes it first.
TEST(Paths, WithoutAHomeTheDataIsTheUsersOwn) {
    const test::TemporaryFolder temporary;
    std::map<const char*, std::string> before;
    for (const char* name : {"HOME", "MULTISCENE_HOME", "XDG_DATA_HOME", "TMPDIR"})
        if (const char* value = ::getenv(name)) before[name] = value;
    for (const char* name : {"HOME", "MULTISCENE_HOME", "XDG_DATA_HOME"}) ::unsetenv(name);
    ::setenv("TMPDIR", temporary.path().c_str(), 1);
    const fs::path home = defaultDataHome();
    EXPECT_EQ(fs::status(home).permissions(), fs::perms::owner_all);
    fs::permissions(home, fs::perms::all);
    EXPECT_THROW(defaultDataHome(), Error);
    ::unsetenv("TMPDIR");
    for (const auto& [name, value] : before) ::setenv(name, value.c_str(), 1);
}

TEST(Json, WritesNumbersThatAreNotFiniteAsNull) {
    const Value value(Value::Dictionary{{"b", std::nan("")}, {"a", 1}, {"c", "\xff"}});
    EXPECT_EQ(jsonText(value), "{\"a\":1,\"b\":null,\"c\":\"\xEF\xBF\xBD\"}");
    EXPECT_EQ(parseJson("18446744073709551615", "more than 64 bits hold with a sign").doubleValue(), 0x1p64);
    EXPECT_THROW(parseJson(std::string(5000, '['), "deep"), Error);
    try {
        parseJson("{\"a\":", "cut");
        ADD_FAILURE() << "it was taken";
    } catch (const Error& error) {
        EXPECT_TRUE(error.message().starts_with("not valid JSON, at line 1, column 6: ")) << error.what();
        EXPECT_EQ(error.message().find("json."), std::string::npos) << error.what();
    }
}

TEST_F(BaseTest, TheGateOpensOnlyWhatLiesInside) {
    const fs::path inside = write("template/a/picture.png", "x"), outside = write("secret.txt", "x");
    write("template-2/b.png", "x");
    fs::create_symlink(outside, folder / "template/link.png");
    fs::create_symlink("a/picture.png", folder / "template/within.png");
    ASSERT_EQ(mkfifo((folder / "template/pipe").c_str(), 0600), 0);
    FileGate gate;
    gate.allowFolder(folder / "template");
    using Verdict = FileGate::Verdict;
    EXPECT_EQ(gate.check(inside), Verdict::Allowed);
    EXPECT_EQ(gate.check(folder / "template/within.png"), Verdict::Allowed);
    EXPECT_EQ(gate.check(folder / "template/nothing"), Verdict::Missing);
    EXPECT_EQ(gate.check(folder / "template/../secret.txt"), Verdict::Outside);
    EXPECT_EQ(gate.check(folder / "template/link.png"), Verdict::Outside);
    EXPECT_EQ(gate.check(folder / "template-2/b.png"), Verdict::Outside);
    EXPECT_EQ(gate.check(folder / "template/pipe"), Verdict::NotRegular);
    EXPECT_EQ(gate.check(folder / "template/a"), Verdict::NotRegular);
    EXPECT_EQ(gate.refusals().size(), 5u);
    gate.allowFile(outside);
    const FileGate::Opened opened = gate.open(folder / "template/link.png");
    ASSERT_EQ(opened.verdict, Verdict::Allowed);
    EXPECT_EQ(readFile(opened.file.path(), 10), std::vector<uint8_t>{'x'});
}

TEST_F(BaseTest, NothingIsLeftOfAProgramThatIsKilledWhileItWrites) {
    const pid_t writer = ::fork();
    if (writer == 0) {
        const PartFile part(folder / "out.mp4");
        const bool isWritten = ::write(part.file().descriptor(), "half", 4) == 4;
        ::_exit(isWritten ? 0 : 1);  // without the destructor
    }
    int status = 0;
    ASSERT_EQ(::waitpid(writer, &status, 0), writer);
    EXPECT_EQ(status, 0);
    removeAbandonedParts(folder);  // where the file system has no files without a name
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST_F(BaseTest, WhatTheMachineCannotOpenIsNotMissing) {
    if (isSanitized()) GTEST_SKIP() << "a sanitizer's look at virtual calls takes a descriptor of its own";
    const fs::path inside = write("template/picture.png", "x");
    FileGate gate;
    gate.allowFolder(folder / "template");
    const auto kindOf = [&]() -> std::optional<ErrorKind> {
        const test::NoFilesLeft none;
        try {
            gate.check(inside);
            return std::nullopt;
        } catch (const Error& error) {
            return error.kind();
        }
    };
    EXPECT_EQ(kindOf(), ErrorKind::Transient);
    EXPECT_EQ(gate.check(inside), FileGate::Verdict::Allowed);
    EXPECT_TRUE(gate.refusals().empty());
}

TEST_F(BaseTest, FilesAppearWholeOrNotAtAll) {
    const fs::path target = write("out.txt", "old");
    writeFileAtomically(target, "new");
    EXPECT_EQ(readFile(target, 10).size(), 3u);
    EXPECT_THROW(readFile(target, 2), Error);
    EXPECT_THROW(writeFileAtomically(folder / "missing" / "out.txt", "x"), Error);
    EXPECT_THROW(readFile(folder, 10), Error);
    const fs::path moved = folder / "moved.txt";
    moveFile(target, moved);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 1);
}

TEST_F(BaseTest, TheLongestNamesCanBeWritten) {
    const fs::path file = folder / std::string(255, 'a');
    writeFileAtomically(file, "text");
    EXPECT_EQ(fs::file_size(file), 4u);
}

TEST(MemoryDeathTest, ALackThatNobodyCatchesIsTold) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto prepare = [] { endOrderlyWithoutMemory([] { std::fputs("nothing left", stderr); }); };
    const auto throwOnAThread = [](const auto& thrown) { std::thread([&] { throw thrown; }).join(); };
    const auto passing = ::testing::ExitedWithCode(75);
    EXPECT_EXIT((prepare(), throwOnAThread(std::bad_alloc())), passing, "nothing left");
    EXPECT_EXIT((prepare(), throwOnAThread(Error(ErrorKind::Transient, "full"))), passing, "nothing left");
    EXPECT_EXIT((prepare(), static_cast<void>(g_malloc(SIZE_MAX / 2))), passing, "nothing left");
    EXPECT_EXIT((endOrderlyWithoutMemory([] { throw std::bad_alloc(); }), throwOnAThread(std::bad_alloc())),
                passing, "out of memory");
    EXPECT_EXIT((prepare(), throwOnAThread(std::logic_error("a fault of ours"))),
                ::testing::KilledBySignal(SIGABRT), "a fault of ours");
}

TEST(MemoryDeathTest, AShortageIsToldFromPlenty) {
    EXPECT_FALSE(memoryIsShort());
    const auto exitWithShortage = [] {
        const rlimit limit{300u << 20, 300u << 20};
        ::setrlimit(RLIMIT_AS, &limit);
        ::_exit(memoryIsShort());
    };
    const auto abortWith = [](rlim_t bytes) {
        endOrderlyWithoutMemory(nullptr);
        const rlimit limit{bytes, bytes};
        ::setrlimit(RLIMIT_AS, &limit);
        std::raise(SIGABRT);
    };
    if (!isSanitized()) {  // which takes memory of its own for a signal
        EXPECT_EXIT(abortWith(300u << 20), ::testing::ExitedWithCode(75), "out of memory");
    }
    EXPECT_EXIT(abortWith(RLIM_INFINITY), ::testing::KilledBySignal(SIGABRT), "");
    EXPECT_EXIT(exitWithShortage(), ::testing::ExitedWithCode(1), "");
}

TEST(NotificationCenter, ADroppedObserverIsNotCalledAgain) {
    int calls = 0;
    auto first = NotificationCenter::shared().addObserver("name", [&] { ++calls; });
    NotificationCenter::Token second;
    second = NotificationCenter::shared().addObserver("name", [&] {
        ++calls;
        second.reset();  // from inside its own handler
    });
    NotificationCenter::shared().post("name");
    NotificationCenter::shared().post("other");
    NotificationCenter::shared().post("name");
    EXPECT_EQ(calls, 3);
}

}  // namespace
}  // namespace platform
