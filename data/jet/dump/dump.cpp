#include "data/jet/dump/dump.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

#include "data/jet/catalog/catalog.h"
#include "data/jet/catalog/properties.h"
#include "data/jet/catalog/system_tables.h"
#include "data/jet/dump/json_writer.h"
#include "data/jet/format/errors.h"
#include "data/jet/rows/table_scan.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

struct NamedType {
  ColumnType type;
  std::string_view name;
};

constexpr std::array<NamedType, 14> kTypeNames = {{
    {ColumnType::Boolean, "BOOLEAN"},
    {ColumnType::Byte, "BYTE"},
    {ColumnType::Integer, "INT"},
    {ColumnType::Long, "LONG"},
    {ColumnType::Currency, "MONEY"},
    {ColumnType::Single, "FLOAT"},
    {ColumnType::Double, "DOUBLE"},
    {ColumnType::DateTime, "SHORT_DATE_TIME"},
    {ColumnType::Binary, "BINARY"},
    {ColumnType::Text, "TEXT"},
    {ColumnType::Ole, "OLE"},
    {ColumnType::Memo, "MEMO"},
    {ColumnType::Guid, "GUID"},
    {ColumnType::Numeric, "NUMERIC"},
}};

// Which Access made the file, by the version it leaves in the properties of the database object.
struct AccessVersion {
  TextView stored;
  std::string_view name;
};

constexpr std::array<AccessVersion, 2> kAccessVersions = {
    {{u"08.50", "V2000"}, {u"09.50", "V2003"}}};
constexpr std::string_view kVersionJet3 = "V1997";
constexpr std::string_view kVersionUnknown = "GENERIC_JET4";
constexpr TextView kAccessVersionProperty = u"AccessVersion";

std::string_view VersionName(const FileReader& file, const Catalog& catalog) {
  if (!file.Layout().IsJet4()) return kVersionJet3;
  const auto database = catalog.Find(kDatabasesContainer, kDatabaseName);
  if (!database) return kVersionUnknown;
  const std::vector<uint8_t> bytes = catalog.Properties(*database);
  if (bytes.empty()) return kVersionUnknown;
  for (const Property& property : ParseProperties(file, bytes)) {
    if (property.name != kAccessVersionProperty) continue;
    const Text stored = file.DecodeName(property.value);
    for (const AccessVersion& version : kAccessVersions) {
      if (version.stored == stored) return version.name;
    }
  }
  return kVersionUnknown;
}

void WriteField(const RowView& row, const Column& column, Text& scratch, JsonWriter& json) {
  if (row.IsNull(column)) return json.Raw("null");
  switch (column.type) {
    case ColumnType::Boolean:
      return json.Bool(std::get<bool>(row.Get(column)));
    case ColumnType::Byte:
      return json.Number(std::get<uint8_t>(row.Get(column)));
    case ColumnType::Integer:
      return json.Number(std::get<int16_t>(row.Get(column)));
    case ColumnType::Long:
      return json.Number(std::get<int32_t>(row.Get(column)));
    case ColumnType::Single:
      return json.Real(std::get<float>(row.Get(column)));
    case ColumnType::Double:
      return json.Real(std::get<double>(row.Get(column)));
    case ColumnType::DateTime:
      return json.Date(std::get<DateTime>(row.Get(column)));
    case ColumnType::Currency:
      return json.String(ToDigits(std::get<Currency>(row.Get(column))));
    default:
      break;
  }
  scratch.clear();
  row.AppendText(column, scratch);
  json.String(scratch);
}

// A comma before every element but the first.
class List {
 public:
  List(JsonWriter& json, std::string_view separator) : json_(json), separator_(separator) {}
  void Next() {
    if (!first_) json_.Raw(separator_);
    first_ = false;
  }

 private:
  JsonWriter& json_;
  std::string_view separator_;
  bool first_ = true;
};

class DatabaseDump {
 public:
  DatabaseDump(const FileReader& file, const DumpOptions& options,
               const std::function<void(std::string_view)>& write)
      : file_(file), options_(options), catalog_(file), json_(write) {}

