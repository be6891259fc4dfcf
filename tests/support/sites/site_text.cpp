#include "tests/support/sites/site_text.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <utility>

#include "tests/support/sites/places.h"

namespace rdv::sites {
namespace {

namespace fs = std::filesystem;
using jet::ColumnSpec;
using jet::ColumnType;
using jet::TableSpec;

struct TypeName {
  std::string_view name;
  ColumnType type;
};

constexpr std::array<TypeName, 14> kTypes = {{{"Boolean", ColumnType::Boolean},
                                              {"Byte", ColumnType::Byte},
                                              {"Integer", ColumnType::Integer},
                                              {"Long", ColumnType::Long},
                                              {"Currency", ColumnType::Currency},
                                              {"Single", ColumnType::Single},
                                              {"Double", ColumnType::Double},
                                              {"DateTime", ColumnType::DateTime},
                                              {"Binary", ColumnType::Binary},
                                              {"Text", ColumnType::Text},
                                              {"Ole", ColumnType::Ole},
                                              {"Memo", ColumnType::Memo},
                                              {"Guid", ColumnType::Guid},
                                              {"Numeric", ColumnType::Numeric}}};

bool IsIndented(std::string_view line) {
  return line.starts_with(" ");
}

std::string ReadText(const std::string& name) {
  const fs::path path = Place("site-texts") / (name + ".site");
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw SiteTextError("there is no " + path.string());
  return {std::istreambuf_iterator<char>(stream), {}};
}

class SiteParser {
 public:
  SiteParser(const std::string& name, std::string_view text) {
    site_.name = name;
    const std::string file = name + ".site";
    int number = 0;
    while (!text.empty()) {
      const size_t end = std::min(text.find('\n'), text.size());
      lines_.push_back({file, ++number, std::string(text.substr(0, end))});
      text.remove_prefix(std::min(end + 1, text.size()));
    }
  }

  Site Parse() {
    while (next_ < lines_.size()) {
      const Line& line = lines_[next_++];
      const std::string_view text = WithoutComment(line.text);
      if (text.empty()) continue;
      if (IsIndented(text)) line.Fail("this line belongs to nothing");
      try {
        LineReader reader(text, no_names_);
        ParseStatement(line, reader);
      } catch (const TextError& error) {
        line.Fail(error.what());
      }
    }
    return std::move(site_);
  }

 private:
  void ParseStatement(const Line& line, LineReader& reader) {
    if (reader.Take("like")) return TakeFrom(line);
    if (reader.Take("without")) return LeaveOut(reader);
    if (reader.Take("table")) return ParseTable(reader);
    if (reader.Take("let")) return ParseDefinition(line, reader);
    if (reader.Take("insert")) return ParseRows(line, reader, Statement::Kind::Insert);
    if (reader.Take("update")) return ParseRows(line, reader, Statement::Kind::Update);
    if (reader.Take("overwrite")) return ParseRows(line, reader, Statement::Kind::Overwrite);
    if (reader.Take("delete")) return ParseRows(line, reader, Statement::Kind::Delete);
    if (reader.Take("relationship")) return ParseRelationship(line, reader);
    if (reader.Take("settings")) return ParseSettings(line);
    if (reader.Take("damage")) {
      reader.ExpectEnd();
      for (Line& damage : Block()) site_.damage.push_back(std::move(damage));
      return;
    }
    line.Fail("unknown");
  }

  // The indented lines that follow, without comments and without empty ones.
  std::vector<Line> Block() {
    std::vector<Line> block;
    for (; next_ < lines_.size(); ++next_) {
      const std::string_view text = WithoutComment(lines_[next_].text);
      if (!text.empty() && !IsIndented(text)) break;
      if (text.empty()) continue;
      if (!block.empty() && block.back().text.ends_with(',')) {
        block.back().text += text;
      } else {
        block.push_back(lines_[next_]);
        block.back().text = text;
      }
    }
    return block;
  }

  static std::string Rest(const Line& line) {
    const std::string_view text = WithoutComment(line.text);
    return std::string(text.substr(std::min(text.find(' ') + 1, text.size())));
  }

  // like NAME[: PART, ...]; all parts without any.
  void TakeFrom(const Line& line) {
    std::string name = Rest(line);
    const size_t colon = name.find(':');
    const std::string parts =
        colon == std::string::npos ? "tables, rows, settings, damage" : name.substr(colon + 1);
    const Site other = ReadSite(name.substr(0, colon));
    LineReader reader(parts, no_names_);
    do {
      if (reader.Take("tables")) {
        for (const TableSpec& table : other.tables) SetTable(table);
      } else if (reader.Take("rows")) {
        Append(site_.statements, other.statements);
      } else if (reader.Take("settings")) {
        Append(site_.settings, other.settings);
      } else {
        reader.Expect("damage");
        Append(site_.damage, other.damage);
      }
    } while (reader.Take(","));
    reader.ExpectEnd();
    site_.names.definitions.insert(other.names.definitions.begin(), other.names.definitions.end());
  }

