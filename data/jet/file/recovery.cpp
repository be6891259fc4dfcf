#include "data/jet/file/recovery.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "data/jet/format/format.h"

namespace rdv::jet {
namespace {

// The pages of the file, each read once.
class FilePages {
 public:
  FilePages(File& file, uint32_t page_size) : file_(file), page_size_(page_size) {}

  // Null for one that the file does not have.
  const std::vector<uint8_t>* Page(uint32_t number) {
    const auto [place, added] = pages_.try_emplace(number);
    if (added) {
      place->second.resize(page_size_);
      place->second.resize(file_.ReadAt(uint64_t{number} * page_size_, place->second));
    }
    return place->second.size() == page_size_ ? &place->second : nullptr;
  }

 private:
  File& file_;
  uint32_t page_size_;
  std::map<uint32_t, std::vector<uint8_t>> pages_;
};

// What the journal says: the state when it was begun, that before the last statement, that after.
class History {
 public:
  explicit History(const JournalContent& journal) : head_(journal.head), count_(head_.page_count) {
    for (const JournalRecord& record : journal.records) sound_ = sound_ && Take(record);
  }

  // Whether the records follow from each other.
  bool IsSound() const { return sound_; }
  const JournalRecord* Last() const { return last_; }
  uint32_t CountWhenBegun() const { return head_.page_count; }
  uint32_t CountBeforeLast() const { return count_; }
  const std::map<uint32_t, Bytes>& PagesWhenBegun() const { return begun_; }
  const std::map<uint32_t, uint64_t>& SumsBeforeLast() const { return sums_; }

 private:
  bool Take(const JournalRecord& record) {
    if (last_ != nullptr && record.follows == last_->number) Finish(*last_);
    if (last_ != nullptr && record.follows != last_->number && record.follows != last_->follows)
      return false;
    last_ = &record;
    for (const JournalPage& page : record.old_pages) {
      if (sums_.contains(page.number)) continue;
      if (page.number >= head_.page_count || page.length != head_.page_size) return false;
      begun_[page.number] = page.before;
      sums_[page.number] = ContentSum(page.before);
    }
    return record.pages_before == count_ && record.pages_after >= count_ &&
           uint64_t{record.pages_after} * head_.page_size <= kLargestFile;
  }
  void Finish(const JournalRecord& record) {
    for (const auto* pages : {&record.old_pages, &record.new_pages}) {
      for (const JournalPage& page : *pages) sums_[page.number] = page.sum_after;
    }
    count_ = record.pages_after;
  }

  JournalHead head_;
  uint32_t count_;
  bool sound_ = true;
  const JournalRecord* last_ = nullptr;
  std::map<uint32_t, Bytes> begun_;
  std::map<uint32_t, uint64_t> sums_;
};

class Planner {
 public:
  Planner(const JournalContent& journal, File& file, const CommitWords& words)
      : journal_(journal),
        history_(journal),
        file_pages_(file, journal.head.page_size),
        file_size_(file.Stamp().size),
        origin_(file.Origin()),
        words_(words) {}

  std::optional<RecoveryPlan> Plan() {
    if (!IsAbout()) {
      if (IsAtRest(words_.First())) return GoneBeyond();
      return std::nullopt;
    }
    const bool whole = file_size_ >= uint64_t{history_.CountWhenBegun()} * PageSize();
    if (!history_.IsSound() || !whole) return std::nullopt;
    if (history_.Last() == nullptr) return Untouched();
    // The last statement has not finished, wherever it was cut off: nobody was told that it is
    // there. Or it was lost with the power.
    const bool cut_off = words_.First() == kCommitWriting || IsOfEarlierStatement();
    const bool put_back = IsNextInSession();
    if (put_back && !IsAsBeforeTheLast() && !IsAsWhenBegun()) return GoneBeyond();
    std::optional<RecoveryPlan> plan;
    if (!cut_off && !put_back) plan = AsItIs();
    if (!plan) plan = BeforeTheLast();
    return plan ? plan : WhenBegun();
  }

