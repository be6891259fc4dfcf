#ifdef _WIN32

#include "tests/data/ado_stand_in.h"

#include <oleauto.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

#include "data/jet/sql/jet_connection.h"
#include "data/jet/sql/statement_parser.h"
#include "runtime/error.h"
#include "runtime/value.h"

// COM interfaces have no virtual destructor; their objects end by Release.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace rdv::test {
namespace {

// The last attribute, with or without quotes around it.
Text PathIn(const Text& connection_string) {
  constexpr TextView kSource = u"Data Source=";
  Text path = connection_string.substr(connection_string.find(kSource) + kSource.size());
  if (path.size() > 1 && path.front() == u'"') path = path.substr(1, path.size() - 2);
  return path;
}

BSTR NewString(TextView text) {
  return SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()),
                           static_cast<UINT>(text.size()));
}

// Small numbers are those of the object model, which travel in result codes of its own.
HRESULT ResultOf(const RuntimeError& error) {
  constexpr int32_t kLargest = 0xFFFF;
  const int32_t number = error.Number();
  return number > 0 && number <= kLargest ? MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, number)
                                          : number;
}

// What the object model refuses, in its own words.
enum class Refusal : int32_t {
  NoCurrentRecord = 3021,
  WrongType = 3421,
  ObjectClosed = 3704,
  ObjectOpen = 3705,
  ProviderNotFound = 3706,
  ImproperParameter = 3708,
  InvalidConnection = 3709,
};

[[noreturn]] void Refuse(Refusal refusal, TextView source) {
  constexpr std::pair<Refusal, TextView> kTexts[] = {
      {Refusal::NoCurrentRecord,
       u"Either BOF or EOF is True, or the current record has been deleted. Requested operation "
       u"requires a current record."},
      {Refusal::WrongType,
       u"Application uses a value of the wrong type for the current operation."},
      {Refusal::ObjectClosed, u"Operation is not allowed when the object is closed."},
      {Refusal::ObjectOpen, u"Operation is not allowed when the object is open."},
      {Refusal::ProviderNotFound, u"Provider cannot be found. It may not be properly installed."},
      {Refusal::ImproperParameter,
       u"Parameter object is improperly defined. Inconsistent or incomplete information was "
       u"provided."},
      {Refusal::InvalidConnection,
       u"The connection cannot be used to perform this operation. It is either closed or invalid "
       u"in this context."}};
  const auto* text = std::ranges::find(kTexts, refusal, &std::pair<Refusal, TextView>::first);
  throw RuntimeError(static_cast<int32_t>(refusal), Text(text->second), Text(source));
}

// In the order in which they are written, which is not that of automation.
using CallArguments = std::vector<VARIANT*>;

// An automation object whose members are found by name. An error that a member raises reaches the
// caller as an automation exception.
class ScriptObject : public IDispatch {
 public:
  ScriptObject() = default;
  ScriptObject(const ScriptObject&) = delete;
  ScriptObject& operator=(const ScriptObject&) = delete;
  virtual ~ScriptObject() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    *object = nullptr;
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IDispatch)) return E_NOINTERFACE;
    *object = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    if (count != 1) return DISP_E_UNKNOWNNAME;
    const Text name(reinterpret_cast<const char16_t*>(names[0]));
    for (size_t i = 0; i < members_.size(); ++i) {
      if (!EqualsIgnoringCase(members_[i].name, name)) continue;
      ids[0] = static_cast<DISPID>(i + 1);
      return S_OK;
    }
    return DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO* exception, UINT*) override {
    const auto position = static_cast<size_t>(id) - 1;
    if (position >= members_.size() || (members_[position].kinds & kind) == 0)
      return DISP_E_MEMBERNOTFOUND;
    CallArguments arguments;
    for (UINT i = parameters->cArgs; i > 0; --i) arguments.push_back(&parameters->rgvarg[i - 1]);
    try {
      members_[position].run(arguments, result);
      return S_OK;
    } catch (const RuntimeError& error) {
      exception->scode = ResultOf(error);
      exception->bstrDescription = NewString(error.Description());
      exception->bstrSource = NewString(error.Source());
      return DISP_E_EXCEPTION;
    }
  }

 protected:
  using Member = std::function<void(const CallArguments&, VARIANT*)>;
  void Method(TextView name, Member run) { Add(name, DISPATCH_METHOD, std::move(run)); }
  void Getter(TextView name, Member run) { Add(name, DISPATCH_PROPERTYGET, std::move(run)); }
  void Setter(TextView name, Member run) {
    Add(name, DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF, std::move(run));
  }

 private:
  struct Entry {
    TextView name;
    WORD kinds;
    Member run;
  };
  void Add(TextView name, int kinds, Member run) {
    members_.push_back({name, static_cast<WORD>(kinds), std::move(run)});
  }

  std::vector<Entry> members_;
  ULONG references_ = 1;
};

