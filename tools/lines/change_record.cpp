#include "tools/lines/change_record.h"

#include <chrono>
#include <fstream>
#include <map>
#include <stdexcept>

#include "tools/lines/json_output.h"
#include "tools/lines/output_file.h"
#include "tools/lines/stored_lines.h"

namespace rdv::lines {
namespace {

using namespace std::chrono;

constexpr int kVersion = 2;

// Without a half of a pair of units that stands alone, which no JSON text may hold.
bool IsWellFormed(const Text& text) {
  for (size_t i = 0; i < text.size(); ++i) {
    const bool first = text[i] >= 0xD800 && text[i] < 0xDC00;
    const bool second = text[i] >= 0xDC00 && text[i] < 0xE000;
    const bool paired =
        first && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (second || (first && !paired)) return false;
    if (paired) ++i;
  }
  return true;
}

// Texts that are not well formed go by their units. Only what these tables hold; a value of another
// type takes no part in a change.
std::optional<Json> ToJson(const Value& value) {
  if (IsNull(value)) return Json(nullptr);
  if (const auto* text = std::get_if<Text>(&value)) {
    if (IsWellFormed(*text)) return Json(ToUtf8(*text));
    Json units = Json::array();
    for (const char16_t unit : *text) units.push_back(static_cast<unsigned>(unit));
    return units;
  }
  if (const auto* flag = std::get_if<bool>(&value)) return Json(*flag);
  if (const auto* byte = std::get_if<uint8_t>(&value)) return Json(*byte);
  if (const auto* number = std::get_if<int16_t>(&value)) return Json(*number);
  if (const auto* number = std::get_if<int32_t>(&value)) return Json(*number);
  return std::nullopt;
}

Value FromJson(const Json& json) {
  if (json.is_null()) return Null();
  if (json.is_string()) return FromUtf8(json.get<std::string>());
  if (json.is_boolean()) return json.get<bool>();
  if (json.is_array()) {
    Text text;
    for (const Json& unit : json) text += static_cast<char16_t>(unit.get<unsigned>());
    return text;
  }
  return json.get<int32_t>();
}

// Numbers of any width are one number.
Value Plain(const Value& value) {
  if (const auto* byte = std::get_if<uint8_t>(&value)) return int32_t{*byte};
  if (const auto* number = std::get_if<int16_t>(&value)) return int32_t{*number};
  return value;
}

Json ToJson(const std::optional<Fields>& fields) {
  if (!fields) return nullptr;
  Json object = Json::object();
  for (const auto& [column, value] : *fields) object[ToUtf8(column)] = *ToJson(value);
  return object;
}

std::optional<Fields> FieldsFrom(const Json& json) {
  if (json.is_null()) return std::nullopt;
  Fields fields;
  for (const auto& [column, value] : json.items()) {
    fields.emplace_back(FromUtf8(column), FromJson(value));
  }
  return fields;
}

Fields AllFields(const RowTable& table, size_t row) {
  Fields fields;
  for (size_t column = 0; column < table.columns.size(); ++column) {
    const Value& value = table.rows[row][column];
    if (IsKept(value)) fields.emplace_back(table.columns[column], Plain(value));
  }
  return fields;
}

Json ToJson(const RowChange& row) {
  Json json;
  json["table"] = ToUtf8(NameOf(row.table));
  json["configuration"] = row.config;
  if (row.table == ChangedTable::Lines) json["line"] = row.line;
  json["before"] = ToJson(row.before);
  json["after"] = ToJson(row.after);
  json["wholeAfter"] = row.whole_after;
  json["rowAfter"] = Json::array();
  for (const Value& value : row.row_after) {
    json["rowAfter"].push_back(ToJson(value).value_or(Json(nullptr)));
  }
  return json;
}

RowChange RowFrom(const Json& json) {
  RowChange row;
  const std::string table = json.at("table");
  row.table =
      FromUtf8(table) == NameOf(ChangedTable::Lines) ? ChangedTable::Lines : ChangedTable::Cards;
  row.config = json.at("configuration");
  row.line = json.value("line", int16_t{0});
  row.before = FieldsFrom(json.at("before"));
  row.after = FieldsFrom(json.at("after"));
  row.whole_after = json.at("wholeAfter");
  for (const Json& value : json.at("rowAfter")) row.row_after.push_back(FromJson(value));
  return row;
}

// The text of a record. Reads no more than the largest one has, and nothing that lies deeper than
// one does: what is no record is refused before it takes memory.
Json Parsed(const std::filesystem::path& path) {
  constexpr uintmax_t kLargest = 256u << 20;
  constexpr int kDeepest = 8;
  if (std::filesystem::file_size(path) > kLargest) throw std::runtime_error("it is too large");
  std::ifstream file(path, std::ios::binary);
  return Json::parse(file, [](int depth, Json::parse_event_t, Json&) {
    if (depth > kDeepest) throw std::runtime_error("it is none");
    return true;
  });
}

}  // namespace

bool IsKept(const Value& value) {
  return ToJson(value).has_value();
}

TextView NameOf(ChangedTable table) {
  return table == ChangedTable::Lines ? u"Used_Lines" : u"Used_Cards";
}

std::string RecordTimeNow() {
  const auto now = floor<seconds>(system_clock::now());
  const auto today = floor<days>(now);
  const year_month_day date(today);
  const hh_mm_ss clock(now - today);
  const auto two = [](auto number) {
    const std::string digits = std::to_string(static_cast<int>(number));
    return digits.size() < 2 ? "0" + digits : digits;
  };
  return std::to_string(static_cast<int>(date.year())) + "-" +
         two(static_cast<unsigned>(date.month())) + "-" + two(static_cast<unsigned>(date.day())) +
         " " + two(clock.hours().count()) + ":" + two(clock.minutes().count()) + ":" +
         two(clock.seconds().count());
}

std::string DigestOf(const RowTable& table, size_t row) {
  // FNV-1a over columns and values, each with its end marked.
  uint64_t hash = 0xcbf29ce484222325;
  const auto add = [&hash](const Text& text) {
    for (const char16_t unit : text) {
      for (const unsigned byte : {unit & 0xFFu, unsigned{unit} >> 8}) {
        hash = (hash ^ byte) * 0x100000001b3;
      }
    }
    hash = (hash ^ 0xFF) * 0x100000001b3;
  };
  for (size_t column = 0; column < table.columns.size(); ++column) {
    const Value& value = table.rows[row][column];
    add(table.columns[column]);
    add(IsNull(value) ? Text(u"\0", 1) : Shown(value));
  }
  std::string digits;
  for (int shift = 60; shift >= 0; shift -= 4) digits += "0123456789abcdef"[(hash >> shift) & 15];
  return digits;
}

void CompareRows(ChangedTable kind, int16_t config, const RowTable& before, const RowTable& after,
                 std::vector<RowChange>& to) {
  struct Sides {
    std::optional<size_t> before;
    std::optional<size_t> after;
  };
  std::map<int16_t, Sides> by_line;
  const auto line_of = [kind](const RowTable& table, size_t row) {
    return kind == ChangedTable::Cards ? int16_t{0}
                                       : ToInteger(table.rows[row][ColumnAt(table, u"Line")]);
  };
  for (size_t row = 0; row < before.rows.size(); ++row) by_line[line_of(before, row)].before = row;
  for (size_t row = 0; row < after.rows.size(); ++row) by_line[line_of(after, row)].after = row;

  for (const auto& [line, sides] : by_line) {
    RowChange change{kind, config, line, {}, {}, {}, {}};
    if (sides.after) change.whole_after = DigestOf(after, *sides.after);
    if (sides.before && sides.after) {
      const std::vector<Value>& old_row = before.rows[*sides.before];
      const std::vector<Value>& new_row = after.rows[*sides.after];
      change.before.emplace();
      change.after.emplace();
      for (size_t column = 0; column < before.columns.size(); ++column) {
        if (old_row[column] == new_row[column]) continue;
        change.before->emplace_back(before.columns[column], Plain(old_row[column]));
        change.after->emplace_back(before.columns[column], Plain(new_row[column]));
      }
      if (change.before->empty()) continue;
    } else if (sides.before) {
      change.before = AllFields(before, *sides.before);
    } else {
      change.after = AllFields(after, *sides.after);
    }
    if (sides.after) {
      for (const Value& value : after.rows[*sides.after]) change.row_after.push_back(Plain(value));
    }
    to.push_back(std::move(change));
  }
}

void WriteRecord(const Text& database, const std::filesystem::path& path,
                 const ChangeRecord& record) {
  Json json;
  json["program"] = "rdvlines";
  json["version"] = kVersion;
  json["when"] = record.when;
  json["command"] = ToUtf8(record.command);
  for (size_t table = 0; table < record.columns.size(); ++table) {
    Json& columns = json["columns"][ToUtf8(NameOf(static_cast<ChangedTable>(table)))] =
        Json::array();
    for (const Text& column : record.columns[table]) columns.push_back(ToUtf8(column));
  }
  json["rows"] = Json::array();
  for (const RowChange& row : record.rows) json["rows"].push_back(ToJson(row));
  const std::string text = json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
  WriteFileBeside(database, path.u16string(), text);
}

ChangeRecord ReadRecord(const std::filesystem::path& path) {
  try {
    const Json json = Parsed(path);
    if (json.at("program") != "rdvlines" || json.at("version") != kVersion) {
      throw std::runtime_error("of another program or version");
    }
    ChangeRecord record;
    record.when = json.at("when");
    record.command = FromUtf8(json.at("command").get<std::string>());
    for (size_t table = 0; table < record.columns.size(); ++table) {
      for (const Json& column :
           json.at("columns").at(ToUtf8(NameOf(static_cast<ChangedTable>(table))))) {
        record.columns[table].push_back(FromUtf8(column.get<std::string>()));
      }
    }
    for (const Json& row : json.at("rows")) record.rows.push_back(RowFrom(row));
    return record;
  } catch (const std::exception& error) {
    throw std::runtime_error("the record of the last change cannot be read: " +
                             ToUtf8(path.u16string()) + ": " + error.what());
  }
}

}  // namespace rdv::lines
