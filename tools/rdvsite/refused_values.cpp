#include "tools/rdvsite/refused_values.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "data/jet/dump/dump.h"
#include "data/jet/format/errors.h"
#include "data/jet/sql/conversions.h"
#include "data/jet/sql/parameters.h"
#include "tools/database_file/explained.h"

namespace rdv {
namespace {

using jet::Column;
using jet::sql::Literal;
using jet::sql::Name;
using jet::sql::Operand;

// Goes through a statement and tries each value at its column by itself.
class Trial {
 public:
  Trial(const jet::sql::Statement& statement, const jet::TableDefinition& table,
        std::span<const Argument> arguments, const RuntimeError& error)
      : table_(table),
        parameters_(jet::sql::ParametersOf(statement, table)),
        arguments_(arguments),
        error_(error) {
    std::visit([this](const auto& kind) { Try(kind); }, statement);
  }

  const std::string& Refused() const { return refused_; }

 private:
  void Try(const jet::sql::Select& select) { TryWhere(select.where); }
  void Try(const jet::sql::Delete& statement) { TryWhere(statement.where); }
  void Try(const jet::sql::Update& update) {
    for (const jet::sql::SetItem& item : update.items) {
      if (const Column* column = ColumnOf(item.target)) TryToWrite(*column, item.value);
    }
    TryWhere(update.where);
  }
  void Try(const jet::sql::Insert& insert) {
    for (size_t i = 0; i < insert.values.size(); ++i) {
      const Column* column = insert.columns.empty()
                                 ? (i < table_.columns.size() ? &table_.columns[i] : nullptr)
                                 : table_.FindColumn(insert.columns[i]);
      if (column) TryToWrite(*column, insert.values[i]);
    }
  }

  void TryWhere(const std::optional<jet::sql::Condition>& where) {
    if (where) TryWhere(*where);
  }
  void TryWhere(const jet::sql::Condition& condition) {
    for (const jet::sql::Condition& part : condition.parts) TryWhere(part);
    if (condition.kind != jet::sql::ConditionKind::Compare ||
        condition.comparison == jet::sql::Comparison::Like) {
      return;
    }
    for (const auto& [side, other] : {std::pair(&condition.left, &condition.right),
                                      std::pair(&condition.right, &condition.left)}) {
      const Name* name = std::get_if<Name>(side);
      if (const Column* column = name ? ColumnOf(*name) : nullptr) TryToSearch(*column, *other);
    }
  }

  const Column* ColumnOf(const Name& name) const {
    return ArgumentOf(name) ? nullptr : table_.FindColumn(name.column);
  }
  // Nothing for the name of a column.
  std::optional<Argument> ArgumentOf(const Name& name) const {
    const auto found = std::ranges::find_if(parameters_, [&](const Text& parameter) {
      return EqualsIgnoringCase(parameter, name.column);
    });
    if (found == parameters_.end()) return std::nullopt;
    const auto place = static_cast<size_t>(found - parameters_.begin());
    return place < arguments_.size() ? arguments_[place] : Argument();
  }

  void TryToWrite(const Column& column, const Operand& value) {
    Try(column, value, [&](const auto& constant) {
      const Value converted = jet::sql::ToColumn(column, constant);
      const Text* text = std::get_if<Text>(&converted);
      if (text && column.type == jet::ColumnType::Text &&
          text->size() * sizeof(char16_t) > column.length) {
        jet::RaiseFieldTooSmall();
      }
    });
  }
  void TryToSearch(const Column& column, const Operand& value) {
    Try(column, value,
        [&](const auto& constant) { (void)jet::sql::ToSearchValue(column, constant); });
  }

  template <typename Convert>
  void Try(const Column& column, const Operand& value, Convert convert) {
    try {
      if (const auto* literal = std::get_if<Literal>(&value)) {
        convert(*literal);
      } else if (const auto argument = ArgumentOf(std::get<Name>(value))) {
        convert(*argument);
      }
    } catch (const RuntimeError& raised) {
      if (raised.Number() == error_.Number() && raised.Description() == error_.Description()) {
        Add(column, ShownOf(value));
      }
    }
  }

  Text ShownOf(const Operand& value) const {
    if (const auto* literal = std::get_if<Literal>(&value)) return literal->text;
    return ArgumentOf(std::get<Name>(value)).value().value_or(Text());
  }

  void Add(const Column& column, const Text& value) {
    constexpr size_t kLongest = 40;
    const Text shown = value.size() > kLongest ? value.substr(0, kLongest) + u"\u2026" : value;
    refused_ += (refused_.empty() ? "" : "; ") + ("column " + Quoted(column.name)) + " (" +
                jet::TypeName(column.type) + ") does not take " + Quoted(shown);
  }

  const jet::TableDefinition& table_;
  const std::vector<Text> parameters_;
  const std::span<const Argument> arguments_;
  const RuntimeError& error_;
  std::string refused_;
};

}  // namespace

std::string RefusedValues(const jet::sql::Statement& statement, const jet::TableDefinition& table,
                          std::span<const Argument> arguments, const RuntimeError& error) {
  return Trial(statement, table, arguments, error).Refused();
}

}  // namespace rdv
