// Sites that were made to hurt the control: a sound one but for one field of the database at a
// time. Each is loaded, a choice is made in all of its rows, and they are saved.
#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cctype>

#include "data/jet/engine.h"
#include "data/jet/format/format.h"
#include "runtime/error.h"
#include "tests/hostile/hostile_structures.h"
#include "tests/support/control_fixture.h"
#include "tests/support/jet_fields.h"
#include "tests/support/sites/site_builder.h"
#include "tests/support/sites/site_text.h"

namespace rdv::test {
namespace {

using jet::FileField;

constexpr int16_t kConfig = 1;

class HostileSite : public ControlTest {
 protected:
  struct Outcome {
    bool shown = false;  // all was loaded
    bool saved = false;  // nothing was said when it was saved
  };

  // What a user does who notices nothing.
  Outcome LoadChooseAndApply(int16_t config = kConfig) {
    Create();
    Outcome outcome;
    outcome.shown = control().ShowControl(config);
    for (int row = 1; row <= grid().RowCount(); ++row) grid().SetSelected(row, true);
    for (ComboBox* list : {&form().cmbVolume, &form().cmbModeType, &form().cmbStartingNodeName}) {
      if (list->ListCount() > 0) list->SetListIndex(list->ListCount() - 1);
    }
    CheckMessages();
    form().cmdApply.SetEnabled(true);
    form().cmdApply.on_click();
    outcome.saved = CheckMessages() == 0;
    EXPECT_EQ(form().screen.Pointer(), MousePointer::Default);
    return outcome;
  }

  // None fills the screen or says something else than it seems to; says how many there were.
  size_t CheckMessages() {
    constexpr size_t kLongest = 8193;  // units, with the ellipsis
    const std::vector<Message> messages = Messages();
    for (const Message& message : messages) {
      EXPECT_LE(message.text.size(), kLongest);
      EXPECT_TRUE(std::ranges::none_of(message.text, MisleadsReaders)) << ToUtf8(message.text);
    }
    return messages.size();
  }
  // Controls other than the ends of lines, and what turns the direction of writing.
  static bool MisleadsReaders(char16_t unit) {
    if (unit == u'\r' || unit == u'\n' || unit == u'\t') return false;
    const bool control = unit < 0x20 || (unit >= 0x7F && unit < 0xA0);
    return control || (unit >= 0x202A && unit <= 0x202E) || (unit >= 0x2066 && unit <= 0x2069);
  }

  // Whoever comes next finds the file free.
  void ExpectNobodyIn() {
    try {
      const auto engine =
          jet::Engine::Open(CurrentSite().DatabaseFile().u16string(), {.lock_wait = {}});
      jet::Engine::WriteScope scope(*engine);
      scope.Commit();
      engine->Close();
    } catch (const RuntimeError& error) {
      EXPECT_THAT(error.what(), Not(testing::HasSubstr("in use")));
    }
  }
};

TEST_F(HostileSite, ASoundOneIsLoadedAndSaved) {
  UseSite("plain");
  const Outcome outcome = LoadChooseAndApply();
  EXPECT_TRUE(outcome.shown);
  EXPECT_TRUE(outcome.saved);
  ExpectNobodyIn();
}

// Every so manieth of the fields, so that each kind of structure of each table is met.
TEST_F(HostileSite, IsLoadedChosenInAndSavedOrRefusedWhateverAFieldHolds) {
  constexpr size_t kStep = 37;
  UseSite("plain");
  const std::vector<uint8_t> sound = ReadBytes(CurrentSite().DatabaseFile());
  const std::vector<FileField> fields = jet::FieldsOf(sound);
  size_t tried = 0;
  size_t refused = 0;
  for (size_t place = 0; place < fields.size(); place += kStep) {
    const FileField& field = fields[place];
    const uint32_t old = jet::LoadField(sound, field);
    const std::array<uint32_t, 5> values = {0, 0xFFFFFFFFu, old + 1, old ^ 0x80u, 7};
    std::vector<uint8_t> bytes = sound;
    jet::StoreField(bytes, field, values[tried % values.size()]);
    WriteBytes(CurrentSite().DatabaseFile(), bytes);
    SCOPED_TRACE(field.name + " = " + std::to_string(values[tried % values.size()]));
    const Outcome outcome = LoadChooseAndApply();
    ExpectNobodyIn();
    refused += outcome.shown && outcome.saved ? 0 : 1;
    ++tried;
  }
  EXPECT_GT(tried, 100u);
  // Neither does every field matter to these statements, nor none.
  EXPECT_GT(refused, tried / 20);
  EXPECT_LT(refused, tried);
}

// A unit whose lines are stored and one that gets new ones: rows change and are added.
class HostileStructureTest : public HostileSite,
                             public testing::WithParamInterface<HostileStructure> {};

TEST_P(HostileStructureTest, IsLoadedChosenInAndSavedWithAMessageAndWithoutHarm) {
  constexpr int16_t kEmptyUnit = 2;
  UseSite("plain");
  WriteBytes(CurrentSite().DatabaseFile(), GetParam().make());
  if (GetParam().pages != 0) {
    std::filesystem::resize_file(CurrentSite().DatabaseFile(),
                                 GetParam().pages * jet::kJet4.page_size);
  }
  bool refused = false;
  for (const int16_t config : {kConfig, kEmptyUnit}) {
    const Outcome outcome = LoadChooseAndApply(config);
    refused = refused || !outcome.shown || !outcome.saved;
    ExpectNobodyIn();
  }
  EXPECT_TRUE(refused);
}

INSTANTIATE_TEST_SUITE_P(All, HostileStructureTest, testing::ValuesIn(HostileStructures()),
                         [](const testing::TestParamInfo<HostileStructure>& info) {
                           std::string name = info.param.name;
                           std::erase_if(name, [](char letter) { return !std::isalnum(letter); });
                           return name;
                         });

TEST_F(HostileSite, AListOfNodeNumbersEndsAtTheLargestThatALineCanStore) {
  UseSite("plain");
  WriteBytes(CurrentSite().DatabaseFile(), sites::MakeDatabase(sites::ParseSite("numbers", R"(
like plain

table Node_Type_Max
  Config_ID   Integer
  PartitionID Integer
  NodeType_ID Integer
  Max_Number  Long
  key Config_ID, PartitionID, NodeType_ID

update Node_Type_Max: Config_ID, PartitionID, NodeType_ID; Max_Number
  1, 1, 3, 2147483647
)")));
  Create();
  ASSERT_TRUE(control().ShowControl(kConfig));
  control().BusinessRules().PartitionID = 1;
  grid().SetSelected(1, true);
  ComboBox& names = form().cmbStartingNodeName;
  names.Clear();
  names.AddItem(u"Directory", 3);
  names.SetListIndex(0);
  const ComboBox& numbers = form().cmbStartingNodeNumber;
  ASSERT_EQ(numbers.ListCount(), 32767);
  EXPECT_EQ(numbers.List(32766), u"32767");
  EXPECT_THAT(Messages(), testing::IsEmpty());
}

}  // namespace
}  // namespace rdv::test