 private:
  uint32_t PageSize() const { return journal_.head.page_size; }

  // Whether no power was lost since the journal was begun: then all that was written is there, and
  // so are all records.
  bool IsSameSession() const {
    return origin_.session != 0 && origin_.session == journal_.head.origin.session;
  }
  // Then the word that the last statement ended with has not reached the disk - or was never
  // written, when the disk refused it and what was to put the statement back.
  bool IsOfEarlierStatement() const {
    return std::ranges::any_of(journal_.records, [this](const JournalRecord& record) {
      return record.word_before == words_.First();
    });
  }
  // Where nothing was lost, the word behind the last record's is that of putting back - or of
  // another program's commit.
  bool IsNextInSession() const {
    return IsSameSession() && words_.First() == NextCommitWord(history_.Last()->word_after);
  }

  // Whether the file can be one that the journal is about. If not, another program has gone on with
  // it, or it has come in the other one's place.
  bool IsAbout() const {
    const JournalHead& head = journal_.head;
    const bool mended = std::ranges::any_of(
        journal_.records, [](const JournalRecord& record) { return record.others_at_rest; });
    const bool same_others =
        words_.SameOthers(head.words) || (mended && words_.SameOthers(CommitWords::AtRest(0)));
    if (!same_others) return false;
    const uint16_t word = words_.First();
    if (word == kCommitWriting) return true;
    if (IsSameSession() && origin_.file != head.origin.file) return false;
    if (word == head.words.First()) return true;
    if (!IsAtRest(word) || journal_.records.empty()) return false;
    const JournalRecord& first = journal_.records.front();
    const uint16_t start = IsAtRest(first.word_before) ? first.word_before : first.word_after;
    const uint32_t known = CommitsBetween(start, journal_.records.back().word_after);
    return CommitsBetween(start, word) <= known + (IsSameSession() ? 0 : kMostLostWords) + 1;
  }

  static RecoveryPlan GoneBeyond() { return {.outcome = Outcome::GoneBeyond, .state = {}}; }

  bool IsAsBeforeTheLast() {
    if (file_size_ != uint64_t{history_.Last()->pages_before} * PageSize()) return false;
    return std::ranges::all_of(history_.SumsBeforeLast(), [this](const auto& sum) {
      const std::vector<uint8_t>* page = file_pages_.Page(sum.first);
      return page != nullptr && ContentSum(*page) == sum.second;
    });
  }
  bool IsAsWhenBegun() {
    if (file_size_ != uint64_t{history_.CountWhenBegun()} * PageSize()) return false;
    return std::ranges::all_of(history_.PagesWhenBegun(), [this](const auto& begun) {
      const std::vector<uint8_t>* page = file_pages_.Page(begun.first);
      return page != nullptr && std::ranges::equal(*page, begun.second);
    });
  }

  // Takes the page into the plan when it has the content that the sum says.
  static bool TakeIf(RecoveryPlan& plan, uint32_t number, std::vector<uint8_t> content,
                     uint64_t sum) {
    if (ContentSum(content) != sum) return false;
    plan.state.pages[number] = std::move(content);
    return true;
  }

  bool HasPages(uint32_t count) const { return file_size_ >= uint64_t{count} * PageSize(); }

  // The first record is on the disk before anything is written.
  std::optional<RecoveryPlan> Untouched() const {
    if (words_.First() == kCommitWriting) return std::nullopt;
    return RecoveryPlan{
        .outcome = Outcome::NothingLost,
        .state = {.pages = {}, .page_count = history_.CountWhenBegun(), .words = words_}};
  }

