#include "tools/rdvsite/demonstration_site.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include "data/folders_and_files.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/engine.h"
#include "data/jet/file/draft.h"
#include "runtime/error.h"
#include "tools/rdvsite/demonstration_tables.h"

namespace rdv {
namespace {

// Configurations that are written in one statement of the database.
constexpr int kBatch = 500;

constexpr char kSettings[] =
    "; Settings of the demonstration site\r\n"
    "[MOHLINEVOLUME]\r\n"
    "0=Off\r\n"
    "1=Faint\r\n"
    "2=Soft\r\n"
    "3=Gentle\r\n"
    "4=Below normal\r\n"
    "5=Normal\r\n"
    "6=Above normal\r\n"
    "7=Strong\r\n"
    "8=Loud\r\n"
    "9=Loudest\r\n"
    "\r\n"
    "[IMPEDANCE]\r\n"
    "IMPLEMENTEDCHINA=Y\r\n";

constexpr std::array<TextView, 10> kMusicVolumes = {
    u"Off",    u"Faint",        u"Soft",   u"Gentle", u"Below normal",
    u"Normal", u"Above normal", u"Strong", u"Loud",   u"Loudest"};

constexpr CodeName kPartitions[] = {
    {1, u"Main Desk"}, {2, u"Service"}, {3, u"Workshop"}, {4, u"After Hours"}};

// Modes whose number is part of the caption.
constexpr int16_t kNumberedModes[] = {1, 2, 25, 26, 27, 28, 32, 33};

// Node types that a line can start with, and how many nodes of each there are.
constexpr std::pair<int16_t, int16_t> kHighestNodes[] = {
    {0, 20}, {1, 12}, {2, 16}, {3, 4},  {4, 999}, {6, 8},  {7, 4},
    {8, 10}, {9, 30}, {11, 4}, {13, 2}, {15, 6},  {999, 1}};

// Line types.
constexpr int16_t kNotInstalled = 1;
constexpr int16_t kImpedance = 5;
constexpr int16_t kHybrid = 6;
constexpr int16_t kMusic = 8;

struct Line {
  int16_t number;
  int16_t type;
  int16_t partition;
  int16_t node_type;
  int16_t node_number;
  int16_t volume;
  int16_t mode;
  int16_t mode_number;
  int16_t nis;
  int16_t ewt;
  int16_t impedance;
  int16_t soft_stop;
  TextView label;
};

// The second line of each pair for music is the first one's partner.
constexpr Line kMixedLines[] = {
    {1, kHybrid, 1, 1, 1, 128, 1, 2, 0, 0, 0, 0, u"Front desk"},
    {2, kHybrid, 2, 2, 12, 0, 25, 4, 5, 30, 3, 1, u"Spare parts, group A"},
    {3, kHybrid, 1, 0, 3, 0, 1, 1, 0, 15, 1, 0, u"Visitors' line"},
    {4, kHybrid, 4, 9, 10, 128, 2, 10, 99, 0, 0, 1, u"Opening hours"},
    {5, kImpedance, 1, 0, 5, 128, 13, 1, 1, 0, 2, 1, u"Link to the annexe"},
    {6, kImpedance, 3, 13, 2, 3, 3, 1, 0, 0, 0, 0, u""},
    {7, kNotInstalled, 1, 999, -1, 0, 1, 1, 0, 0, 0, 0, u""},
    {8, kNotInstalled, 1, 999, -1, 0, 1, 1, 0, 0, 0, 0, u""},
    {9, kMusic, 1, 11, 1, 2, 17, 1, 0, 0, 0, 0, u"Waiting callers"},
    {10, kMusic, 1, 11, 1, 2, 17, 1, 0, 0, 0, 0, u""},
    {11, kMusic, 2, 11, 2, 9, 18, 1, 0, 0, 0, 0, u"Workshop loudspeaker"},
    {12, kMusic, 2, 11, 2, 9, 18, 1, 0, 0, 0, 0, u""}};

constexpr Line kFourHybridLines[] = {{1, kHybrid, 1, 0, 10, 0, 1, 1, 0, 0, 1, 1, u"Line 1"},
                                     {2, kHybrid, 2, 1, 2, 128, 26, 2, 0, 0, 2, 0, u"Line 2"},
                                     {3, kHybrid, 1, 2, 3, 0, 33, 9, 0, 0, 3, 1, u"Line 3"},
                                     {4, kHybrid, 2, 6, 4, 128, 24, 1, 0, 0, 4, 0, u"Line 4"},
                                     {5, kNotInstalled, 1, 999, -1, 0, 1, 1, 0, 0, 0, 0, u""},
                                     {6, kNotInstalled, 1, 999, -1, 0, 1, 1, 0, 0, 0, 0, u""},
                                     {7, kNotInstalled, 1, 999, -1, 0, 1, 1, 0, 0, 0, 0, u""},
                                     {8, kNotInstalled, 1, 999, -1, 0, 1, 1, 0, 0, 0, 0, u""},
                                     {9, kMusic, 1, 11, 1, 6, 17, 1, 0, 0, 0, 0, u""},
                                     {10, kMusic, 1, 11, 1, 6, 17, 1, 0, 0, 0, 0, u""},
                                     {11, kMusic, 1, 11, 2, 6, 17, 1, 0, 0, 0, 0, u""},
                                     {12, kMusic, 1, 11, 2, 6, 17, 1, 0, 0, 0, 0, u""}};

// Of a unit in another slot, which this product leaves alone.
constexpr Line kOtherUnitLines[] = {{1, kHybrid, 1, 8, 1, 128, 32, 1, 1, 0, 0, 1, u"Gate 1"},
                                    {2, kHybrid, 1, 8, 2, 128, 32, 2, 1, 0, 0, 1, u"Gate 2"},
                                    {3, kHybrid, 2, 8, 3, 0, 32, 3, 1, 0, 0, 1, u"Gate 3"},
                                    {4, kHybrid, 2, 8, 4, 0, 32, 4, 1, 0, 0, 1, u"Gate 4"}};

Value OfText(TextView text) {
  return Text(text);
}

// The partner of a music line and numbers that a mode does not have are left out of captions.
bool IsPartner(const Line& line) {
  return line.type == kMusic && line.number % 2 == 0;
}

Text VolumeCaption(const Line& line) {
  if (line.type == kMusic && !IsPartner(line))
    return Text(kMusicVolumes[static_cast<size_t>(line.volume)]);
  if (line.type == kMusic) return Decimal(line.volume);
  if (line.volume == 128) return u"High";
  return line.volume == 0 ? u"Low" : Decimal(line.volume);
}

Text NodeCaption(const Line& line) {
  const Text name(NameOf(NodeTypeNames(), line.node_type));
  return IsPartner(line) ? name : name + u" " + Decimal(line.node_number);
}

Text ModeCaption(const Line& line) {
  const Text name(NameOf(ModeTypeNames(), line.mode));
  const bool numbered = std::find(std::begin(kNumberedModes), std::end(kNumberedModes),
                                  line.mode) != std::end(kNumberedModes);
  return numbered ? name + u"=" + Decimal(line.mode_number) : name;
}

class SiteWriter {
 public:
  explicit SiteWriter(jet::Engine& engine) : engine_(engine) {}

