// The library file itself: what it exports and how it asks to be loaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>

#include "tests/component/support/library.h"

namespace rdv::test {
namespace {

class LibraryFile : public testing::Test {
 protected:
  void SetUp() override {
    std::ifstream file(Library::Path().c_str(), std::ios::binary);
    bytes_.assign(std::istreambuf_iterator<char>(file), {});
    ASSERT_GT(bytes_.size(), sizeof(IMAGE_DOS_HEADER));
    const auto* dos = At<IMAGE_DOS_HEADER>(0);
    headers_ = At<IMAGE_NT_HEADERS>(static_cast<size_t>(dos->e_lfanew));
    ASSERT_EQ(headers_->Signature, static_cast<DWORD>(IMAGE_NT_SIGNATURE));
  }

  template <class Structure>
  const Structure* At(size_t offset) const {
    return reinterpret_cast<const Structure*>(bytes_.data() + offset);
  }
  const IMAGE_SECTION_HEADER* Sections() const {
    const auto* optional_header = reinterpret_cast<const char*>(&headers_->OptionalHeader);
    return reinterpret_cast<const IMAGE_SECTION_HEADER*>(optional_header +
                                                         headers_->FileHeader.SizeOfOptionalHeader);
  }

  size_t Offset(DWORD address) const {
    for (WORD index = 0; index < headers_->FileHeader.NumberOfSections; ++index) {
      const IMAGE_SECTION_HEADER& section = Sections()[index];
      if (address >= section.VirtualAddress &&
          address < section.VirtualAddress + section.SizeOfRawData) {
        return address - section.VirtualAddress + section.PointerToRawData;
      }
    }
    return 0;
  }

  std::string bytes_;
  const IMAGE_NT_HEADERS* headers_ = nullptr;
};

TEST_F(LibraryFile, ExportsTheFourEntryPointsAndNothingElse) {
  const IMAGE_DATA_DIRECTORY& directory =
      headers_->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
  const auto* exports = At<IMAGE_EXPORT_DIRECTORY>(Offset(directory.VirtualAddress));
  std::vector<std::string> names;
  const auto* addresses = At<DWORD>(Offset(exports->AddressOfNames));
  for (DWORD index = 0; index < exports->NumberOfNames; ++index) {
    names.emplace_back(At<char>(Offset(addresses[index])));
  }
  EXPECT_EQ(exports->NumberOfFunctions, exports->NumberOfNames);
  EXPECT_THAT(names, testing::ElementsAre("DllCanUnloadNow", "DllGetClassObject",
                                          "DllRegisterServer", "DllUnregisterServer"));
}

// The libraries that it imports are the system's. The only ones that are named at run time are
// among its imports as well, so that none is ever taken from the current folder.
TEST_F(LibraryFile, NamesNoLibraryThatIsYetToBeLoaded) {
  // The last is what the version resource calls the library itself.
  static const std::set<std::string> kAllowed = {"user32.dll", "msvcrt.dll", "advapi32.dll",
                                                 "TLV_RDV_Line_Config.dll"};
  const std::string ending("\0.\0d\0l\0l\0\0", 10);
  std::set<std::string> named;
  for (size_t at = bytes_.find(ending); at != std::string::npos; at = bytes_.find(ending, at + 1)) {
    std::string name = ".dll";
    for (size_t each = at - 1; bytes_[each] > ' ' && bytes_[each + 1] == 0; each -= 2) {
      name.insert(name.begin(), bytes_[each]);
    }
    // The last letter of a narrow text may stand right before the first of the name.
    if (kAllowed.contains(name.substr(1))) name.erase(0, 1);
    named.insert(name);
  }
  EXPECT_TRUE(named.contains("user32.dll"));
  for (const std::string& name : named) EXPECT_TRUE(kAllowed.contains(name)) << name;
}

TEST_F(LibraryFile, LoadsAtRandomAddressesWithoutExecutableData) {
  const WORD flags = headers_->OptionalHeader.DllCharacteristics;
  EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE);
  EXPECT_TRUE(flags & IMAGE_DLLCHARACTERISTICS_NX_COMPAT);
#ifdef _WIN64
  constexpr WORD kHighEntropy = 0x0020;
  EXPECT_TRUE(flags & kHighEntropy);
#endif
  EXPECT_FALSE(headers_->FileHeader.Characteristics & IMAGE_FILE_RELOCS_STRIPPED);
}

TEST_F(LibraryFile, HasNoSectionThatIsBothWritableAndExecutable) {
  constexpr DWORD kBoth = IMAGE_SCN_MEM_WRITE | IMAGE_SCN_MEM_EXECUTE;
  for (WORD index = 0; index < headers_->FileHeader.NumberOfSections; ++index) {
    EXPECT_NE(Sections()[index].Characteristics & kBoth, kBoth);
  }
}

}  // namespace
}  // namespace rdv::test
