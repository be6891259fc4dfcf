#include "tests/support/sites/site_builder.h"

#include <algorithm>
#include <atomic>
#include <charconv>
#include <fstream>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

#include "data/jet/engine.h"
#include "runtime/error.h"
#include "tests/support/sites/damage.h"

namespace rdv::sites {
namespace {

namespace fs = std::filesystem;
using jet::ColumnSpec;
using jet::ColumnType;
using jet::TableSpec;

// Rows that are written in one statement of the database.
constexpr size_t kBatch = 2000;

template <typename T>
T Whole(const Cell& cell) {
  const int64_t* number = std::get_if<int64_t>(&cell);
  if (!number) throw TextError("a whole number is needed");
  if (*number < std::numeric_limits<T>::min() || *number > std::numeric_limits<T>::max())
    throw TextError("a number that the column cannot hold");
  return static_cast<T>(*number);
}

double Fraction(const Cell& cell) {
  if (const int64_t* number = std::get_if<int64_t>(&cell)) return static_cast<double>(*number);
  if (const double* number = std::get_if<double>(&cell)) return *number;
  throw TextError("a number is needed");
}

template <typename T>
T Exactly(const Cell& cell, const char* what) {
  if (const T* value = std::get_if<T>(&cell)) return *value;
  throw TextError(std::string(what) + " is needed");
}

// "-0.0001" as so many units of the last decimal: exactly, which a Double is not. For a whole
// number the digits alone will do.
int64_t Scaled(const Cell& cell, uint8_t scale) {
  std::string digits = std::holds_alternative<int64_t>(cell)
                           ? std::to_string(std::get<int64_t>(cell))
                           : ToUtf8(Exactly<Text>(cell, "a number in quotes"));
  const size_t point = std::min(digits.find('.'), digits.size());
  const size_t decimals = digits.size() - std::min(point + 1, digits.size());
  if (decimals > scale) throw TextError("too many decimals");
  if (point < digits.size()) digits.erase(point, 1);
  digits.append(scale - decimals, '0');
  int64_t number = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (read.ec != std::errc() || read.ptr != digits.data() + digits.size())
    throw TextError("no number: " + digits);
  return number;
}

DecimalNumber ToNumeric(const Cell& cell, uint8_t scale) {
  const int64_t scaled = Scaled(cell, scale);
  DecimalNumber number;
  number.scale = scale;
  number.negative = scaled < 0;
  const uint64_t magnitude =
      number.negative ? uint64_t{0} - static_cast<uint64_t>(scaled) : static_cast<uint64_t>(scaled);
  number.magnitude[2] = static_cast<uint32_t>(magnitude >> 32);
  number.magnitude[3] = static_cast<uint32_t>(magnitude);
  return number;
}

Value ToValue(const ColumnSpec& column, const Cell& cell) {
  if (std::holds_alternative<Null>(cell)) return Null();
  switch (column.type) {
    case ColumnType::Boolean:
      return Exactly<bool>(cell, "yes or no");
    case ColumnType::Byte:
      return Whole<uint8_t>(cell);
    case ColumnType::Integer:
      return Whole<int16_t>(cell);
    case ColumnType::Long:
      return Whole<int32_t>(cell);
    case ColumnType::Currency:
      return Currency{Scaled(cell, 4)};
    case ColumnType::Single:
      return static_cast<float>(Fraction(cell));
    case ColumnType::Double:
      return Fraction(cell);
    case ColumnType::DateTime:
      return Exactly<DateTime>(cell, "a date");
    case ColumnType::Guid:
      return Exactly<Guid>(cell, "a GUID");
    case ColumnType::Numeric:
      return ToNumeric(cell, column.scale);
    case ColumnType::Text:
    case ColumnType::Memo:
      return Exactly<Text>(cell, "a text");
    default:
      return Exactly<Binary>(cell, "hex()");
  }
}

// Says what the text says, one statement after the other, to the tables in memory and to the sink.
class Teller {
 public:
  Teller(const Site& site, SiteSink* sink) : site_(site), sink_(sink), names_(site.names) {
    for (const TableSpec& table : site.tables) content_.push_back({&table, {}});
  }

  std::vector<TableContent> Tell() {
    for (const Statement& statement : site_.statements) {
      try {
        Do(statement);
      } catch (const TextError& error) {
        statement.line.Fail(error.what());
      } catch (const RuntimeError& error) {
        statement.line.Fail(ToUtf8(error.Description()));
      }
    }
    return std::move(content_);
  }