  void WriteTables() {
    jet::Engine::WriteScope scope(engine_);
    for (const jet::TableSpec& table : ConfigurationTables()) engine_.CreateTable(table);
    scope.Commit();
  }

  void WriteReferenceRows() {
    jet::Engine::WriteScope scope(engine_);
    for (const CodeName& entry : CardTypeNames()) InsertName(u"SR_Card_Type_Names", entry);
    for (const CodeName& entry : NodeTypeNames()) InsertName(u"SR_Node_Type_Names", entry);
    for (const CodeName& entry : ModeTypeNames()) InsertName(u"SR_Mode_Type_Names", entry);
    for (const CodePair& pair : AllowedModes())
      Insert(u"SR_Card_Type_can_use_Mode", {pair.card_type, pair.code});
    for (const CodePair& pair : AllowedVolumes())
      Insert(u"SR_Card_Type_can_use_Volume", {pair.card_type, pair.code});
    scope.Commit();
  }

  void WriteConfigurations(int first, int last) {
    jet::Engine::WriteScope scope(engine_);
    for (int number = first; number <= last; ++number)
      WriteConfiguration(static_cast<int16_t>(number));
    scope.Commit();
  }

 private:
  void Insert(TextView table, std::initializer_list<Value> values) {
    std::vector<jet::Assignment> row;
    row.reserve(values.size());
    for (const Value& value : values) row.push_back({row.size(), value});
    engine_.Insert(engine_.Table(table), row);
  }

  void InsertName(TextView table, const CodeName& entry) {
    Insert(table, {entry.code, OfText(entry.name)});
  }

  void WriteConfiguration(int16_t number) {
    const int16_t partitions = number == 1 ? 4 : number == 2 ? 1 : 2;
    WriteSettings(number, partitions > 1);
    WritePartitions(number, partitions);
    WriteCard(number, 1, 1, number == 3 ? 6 : 7, u"HC-412-07");
    if (number != 2 && number != 3) WriteCard(number, 2, 1, 7, u"HC-404-01");
    WriteCard(number, 3, 0, 2, u"CC-001-00");
    switch (number) {
      case 1:
        WriteLines(number, 1, kMixedLines);
        WriteLines(number, 2, kOtherUnitLines);
        break;
      case 2:
        break;
      case 3:
        WriteLines(number, 1, kFourHybridLines);
        break;
      default:
        WriteEightHybridLines(number);
        WriteLines(number, 2, kOtherUnitLines);
        break;
    }
  }