  void Write() {
    const std::vector<CatalogObject> tables = ChooseTables(options_.tables);
    json_.Raw("{\n\"file\":");
    json_.String(options_.file_name);
    json_.Raw(file_.Layout().IsJet4() ? ",\n\"format\":\"JET4\"" : ",\n\"format\":\"JET3\"");
    json_.Raw(",\n\"version\":\"");
    std::string_view version = kVersionUnknown;
    Tolerating(u"properties of the database", [&] { version = VersionName(file_, catalog_); });
    json_.Raw(version);
    json_.Raw("\",\n\"charset\":\"");
    json_.Raw(file_.Layout().IsJet4() ? "UTF-16LE"
                                      : "windows-" + std::to_string(file_.FileHeader().code_page));
    json_.Raw("\",\n");
    WriteLinkedTables();
    WriteRelationships();
    json_.Raw("\"tables\":[");
    List list(json_, ",");
    for (const CatalogObject& object : tables) {
      std::optional<TableDefinition> table;
      Tolerating(u"table " + object.name, [&] { table = catalog_.Table(object); });
      if (!table) continue;
      list.Next();
      json_.Raw("\n");
      WriteTable(*table);
    }
    json_.Raw(tables.empty() ? "]" : "\n]");
    WriteDamage();
    json_.Raw("\n}\n");
    json_.Flush();
  }

 private:
  // False when reading raised and that is to be told at the end.
  template <typename Read>
  bool Tolerating(const Text& what, Read read) {
    if (options_.damage == nullptr) {
      read();
      return true;
    }
    try {
      read();
      return true;
    } catch (const RuntimeError& error) {
      options_.damage->push_back(what + u": " + error.Description());
      return false;
    }
  }

  void WriteDamage() {
    if (options_.damage == nullptr || options_.damage->empty()) return;
    json_.Raw(",\n\"damage\":[");
    List list(json_, ",");
    for (const Text& what : *options_.damage) {
      list.Next();
      json_.Raw("\n");
      json_.String(what);
    }
    json_.Raw("\n]");
  }

  std::vector<CatalogObject> ChooseTables(std::span<const Text> names) {
    std::vector<CatalogObject> tables = catalog_.UserTables();
    for (const Text& name : names) {
      const auto is_named = [&name](const CatalogObject& object) {
        return EqualsIgnoringCase(object.name, name);
      };
      if (std::none_of(tables.begin(), tables.end(), is_named)) RaiseCannotFindTable(name);
    }
    if (names.empty()) return tables;
    std::erase_if(tables, [names](const CatalogObject& object) {
      return std::none_of(names.begin(), names.end(), [&object](const Text& name) {
        return EqualsIgnoringCase(object.name, name);
      });
    });
    return tables;
  }

  void Key(std::string_view name) {
    json_.Raw("\"");
    json_.Raw(name);
    json_.Raw("\":");
  }
  void Pair(std::string_view name, TextView text) {
    Key(name);
    json_.String(text);
  }
  void Flag(std::string_view name, bool flag) {
    json_.Raw(",");
    Key(name);
    json_.Bool(flag);
  }
  template <typename Integer>
  void Count(std::string_view name, Integer number) {
    json_.Raw(",");
    Key(name);
    json_.Number(number);
  }

  void WriteLinkedTables() {
    json_.Raw("\"linkedTables\":[");
    List list(json_, ",");
    std::vector<LinkedTable> tables;
    Tolerating(u"linked tables", [&] { tables = catalog_.LinkedTables(); });
    for (const LinkedTable& table : tables) {
      list.Next();
      json_.Raw("\n{");
      Pair("name", table.name);
      json_.Raw(",");
      Pair("database", table.database);
      json_.Raw(",");
      Pair("foreignName", table.foreign_name);
      json_.Raw(",");
      Pair("connect", table.connect);
      json_.Raw("}");
    }
    json_.Raw("],\n");
  }

  // The referenced table first, the referencing one as the foreign one; those of Access itself are
  // left out like its tables.
  void WriteRelationships() {
    std::vector<Relationship> relationships;
    Tolerating(u"relationships", [&] {
      relationships = catalog_.Relationships();
      std::erase_if(relationships, [this](const Relationship& relationship) {
        return IsSystemTable(relationship.table) || IsSystemTable(relationship.referenced_table);
      });
    });
    json_.Raw("\"relationships\":[");
    List list(json_, ",");
    for (const Relationship& relationship : relationships) {
      list.Next();
      json_.Raw("\n{");
      Pair("name", relationship.name);
      json_.Raw(",");
      Pair("table", relationship.referenced_table);
      json_.Raw(",\"columns\":[");
      WriteColumnNames(relationship, &RelationshipColumn::referenced_column);
      json_.Raw("],");
      Pair("foreignTable", relationship.table);
      json_.Raw(",\"foreignColumns\":[");
      WriteColumnNames(relationship, &RelationshipColumn::column);
      json_.Raw("]");
      Flag("integrity", relationship.enforced);
      Flag("cascadeUpdate", relationship.cascade_updates);
      Flag("cascadeDelete", relationship.cascade_deletes);
      json_.Raw("}");
    }
    json_.Raw(relationships.empty() ? "],\n" : "\n],\n");
  }

  bool IsSystemTable(TextView name) const {
    const auto object = catalog_.Find(kTablesContainer, name);
    return object && !object->IsUserObject();
  }

