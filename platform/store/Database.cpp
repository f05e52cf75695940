#include "platform/store/Database.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "platform/base/Error.h"
#include "platform/base/File.h"

namespace platform {

namespace {

bool isPassingCode(int code) {
    switch (code & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_FULL:
        case SQLITE_NOMEM:
        case SQLITE_IOERR:     // a full disk, too: the shared index cannot grow
        case SQLITE_PROTOCOL:  // a lock that could not be had
            return true;
        default:
            return false;
    }
}

bool isUnwritable(int code) {
    switch (code & 0xff) {
        case SQLITE_CANTOPEN:
        case SQLITE_READONLY:
        case SQLITE_PERM:
        case SQLITE_FULL:
        case SQLITE_IOERR:
            return true;
        default:
            return false;
    }
}

std::string explanation(int code, const std::string& message) {
    switch (code & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return "the database is in use by another process";
        case SQLITE_FULL:
            return "no space left for the database";
        case SQLITE_IOERR:
            return "the database cannot be read or written; the disk may be full";
        case SQLITE_NOTADB:
            return "the file is no database";
        case SQLITE_CORRUPT:
            return "the database is damaged";
        default:
            return "database: " + message;
    }
}

/// A disk that cannot be asked forbids nothing.
bool isForbidden(const std::filesystem::path& path, int use) {
    return ::access(path.c_str(), use) != 0 && !isPassing(errno);
}

bool mayWrite(const std::filesystem::path& path) { return !isForbidden(path, W_OK) || errno == ENOENT; }

/// SQLite says of every file that it could not open that it could not open it. Where nothing forbids that,
/// something passing did.
bool isRefused(const std::string& file) {
    const std::filesystem::path folder = std::filesystem::path(file).parent_path();
    return !mayWrite(file) || !mayWrite(folder) || isForbidden(folder, F_OK);
}

/// Asked by the library's own file: who closes one of another's gives up the locks of all of them.
bool isReadable(SQLite::Database& connection) {
    sqlite3_file* opened = nullptr;
    sqlite3_file_control(connection.getHandle(), "main", SQLITE_FCNTL_FILE_POINTER, &opened);
    if (!opened || !opened->pMethods) return false;
    char header[100];
    const int result = opened->pMethods->xRead(opened, header, sizeof header, 0);
    return result == SQLITE_OK || result == SQLITE_IOERR_SHORT_READ;
}

/// SQLite takes a file for damaged, too, of which the disk does not give it what it asks for, or did not give
/// it once.
bool isUnread(int code, const std::string& file) {
    if ((code & 0xff) != SQLITE_CORRUPT && (code & 0xff) != SQLITE_NOTADB) return false;
    try {
        SQLite::Database again(file, SQLite::OPEN_READWRITE);
        if (!isReadable(again)) return true;
        return again.execAndGet("PRAGMA quick_check(1)").getString() == "ok";
    } catch (const SQLite::Exception& failure) {
        const int found = failure.getErrorCode();
        return isPassingCode(found) || (isUnwritable(found) && !isRefused(file));
    }
}

[[noreturn]] void rethrow(const SQLite::Exception& failure, const std::string& file) {
    const int code = isUnread(failure.getErrorCode(), file) ? SQLITE_IOERR : failure.getErrorCode();
    const bool passes = isPassingCode(code) || (isUnwritable(code) && !isRefused(file));
    const ErrorKind kind = passes ? ErrorKind::Transient : ErrorKind::Failed;
    const int kindOfCode = code & 0xff;
    if (kindOfCode == SQLITE_CORRUPT || kindOfCode == SQLITE_NOTADB)
        throw DamagedDatabase(explanation(code, failure.what()), file);
    if (isUnwritable(code)) throw UnwritableDatabase(kind, explanation(code, failure.what()), file);
    throw Error(kind, explanation(code, failure.what()), file);
}

template <typename Work>
auto guarded(const std::string& file, Work&& work) -> decltype(work()) {
    try {
        return work();
    } catch (const SQLite::Exception& failure) {
        rethrow(failure, file);
    }
}

/// Write-ahead logging lets readers go on while an installation writes. The switch itself needs the file
/// alone and is not covered by the busy time-out, so two first starts at once may have to try again.
void useWriteAheadLog(SQLite::Database& connection) {
    for (int attempt = 0;; ++attempt) {
        try {
            connection.execAndGet("PRAGMA journal_mode=WAL");
            return;
        } catch (const SQLite::Exception& failure) {
            const int code = failure.getErrorCode() & 0xff;
            if ((code != SQLITE_BUSY && code != SQLITE_LOCKED) || attempt == 200) throw;
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }
}

}  // namespace

struct Database::Core {
    Core(const std::string& name, int busyTimeoutMs)
        : file(name), connection(name, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, busyTimeoutMs) {}

    /// By a URI that says how.
    Core(const std::string& name, const std::string& uri)
        : file(name), connection(uri, SQLite::OPEN_READONLY | SQLite::OPEN_URI) {}

    std::string file;
    SQLite::Database connection;
    bool inTransaction = false;
};

struct Statement::Core {
    Core(SQLite::Database& connection, const std::string& sql, const std::string& name)
        : query(connection, sql), file(name) {}

