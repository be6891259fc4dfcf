#include <algorithm>
#include <optional>

#include "data/jet/check/check_parts.h"
#include "data/jet/index/index_page.h"

namespace rdv::jet {
namespace {

// Walks the tree from the root and holds it against what it has to be.
class TreeWalk {
 public:
  TreeWalk(const FileReader& file, const TableDefinition& table, const RealIndex& index)
      : file_(file), table_(table), index_(index), visited_(file.PageCount(), false) {}

  // What is wrong, if anything.
  std::optional<Text> Run(const TableContents& contents) {
    if (!contents.keyless[index_.position]) expected_ = &contents.keys[index_.position];
    Visit(index_.root, std::nullopt);
    for (size_t i = 0; i < leaves_.size() && !wrong_; ++i) CheckLinks(i);
    CheckMap();
    if (expected_ != nullptr && count_ != expected_->size()) NotThoseOfTheRows();
    return wrong_;
  }

  size_t EntryCount() const { return count_; }

 private:
  struct Leaf {
    uint32_t page;
    uint32_t previous;
    uint32_t next;
  };

  void Wrong(uint32_t page, TextView what) {
    if (!wrong_) wrong_ = u"page " + Decimal(page) + u" " + Text(what);
  }

  // Returns the depth of the tree below the page. `last`: what the page's last entry has to be.
  int Visit(uint32_t number, const std::optional<EntryBytes>& last, int level = 0) {
    if (level > kDeepestIndex) file_.DamagedPage(index_.root, u"is the root of an endless index");
    if (number >= visited_.size() || visited_[number]) {
      file_.DamagedPage(number, u"is met twice on the way through an index");
    }
    visited_[number] = true;
    const IndexPageView page(file_, table_.Page(), number);
    CheckFreeBytes(page);
    return page.IsLeaf() ? VisitLeaf(page, last) : VisitNode(page, last, level);
  }

  int VisitLeaf(const IndexPageView& page, const std::optional<EntryBytes>& last) {
    leaves_.push_back({page.Number(), page.Previous(), page.Next()});
    EntryBytes entry;
    for (auto bounds = page.EntryAt(0); bounds; bounds = page.EntryAt(bounds->end)) {
      page.Restore(*bounds, entry);
      VisitEntry(page.Number(), entry);
    }
    if (last && entry != *last)
      Wrong(page.Number(), u"ends with another entry than the node above says");
    if (entry.empty() && page.Number() != index_.root) Wrong(page.Number(), u"is an empty leaf");
    if (page.Level() != 0) Wrong(page.Number(), u"is a leaf of a level above 0");
    return 0;
  }

  // Only the entry before is kept: what entries share is stored once, so all of them may be
  // hundreds of times the file.
  void VisitEntry(uint32_t page, const EntryBytes& entry) {
    const bool first = count_ == 0;
    if (!first && CompareEntries(before_, entry) >= 0) Wrong(page, u"has entries out of order");
    const bool same =
        expected_ == nullptr || (count_ < expected_->size() && (*expected_)[count_] == entry);
    if (!same) NotThoseOfTheRows();
    const bool equal = !first && std::ranges::equal(KeyOf(before_), KeyOf(entry));
    if (equal && index_.unique && !AllNulls(KeyOf(entry)))
      Wrong(index_.root, u"is the root of a unique index with equal keys");
    before_ = entry;
    ++count_;
  }

  void NotThoseOfTheRows() {
    if (!wrong_) wrong_ = Text(u"it does not have the entries of the rows");
  }

  int VisitNode(const IndexPageView& page, const std::optional<EntryBytes>& last, int level) {
    std::optional<int> depth;
    const auto below = [&](uint32_t child, const std::optional<EntryBytes>& child_last) {
      const int child_depth = Visit(child, child_last, level + 1);
      if (depth && *depth != child_depth) Wrong(child, u"is not as deep as its neighbours");
      depth = child_depth;
    };
    EntryBytes entry;
    for (auto bounds = page.EntryAt(0); bounds; bounds = page.EntryAt(bounds->end)) {
      page.Restore(*bounds, entry);
      entry.resize(entry.size() - kEntryChildSize);
      below(page.Child(*bounds), entry);
    }
    if (page.Tail() != 0) below(page.Tail(), last);
    // The level that a node says it is of means nothing: programs differ in it.
    return depth.value_or(0) + 1;
  }

  void CheckFreeBytes(const IndexPageView& page) {
    const uint32_t number = page.Number();
    const Format& format = file_.Layout();
    const size_t free = format.page_size - format.index.entries - page.Used();
    if (Load16(&file_.RawPage(number)[kPageFreeBytes]) != free)
      Wrong(number, u"has another number of free bytes than it says");
  }

  void CheckLinks(size_t i) {
    const uint32_t previous = i == 0 ? 0 : leaves_[i - 1].page;
    const uint32_t next = i + 1 == leaves_.size() ? 0 : leaves_[i + 1].page;
    if (leaves_[i].previous != previous || leaves_[i].next != next)
      Wrong(leaves_[i].page, u"is not linked with its neighbours");
  }

  void CheckMap() {
    const UsageMap map(file_, index_.map);
    std::vector<bool> mapped(visited_.size(), false);
    for (const uint32_t page : map.Pages()) mapped[page] = true;
    for (uint32_t page = 0; page < visited_.size(); ++page) {
      if (mapped[page] && !visited_[page]) Wrong(page, u"is in the map of an index but not in it");
      if (!mapped[page] && visited_[page]) Wrong(page, u"is in an index but not in its map");
    }
  }

  static Bytes KeyOf(const EntryBytes& entry) {
    return Bytes(entry).first(entry.size() - kEntryRowSize);
  }
  // A Null takes one byte of a key, any other value more.
  bool AllNulls(Bytes key) const { return key.size() == index_.columns.size(); }

  const FileReader& file_;
  const TableDefinition& table_;
  const RealIndex& index_;
  std::vector<bool> visited_;
  std::vector<Leaf> leaves_;
  const std::vector<EntryBytes>* expected_ = nullptr;  // null: not known
  EntryBytes before_;
  size_t count_ = 0;
  std::optional<Text> wrong_;
};

}  // namespace

void CheckIndex(const FileReader& file, const TableDefinition& table, const RealIndex& index,
                const TableContents& contents, CheckReport& report) {
  TreeWalk walk(file, table, index);
  const std::optional<Text> wrong = walk.Run(contents);
  report.index_entries += walk.EntryCount();
  if (!wrong) return;
  Report(report, {.kind = FindingKind::Index,
                  .page = index.root,
                  .table = table.Page(),
                  .position = index.position,
                  .text = u"An index of " + table.name + u" is wrong: " + *wrong});
}

}  // namespace rdv::jet
