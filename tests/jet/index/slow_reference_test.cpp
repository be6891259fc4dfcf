// What is fast and clever against what is slow and plain: the keys of texts against an alphabet in
// which every letter is looked for from the beginning, the search in an index against a walk
// through all of it, on many random cases.
#include <gtest/gtest.h>

#include <algorithm>
#include <compare>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "data/jet/catalog/table_spec.h"
#include "data/jet/engine.h"
#include "data/jet/index/index_cursor.h"
#include "data/jet/index/index_key.h"
#include "data/jet/rows/table_scan.h"
#include "tests/jet/random_values.h"
#include "tests/jet/write_support.h"

namespace rdv::jet {
namespace {

// --- The order of texts ---

// Characters that are one and the same letter stand together; the lower letters come first.
const std::vector<TextView> kAlphabet = {
    u" ",      u"\u00A0",  u"\t",      u"\n",      u"\v",     u"\f",     u"\r",     u"!",
    u"\"",     u"#",       u"$",       u"%",       u"&",      u"(",      u")",      u"*",
    u",",      u".",       u"/",       u":",       u";",      u"?",      u"@",      u"[",
    u"\\",     u"]",       u"^",       u"_",       u"`",      u"{",      u"|",      u"}",
    u"~",      u"\u00A1",  u"\u00A6",  u"\u00A8",  u"\u00AF", u"\u00B4", u"\u00B8", u"\u00BF",
    u"+",      u"<",       u"=",       u">",       u"\u00B1", u"\u00AB", u"\u00BB", u"\u00D7",
    u"\u00F7", u"\u00A2",  u"\u00A3",  u"\u00A4",  u"\u00A5", u"\u00A7", u"\u00A9", u"\u00AC",
    u"\u00AE", u"\u00B0",  u"\u00B5",  u"\u00B6",  u"\u00B7", u"0",      u"\u00BC", u"\u00BD",
    u"\u00BE", u"1\u00B9", u"2\u00B2", u"3\u00B3", u"4",      u"5",      u"6",      u"7",
    u"8",      u"9",       u"aA",      u"bB",      u"cC",     u"dD",     u"eE",     u"fF",
    u"gG",     u"hH",      u"iI",      u"jJ",      u"kK",     u"lL",     u"mM",     u"nN",
    u"oO",     u"pP",      u"qQ",      u"rR",      u"sS",     u"tT",     u"uU",     u"vV",
    u"wW",     u"xX",      u"yY",      u"zZ"};

// Letters that stand for two, and letters with an accent. Those of a row have the same accent, and
// the lower rows come first.
struct Ligature {
  TextView letters;
  TextView spelled;
};
const std::vector<Ligature> kLigatures = {
    {u"\u00E6\u00C6", u"ae"}, {u"\u00FE\u00DE", u"th"}, {u"\u00DF", u"ss"}};
struct Accent {
  TextView letters;
  TextView plain;
  char16_t mark = 0;  // makes the accent, too, behind a plain letter; 0: none does
};
const std::vector<Accent> kAccents = {
    {u"\u00AA\u00BA", u"ao"},
    {u"\u00E1\u00C1\u00E9\u00C9\u00ED\u00CD\u00F3\u00D3\u00FA\u00DA\u00FD\u00DD", u"aaeeiioouuyy",
     u'\u0301'},
    {u"\u00E0\u00C0\u00E8\u00C8\u00EC\u00CC\u00F2\u00D2\u00F9\u00D9", u"aaeeiioouu", u'\u0300'},
    {u"\u00E2\u00C2\u00EA\u00CA\u00EE\u00CE\u00F4\u00D4\u00FB\u00DB", u"aaeeiioouu", u'\u0302'},
    {u"\u00E4\u00C4\u00EB\u00CB\u00EF\u00CF\u00F6\u00D6\u00FC\u00DC\u00FF", u"aaeeiioouuy",
     u'\u0308'},
    {u"\u00E3\u00C3\u00F1\u00D1\u00F5\u00D5", u"aannoo", u'\u0303'},
    {u"\u00E5\u00C5", u"aa", u'\u030A'},
    {u"\u00E7\u00C7", u"cc", u'\u0327'},
    {u"\u00F8\u00D8", u"oo"},
    {u"\u00F0\u00D0", u"dd"}};

// Passed over at first, told apart last.
constexpr TextView kHidden = u"'-\u00AD";

// Where a character stands; nothing where it does not.
template <typename Rows, typename Letters>
std::optional<size_t> RowOf(const Rows& rows, char16_t unit, Letters letters) {
  for (size_t row = 0; row < rows.size(); ++row) {
    if (letters(rows[row]).find(unit) != TextView::npos) return row;
  }
  return std::nullopt;
}

size_t LetterOf(char16_t unit) {
  return RowOf(kAlphabet, unit, [](TextView letters) { return letters; }).value();
}

// What two texts are compared by, one after the other.
struct Levels {
  std::vector<size_t> letters;
  std::vector<size_t> accents;  // of each character, 0 for none; without those at the end
  std::vector<std::pair<size_t, size_t>> hidden;  // characters before it, and which it is

