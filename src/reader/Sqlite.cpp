#include "reader/Sqlite.h"

namespace sqlite {

Connection::Connection(const std::string& path, OpenMode mode) {
    int flags = SQLITE_OPEN_READONLY;
    if (mode == OpenMode::ReadWriteCreate) flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    if (mode == OpenMode::Memory) flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_MEMORY;
    // No URI names: a file name is a file name, whatever it looks like.
    sqlite3* db = nullptr;
    const int status = sqlite3_open_v2(mode == OpenMode::Memory ? ":memory:" : path.c_str(), &db,
                                       flags, nullptr);
    db_.reset(db);
    if (status != SQLITE_OK) {
        throw Error(db ? sqlite3_errmsg(db) : sqlite3_errstr(status));
    }
    sqlite3_extended_result_codes(db, 1);
}

void Connection::Execute(const std::string& sql) const {
    char* message = nullptr;
    if (sqlite3_exec(db_.get(), sql.c_str(), nullptr, nullptr, &message) == SQLITE_OK) return;
    const std::string text = message ? message : sqlite3_errmsg(db_.get());
    sqlite3_free(message);
    throw Error(text);
}

void Connection::Fail(std::string_view what) const {
    std::string text(what);
    if (!text.empty()) text += ": ";
    throw Error(text + sqlite3_errmsg(db_.get()));
}

Statement::Statement(const Connection& connection, std::string_view sql) : connection_(&connection) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(connection.get(), sql.data(), static_cast<int>(sql.size()), &statement, nullptr) !=
        SQLITE_OK)
        connection.Fail("");
    statement_.reset(statement);
}

void Statement::Bind(int index, std::nullptr_t) const {
    sqlite3_bind_null(get(), index);
}
void Statement::Bind(int index, std::int64_t value) const {
    sqlite3_bind_int64(get(), index, value);
}
void Statement::Bind(int index, std::string_view text) const {
    // Not copied (most texts are a report's, which outlives the row): the
    // callers bind and run in one go (Execute), or bind texts that last.
    sqlite3_bind_text64(get(), index, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
}
void Statement::Bind(int index, const std::optional<std::string>& text) const {
    Bind(index, text ? std::optional<std::string_view>(*text) : std::nullopt);
}
void Statement::Bind(int index, const std::optional<std::string_view>& text) const {
    if (text)
        Bind(index, *text);
    else
        Bind(index, nullptr);
}

bool Statement::Step() const {
    const int status = sqlite3_step(get());
    if (status == SQLITE_ROW) return true;
    if (status == SQLITE_DONE) return false;
    connection_->Fail("");
}

void Statement::Run() const {
    while (Step()) {
    }
    Reset();
}

void Statement::Reset() const {
    sqlite3_reset(get());
    sqlite3_clear_bindings(get());
}

bool Statement::IsNull(int column) const {
    return sqlite3_column_type(get(), column) == SQLITE_NULL;
}
std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(get(), column);
}
std::string Statement::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(get(), column));
    return text ? std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(get(), column))) : std::string();
}
int Statement::ColumnCount() const {
    return sqlite3_column_count(get());
}

Transaction::Transaction(const Connection& connection) : connection_(connection) {
    connection_.Execute("BEGIN");
}
Transaction::~Transaction() {
    if (!done_) sqlite3_exec(connection_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}
void Transaction::Commit() {
    connection_.Execute("COMMIT");
    done_ = true;
}

}  // namespace sqlite
