// The library file itself: what it exports and how it asks to be loaded.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tests/component/library.h"

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