  // After the last statement.
  std::optional<RecoveryPlan> AsItIs() {
    const JournalRecord& last = *history_.Last();
    std::map<uint32_t, uint64_t> sums = history_.SumsBeforeLast();
    for (const auto* pages : {&last.old_pages, &last.new_pages}) {
      for (const JournalPage& page : *pages) sums[page.number] = page.sum_after;
    }
    RecoveryPlan plan{.outcome = Outcome::NothingLost, .state = {}};
    if (!HasPages(last.pages_after)) return std::nullopt;
    for (const auto& [number, sum] : sums) {
      const std::vector<uint8_t>* page = file_pages_.Page(number);
      if (page == nullptr || !TakeIf(plan, number, *page, sum)) return std::nullopt;
    }
    plan.state.page_count = last.pages_after;
    plan.state.words = last.others_at_rest ? CommitWords::AtRest(0) : words_;
    plan.state.words.SetFirst(last.word_after);
    return plan;
  }

  // Every page that the last statement was to change gets the part back that it was to change.
  std::optional<RecoveryPlan> BeforeTheLast() {
    const JournalRecord& last = *history_.Last();
    std::map<uint32_t, const JournalPage*> changed;
    for (const JournalPage& page : last.old_pages) changed[page.number] = &page;
    RecoveryPlan plan{.outcome = Outcome::LastPutBack, .state = {}};
    if (!HasPages(last.pages_before)) return std::nullopt;
    for (const auto& [number, sum] : history_.SumsBeforeLast()) {
      const std::vector<uint8_t>* page = file_pages_.Page(number);
      if (page == nullptr) return std::nullopt;
      std::vector<uint8_t> content = *page;
      const auto part = changed.find(number);
      if (part != changed.end())
        std::ranges::copy(part->second->before, content.begin() + part->second->start);
      if (!TakeIf(plan, number, std::move(content), sum)) return std::nullopt;
    }
    plan.state.page_count = last.pages_before;
    plan.state.words = WordsBefore(last.word_before);
    return plan;
  }

  RecoveryPlan WhenBegun() {
    RecoveryPlan plan{.outcome = Outcome::AllPutBack, .state = {}};
    for (const auto& [number, content] : history_.PagesWhenBegun())
      plan.state.pages[number].assign(content.begin(), content.end());
    plan.state.page_count = history_.CountWhenBegun();
    plan.state.words = WordsBefore(journal_.head.words.First());
    return plan;
  }

  // A file that was suspect is so again. Else the counting goes on behind all that was ever there,
  // so that nobody takes pages in memory for those of this state; with the same word however often
  // it is tried.
  CommitWords WordsBefore(uint16_t first) const {
    CommitWords words = journal_.head.words;
    if (!IsAtRest(first)) return words;
    const uint16_t last = history_.Last()->word_after;
    const bool end_lost = IsAtRest(words_.First()) && CommitsBetween(last, words_.First()) > 1 &&
                          CommitsBetween(last, words_.First()) <= kMostLostWords + 1;
    words.SetFirst(NextCommitWord(last, end_lost ? kMostLostWords + 1 : 1));
    return words;
  }

  const JournalContent& journal_;
  History history_;
  FilePages file_pages_;
  uint64_t file_size_;
  FileOrigin origin_;
  const CommitWords& words_;
};

}  // namespace

std::optional<RecoveryPlan> PlanRecovery(const JournalContent& journal, File& file,
                                         const CommitWords& words) {
  return Planner(journal, file, words).Plan();
}

void WriteCommitWords(File& file, const CommitWords& from, const CommitWords& to,
                      uint64_t words_at) {
  const bool all = !from.SameOthers(to);
  file.WriteAt(words_at, all ? to.Stored() : to.Stored().first(sizeof(uint16_t)));
}

void PutBack(File& file, const FileState& state, uint32_t page_size, const CommitWords& words,
             uint64_t words_at, const std::function<void()>& flush, bool is_there) {
  CommitWords writing = words;
  if (!is_there) writing.SetFirst(kCommitWriting);
  WriteCommitWords(file, words, writing, words_at);
  for (const auto& [number, content] : state.pages) {
    assert(content.size() == page_size);
    if (number < state.page_count) file.WriteAt(uint64_t{number} * page_size, content);
  }
  file.Resize(uint64_t{state.page_count} * page_size);
  if (!is_there) flush();
  WriteCommitWords(file, writing, state.words, words_at);
}

}  // namespace rdv::jet