  template <typename T>
  static void Append(std::vector<T>& to, const std::vector<T>& from) {
    to.insert(to.end(), from.begin(), from.end());
  }

  void LeaveOut(LineReader& reader) {
    const std::string name = reader.Name();
    reader.ExpectEnd();
    const size_t count = site_.tables.size();
    std::erase_if(site_.tables, [&](const TableSpec& table) { return ToUtf8(table.name) == name; });
    if (site_.tables.size() == count) throw TextError("there is no table " + name);
    std::erase_if(site_.statements,
                  [&](const Statement& statement) { return statement.table == name; });
  }

  void ParseTable(LineReader& reader) {
    TableSpec table;
    table.name = FromUtf8(reader.Name());
    reader.ExpectEnd();
    for (const Line& line : Block()) {
      try {
        LineReader part(line.text, no_names_);
        ParseTablePart(part, table);
        part.ExpectEnd();
      } catch (const TextError& error) {
        line.Fail(error.what());
      }
    }
    SetTable(table);
  }

  void SetTable(const TableSpec& table) {
    for (TableSpec& known : site_.tables) {
      if (known.name != table.name) continue;
      known = table;
      return;
    }
    site_.tables.push_back(table);
  }

  static void ParseTablePart(LineReader& part, TableSpec& table) {
    if (part.Take("key")) {
      table.indexes.push_back(
          {.name = u"PrimaryKey", .columns = IndexColumns(part), .primary = true});
      return;
    }
    if (part.Take("index")) {
      jet::IndexSpec index;
      index.name = FromUtf8(part.Name());
      while (!part.Take(":")) {
        if (part.Take("unique"))
          index.unique = true;
        else if (part.Take("required"))
          index.required = true;
        else if (part.Take("ignoring-nulls"))
          index.ignore_nulls = true;
        else
          throw TextError("a colon is missing");
      }
      index.columns = IndexColumns(part);
      table.indexes.push_back(std::move(index));
      return;
    }
    table.columns.push_back(ParseColumn(part));
  }

  static std::vector<jet::IndexPartSpec> IndexColumns(LineReader& part) {
    std::vector<jet::IndexPartSpec> columns;
    do {
      jet::IndexPartSpec& column = columns.emplace_back();
      column.column = FromUtf8(part.Name());
      column.descending = part.Take("desc");
    } while (part.Take(","));
    return columns;
  }

  static ColumnSpec ParseColumn(LineReader& part) {
    ColumnSpec column;
    column.name = FromUtf8(part.Name());
    const std::string name = part.Name();
    const auto type = std::find_if(kTypes.begin(), kTypes.end(),
                                   [&](const TypeName& t) { return t.name == name; });
    if (type == kTypes.end()) throw TextError("no type: " + name);
    column.type = type->type;
    if (column.type == ColumnType::Text || column.type == ColumnType::Binary)
      column.length = static_cast<uint16_t>(part.Number());
    if (column.type == ColumnType::Numeric) {
      column.precision = static_cast<uint8_t>(part.Number());
      column.scale = static_cast<uint8_t>(part.Number());
    }
    while (!part.AtEnd()) {
      if (part.Take("autonumber"))
        column.autonumber = true;
      else if (part.Take("required"))
        column.required = true;
      else if (part.Take("never-empty"))
        column.allow_zero_length = false;
      else
        part.ExpectEnd();
    }
    return column;
  }

  // The expression is read where it is used.
  void ParseDefinition(const Line& line, LineReader& reader) {
    const std::string name = reader.Name();
    reader.Expect("=");
    std::string text(WithoutComment(line.text));
    if (text.ends_with(',')) {
      for (const Line& more : Block()) text += more.text;
    }
    site_.names.definitions[name] = text.substr(text.find('=') + 1);
  }

  static std::vector<Text> ColumnNames(LineReader& reader) {
    std::vector<Text> columns;
    do columns.push_back(FromUtf8(reader.Name()));
    while (reader.Take(","));
    return columns;
  }

  std::vector<Text> FillableColumns(const std::string& table) const {
    std::vector<Text> columns;
    for (const ColumnSpec& column : site_.Table(table)->columns) {
      if (!column.autonumber) columns.push_back(column.name);
    }
    return columns;
  }