 private:
  void Do(const Statement& statement) {
    if (statement.kind == Statement::Kind::Relate) {
      if (sink_) sink_->Relate(statement.relationship);
      return;
    }
    const auto table = std::find_if(content_.begin(), content_.end(), [&](const auto& candidate) {
      return ToUtf8(candidate.spec->name) == statement.table;
    });
    if (table == content_.end()) throw TextError("there is no table " + statement.table);
    table_ = static_cast<size_t>(table - content_.begin());
    sought_ = Positions(statement.sought);
    given_ = Positions(statement.given);
    if (statement.counter.empty()) return DoRows(statement);
    for (int64_t n = statement.first; n <= statement.last; ++n) {
      names_.numbers[statement.counter] = n;
      for (const auto& [name, expression] : statement.with)
        names_.numbers[name] = LineReader(expression, names_).Number();
      DoRows(statement);
    }
    names_.numbers.clear();
  }

  std::vector<size_t> Positions(const std::vector<Text>& columns) const {
    const auto& known = content_[table_].spec->columns;
    std::vector<size_t> positions;
    for (const Text& name : columns) {
      const auto found = std::find_if(known.begin(), known.end(), [&](const ColumnSpec& column) {
        return column.name == name;
      });
      if (found == known.end()) throw TextError("there is no column " + ToUtf8(name));
      positions.push_back(static_cast<size_t>(found - known.begin()));
    }
    return positions;
  }

  void DoRows(const Statement& statement) {
    size_t number = 0;
    for (const Line& line : statement.rows) {
      if (!IsChosen(statement, number++)) continue;
      try {
        LineReader reader(line.text, names_);
        const std::vector<Cell> cells = reader.List();
        reader.ExpectEnd();
        if (cells.size() != sought_.size() + given_.size())
          throw TextError(std::to_string(cells.size()) + " values for " +
                          std::to_string(sought_.size() + given_.size()) + " columns");
        statement.kind == Statement::Kind::Insert ? Insert(cells) : Change(statement.kind, cells);
      } catch (const TextError& error) {
        line.Fail(error.what());
      } catch (const RuntimeError& error) {
        line.Fail(ToUtf8(error.Description()));
      }
    }
  }

  bool IsChosen(const Statement& statement, size_t number) const {
    if (statement.choosing.empty()) return true;
    const auto chosen = names_.numbers.find(statement.choosing);
    if (chosen == names_.numbers.end()) throw TextError("unknown: " + statement.choosing);
    if (chosen->second < 0 || static_cast<size_t>(chosen->second) >= statement.rows.size())
      throw TextError("no line has this number: " + std::to_string(chosen->second));
    return static_cast<size_t>(chosen->second) == number;
  }

  const ColumnSpec& Column(size_t position) const {
    return content_[table_].spec->columns[position];
  }

  void Insert(const std::vector<Cell>& cells) {
    TableContent& table = content_[table_];
    std::vector<Value> row;
    for (const ColumnSpec& column : table.spec->columns) {
      if (column.autonumber)
        row.push_back(static_cast<int32_t>(table.rows.size() + 1));
      else
        row.push_back(column.type == ColumnType::Boolean ? Value(false) : Value(Null()));
    }
    for (size_t i = 0; i < given_.size(); ++i) {
      if (Column(given_[i]).autonumber) throw TextError("an autonumber is not given");
      row[given_[i]] = ToValue(Column(given_[i]), cells[i]);
    }
    if (sink_) sink_->Insert(table_, given_, row);
    table.rows.emplace_back(std::move(row));
  }

  void Change(Statement::Kind kind, const std::vector<Cell>& cells) {
    TableContent& table = content_[table_];
    bool found = false;
    for (size_t number = 0; number < table.rows.size(); ++number) {
      auto& row = table.rows[number];
      if (!row || !IsSought(*row, cells)) continue;
      found = true;
      if (kind == Statement::Kind::Delete) {
        row.reset();
        if (sink_) sink_->Delete(table_, number);
        continue;
      }
      for (size_t i = 0; i < given_.size(); ++i)
        (*row)[given_[i]] = ToValue(Column(given_[i]), cells[sought_.size() + i]);
      if (!sink_) continue;
      if (kind == Statement::Kind::Overwrite)
        sink_->Overwrite(table_, number, given_, *row);
      else
        sink_->Update(table_, number, given_, *row);
    }
    if (!found) throw TextError("there is no such row");
  }

  bool IsSought(const std::vector<Value>& row, const std::vector<Cell>& cells) const {
    for (size_t i = 0; i < sought_.size(); ++i) {
      if (row[sought_[i]] != ToValue(Column(sought_[i]), cells[i])) return false;
    }
    return true;
  }