// A counted reference to an object of this file.
template <typename Type>
class Held {
 public:
  explicit Held(Type* object) : object_(object) { object_->AddRef(); }
  Held(const Held& other) : Held(other.object_) {}
  Held& operator=(const Held&) = delete;
  ~Held() { object_->Release(); }
  Type* operator->() const { return object_; }

 private:
  Type* object_;
};

// The result takes over the reference that the object was made with.
void GiveObject(VARIANT* result, ScriptObject* object) {
  result->vt = VT_DISPATCH;
  result->pdispVal = object;
}
void GiveNumber(VARIANT* result, int32_t number) {
  result->vt = VT_I4;
  result->lVal = number;
}
void GiveText(VARIANT* result, TextView text) {
  result->vt = VT_BSTR;
  result->bstrVal = NewString(text);
}
void GiveFlag(VARIANT* result, bool flag) {
  result->vt = VT_BOOL;
  result->boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
}

Text TextOf(const VARIANT& value) {
  return Text(reinterpret_cast<const char16_t*>(value.bstrVal), SysStringLen(value.bstrVal));
}

struct ValueGiver {
  VARIANT* result;

  void operator()(Null) const { result->vt = VT_NULL; }
  void operator()(bool flag) const { GiveFlag(result, flag); }
  void operator()(uint8_t number) const {
    result->vt = VT_UI1;
    result->bVal = number;
  }
  void operator()(int16_t number) const {
    result->vt = VT_I2;
    result->iVal = number;
  }
  void operator()(int32_t number) const { GiveNumber(result, number); }
  void operator()(Currency amount) const {
    result->vt = VT_CY;
    result->cyVal.int64 = amount.ten_thousandths;
  }
  void operator()(float number) const {
    result->vt = VT_R4;
    result->fltVal = number;
  }
  void operator()(double number) const {
    result->vt = VT_R8;
    result->dblVal = number;
  }
  void operator()(DateTime date) const {
    result->vt = VT_DATE;
    result->date = date.days;
  }
  void operator()(const DecimalNumber& number) const {
    result->decVal = {};
    result->decVal.scale = number.scale;
    result->decVal.sign = number.negative ? DECIMAL_NEG : 0;
    result->decVal.Hi32 = number.magnitude[1];
    result->decVal.Mid32 = number.magnitude[2];
    result->decVal.Lo32 = number.magnitude[3];
    result->vt = VT_DECIMAL;
  }
  void operator()(const Guid&) const { result->vt = VT_NULL; }
  void operator()(const Text& text) const { GiveText(result, text); }
  void operator()(const Binary& bytes) const {
    result->vt = VT_ARRAY | VT_UI1;
    result->parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    void* data = nullptr;
    SafeArrayAccessData(result->parray, &data);
    std::copy(bytes.begin(), bytes.end(), static_cast<uint8_t*>(data));
    SafeArrayUnaccessData(result->parray);
  }
};

constexpr TextView kRecordsetSource = u"ADODB.Recordset";

// Rows with a position; it is closed by Close or when nothing refers to it.
struct Cursor {
  Cursor(RowTable rows, std::shared_ptr<AdoNotes> notes_of_all)
      : table(std::move(rows)), notes(std::move(notes_of_all)) {
    ++notes->open_recordsets;
  }
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;
  ~Cursor() { Close(); }
  void Close() {
    if (open) --notes->open_recordsets;
    open = false;
  }
  void RequireOpen() const {
    if (!open) Refuse(Refusal::ObjectClosed, kRecordsetSource);
  }
  void RequireRow() const {
    if (row >= table.rows.size()) Refuse(Refusal::NoCurrentRecord, kRecordsetSource);
  }

