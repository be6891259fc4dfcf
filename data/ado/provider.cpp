#include "data/ado/provider.h"

#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

namespace rdv::ado {
namespace {

// What came after the provider of the configuration database and opens the same files; there are
// 64-bit ones of these. The newest comes first.
constexpr TextView kSuccessors[] = {u"Microsoft.ACE.OLEDB.16.0", u"Microsoft.ACE.OLEDB.12.0"};

constexpr int32_t kCannotCreateObject = 429;
constexpr int32_t kProviderNotFound = 3706;  // adErrProviderNotFound

class ClassesKey {
 public:
  explicit ClassesKey(TextView path) {
    // Without a flag for one of the views: that of this process is the one that counts.
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, reinterpret_cast<const wchar_t*>(Text(path).c_str()), 0,
                      KEY_QUERY_VALUE, &key_) != ERROR_SUCCESS)
      key_ = nullptr;
  }
  ClassesKey(const ClassesKey&) = delete;
  ClassesKey& operator=(const ClassesKey&) = delete;
  ~ClassesKey() {
    if (key_ != nullptr) RegCloseKey(key_);
  }

  // The unnamed text; empty where there is none.
  Text DefaultText() const {
    DWORD type = REG_NONE;
    DWORD size = 0;
    if (key_ == nullptr ||
        RegQueryValueExW(key_, nullptr, nullptr, &type, nullptr, &size) != ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ))
      return {};
    Text text(size / sizeof(char16_t), u'\0');
    if (RegQueryValueExW(key_, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(text.data()),
                         &size) != ERROR_SUCCESS)
      return {};
    text.resize(std::min(text.size(), text.find(u'\0')));
    return text;
  }

 private:
  HKEY key_ = nullptr;
};

Text DefaultTextOf(const Text& path) {
  return ClassesKey(path).DefaultText();
}

// Several of a host's threads may each have a control.
class AsideList {
 public:
  void Add(TextView name) {
    AcquireSRWLockExclusive(&lock_);
    names_.push_back(UpperCase(name));
    ReleaseSRWLockExclusive(&lock_);
  }
  bool Holds(TextView name) {
    AcquireSRWLockShared(&lock_);
    const bool found = std::ranges::find(names_, UpperCase(name)) != names_.end();
    ReleaseSRWLockShared(&lock_);
    return found;
  }

 private:
  // The library of the cross compiler has no mutex.
  SRWLOCK lock_ = SRWLOCK_INIT;
  std::vector<Text> names_;
};

AsideList& Aside() {
  static AsideList list;
  return list;
}

bool IsAtHand(TextView name) {
  return !Aside().Holds(name) && CanCreateProvider(name);
}

}  // namespace

bool CanCreateProvider(TextView name) {
  const Text class_id = DefaultTextOf(Text(name) + u"\\CLSID");
  return !class_id.empty() && !DefaultTextOf(u"CLSID\\" + class_id + u"\\InprocServer32").empty();
}

std::optional<Text> FindProvider(TextView named) {
  if (IsAtHand(named)) return Text(named);
  const auto* successor = std::ranges::find_if(kSuccessors, IsAtHand);
  if (successor == std::end(kSuccessors)) return std::nullopt;
  return Text(*successor);
}

void SetAsideProvider(TextView name) {
  Aside().Add(name);
}

bool SaysThatProviderIsMissing(const RuntimeError& error) {
  // The last two: the class is registered, but its library is gone or one of the other word size.
  constexpr int32_t kMissing[] = {
      kProviderNotFound, kCannotCreateObject, static_cast<int32_t>(REGDB_E_CLASSNOTREG),
      HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND), HRESULT_FROM_WIN32(ERROR_BAD_EXE_FORMAT)};
  return std::ranges::find(kMissing, error.Number()) != std::end(kMissing);
}

}  // namespace rdv::ado