  const Site& site_;
  SiteSink* sink_;
  Names names_;
  std::vector<TableContent> content_;
  size_t table_ = 0;
  std::vector<size_t> sought_;
  std::vector<size_t> given_;
};

class EngineSink : public SiteSink {
 public:
  EngineSink(const Site& site, jet::Engine& engine) : site_(site), engine_(engine) {
    rows_.resize(site.tables.size());
    scope_.emplace(engine_);
    for (const TableSpec& table : site.tables) engine_.CreateTable(table);
    Commit();
  }

  void Insert(size_t table, const std::vector<size_t>& given,
              const std::vector<Value>& row) override {
    rows_[table].push_back(engine_.Insert(Open(table), Assignments(given, row)));
  }
  void Update(size_t table, size_t row, const std::vector<size_t>& given,
              const std::vector<Value>& content) override {
    engine_.Update(Open(table), rows_[table][row], Assignments(given, content));
  }
  void Overwrite(size_t table, size_t row, const std::vector<size_t>& given,
                 const std::vector<Value>& content) override {
    for (const size_t column : given) {
      const TableSpec& spec = site_.tables[table];
      overwritten_.push_back({spec.name, rows_[table][row], spec.columns[column].name,
                              std::get<Text>(content[column])});
    }
  }
  void Delete(size_t table, size_t row) override { engine_.Delete(Open(table), rows_[table][row]); }
  void Relate(const jet::RelationshipSpec& spec) override {
    Commit();
    scope_.emplace(engine_);
    engine_.CreateRelationship(spec);
    Commit();
  }

  // To be done when the file is complete.
  const std::vector<OverwrittenText>& Overwritten() const { return overwritten_; }

  void Commit() {
    if (scope_) scope_->Commit();
    scope_.reset();
    changes_ = 0;
  }

 private:
  const jet::TableDefinition& Open(size_t table) {
    if (changes_++ == kBatch) Commit();
    if (!scope_) scope_.emplace(engine_);
    return engine_.Table(site_.tables[table].name);
  }

  static std::vector<jet::Assignment> Assignments(const std::vector<size_t>& given,
                                                  const std::vector<Value>& row) {
    std::vector<jet::Assignment> assignments;
    for (const size_t column : given) assignments.push_back({column, row[column]});
    return assignments;
  }

  const Site& site_;
  jet::Engine& engine_;
  std::optional<jet::Engine::WriteScope> scope_;
  size_t changes_ = 0;
  std::vector<std::vector<jet::RowId>> rows_;
  std::vector<OverwrittenText> overwritten_;
};

std::vector<uint8_t> ReadFile(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// A name in the system's folder for such files that no other program or thread has.
fs::path UnusedPath() {
  static std::atomic<int> count{0};
  const auto now = fs::file_time_type::clock::now().time_since_epoch().count();
  return fs::temp_directory_path() /
         ("rdv-site-" + std::to_string(now) + "-" +
          std::to_string(reinterpret_cast<uintptr_t>(&count)) + "-" + std::to_string(++count));
}

}  // namespace

std::vector<TableContent> ContentOf(const Site& site, SiteSink* sink) {
  return Teller(site, sink).Tell();
}

std::vector<std::vector<Value>> RowsOf(const std::vector<TableContent>& content,
                                       std::string_view table) {
  for (const TableContent& candidate : content) {
    if (ToUtf8(candidate.spec->name) != table) continue;
    std::vector<std::vector<Value>> rows;
    for (const auto& row : candidate.rows) {
      if (row) rows.push_back(*row);
    }
    return rows;
  }
  throw SiteTextError("there is no table " + std::string(table));
}

std::vector<uint8_t> MakeDatabase(const Site& site) {
  const fs::path path = UnusedPath();
  std::vector<OverwrittenText> overwritten;
  jet::Engine::Create(FromUtf8(path.string()), {}, [&](jet::Engine& engine) {
    EngineSink sink(site, engine);
    ContentOf(site, &sink);
    sink.Commit();
    overwritten = sink.Overwritten();
  });
  std::vector<uint8_t> bytes = ReadFile(path);
  fs::remove(path);
  if (!overwritten.empty()) OverwriteTexts(overwritten, bytes);
  return site.damage.empty() ? bytes : Damaged(site, std::move(bytes));
}

void MakeSite(const Site& site, const fs::path& folder) {
  fs::create_directories(folder);
  const auto write = [](const fs::path& path, const auto& bytes) {
    std::ofstream stream(path, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush()) throw SiteTextError("cannot write " + path.string());
  };
  write(folder / "NewDB.mdb", MakeDatabase(site));
  for (const Settings& settings : site.settings) {
    fs::create_directories(folder / settings.folder);
    write(folder / settings.folder / "ORVANTPlus.ini", settings.content);
  }
}

}  // namespace rdv::sites