  RowTable table;
  std::shared_ptr<AdoNotes> notes;
  size_t row = 0;
  bool open = true;
};

class FieldObject : public ScriptObject {
 public:
  FieldObject(const std::shared_ptr<Cursor>& cursor, size_t column) {
    Getter(u"Name", [=](const CallArguments&, VARIANT* result) {
      GiveText(result, cursor->table.columns[column]);
    });
    Getter(u"Value", [=](const CallArguments&, VARIANT* result) {
      cursor->RequireOpen();
      cursor->RequireRow();
      std::visit(ValueGiver{result}, cursor->table.rows.at(cursor->row).at(column));
    });
  }
};

class FieldsObject : public ScriptObject {
 public:
  explicit FieldsObject(const std::shared_ptr<Cursor>& cursor) {
    Getter(u"Count", [=](const CallArguments&, VARIANT* result) {
      GiveNumber(result, static_cast<int32_t>(cursor->table.columns.size()));
    });
    Getter(u"Item", [=](const CallArguments& arguments, VARIANT* result) {
      GiveObject(result, new FieldObject(cursor, static_cast<size_t>(arguments.at(0)->lVal)));
    });
  }
};

class RecordsetObject : public ScriptObject {
 public:
  explicit RecordsetObject(const std::shared_ptr<Cursor>& cursor) {
    Getter(u"Fields", [=](const CallArguments&, VARIANT* result) {
      cursor->RequireOpen();
      GiveObject(result, new FieldsObject(cursor));
    });
    Getter(u"EOF", [=](const CallArguments&, VARIANT* result) {
      cursor->RequireOpen();
      GiveFlag(result, cursor->row >= cursor->table.rows.size());
    });
    Method(u"MoveNext", [=](const CallArguments&, VARIANT*) {
      cursor->RequireOpen();
      cursor->RequireRow();
      ++cursor->row;
    });
    Method(u"Close", [=](const CallArguments&, VARIANT*) {
      cursor->RequireOpen();
      cursor->Close();
    });
  }
};

class ConnectionObject : public ScriptObject {
 public:
  explicit ConnectionObject(std::shared_ptr<AdoNotes> notes) : notes_(std::move(notes)) {
    Setter(u"ConnectionString", [this](const CallArguments& arguments, VARIANT*) {
      string_ = TextOf(*arguments.at(0));
    });
    Getter(u"State",
           [this](const CallArguments&, VARIANT* result) { GiveNumber(result, Jet ? 1 : 0); });
    Method(u"Open", [this](const CallArguments&, VARIANT*) {
      if (Jet) Refuse(Refusal::ObjectOpen, kConnectionSource);
      notes_->connection_strings.push_back(string_);
      if (notes_->opening_failure) throw *notes_->opening_failure;
      if (!KnowsProvider()) Refuse(Refusal::ProviderNotFound, kConnectionSource);
      Jet = jet::OpenJetConnection(PathIn(string_));
      ++notes_->open_connections;
    });
    Method(u"Close", [this](const CallArguments&, VARIANT*) {
      if (!Jet) Refuse(Refusal::ObjectClosed, kConnectionSource);
      Jet.reset();
      --notes_->open_connections;
    });
  }

  std::unique_ptr<Connection> Jet;

 private:
  static constexpr TextView kConnectionSource = u"ADODB.Connection";

  bool KnowsProvider() const {
    return std::ranges::any_of(notes_->providers, [this](const Text& provider) {
      return string_.starts_with(u"Provider=" + provider + u";");
    });
  }

  std::shared_ptr<AdoNotes> notes_;
  Text string_;
};

constexpr int32_t kWholeNumber = 3;         // adInteger
constexpr int32_t kFloatingNumber = 5;      // adDouble
constexpr int32_t kVariableWideText = 202;  // adVarWChar