  auto operator<=>(const Levels&) const = default;
};

Levels LevelsOf(TextView text) {
  while (text.ends_with(u' ')) text.remove_suffix(1);
  Levels levels;
  for (const char16_t unit : text) {
    const auto mark = RowOf(kAccents, unit, [](const Accent& accent) {
      return accent.mark == 0 ? TextView() : TextView(&accent.mark, 1);
    });
    const auto accent = RowOf(kAccents, unit, [](const Accent& row) { return row.letters; });
    const auto ligature = RowOf(kLigatures, unit, [](const Ligature& row) { return row.letters; });
    const size_t hidden = kHidden.find(unit);
    if (mark) {
      levels.accents.back() = *mark + 1;
    } else if (hidden != TextView::npos) {
      levels.hidden.emplace_back(levels.accents.size(), hidden);
    } else if (accent) {
      const Accent& row = kAccents[*accent];
      levels.letters.push_back(LetterOf(row.plain[row.letters.find(unit)]));
      levels.accents.push_back(*accent + 1);
    } else if (ligature) {
      for (const char16_t letter : kLigatures[*ligature].spelled)
        levels.letters.push_back(LetterOf(letter));
      levels.accents.push_back(0);
    } else {
      levels.letters.push_back(LetterOf(unit));
      levels.accents.push_back(0);
    }
  }
  while (!levels.accents.empty() && levels.accents.back() == 0) levels.accents.pop_back();
  return levels;
}

int Sign(std::strong_ordering order) {
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}
int Sign(int order) {
  return (order > 0) - (order < 0);
}

Key KeyOf(TextView text, bool descending) {
  Key key;
  char16_t unsupported = 0;
  EXPECT_TRUE(AppendTextKeyJet4(text, descending, key, unsupported)) << int{unsupported};
  return key;
}

// Texts that are close to each other, of every character that the alphabet knows.
class RandomTexts {
 public:
  RandomTexts() {
    for (const TextView letters : kAlphabet) all_ += letters;
    for (const Ligature& row : kLigatures) all_ += row.letters;
    for (const Accent& row : kAccents) all_ += row.letters;
    all_ += kHidden;
  }

  const Text& AllCharacters() const { return all_; }

  Text Any() {
    const size_t kinds = 1 + random_.Below(5);
    Text few;
    for (size_t i = 0; i < kinds; ++i) few += AnyCharacter();
    Text text;
    for (size_t length = random_.Below(9); length > 0; --length) text += few[random_.Below(kinds)];
    return text;
  }

  // With one place changed, more or less.
  Text Like(Text text) {
    for (size_t changes = random_.Below(3); changes > 0; --changes) {
      const size_t place = random_.Below(text.size() + 1);
      switch (random_.Below(4)) {
        case 0:
          text.insert(place, 1, AnyCharacter());
          break;
        case 1:
          text.erase(place, 1);
          break;
        case 2:
          if (place < text.size()) text[place] = SameLetter(text[place]);
          break;
        default:
          Mark(text, place);
      }
    }
    return text;
  }

 private:
  char16_t AnyCharacter() { return all_[random_.Below(all_.size())]; }
  char16_t SameLetter(char16_t unit) {
    for (const TextView letters : kAlphabet) {
      if (letters.find(unit) != TextView::npos) return letters[random_.Below(letters.size())];
    }
    return unit;
  }
  // Behind a letter that has no accent.
  void Mark(Text& text, size_t place) {
    const Accent& accent = kAccents[random_.Below(kAccents.size())];
    const bool plain = place > 0 && place < text.size() && text[place - 1] >= u'a' &&
                       text[place - 1] <= u'z' && text[place] < u'\u0300';
    if (plain && accent.mark != 0) text.insert(place, 1, accent.mark);
  }

  Text all_;
  RandomValues random_{20};
};

// Marks stand behind letters that have none.
bool CanBeJudged(TextView text) {
  constexpr char16_t kFirstMark = 0x0300;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] < kFirstMark) continue;
    if (i == 0 || text[i - 1] < u'a' || text[i - 1] > u'z') return false;
  }
  return true;
}

TEST(SlowReference, OrdersTextsAsTheirKeysDoWhicheverCharactersTheyHave) {
  RandomTexts texts;
  std::set<char16_t> met;
  int equal = 0;
  int judged = 0;
  while (judged < 20000) {
    const Text left = texts.Any();
    const Text right = texts.Like(left);
    if (!CanBeJudged(left) || !CanBeJudged(right)) continue;
    ++judged;
    const int wanted = Sign(LevelsOf(left) <=> LevelsOf(right));
    EXPECT_EQ(Sign(CompareTexts(left, right)), wanted) << ToUtf8(left) << " | " << ToUtf8(right);
    EXPECT_EQ(Sign(KeyOf(left, false) <=> KeyOf(right, false)), wanted)
        << ToUtf8(left) << " | " << ToUtf8(right);
    EXPECT_EQ(Sign(KeyOf(left, true) <=> KeyOf(right, true)), -wanted)
        << ToUtf8(left) << " | " << ToUtf8(right);
    equal += wanted == 0;
    met.insert(left.begin(), left.end());
    if (HasFailure()) return;
  }
  EXPECT_GT(equal, 1000);
  for (const char16_t unit : texts.AllCharacters())
    EXPECT_TRUE(met.contains(unit)) << int{unit} << " was in no text";
}

