#include "data/ado/ado_connection.h"

#include <algorithm>
#include <optional>

#include "data/ado/dispatch.h"
#include "data/ado/variant_value.h"
#include "runtime/conversion.h"
#include "runtime/error.h"

namespace rdv::ado {
namespace {

// Constants of the data access's type library.
constexpr int32_t kCommandText = 1;            // adCmdText
constexpr int32_t kWholeNumber = 3;            // adInteger, 32 bits
constexpr int32_t kFloatingNumber = 5;         // adDouble
constexpr int32_t kVariableWideText = 202;     // adVarWChar
constexpr int32_t kInputParameter = 1;         // adParamInput
constexpr int32_t kOpenState = 1;              // adStateOpen
constexpr int32_t kSmallestParameterSize = 1;  // a text parameter of no size is refused

int32_t ToNumber(const Variant& value) {
  return ToLong(ToValue(value.Get()));
}

bool BeginsWithSelect(TextView statement) {
  constexpr TextView kSelect = u"SELECT";
  return EqualsIgnoringCase(Trim(statement).substr(0, kSelect.size()), kSelect);
}

struct Declaration {
  int32_t type = kVariableWideText;
  int32_t size = 0;
  Variant value;
};

// What ADO documents of this type says nothing of how long its texts may be. That providers take
// one for which no text column of theirs has room (more than 255 units), and refuse it with their
// own error where it is written, is a guess: not seen on Windows.
Declaration DeclareText(const Argument& argument) {
  if (!argument) return {kVariableWideText, kSmallestParameterSize, Variant::MakeNull()};
  const auto size = static_cast<int32_t>(argument->size());
  return {kVariableWideText, std::max(kSmallestParameterSize, size), Variant(TextView(*argument))};
}

// The provider compares a number column with numbers only. What the column cannot hold goes to it
// as it is, a number as a number and other texts as texts: it finds no row with the one, refuses to
// store it or to compare with the other, and does so where a row is met and not before, all with
// its own errors.
Declaration DeclareWholeNumber(const Argument& argument) {
  if (!argument) return {kWholeNumber, 0, Variant::MakeNull()};
  const std::optional<double> number = ParseNumber(*argument);
  if (!number) return DeclareText(argument);
  try {
    return {kWholeNumber, 0, Variant(RoundToInt32(*number))};
  } catch (const RuntimeError&) {
    return {kFloatingNumber, 0, Variant(*number)};
  }
}

void AppendParameter(const Object& command, const Object& parameters, ParameterKind kind,
                     const Argument& argument) {
  const Declaration declared =
      kind == ParameterKind::WholeNumber ? DeclareWholeNumber(argument) : DeclareText(argument);
  const Variant name{TextView()};
  const Variant type(declared.type);
  const Variant direction(kInputParameter);
  const Variant size(declared.size);
  const Variant parameter =
      command.Call(L"CreateParameter", {&name, &type, &direction, &size, &declared.value});
  parameters.Call(L"Append", {&parameter});
}

RowTable ReadRows(const Object& recordset) {
  RowTable table;
  const Object fields(recordset.Get(L"Fields"));
  const int32_t count = ToNumber(fields.Get(L"Count"));
  std::vector<Object> columns;
  for (int32_t i = 0; i < count; ++i) {
    const Variant ordinal(i);
    columns.emplace_back(fields.Get(L"Item", {&ordinal}));
    table.columns.push_back(ToText(ToValue(columns.back().Get(L"Name").Get())));
  }
  while (!ToBoolean(ToValue(recordset.Get(L"EOF").Get()))) {
    std::vector<Value>& row = table.rows.emplace_back();
    for (const Object& column : columns) row.push_back(ToValue(column.Get(L"Value").Get()));
    recordset.Call(L"MoveNext");
  }
  recordset.Call(L"Close");
  return table;
}

class AdoConnection : public Connection {
 public:
  explicit AdoConnection(const Text& connection_string)
      : connection_(Object::Create(L"ADODB.Connection")) {
    connection_.Put(L"ConnectionString", Variant(TextView(connection_string)));
    connection_.Call(L"Open");
  }

  void Close() override {
    if (ToNumber(connection_.Get(L"State")) == kOpenState) connection_.Call(L"Close");
  }

  ~AdoConnection() override {
    try {
      Close();
    } catch (const RuntimeError&) {
      // The connection goes away with its object.
    }
  }

  CommandResult Execute(TextView statement, std::span<const Argument> arguments,
                        std::span<const Parameter> declared) override {
    const Object command = Object::Create(L"ADODB.Command");
    command.PutReference(L"ActiveConnection", connection_);
    command.Put(L"CommandType", Variant(kCommandText));
    command.Put(L"CommandText", Variant(statement));
    const Object parameters(command.Get(L"Parameters"));
    for (size_t i = 0; i < arguments.size(); ++i) {
      const ParameterKind kind = i < declared.size() ? declared[i].kind : ParameterKind::AnyText;
      AppendParameter(command, parameters, kind, arguments[i]);
    }
    Variant affected(int32_t{0});
    const Variant affected_reference = Variant::ReferenceTo(affected);
    const Object recordset(command.Call(L"Execute", {&affected_reference}));
    CommandResult result;
    if (BeginsWithSelect(statement)) {
      result.rows = ReadRows(recordset);
    } else {
      result.rows_written = ToNumber(affected);
    }
    return result;
  }

 private:
  Object connection_;
};

}  // namespace

std::unique_ptr<Connection> OpenAdoConnection(const Text& connection_string) {
  return std::make_unique<AdoConnection>(connection_string);
}

}  // namespace rdv::ado