// What a parameter of the type takes of the value, as text.
Argument ValueFor(int32_t type, VARIANT& value) {
  if (value.vt == VT_NULL) return std::nullopt;
  const VARTYPE wanted = type == kWholeNumber ? VT_I4 : type == kFloatingNumber ? VT_R8 : VT_BSTR;
  VARIANT taken;
  VariantInit(&taken);
  VARIANT text;
  VariantInit(&text);
  if (FAILED(VariantChangeTypeEx(&taken, &value, LOCALE_INVARIANT, 0, wanted)) ||
      FAILED(VariantChangeTypeEx(&text, &taken, LOCALE_INVARIANT, 0, VT_BSTR)))
    Refuse(Refusal::WrongType, u"ADODB.Command");
  Text result = TextOf(text);
  VariantClear(&taken);
  VariantClear(&text);
  return result;
}

// Names that a condition compares with each other.
using Compared = std::pair<Text, Text>;

void CollectCompared(const jet::sql::Condition& condition, std::vector<Compared>& compared) {
  for (const jet::sql::Condition& part : condition.parts) CollectCompared(part, compared);
  if (condition.kind != jet::sql::ConditionKind::Compare) return;
  const auto* left = std::get_if<jet::sql::Name>(&condition.left);
  const auto* right = std::get_if<jet::sql::Name>(&condition.right);
  if (left != nullptr && right != nullptr) compared.emplace_back(left->column, right->column);
}

// The table of a statement and its condition.
struct Searched {
  Text table;
  std::vector<Compared> compared;
  size_t written = 0;  // parameters that stand before the condition
};

Searched SearchedBy(TextView text) {
  const jet::sql::Statement statement = jet::sql::ParseStatement(text);
  Searched searched;
  std::visit(
      [&](const auto& parsed) {
        searched.table = parsed.table;
        if constexpr (requires { parsed.where; }) {
          if (parsed.where) CollectCompared(*parsed.where, searched.compared);
        }
        if constexpr (requires { parsed.items[0].target; }) searched.written = parsed.items.size();
      },
      statement);
  return searched;
}

bool IsText(const Value& value) {
  return std::holds_alternative<Text>(value);
}

// The provider compares columns of numbers with numbers only, whatever the text says. Of the
// statements here each comparison has its own parameter on the right, in their order after those
// that are written. What the columns hold is seen in the table's rows.
void RefuseTextsComparedWithNumbers(Connection& connection, const SentCommand& command) {
  const Searched searched = SearchedBy(command.statement);
  if (searched.compared.empty()) return;
  const RowTable all = *connection.Execute(u"SELECT * FROM " + searched.table, {}).rows;
  size_t parameter = searched.written;
  for (const auto& [column, right] : searched.compared) {
    if (parameter >= command.parameters.size()) return;
    const SentParameter& sent = command.parameters[parameter++];
    const auto place = std::ranges::find_if(
        all.columns, [&](const Text& name) { return EqualsIgnoringCase(name, column); });
    const auto position = static_cast<size_t>(place - all.columns.begin());
    const bool numbers =
        place != all.columns.end() && !all.rows.empty() && !IsText(all.rows.front()[position]);
    if (numbers && sent.type == kVariableWideText) {
      throw RuntimeError(static_cast<int32_t>(0x80040E07),
                         u"Data type mismatch in criteria expression.",
                         u"Microsoft JET Database Engine");
    }
  }
}

class ParameterObject : public ScriptObject {
 public:
  SentParameter Sent;
};

class ParametersObject : public ScriptObject {
 public:
  ParametersObject() {
    Method(u"Append", [this](const CallArguments& arguments, VARIANT*) {
      const SentParameter& sent = static_cast<ParameterObject*>(arguments.at(0)->pdispVal)->Sent;
      if (sent.type == kVariableWideText && sent.size <= 0)
        Refuse(Refusal::ImproperParameter, u"ADODB.Parameters");
      Sent.push_back(sent);
    });
  }

  std::vector<SentParameter> Sent;
};