// --- The search in an index ---

struct Entry {
  Key key;
  RowId row;
  auto operator<=>(const Entry&) const = default;
};

class IndexSearch : public testing::Test {
 protected:
  void SetUp() override {
    const Text path = PathText(folder_.Path() / "search.mdb");
    Engine::Create(path);
    engine_ = Engine::Open(path);
    Engine::WriteScope scope(*engine_);
    engine_->CreateTable(
        {.name = u"Rows",
         .columns = {{.name = u"Name", .type = ColumnType::Text, .length = 40},
                     {.name = u"Number", .type = ColumnType::Integer},
                     {.name = u"Code", .type = ColumnType::Binary, .length = 30},
                     {.name = u"Day", .type = ColumnType::DateTime}},
         .indexes = {{.name = u"Names", .columns = {{u"Name"}, {u"Number", true}}},
                     {.name = u"Numbers", .columns = {{u"Number"}}, .ignore_nulls = true},
                     {.name = u"Codes", .columns = {{u"Code", true}, {u"Day"}}}}});
    scope.Commit();
  }

  std::vector<Value> RandomRow(std::span<const Column> columns) {
    std::vector<Value> row;
    for (const Column& column : columns) row.push_back(random_.For(column));
    return row;
  }

  // So that pages have been split, and emptied.
  void Fill() {
    std::vector<RowId> rows;
    Engine::WriteScope scope(*engine_);
    const TableDefinition& table = engine_->Table(u"Rows");
    for (int i = 0; i < 3000; ++i) {
      std::vector<Assignment> values;
      for (const Value& value : RandomRow(table.columns)) values.push_back({values.size(), value});
      rows.push_back(engine_->Insert(table, values));
    }
    for (int i = 0; i < 1000; ++i) {
      const auto row = rows.begin() + static_cast<ptrdiff_t>(random_.Below(rows.size()));
      engine_->Delete(table, *row);
      rows.erase(row);
    }
    scope.Commit();
  }

  // Each entry that a row asks for, in order, without a look at the index.
  std::vector<Entry> EntriesOfRows(const TableDefinition& table, const RealIndex& index) {
    std::vector<Entry> entries;
    for (TableScan scan(engine_->File(), table); scan.Next();) {
      if (auto key = KeyOfRow(engine_->File(), table, index, scan.Row()))
        entries.push_back({std::move(*key), scan.Row().Id()});
    }
    std::ranges::sort(entries);
    return entries;
  }

  // The key of some leading columns, a piece of a stored one, or one that is a little different.
  Key AnyKey(const TableDefinition& table, const RealIndex& index,
             const std::vector<Entry>& entries) {
    if (random_.OneIn(3)) {
      std::vector<Value> values;
      for (const IndexColumn& part : index.columns)
        values.push_back(random_.For(table.columns[part.column]));
      values.resize(1 + random_.Below(values.size()));
      return BuildKey(engine_->File(), table, index, values);
    }
    Key key = entries[random_.Below(entries.size())].key;
    if (random_.OneIn(2)) key.resize(random_.Below(key.size() + 1));
    if (!key.empty() && random_.OneIn(3)) ++key[random_.Below(key.size())];
    return key;
  }

  // The first one that is not below the key, and what follows it.
  static void ExpectFound(IndexCursor& cursor, const Key& key, const std::vector<Entry>& entries) {
    auto wanted = entries.begin();
    while (wanted != entries.end() && wanted->key < key) ++wanted;
    for (int step = 0; step < 5; ++step, cursor.Next(), ++wanted) {
      ASSERT_EQ(cursor.Valid(), wanted != entries.end());
      if (!cursor.Valid()) return;
      ASSERT_EQ(Key(cursor.Key().begin(), cursor.Key().end()), wanted->key);
      ASSERT_EQ(cursor.Row(), wanted->row);
    }
  }

  TemporaryFolder folder_;
  std::unique_ptr<Engine> engine_;
  RandomValues random_{77};
};

TEST_F(IndexSearch, FindsForAnyKeyWhatAFullWalkFinds) {
  Fill();
  const Engine::ReadScope scope(*engine_);
  const TableDefinition& table = engine_->Table(u"Rows");
  ASSERT_EQ(table.indexes.size(), 3u);
  for (const RealIndex& index : table.indexes) {
    SCOPED_TRACE(index.position);
    const std::vector<Entry> entries = EntriesOfRows(table, index);
    ASSERT_GT(entries.size(), 1500u);
    IndexCursor cursor(engine_->File(), table, index);
    for (int i = 0; i < 700 && !HasFatalFailure(); ++i) {
      const Key key = AnyKey(table, index, entries);
      cursor.Seek(key);
      ExpectFound(cursor, key, entries);
    }
  }
}

}  // namespace
}  // namespace rdv::jet
