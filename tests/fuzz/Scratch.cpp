#include "tests/fuzz/Scratch.h"

#include <sys/mman.h>
#include <unistd.h>

#include <fstream>

#include "platform/base/Paths.h"

namespace multiscene::fuzz {

namespace fs = std::filesystem;

namespace {

struct Folder {
    fs::path path;

    Folder() {
        const fs::path memory = "/dev/shm";
        path = (::access(memory.c_str(), W_OK) == 0 ? memory : fs::temp_directory_path()) /
               ("multiscene-fuzz-" + platform::uniqueIdentifier());
        fs::create_directories(path / "home");
        platform::setDataHome(path / "home");
    }
    ~Folder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
};

}  // namespace

platform::FileHandle memoryFile(Bytes bytes) {
    platform::FileHandle file(::memfd_create("fuzz", MFD_CLOEXEC));
    for (size_t written = 0; written < bytes.size();) {
        const ssize_t count = ::write(file.descriptor(), bytes.data() + written, bytes.size() - written);
        require(count > 0, "a file in memory can be written");
        written += static_cast<size_t>(count);
    }
    ::lseek(file.descriptor(), 0, SEEK_SET);
    return file;
}

const fs::path& scratchFolder() {
    static const Folder folder;
    return folder.path;
}

fs::path emptyScratch(const char* name) {
    const fs::path folder = scratchFolder() / name;
    fs::remove_all(folder);
    fs::create_directories(folder);
    return folder;
}

void writeFile(const fs::path& file, Bytes bytes) {
    std::ofstream(file, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace multiscene::fuzz