class CommandObject : public ScriptObject {
 public:
  explicit CommandObject(std::shared_ptr<AdoNotes> notes) : notes_(std::move(notes)) {
    Setter(u"ActiveConnection", [this](const CallArguments& arguments, VARIANT*) {
      connection_.emplace(static_cast<ConnectionObject*>(arguments.at(0)->pdispVal));
    });
    Setter(u"CommandType", [this](const CallArguments& arguments, VARIANT*) {
      sent_.type = arguments.at(0)->lVal;
    });
    Setter(u"CommandText", [this](const CallArguments& arguments, VARIANT*) {
      sent_.statement = TextOf(*arguments.at(0));
    });
    Getter(u"Parameters", [this](const CallArguments&, VARIANT* result) {
      parameters_->AddRef();
      GiveObject(result, parameters_);
    });
    Method(u"CreateParameter", CreateParameter);
    Method(u"Execute", [this](const CallArguments& arguments, VARIANT* result) {
      Execute(*arguments.at(0), result);
    });
  }
  ~CommandObject() override { parameters_->Release(); }

 private:
  static void CreateParameter(const CallArguments& arguments, VARIANT* result) {
    auto* parameter = new ParameterObject;
    parameter->Sent.type = arguments.at(1)->lVal;
    parameter->Sent.direction = arguments.at(2)->lVal;
    parameter->Sent.size = arguments.at(3)->lVal;
    parameter->Sent.value = ValueFor(parameter->Sent.type, *arguments.at(4));
    GiveObject(result, parameter);
  }

  void Execute(const VARIANT& affected, VARIANT* result) {
    sent_.parameters = parameters_->Sent;
    notes_->commands.push_back(sent_);
    if (notes_->failure) throw *notes_->failure;
    if (!connection_ || !(*connection_)->Jet) Refuse(Refusal::InvalidConnection, u"ADODB.Command");
    RefuseTextsComparedWithNumbers(*(*connection_)->Jet, sent_);
    std::vector<Argument> arguments;
    for (const SentParameter& parameter : sent_.parameters) arguments.push_back(parameter.value);
    CommandResult outcome = (*connection_)->Jet->Execute(sent_.statement, arguments);
    GiveNumber(affected.pvarVal, outcome.rows_written);
    const bool has_rows = outcome.rows.has_value();
    auto cursor = std::make_shared<Cursor>(std::move(outcome.rows).value_or(RowTable{}), notes_);
    if (!has_rows) cursor->Close();
    GiveObject(result, new RecordsetObject(cursor));
  }

  std::shared_ptr<AdoNotes> notes_;
  std::optional<Held<ConnectionObject>> connection_;
  SentCommand sent_;
  ParametersObject* parameters_ = new ParametersObject;
};

// Makes objects of one class; lives as long as its registration.
class Factory : public IClassFactory {
 public:
  explicit Factory(std::function<ScriptObject*()> make) : make_(std::move(make)) {}
  virtual ~Factory() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID id, void** object) override {
    *object = nullptr;
    if (!IsEqualIID(id, IID_IUnknown) && !IsEqualIID(id, IID_IClassFactory)) return E_NOINTERFACE;
    *object = static_cast<IClassFactory*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID id, void** object) override {
    ScriptObject* made = make_();
    const HRESULT result = made->QueryInterface(id, object);
    made->Release();
    return result;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

 private:
  std::function<ScriptObject*()> make_;
  ULONG references_ = 1;
};

void Register(const wchar_t* program_id, std::function<ScriptObject*()> make,
              std::vector<DWORD>& registrations) {
  CLSID class_id;
  if (FAILED(CLSIDFromProgID(program_id, &class_id))) return;
  auto* factory = new Factory(std::move(make));
  DWORD registration = 0;
  if (SUCCEEDED(CoRegisterClassObject(class_id, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE,
                                      &registration))) {
    registrations.push_back(registration);
  }
  factory->Release();
}

}  // namespace

AdoStandIn::AdoStandIn() : notes_(std::make_shared<AdoNotes>()) {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  Register(
      L"ADODB.Connection", [notes = notes_] { return new ConnectionObject(notes); },
      registrations_);
  Register(
      L"ADODB.Command", [notes = notes_] { return new CommandObject(notes); }, registrations_);
}

AdoStandIn::~AdoStandIn() {
  for (const DWORD registration : registrations_) CoRevokeClassObject(registration);
  CoUninitialize();
}

}  // namespace rdv::test

#endif