  void WriteSettings(int16_t number, bool partition_enabled) {
    constexpr std::array<TextView, 3> kCaptions = {u"Head office", u"Not yet fitted",
                                                   u"Branch with four lines"};
    const bool named = number <= static_cast<int16_t>(kCaptions.size());
    const Text caption =
        named ? Text(kCaptions[static_cast<size_t>(number - 1)]) : u"Branch " + Decimal(number);
    constexpr double kFirstSaved = 40179;  // 2010-01-01
    Insert(u"orvsettings", {number, partition_enabled, caption, int32_t{number} * 10,
                            DateTime{kFirstSaved + number % 3650 + 0.5}, 0.25,
                            Currency{1250000 + int64_t{number} * 100}, OfText(u"Demonstration")});
  }

  void WritePartitions(int16_t configuration, int16_t count) {
    for (const CodeName& partition : kPartitions) {
      if (partition.code > count) continue;
      Insert(u"Partition_Settings", {configuration, partition.code, OfText(partition.name)});
      for (const auto& [node_type, highest] : kHighestNodes)
        Insert(u"Node_Type_Max", {configuration, partition.code, node_type, highest});
    }
  }

  void WriteCard(int16_t configuration, int16_t base_slot, int16_t offset, int16_t card_type,
                 TextView part_number) {
    Insert(u"Used_Cards",
           {configuration, base_slot, offset, u"Slot " + Decimal(base_slot * 4 + offset - 4),
            OfText(NameOf(CardTypeNames(), card_type)), card_type, int16_t{1}, OfText(part_number),
            int16_t{49}});
  }

  void WriteLines(int16_t configuration, int16_t base_slot, std::span<const Line> lines) {
    for (const Line& line : lines) WriteLine(configuration, base_slot, line);
  }

  // The unit of the third configuration with its other four lines fitted as well.
  void WriteEightHybridLines(int16_t configuration) {
    for (Line line : kFourHybridLines) {
      if (line.type == kNotInstalled) {
        line = kFourHybridLines[line.number - 5];
        line.number = static_cast<int16_t>(line.number + 4);
      }
      WriteLine(configuration, 1, line);
    }
  }

  void WriteLine(int16_t configuration, int16_t base_slot, const Line& line) {
    constexpr int16_t kOffset = 1;
    constexpr int16_t kNone = 0;
    const bool installed = line.type != kNotInstalled;
    const Text none = u"N/A";
    Insert(u"Used_Lines", {configuration,
                           base_slot,
                           kOffset,
                           line.number,
                           installed ? OfText(NameOf(kPartitions, line.partition)) : Value(none),
                           line.partition,
                           installed ? NodeCaption(line) : none,
                           line.node_type,
                           line.node_number,
                           installed ? VolumeCaption(line) : none,
                           line.volume,
                           installed ? ModeCaption(line) : none,
                           line.mode,
                           line.mode_number,
                           OfText(line.label),
                           line.nis,
                           line.ewt,
                           kNone,
                           line.type,
                           line.impedance,
                           line.soft_stop,
                           kNone,
                           kNone,
                           kNone});
  }

  jet::Engine& engine_;
};

void WriteDatabase(jet::Engine& engine, int configurations) {
  SiteWriter writer(engine);
  writer.WriteTables();
  writer.WriteReferenceRows();
  for (int first = 1; first <= configurations; first += kBatch)
    writer.WriteConfigurations(first, std::min(first + kBatch - 1, configurations));
}

[[noreturn]] void RaiseFileAccess(const std::filesystem::path& path) {
  throw RuntimeError(75, u"Path/File access error: '" + path.u16string() + u"'",
                     Text(kProductSource));
}

// Whether it made them. Those that are there are kept.
bool WriteSettings(const std::filesystem::path& path) {
  if (std::filesystem::exists(path)) return false;
  try {
    const std::string_view text = kSettings;
    jet::Draft draft(jet::NativeFileSystem(), path.u16string());
    draft.Content().WriteAt(0,
                            jet::Bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    draft.Publish();
  } catch (const jet::FileError& problem) {
    if (problem.Problem() == jet::FileProblem::Exists) return false;
    RaiseFileAccess(path);
  }
  return true;
}

}  // namespace

std::filesystem::path CreateDemonstrationSite(const Text& common_app_data, int configurations) {
  using namespace ORVANTPlusFilesAndFolders;
  const std::filesystem::path suite =
      std::filesystem::path(common_app_data) / kCompanyFolder / kSuiteFolder;
  const std::filesystem::path database = suite / kDatabaseFolder / kDatabaseFile;
  std::error_code error;
  std::filesystem::create_directories(database.parent_path(), error);
  if (error) RaiseFileAccess(database.parent_path());
  bool settings_made = false;
  try {
    // The database gets its name last: as long as it has none, the site can be made once more.
    jet::Engine::Create(database.u16string(), {}, [&](jet::Engine& engine) {
      WriteDatabase(engine, configurations);
      settings_made = WriteSettings(suite / kSettingsFile);
    });
  } catch (...) {
    if (settings_made) std::filesystem::remove(suite / kSettingsFile, error);
    throw;
  }
  return database;
}

}  // namespace rdv
