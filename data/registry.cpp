#include "data/registry.h"

#ifdef _WIN32

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "data/ansi_text.h"
#include "runtime/error.h"

namespace rdv {
namespace {

constexpr size_t kFirstBufferSize = 1024;

class RegistryKey {
 public:
  RegistryKey(uint32_t root, TextView path) {
    // Root keys are 32-bit numbers that widen like signed ones.
    const HKEY parent = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(static_cast<int32_t>(root)));
    if (RegOpenKeyExA(parent, ToAnsi(path).c_str(), 0, KEY_READ, &key_) != ERROR_SUCCESS)
      key_ = nullptr;
  }
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() {
    if (key_ != nullptr) RegCloseKey(key_);
  }

  struct Content {
    DWORD type = REG_NONE;
    std::vector<uint8_t> bytes;
  };

  // Nothing when key or value is absent.
  std::optional<Content> Query(TextView name) const {
    if (key_ == nullptr) return std::nullopt;
    const std::string ansi_name = ToAnsi(name);
    Content content;
    content.bytes.resize(kFirstBufferSize);
    LSTATUS status;
    do {
      auto size = static_cast<DWORD>(content.bytes.size());
      status = RegQueryValueExA(key_, ansi_name.c_str(), nullptr, &content.type,
                                content.bytes.data(), &size);
      content.bytes.resize(size);
    } while (status == ERROR_MORE_DATA);
    if (status != ERROR_SUCCESS) return std::nullopt;
    return content;
  }

 private:
  HKEY key_ = nullptr;
};

// Without the `terminators` zero bytes at the end.
Text TextOf(const std::vector<uint8_t>& bytes, size_t terminators) {
  const size_t size = bytes.size() - std::min(bytes.size(), terminators);
  return FromAnsi(std::string_view(reinterpret_cast<const char*>(bytes.data()), size));
}

int32_t NumberOf(const std::vector<uint8_t>& bytes) {
  int32_t number = 0;
  std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
  return number;
}

}  // namespace

RegistryValue ReadRegistryValue(uint32_t root, TextView key_path, TextView value_name,
                                RegistryValue otherwise) {
  std::optional<RegistryKey::Content> content = RegistryKey(root, key_path).Query(value_name);
  if (!content) return otherwise;
  switch (content->type) {
    case REG_SZ:
    case REG_EXPAND_SZ:
      return TextOf(content->bytes, 1);
    case REG_BINARY:
      return std::move(content->bytes);
    case REG_DWORD:
      return NumberOf(content->bytes);
    case REG_MULTI_SZ:
      return TextOf(content->bytes, 2);
    default:
      Raise(LanguageError::UnsupportedValueType);
  }
}

}  // namespace rdv

#endif
