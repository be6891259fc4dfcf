#ifdef _WIN32

#include "tests/data/ado_stand_in.h"

#include <oleauto.h>

#include <functional>
#include <string>
#include <utility>

#include "data/jet/sql/jet_connection.h"
#include "runtime/error.h"
#include "runtime/value.h"

// COM interfaces have no virtual destructor; their objects end by Release.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace rdv::test {
namespace {

BSTR NewString(TextView text) {
  return SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()),
                           static_cast<UINT>(text.size()));
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
    const size_t position = static_cast<size_t>(id) - 1;
    if (position >= members_.size() || (members_[position].kinds & kind) == 0)
      return DISP_E_MEMBERNOTFOUND;
    CallArguments arguments;
    for (UINT i = parameters->cArgs; i > 0; --i) arguments.push_back(&parameters->rgvarg[i - 1]);
    try {
      members_[position].run(arguments, result);
      return S_OK;
    } catch (const RuntimeError& error) {
      exception->scode = error.Number();
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
      GiveObject(result, new FieldsObject(cursor));
    });
    Getter(u"EOF", [=](const CallArguments&, VARIANT* result) {
      GiveFlag(result, cursor->row >= cursor->table.rows.size());
    });
    Method(u"MoveNext", [=](const CallArguments&, VARIANT*) { ++cursor->row; });
    Method(u"Close", [=](const CallArguments&, VARIANT*) { cursor->Close(); });
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
      notes_->connection_strings.push_back(string_);
      Jet = jet::OpenJetConnection(string_.substr(string_.find(u"Data Source=") + 12));
      ++notes_->open_connections;
    });
    Method(u"Close", [this](const CallArguments&, VARIANT*) {
      Jet.reset();
      --notes_->open_connections;
    });
  }

  std::unique_ptr<Connection> Jet;

 private:
  std::shared_ptr<AdoNotes> notes_;
  Text string_;
};

class ParameterObject : public ScriptObject {
 public:
  SentParameter Sent;
};

class ParametersObject : public ScriptObject {
 public:
  ParametersObject() {
    Method(u"Append", [this](const CallArguments& arguments, VARIANT*) {
      Sent.push_back(static_cast<ParameterObject*>(arguments.at(0)->pdispVal)->Sent);
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
    if (arguments.at(4)->vt == VT_BSTR) parameter->Sent.value = TextOf(*arguments.at(4));
    GiveObject(result, parameter);
  }

  void Execute(const VARIANT& affected, VARIANT* result) {
    sent_.parameters = parameters_->Sent;
    notes_->commands.push_back(sent_);
    if (notes_->failure) throw *notes_->failure;
    std::vector<Argument> arguments;
    for (const SentParameter& parameter : sent_.parameters) arguments.push_back(parameter.value);
    CommandResult outcome = (*connection_)->Jet->Execute(sent_.statement, arguments);
    GiveNumber(affected.pvarVal, outcome.rows_written);
    auto cursor = std::make_shared<Cursor>(std::move(outcome.rows).value_or(RowTable{}), notes_);
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