  void ParseRows(const Line& line, LineReader& reader, Statement::Kind kind) {
    Statement statement;
    statement.kind = kind;
    statement.line = line;
    statement.table = reader.Name();
    if (!site_.Table(statement.table)) throw TextError("there is no table " + statement.table);
    if (kind != Statement::Kind::Insert) {
      reader.Expect(":");
      statement.sought = ColumnNames(reader);
      if (kind != Statement::Kind::Delete) {
        reader.Expect(";");
        statement.given = ColumnNames(reader);
      }
    } else {
      if (reader.Take("for")) {
        statement.counter = reader.Name();
        reader.Expect("=");
        statement.first = reader.Number();
        reader.Expect("..");
        statement.last = reader.Number();
        if (reader.Take("with")) statement.with = ParseWith(reader);
        if (reader.Take("choosing")) statement.choosing = reader.Name();
      }
      // By name, so that a table with the same columns in another order takes the rows, too.
      statement.given = reader.Take(":") ? ColumnNames(reader) : FillableColumns(statement.table);
    }
    reader.ExpectEnd();
    statement.rows = Block();
    site_.statements.push_back(std::move(statement));
  }

  // Read where they are used, as they use the counter.
  static std::vector<std::pair<std::string, std::string>> ParseWith(LineReader& reader) {
    std::vector<std::pair<std::string, std::string>> numbers;
    do {
      std::string name = reader.Name();
      reader.Expect("=");
      numbers.emplace_back(std::move(name), reader.NumberText());
    } while (reader.Take(","));
    return numbers;
  }

  void ParseRelationship(const Line& line, LineReader& reader) {
    Statement statement;
    statement.kind = Statement::Kind::Relate;
    statement.line = line;
    jet::RelationshipSpec& spec = statement.relationship;
    spec.name = FromUtf8(reader.Name());
    reader.Expect(":");
    const auto take_side = [&](Text& table, Text& column) {
      const std::string name = reader.Name();
      const size_t dot = name.find('.');
      if (dot == std::string::npos) throw TextError("a column's name is missing");
      table = FromUtf8(name.substr(0, dot));
      column = FromUtf8(name.substr(dot + 1));
    };
    do {
      jet::RelationshipColumn& column = spec.columns.emplace_back();
      take_side(spec.table, column.column);
      reader.Expect("refers");
      take_side(spec.referenced_table, column.referenced_column);
    } while (reader.Take(","));
    while (!reader.AtEnd()) {
      if (reader.Take("cascading-updates"))
        spec.cascade_updates = true;
      else if (reader.Take("cascading-deletes"))
        spec.cascade_deletes = true;
      else
        reader.ExpectEnd();
    }
    statement.table = ToUtf8(spec.table);
    site_.statements.push_back(std::move(statement));
  }

  // Its comments are the settings file's own.
  void ParseSettings(const Line& line) {
    Settings settings;
    settings.folder = Rest(line);
    constexpr size_t kIndent = 2;
    size_t written = 0;
    for (; next_ < lines_.size(); ++next_) {
      const std::string& text = lines_[next_].text;
      if (!text.empty() && !IsIndented(text)) break;
      settings.content += text.substr(std::min(kIndent, text.size())) + "\r\n";
      if (!text.empty()) written = settings.content.size();
    }
    settings.content.resize(written);
    std::erase_if(site_.settings, [&](const Settings& s) { return s.folder == settings.folder; });
    site_.settings.push_back(std::move(settings));
  }

  Site site_;
  std::vector<Line> lines_;
  size_t next_ = 0;
  const Names no_names_;
};

}  // namespace

void Line::Fail(const std::string& why) const {
  throw SiteTextError(file + ":" + std::to_string(number) + ": " + why);
}

const jet::TableSpec* Site::Table(std::string_view table) const {
  for (const jet::TableSpec& candidate : tables) {
    if (ToUtf8(candidate.name) == table) return &candidate;
  }
  return nullptr;
}

Site ReadSite(const std::string& name) {
  return ParseSite(name, ReadText(name));
}

Site ParseSite(const std::string& name, std::string_view text) {
  return SiteParser(name, text).Parse();
}

std::vector<std::string> SiteNames(const std::string& folder) {
  const fs::path texts = Place("site-texts");
  std::vector<std::string> names;
  for (const auto& entry : fs::recursive_directory_iterator(texts / folder)) {
    fs::path name = entry.path().lexically_relative(texts);
    if (name.extension() == ".site") names.push_back(name.replace_extension().generic_string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace rdv::sites