    SQLite::Statement query;
    std::string file;
};

Statement::Statement(std::unique_ptr<Core> core) : core_(std::move(core)) {}
Statement::Statement(Statement&&) noexcept = default;
Statement& Statement::operator=(Statement&&) noexcept = default;
Statement::~Statement() = default;

Statement& Statement::bind(int index, int64_t number) {
    guarded(core_->file, [&] { core_->query.bind(index, number); });
    return *this;
}

Statement& Statement::bind(int index, std::string_view text) {
    guarded(core_->file, [&] { core_->query.bind(index, std::string(text)); });
    return *this;
}

bool Statement::step() {
    return guarded(core_->file, [&] { return core_->query.executeStep(); });
}

bool Statement::run() {
    const bool hasRows = step();
    while (hasRows && step()) {
    }
    return hasRows;
}

int64_t Statement::integer(const char* column) const {
    return guarded(core_->file, [&] { return core_->query.getColumn(column).getInt64(); });
}

std::string Statement::text(const char* column) const {
    return guarded(core_->file, [&] { return core_->query.getColumn(column).getString(); });
}

Database::Database(const std::string& file, int busyTimeoutMs) {
    guarded(file, [&] {
        core_ = std::make_unique<Core>(file, busyTimeoutMs);
        if (file == kInMemory) return;
        try {
            useWriteAheadLog(core_->connection);
        } catch (const SQLite::Exception& failure) {
            // What looks damaged because one read failed is whole the next time.
            if ((failure.getErrorCode() & 0xff) != SQLITE_CORRUPT) throw;
            core_ = std::make_unique<Core>(file, busyTimeoutMs);
            useWriteAheadLog(core_->connection);
        }
        core_->connection.exec("PRAGMA synchronous=FULL");
    });
}

Database::Database(std::unique_ptr<Core> core) : core_(std::move(core)) {}

Database::~Database() = default;

std::unique_ptr<Database> Database::unchanging(const std::string& file) {
    std::string uri = "file:";
    for (const char letter : file) {
        constexpr std::string_view special = "%?#";
        char escaped[4];
        std::snprintf(escaped, sizeof escaped, "%%%02X", static_cast<unsigned char>(letter));
        uri += special.find(letter) == std::string_view::npos ? std::string(1, letter) : escaped;
    }
    return guarded(file, [&] {
        return std::unique_ptr<Database>(new Database(std::make_unique<Core>(file, uri + "?immutable=1")));
    });
}

std::string Database::image() const {
    sqlite3_int64 size = 0;
    const std::unique_ptr<unsigned char, void (*)(void*)> bytes(
        sqlite3_serialize(core_->connection.getHandle(), "main", &size, 0), sqlite3_free);
    if (!bytes) throw Error(ErrorKind::Transient, "the database cannot be copied", core_->file);
    std::string image(reinterpret_cast<const char*>(bytes.get()), static_cast<size_t>(size));
    // In memory there is no log beside the file, so the header must not ask for one.
    constexpr size_t writeVersion = 18, readVersion = 19;
    if (image.size() > readVersion) image[writeVersion] = image[readVersion] = 1;
    return image;
}

std::unique_ptr<Database> Database::ofImage(const std::string& image, const std::string& file) {
    auto core = std::make_unique<Core>(kInMemory, 0);
    core->file = file;
    auto* const bytes = static_cast<unsigned char*>(sqlite3_malloc64(image.size()));
    if (!bytes) throw Error(ErrorKind::Transient, "out of memory", file);
    std::memcpy(bytes, image.data(), image.size());
    const auto size = static_cast<sqlite3_int64>(image.size());
    const int result = sqlite3_deserialize(core->connection.getHandle(), "main", bytes, size, size,
                                           SQLITE_DESERIALIZE_FREEONCLOSE | SQLITE_DESERIALIZE_READONLY);
    if (result != SQLITE_OK) throw Error(ErrorKind::Failed, "the copy of the database is damaged", file);
    return std::unique_ptr<Database>(new Database(std::move(core)));
}

const std::string& Database::file() const { return core_->file; }

void Database::execute(const std::string& sql) {
    guarded(core_->file, [&] { core_->connection.exec(sql); });
}

Statement Database::prepare(const std::string& sql) {
    return guarded(core_->file, [&] {
        return Statement(std::make_unique<Statement::Core>(core_->connection, sql, core_->file));
    });
}

bool Database::tableExists(const std::string& name) const {
    return guarded(core_->file, [&] { return core_->connection.tableExists(name); });
}

void Database::transaction(const std::function<void()>& work) {
    if (core_->inTransaction) return work();
    execute("BEGIN IMMEDIATE");
    core_->inTransaction = true;
    try {
        work();
        execute("COMMIT");
    } catch (...) {
        // A full disk may have rolled back already; the original fault is the one to report.
        core_->connection.tryExec("ROLLBACK");
        core_->inTransaction = false;
        throw;
    }
    core_->inTransaction = false;
}

void Database::checkIntegrity() {
    Statement check = prepare("PRAGMA quick_check(1)");
    const std::string answer = check.step() ? check.text("quick_check") : "";
    if (answer == "ok") return;
    // A page that the disk does not give is told by the code of that error.
    constexpr std::string_view errorCode = "error code=";
    const size_t at = answer.find(errorCode);
    if (at != std::string::npos && isPassingCode(std::atoi(answer.c_str() + at + errorCode.size())))
        throw Error(ErrorKind::Transient, explanation(SQLITE_IOERR, ""), core_->file);
    throw DamagedDatabase("the database is damaged", core_->file);
}

}  // namespace platform
