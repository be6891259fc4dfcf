#include "bench/sqlite_rival.h"

#include <cstdio>
#include <cstdlib>

#include "runtime/text.h"
#include "runtime/value.h"

namespace rdv::bench {
namespace {

void Check(int result, sqlite3* database) {
  if (result == SQLITE_OK || result == SQLITE_DONE || result == SQLITE_ROW) return;
  std::fprintf(stderr, "SQLite: %s\n", sqlite3_errmsg(database));
  std::exit(1);
}

std::string ColumnDefinition(const Text& name, const RowTable& lines, size_t column) {
  bool text = false;
  for (const auto& row : lines.rows) text = text || std::holds_alternative<Text>(row[column]);
  return ToUtf8(name) + (text ? " TEXT" : " INTEGER");
}

}  // namespace

SqliteDatabase OpenSqlite(const std::filesystem::path& file, SqlitePromise promise) {
  sqlite3* database = nullptr;
  Check(sqlite3_open(file.c_str(), &database), database);
  SqliteDatabase owner(database);
  Run(database, std::string("PRAGMA synchronous=") + promise.synchronous);
  // DELETE is how a file begins; one that has WAL keeps it.
  if (promise.journal_mode != SqlitePromise().journal_mode)
    Run(database, std::string("PRAGMA journal_mode=") + promise.journal_mode);
  return owner;
}

SqliteStatement Prepare(sqlite3* database, const std::string& statement) {
  sqlite3_stmt* prepared = nullptr;
  Check(sqlite3_prepare_v2(database, statement.c_str(), -1, &prepared, nullptr), database);
  return SqliteStatement(prepared);
}

void Run(sqlite3* database, const std::string& statement) {
  Check(sqlite3_exec(database, statement.c_str(), nullptr, nullptr, nullptr), database);
}

void BindText(sqlite3_stmt* statement, int position, const std::string& text) {
  Check(sqlite3_bind_text(statement, position, text.data(), static_cast<int>(text.size()),
                          SQLITE_TRANSIENT),
        sqlite3_db_handle(statement));
}

SqliteDatabase CreateSqliteLines(const std::filesystem::path& file, const RowTable& lines,
                                 const std::vector<std::string>& more_indexes,
                                 SqlitePromise promise) {
  std::filesystem::remove(file);
  SqliteDatabase database = OpenSqlite(file, promise);
  std::string columns;
  for (size_t i = 0; i < lines.columns.size(); ++i)
    columns += ColumnDefinition(lines.columns[i], lines, i) + ", ";
  Run(database.get(), "CREATE TABLE Used_Lines (" + columns +
                          "PRIMARY KEY (Config_ID, Base_Slot_No, Slot_Offset, Line))");
  for (size_t i = 0; i < more_indexes.size(); ++i) {
    Run(database.get(),
        "CREATE INDEX more" + std::to_string(i) + " ON Used_Lines (" + more_indexes[i] + ")");
  }
  return database;
}

SqliteRows ToSqlite(const RowTable& lines) {
  SqliteRows rows;
  for (const auto& row : lines.rows) {
    std::vector<SqliteField>& fields = rows.emplace_back();
    for (const Value& value : row) {
      if (IsNull(value)) {
        fields.emplace_back();
      } else if (const Text* text = std::get_if<Text>(&value)) {
        fields.emplace_back(ToUtf8(*text));
      } else {
        fields.emplace_back(int64_t{ToLong(value)});
      }
    }
  }
  return rows;
}

void InsertSqliteLines(sqlite3* database, const SqliteRows& rows) {
  Run(database, "BEGIN");
  std::string marks = "?";
  for (size_t i = 1; i < rows.front().size(); ++i) marks += ",?";
  const SqliteStatement insert = Prepare(database, "INSERT INTO Used_Lines VALUES (" + marks + ")");
  for (const auto& row : rows) {
    int position = 0;
    for (const SqliteField& field : row) {
      ++position;
      if (const int64_t* number = std::get_if<int64_t>(&field)) {
        sqlite3_bind_int64(insert.get(), position, *number);
      } else if (const std::string* text = std::get_if<std::string>(&field)) {
        sqlite3_bind_text(insert.get(), position, text->data(), static_cast<int>(text->size()),
                          SQLITE_STATIC);
      } else {
        sqlite3_bind_null(insert.get(), position);
      }
    }
    Check(sqlite3_step(insert.get()), database);
    sqlite3_reset(insert.get());
  }
  Run(database, "COMMIT");
}

void MakeSqliteLines(const std::filesystem::path& file, const RowTable& lines) {
  const SqliteDatabase database = CreateSqliteLines(file, lines);
  InsertSqliteLines(database.get(), ToSqlite(lines));
}

size_t FetchAll(sqlite3_stmt* statement) {
  size_t bytes = 0;
  const int columns = sqlite3_column_count(statement);
  while (sqlite3_step(statement) == SQLITE_ROW) {
    for (int i = 0; i < columns; ++i) {
      if (sqlite3_column_text(statement, i) != nullptr) {
        bytes += static_cast<size_t>(sqlite3_column_bytes(statement, i));
      }
    }
  }
  sqlite3_reset(statement);
  return bytes;
}

}  // namespace rdv::bench