  void WriteColumnNames(const Relationship& relationship, Text RelationshipColumn::*name) {
    List list(json_, ",");
    for (const RelationshipColumn& column : relationship.columns) {
      list.Next();
      json_.String(column.*name);
    }
  }

  void WriteTable(const TableDefinition& table) {
    json_.Raw("{");
    Pair("name", table.name);
    json_.Raw(",\n \"columns\":[");
    List columns(json_, ",");
    for (const Column& column : table.columns) {
      columns.Next();
      WriteColumn(column);
    }
    json_.Raw("],\n \"indexes\":[");
    WriteIndexes(table);
    json_.Raw("]");
    json_.Raw(",\n \"rowCount\":");
    json_.Number(table.row_count);
    json_.Raw(",\n \"rows\":[");
    WriteRows(table);
    json_.Raw("]}");
  }

  void WriteColumn(const Column& column) {
    json_.Raw("\n  {");
    Pair("name", column.name);
    json_.Raw(R"(,"type":")" + TypeName(column.type) + '"');
    Count("length", column.length);
    Flag("autonumber", column.autonumber);
    if (column.type == ColumnType::Numeric) {
      Count("precision", column.precision);
      Count("scale", column.scale);
    }
    json_.Raw("}");
  }

  void WriteIndexes(const TableDefinition& table) {
    std::vector<const LogicalIndex*> indexes;
    for (const LogicalIndex& index : table.logical_indexes) indexes.push_back(&index);
    std::sort(indexes.begin(), indexes.end(),
              [](const LogicalIndex* left, const LogicalIndex* right) {
                return ToUtf8(left->name) < ToUtf8(right->name);
              });
    List list(json_, ",");
    for (const LogicalIndex* index : indexes) {
      list.Next();
      WriteIndex(table, *index);
    }
  }

  void WriteIndex(const TableDefinition& table, const LogicalIndex& index) {
    const RealIndex& real = table.indexes[index.real_index];
    json_.Raw("\n  {");
    Pair("name", index.name);
    json_.Raw(",\"columns\":[");
    List parts(json_, ",");
    for (const IndexColumn& part : real.columns) {
      parts.Next();
      json_.Raw("{");
      Pair("name", table.columns[part.column].name);
      json_.Raw(part.descending ? R"(,"direction":"desc"})" : R"(,"direction":"asc"})");
    }
    json_.Raw("]");
    Flag("unique", real.unique);
    Flag("primary", index.kind == LogicalIndexKind::Primary);
    Flag("ignoreNulls", real.ignore_nulls);
    Flag("required", real.required);
    Flag("foreignKey", index.kind == LogicalIndexKind::ForeignKey);
    json_.Raw("}");
  }

  void WriteRows(const TableDefinition& table) {
    Text scratch;
    List rows(json_, ",");
    const Text what = u"rows of table " + table.name;
    std::optional<TableScan> scan;
    if (!Tolerating(what, [&] { scan.emplace(file_, table); })) return;
    while (NextRow(*scan, what)) {
      rows.Next();
      json_.Raw("\n  [");
      List fields(json_, ",");
      for (const Column& column : table.columns) {
        fields.Next();
        const auto write = [&] { WriteField(scan->Row(), column, scratch, json_); };
        if (!Tolerating(what + u", column " + column.name, write)) json_.Raw("null");
      }
      json_.Raw("]");
    }
  }

  // A scan goes on behind the page or the row that it stumbled over. One that stumbles on and on
  // does not get any further: it cannot read where the table's pages are listed.
  bool NextRow(TableScan& scan, const Text& what) {
    constexpr int kMaxStumbles = 100'000;
    for (int stumbles = 0; stumbles < kMaxStumbles; ++stumbles) {
      bool found = false;
      if (Tolerating(what, [&] { found = scan.Next(); })) return found;
      std::vector<Text>& damage = *options_.damage;
      if (damage.size() > 1 && damage.back() == damage[damage.size() - 2]) damage.pop_back();
    }
    return false;
  }

  const FileReader& file_;
  const DumpOptions& options_;
  Catalog catalog_;
  JsonWriter json_;
};

}  // namespace

std::string TypeName(ColumnType type) {
  const auto entry = std::find_if(kTypeNames.begin(), kTypeNames.end(),
                                  [type](const NamedType& name) { return name.type == type; });
  if (entry != kTypeNames.end()) return std::string(entry->name);
  return "UNKNOWN_" + std::to_string(static_cast<int>(type));
}

void DumpDatabase(const FileReader& file, const DumpOptions& options,
                  const std::function<void(std::string_view)>& write) {
  DatabaseDump(file, options, write).Write();
}

}  // namespace rdv::jet
