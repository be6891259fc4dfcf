// Sites that were made to hurt the control: a sound one but for one field of the database at a
// time. Each is loaded, a choice is made in all of its rows, and they are saved.
#include <gmock/gmock.h>

#include <array>
#include <fstream>

#include "data/jet/engine.h"
#include "runtime/error.h"
#include "tests/support/control_fixture.h"
#include "tests/support/jet_fields.h"
#include "tests/support/sites/site_builder.h"
#include "tests/support/sites/site_text.h"
#include "widgets/message_text.h"

namespace rdv::test {
namespace {

using jet::FileField;

constexpr int16_t kConfig = 1;

std::vector<uint8_t> ReadBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::vector<uint8_t>(std::istreambuf_iterator<char>(file), {});
}

void WriteBytes(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

class HostileSite : public ControlTest {
 protected:
  struct Outcome {
    bool shown = false;  // all was loaded
    bool saved = false;  // nothing was said when it was saved
  };

  // What a user does who notices nothing.
  Outcome LoadChooseAndApply() {
    Create();
    Outcome outcome;
    outcome.shown = control().ShowControl(kConfig);
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

  // None fills the screen; says how many there were.
  size_t CheckMessages() {
    const std::vector<Message> messages = Messages();
    for (const Message& message : messages)
      EXPECT_EQ(MessageText(message.text), message.text) << "not shown as it is";
    return messages.size();
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
