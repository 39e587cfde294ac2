// Thin owners over SQLite's C interface: a connection, a prepared statement,
// and the few calls reportcheck makes. Every failure becomes a SqliteError
// with SQLite's own message, so the commands say what went wrong.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sqlite3.h>

namespace sqlite {

class Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct ConnectionCloser {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct StatementFinalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

enum class OpenMode { ReadOnly, ReadWriteCreate, Memory };

class Connection {
public:
    // `path` is UTF-8 (SQLite's own convention on every system).
    Connection(const std::string& path, OpenMode mode);
    sqlite3* get() const { return db_.get(); }
    // One or more statements without results; throws with the message.
    void Execute(const std::string& sql) const;
    [[noreturn]] void Fail(std::string_view what) const;

private:
    std::unique_ptr<sqlite3, ConnectionCloser> db_;
};

class Statement {
public:
    Statement(const Connection& connection, std::string_view sql);
    sqlite3_stmt* get() const { return statement_.get(); }

    void Bind(int index, std::nullptr_t) const;
    void Bind(int index, std::int64_t value) const;
    void Bind(int index, std::string_view text) const;
    void Bind(int index, const std::optional<std::string>& text) const;
    void Bind(int index, const std::optional<std::string_view>& text) const;
    template <typename Number>
    void Bind(int index, const std::optional<Number>& number) const {
        if (number)
            Bind(index, static_cast<std::int64_t>(*number));
        else
            Bind(index, nullptr);
    }
    // Binds each value to the next parameter, from 1. Texts are bound
    // without a copy: they must live until the statement has run (Execute).
    template <typename... Values>
    void BindAll(const Values&... values) const {
        int index = 0;
        (Bind(++index, values), ...);
    }
    // Binds the values and runs the statement to its end, all while the
    // values (temporaries included) are alive.
    template <typename... Values>
    void Execute(const Values&... values) const {
        BindAll(values...);
        Run();
    }

    // true while there is a row; false when done. Throws on failure.
    bool Step() const;
    // Runs to the end and makes the statement ready for new values.
    void Run() const;
    void Reset() const;

    bool IsNull(int column) const;
    std::int64_t Integer(int column) const;
    std::string Text(int column) const;
    int ColumnCount() const;

private:
    const Connection* connection_;
    std::unique_ptr<sqlite3_stmt, StatementFinalizer> statement_;
};

// "BEGIN" at once, "ROLLBACK" unless Commit() was called: an exception
// leaves the file as it was.
class Transaction {
public:
    explicit Transaction(const Connection& connection);
    ~Transaction();
    void Commit();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

private:
    const Connection& connection_;
    bool done_ = false;
};

}  // namespace sqlite
