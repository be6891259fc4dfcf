// SQLite with the same rows and the same primary key: what the engine is measured against.
#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "data/connection.h"

namespace rdv::bench {

struct SqliteCloser {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using SqliteDatabase = std::unique_ptr<sqlite3, SqliteCloser>;
using SqliteStatement = std::unique_ptr<sqlite3_stmt, SqliteCloser>;

// What SQLite promises for the time after a loss of power. With `synchronous` OFF nothing, with
// FULL what the engine promises: a transaction that has returned is there, whole. Both with either
// kind of journal: one that keeps the pages as they were until the transaction ends (DELETE), and
// one that gathers the new ones (WAL).
struct SqlitePromise {
  const char* journal_mode = "DELETE";
  const char* synchronous = "OFF";
};

// All of these end the program with SQLite's message when a call fails: a rival that does not work
// gives no figure.
SqliteDatabase OpenSqlite(const std::filesystem::path& file, SqlitePromise promise = {});
SqliteStatement Prepare(sqlite3* database, const std::string& statement);
void Run(sqlite3* database, const std::string& statement);
void BindText(sqlite3_stmt* statement, int position, const std::string& text);

// Makes `file` with an empty table Used_Lines of these lines' columns and the primary key
// (Config_ID, Base_Slot_No, Slot_Offset, Line); `more_indexes` are column lists of further indexes.
SqliteDatabase CreateSqliteLines(const std::filesystem::path& file, const RowTable& lines,
                                 const std::vector<std::string>& more_indexes = {},
                                 SqlitePromise promise = {});

// Rows as SQLite takes them without converting anything: Null, a number, a text in UTF-8.
using SqliteField = std::variant<std::monostate, int64_t, std::string>;
using SqliteRows = std::vector<std::vector<SqliteField>>;
SqliteRows ToSqlite(const RowTable& lines);

// In one transaction.
void InsertSqliteLines(sqlite3* database, const SqliteRows& rows);

// All of it: the file with these lines.
void MakeSqliteLines(const std::filesystem::path& file, const RowTable& lines);

// Steps through the statement, fetches every column as text and counts the bytes.
size_t FetchAll(sqlite3_stmt* statement);

}  // namespace rdv::bench
