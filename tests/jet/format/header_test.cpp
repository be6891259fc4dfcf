#include "data/jet/format/header.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "data/jet/format/errors.h"
#include "runtime/error.h"
#include "tests/jet/bytes_of.h"
#include "tests/jet/corpus.h"
#include "tests/support/foreign_files.h"

namespace rdv::jet {
namespace {

constexpr uint64_t kSomeSize = 16 * 4096;

// The header page of a file of Access 2000 whose password is "password", uncovered.
std::vector<uint8_t> PageWithPassword() {
  std::vector<uint8_t> page(kJet4.page_size);
  std::copy(kHeaderMark.begin(), kHeaderMark.end(), page.begin());
  const std::string name = "Standard Jet DB";
  std::copy(name.begin(), name.end(), page.begin() + kHeaderEngineName);
  page[kHeaderVersion] = 1;
  Store16(&page[kHeaderCodePage], kCodePageWestern);
  Store32(&page[kJet4.header.build], 4518);
  Store16(&page[kJet4.header.sort_order], kSortOrderGeneral);
  const std::vector<uint8_t> date = BytesOf("9b bf 57 a9 15 c3 e5 40");
  std::copy(date.begin(), date.end(),
            page.begin() + static_cast<std::ptrdiff_t>(kJet4.header.creation_date));
  const std::array<uint8_t, 4> mask = DateMask(LoadDouble(date.data()));
  const std::string password = "password";
  for (size_t i = 0; i < kJet4.header.password_size; ++i) {
    const bool low = i % 2 == 0 && i / 2 < password.size();
    page[kHeaderPassword + i] = static_cast<uint8_t>((low ? password[i / 2] : 0) ^ mask[i % 4]);
  }
  return page;
}

std::vector<uint8_t> Covered(std::vector<uint8_t> page) {
  ApplyHeaderMask(page, kJet4);
  return page;
}

TEST(HeaderMask, CoversAPasswordAsAccessDoes) {
  EXPECT_EQ(DateMask(LoadDouble(BytesOf("9b bf 57 a9 15 c3 e5 40").data())),
            (std::array<uint8_t, 4>{0x18, 0xAE, 0, 0}));
  const std::vector<uint8_t> page = Covered(PageWithPassword());
  const std::vector<uint8_t> field(page.begin() + kHeaderPassword,
                                   page.begin() + kHeaderPassword + 40);
  EXPECT_EQ(field,
            BytesOf("ee558d37 36eaeffa a9f047e6 7918ee60 4c3a7b36 eddcdfb1 6f5a1343 d701b133 "
                    "2ccf795b 8a1b7c2a"));
}

TEST(HeaderMask, DoesNotFailForADateThatIsNone) {
  EXPECT_EQ(DateMask(1e300), (std::array<uint8_t, 4>{}));
  EXPECT_EQ(DateMask(std::numeric_limits<double>::quiet_NaN()), (std::array<uint8_t, 4>{}));
}

TEST(SidKey, OfAFileWithAPasswordOpensAdminsEntry) {
  const uint32_t key = ComputeSidKey(PageWithPassword());
  EXPECT_EQ(key, 0xA1779E24u);
  std::vector<uint8_t> admin = BytesOf("03 01");
  ApplySidKey(key, admin);
  EXPECT_EQ(admin, BytesOf("90 ac"));
}

struct FileKey {
  const char* file;
  uint32_t key;
};

class SidKeyOfFile : public testing::TestWithParam<FileKey> {};

TEST_P(SidKeyOfFile, IsThatOfItsMaker) {
  OpenFile file(GetParam().file);
  EXPECT_EQ(file.Reader().FileHeader().sid_key, GetParam().key);
}

INSTANTIATE_TEST_SUITE_P(
    Files, SidKeyOfFile,
    testing::ValuesIn(test::TrialsAtHand<FileKey>({{"corpus/blank/adox_jet4.mdb", 0x3853837E},
                                                   {"corpus/blank/emptyJet4.mdb", 0x63F4A8B4},
                                                   {"corpus/jet4/indexTestV2000.mdb", 0xEE38B83C}},
                                                  &FileKey::file)),
    [](const auto& key) { return TestName(key.param.file); });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(SidKeyOfFile);

TEST(Rc4, UncoversPagesOfAnEncodedFile) {
  std::vector<uint8_t> page = BytesOf("c6 e6 51 a6 64 d6 25 2e 26 65 89 ad 1f f3 e7 1d");
  ApplyRc4(BytesOf("e1 73 b7 a7"), page);
  EXPECT_EQ(page, BytesOf("01 01 64 0f 01 00 00 00 00 00 00 00 02 00 bb 0f"));
}

RDV_TEST_ON_FILE(testing::Test, HeaderOfABlankFileOfJet4, "corpus/blank/adox_jet4.mdb") {
  OpenFile file(GetParam());
  const Header& header = file.Reader().FileHeader();
  EXPECT_EQ(header.version, Version::Jet4);
  EXPECT_EQ(header.code_page, 1252);
  EXPECT_EQ(header.build, 9756u);
  EXPECT_TRUE(header.HasGeneralSortOrder());
  EXPECT_EQ(header.creation_date, 42329.94480300926);
  EXPECT_EQ(header.password, u"");
}

RDV_TEST_ON_FILE(testing::Test, HeaderOfAFileOfJet3, "corpus/jet3/testIndexCodesV1997.mdb") {
  OpenFile file(GetParam());
  const Header& header = file.Reader().FileHeader();
  EXPECT_EQ(header.version, Version::Jet3);
  EXPECT_EQ(header.code_page, 1252);
  EXPECT_TRUE(header.HasGeneralSortOrder());
}

TEST(Header, OpensAFileWithItsPasswordOnly) {
  const std::vector<uint8_t> page = Covered(PageWithPassword());
  EXPECT_EQ(ReadHeader(page, kSomeSize, u"x.mdb", u"password").password, u"password");
  for (const TextView wrong : {u"", u"Password", u"passwor"}) {
    try {
      ReadHeader(page, kSomeSize, u"x.mdb", wrong);
      ADD_FAILURE() << "a wrong password opened the file";
    } catch (const RuntimeError& error) {
      EXPECT_EQ(error.Number(), -2147217843);
      EXPECT_EQ(error.Description(), u"Not a valid password.");
    }
  }
}

struct Refusal {
  const char* what;
  void (*change)(std::vector<uint8_t>& page);  // to an uncovered header
  uint64_t size;
  TextView reason;  // behind the sentence that every file gets; empty for what is no database
};

constexpr TextView kMadeByAce =
    u"It was made by Access 2007 or later; save it in the Access 2000-2003 format";

class RefusedHeader : public testing::TestWithParam<Refusal> {};

TEST_P(RefusedHeader, NamesFileAndReason) {
  std::vector<uint8_t> page = PageWithPassword();
  GetParam().change(page);
  try {
    ReadHeader(Covered(page), GetParam().size, u"C:\\x.mdb", u"password");
    FAIL() << "the file was opened";
  } catch (const RuntimeError& error) {
    EXPECT_EQ(error.Number(), -2147467259);
    const Text plain = u"Unrecognized database format 'C:\\x.mdb'.";
    EXPECT_EQ(error.Description(),
              GetParam().reason.empty() ? plain : plain + u" " + Text(GetParam().reason) + u".");
  }
}

void SetName(std::vector<uint8_t>& page, const std::string& name) {
  std::copy(name.begin(), name.end(), page.begin() + kHeaderEngineName);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, RefusedHeader,
    testing::Values(
        Refusal{"short", [](std::vector<uint8_t>&) {}, 4095, u""},
        Refusal{"one page", [](std::vector<uint8_t>&) {}, 4096, u""},
        Refusal{"cut off", [](std::vector<uint8_t>&) {}, kSomeSize + 100, u""},
        Refusal{"other mark", [](std::vector<uint8_t>& page) { page[1] = 2; }, kSomeSize, u""},
        Refusal{"other name", [](std::vector<uint8_t>& page) { SetName(page, "Standard Net DB"); },
                kSomeSize, u""},
        Refusal{"money", [](std::vector<uint8_t>& page) { SetName(page, "MSISAM Database"); },
                kSomeSize, u"Files of Microsoft Money are not supported"},
        Refusal{"ace", [](std::vector<uint8_t>& page) { SetName(page, "Standard ACE DB"); },
                kSomeSize, kMadeByAce},
        Refusal{"version of ace", [](std::vector<uint8_t>& page) { page[kHeaderVersion] = 2; },
                kSomeSize, kMadeByAce},
        Refusal{"unknown version", [](std::vector<uint8_t>& page) { page[kHeaderVersion] = 77; },
                kSomeSize, u"Version 77 of the format is not known"},
        Refusal{"encoded", [](std::vector<uint8_t>& page) { page[kHeaderDatabaseKey] = 1; },
                kSomeSize, u"The database is encoded; save it without encoding"}),
    [](const auto& refusal) { return TestName(refusal.param.what); });

TEST(CommitWords, TellASessionThatDiedWhileItWrote) {
  std::vector<uint8_t> words(2 * kCommitWordCount);
  for (size_t i = 0; i < kCommitWordCount; ++i) Store16(&words[2 * i], kCommitIdle);
  EXPECT_EQ(SuspectState(words), std::nullopt);
  Store16(&words[2 * 3], kCommitWriting);
  EXPECT_EQ(SuspectState(words), u"Session 3 was ended while it wrote");
  Store16(&words[2 * 3], kCommitCorrupt);
  EXPECT_EQ(SuspectState(words), u"Session 3 met a damaged page");
}

}  // namespace
}  // namespace rdv::jet
