// A SQLite database in one file, or in memory. Errors are platform::Error with the database as their file: a
// full disk and a database that another process keeps locked are Transient, everything else is Failed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/base/Error.h"

namespace platform {

class Database;

/// The file cannot be written, or not beside it either, where its index lies while it is open: no right to,
/// or no room.
class UnwritableDatabase : public Error {
  public:
    using Error::Error;
};

/// What the file holds is no database, or no longer one.
class DamagedDatabase : public Error {
  public:
    explicit DamagedDatabase(const std::string& words, const std::string& file)
        : Error(ErrorKind::Failed, words, file) {}
};

/// One prepared statement, refers to its database. Bind from 1 on, then step until it says false.
class Statement {
  public:
    Statement(Statement&&) noexcept;
    Statement& operator=(Statement&&) noexcept;
    ~Statement();

    Statement& bind(int index, int64_t number);
    Statement& bind(int index, std::string_view text);

    /// True while there is a row. A statement without rows is executed by the first call.
    bool step();
    /// Does a change that returns rows to its end: before that nobody knows whether it could be written.
    /// Whether there was a row.
    bool run();
    /// Columns of the current row by name; a number or text that is absent reads as 0 or empty.
    int64_t integer(const char* column) const;
    std::string text(const char* column) const;

  private:
    friend class Database;
    struct Core;
    explicit Statement(std::unique_ptr<Core> core);
    std::unique_ptr<Core> core_;
};

/// One connection. Not for use by two threads at a time; several processes may have the same file open.
class Database {
  public:
    /// The file name of a database that lives in memory and ends with its connection.
    static constexpr const char* kInMemory = ":memory:";

    /// Opens or creates. A writer of another process is waited for up to `busyTimeoutMs`.
    explicit Database(const std::string& file, int busyTimeoutMs = 20'000);
    /// Opens a file that nobody can write: reads need no lock and no index. What another program should
    /// change all the same is not seen.
    static std::unique_ptr<Database> unchanging(const std::string& file);
    /// The whole content as bytes, as it is now.
    std::string image() const;
    /// A database in memory that holds what image() gave and cannot be changed; `file` is named in errors.
    static std::unique_ptr<Database> ofImage(const std::string& image, const std::string& file);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    const std::string& file() const;
    void execute(const std::string& sql);
    Statement prepare(const std::string& sql);
    bool tableExists(const std::string& name) const;

    /// Runs `work` in one transaction that takes the write lock at its start, so that what it reads cannot
    /// change under it. Any exception rolls everything back and is passed on. A transaction inside a
    /// transaction joins the outer one.
    void transaction(const std::function<void()>& work);

    /// Throws DamagedDatabase when it is.
    void checkIntegrity();

  private:
    struct Core;
    explicit Database(std::unique_ptr<Core> core);
    std::unique_ptr<Core> core_;
};

}  // namespace platform
