#include "data/jet/file/journal.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <utility>

namespace rdv::jet {
namespace {

// Where the journal ends for the sake of its size.
constexpr uint64_t kLargest = uint64_t{64} << 20;

// Its last record may go beyond that, by the parts of all pages and what tells of them. Whoever may
// write beside the database may lay any file there.
uint64_t MostBytes(uint64_t database_size) {
  constexpr uint64_t kRoomForHeads = uint64_t{1} << 20;
  return kLargest + 3 * database_size + kRoomForHeads;
}

// From `start` to the end, or to where it is larger than it can be.
std::vector<uint8_t> ReadFrom(File& file, uint64_t start, uint64_t database_size) {
  const uint64_t end = std::min<uint64_t>(file.Stamp().size, MostBytes(database_size));
  std::vector<uint8_t> bytes(static_cast<size_t>(end > start ? end - start : 0));
  bytes.resize(file.ReadAt(start, bytes));
  return bytes;
}

std::optional<JournalHead> ReadHead(File& file) {
  std::array<uint8_t, JournalHead::kSize> bytes{};
  if (file.ReadAt(0, bytes) < bytes.size()) return std::nullopt;
  return ParseHead(bytes);
}

// Zeros behind the first record, which are none: what some twenty short statements take.
constexpr size_t kRoomAhead = size_t{16} << 10;

}  // namespace

Text JournalPath(const Text& database_path) {
  return database_path + u"-journal";
}

uint64_t JournalIdentity(Bytes header) {
  return ContentSum(header);
}

Journal::Journal(FileSystem& files, const Text& database_path)
    : files_(files), path_(JournalPath(database_path)) {}

std::optional<JournalContent> Journal::Load(uint64_t database_size) {
  if (!files_.Exists(path_)) return std::nullopt;
  const std::unique_ptr<File> file = files_.Open(path_, FileAccess::ReadBeside);
  const std::optional<JournalHead> head = ReadHead(*file);
  if (!head) return std::nullopt;
  JournalContent content;
  content.head = *head;
  content.storage = ReadFrom(*file, 0, database_size);
  content.end = JournalHead::kSize;
  while (content.end <= content.storage.size()) {
    const Bytes rest = Bytes(content.storage).subspan(static_cast<size_t>(content.end));
    const auto number = static_cast<uint32_t>(content.records.size() + 1);
    std::optional<ParsedRecord> parsed = ParseRecord(rest, number, content.head);
    if (!parsed) break;
    content.records.push_back(std::move(parsed->record));
    content.end += parsed->length;
  }
  return content;
}

void Journal::Forget() {
  begun_ = false;
  written_ = false;
  spoiled_ = false;
  flush_next_ = false;
  named_ = false;
  unflushed_ = 0;
  last_ = 0;
  finished_ = 0;
  touched_.clear();
}

bool Journal::IsStillMine() {
  std::array<uint8_t, JournalHead::kMarkSize> start{};
  if (file_->ReadAt(0, start) < start.size()) return false;
  JournalHead failed = head_;
  failed.flush_failed = true;
  return start == MarkOf(head_) || start == MarkOf(failed);
}

std::optional<JournalHead> Journal::HeadByName() {
  if (!files_.Exists(path_)) return std::nullopt;
  return ReadHead(*files_.Open(path_, FileAccess::ReadBeside));
}

bool Journal::SaysFlushFailed() {
  if (begun_ && written_) {
    std::array<uint8_t, JournalHead::kMarkSize> start{};
    if (file_->ReadAt(0, start) == start.size() && start == MarkOf(head_)) return false;
  }
  const std::optional<JournalHead> head = HeadByName();
  return head && head->flush_failed;
}

void Journal::SayFlushFailed() noexcept {
  try {
    std::optional<JournalHead> head = HeadByName();
    if (!head || head->flush_failed) return;
    head->flush_failed = true;
    files_.Open(path_, FileAccess::ReadWriteBeside)->WriteAt(0, MarkOf(*head));
  } catch (const FileError&) {
    return;  // those who have it open learn it from the system, if from anybody
  }
}

void Journal::MarkTouched(uint32_t page) {
  if (page < touched_.size()) touched_[page] = true;
}

bool Journal::IsNew(uint32_t page) const {
  return page < touched_.size() && !touched_[page];
}

void Journal::Adopt(const JournalRecord& record) {
  for (const JournalPage& page : record.old_pages) MarkTouched(page.number);
  finished_ = record.follows;
  last_ = record.number;
  word_before_ = record.word_before;
  word_after_ = record.word_after;
  if (record.others_at_rest) words_ = CommitWords::AtRest(record.word_after);
  ++unflushed_;
  flush_next_ = true;
}

void Journal::Learn(const JournalContent& content) {
  Forget();
  begun_ = true;
  written_ = true;
  head_ = content.head;
  head_.flush_failed = false;
  end_ = content.end;
  words_ = content.head.words;
  word_before_ = word_after_ = words_.First();
  touched_.assign(head_.page_count, false);
  flush_next_ = true;
  for (const JournalRecord& record : content.records) Adopt(record);
}

// The commit word does not tell of one whose statement failed before it wrote anything.
bool Journal::HasAddedRecord() {
  std::array<uint8_t, sizeof(uint32_t)> start{};
  return file_->ReadAt(end_, start) == start.size() && IsRecordMark(start);
}

void Journal::ReadAddedRecords(uint64_t database_size) {
  const std::vector<uint8_t> added = ReadFrom(*file_, end_, database_size);
  Bytes rest = added;
  while (const std::optional<ParsedRecord> parsed = ParseRecord(rest, last_ + 1, head_)) {
    Adopt(parsed->record);
    end_ += parsed->length;
    rest = rest.subspan(parsed->length);
  }
}

Journal::State Journal::Look(const CommitWords& words, const JournaledFile& database) {
  if (begun_ && (!written_ || !IsStillMine())) Forget();
  // Removed by hand, and with it what was to be kept.
  if (begun_ && !file_->Stamp().linked) return State::Past;
  if (!begun_) {
    const std::optional<JournalContent> content = Load(database.Size());
    if (!content || !database.IsOf(content->head)) return State::None;
    file_ = files_.Open(path_, FileAccess::ReadWriteBeside);
    Learn(*content);
  } else if (words.First() != words_.First() || HasAddedRecord()) {
    ReadAddedRecords(database.Size());
  }
  // The first word tells what became of the last statement.
  const uint16_t word = words.First();
  if (word == word_after_) {
    finished_ = last_;
  } else if (word != word_before_ && word != NextCommitWord(word_after_)) {
    return State::Past;
  }
  const bool others_wrote = !words.SameOthers(words_);
  words_ = words;
  return others_wrote || spoiled_ || end_ > kLargest ? State::Past : State::Live;
}

void Journal::Begin(const JournalHead& head) {
  Forget();
  begun_ = true;
  head_ = head;
  end_ = JournalHead::kSize;
  words_ = head.words;
  touched_.assign(head_.page_count, false);
}

bool Journal::Flushes(const JournalRecord& record) const {
  return !written_ || flush_next_ || unflushed_ + 1 >= kMostUnflushedStatements ||
         std::ranges::any_of(record.old_pages,
                             [this](const JournalPage& page) { return IsNew(page.number); });
}

void Journal::Add(JournalRecord& record, File& model) {
  assert(begun_);
  record.number = last_ + 1;
  record.follows = finished_;
  const bool flush = Flushes(record);
  buffer_.clear();
  if (!written_) AppendHead(head_, buffer_);
  const uint64_t start = written_ ? end_ : 0;
  AppendRecord(record, head_.salt, buffer_);
  const uint64_t end = start + buffer_.size();
  // Room for what follows: a file that does not grow is flushed without what the system has to note
  // about it.
  if (!written_) buffer_.resize(buffer_.size() + kRoomAhead);
  bool flushing = false;
  try {
    if (!written_) {
      if (file_ && !file_->Bears(path_)) file_.reset();
      if (!file_) file_ = files_.OpenBeside(model, path_, FileAccess::Create);
    }
    file_->WriteAt(start, buffer_);
    if (flush) {
      flushing = true;
      ++flushes_;
      file_->Flush();
      if (!named_) files_.FlushFolder(path_);
    }
  } catch (const FileError&) {
    spoiled_ = spoiled_ || flushing;
    if (flushing && written_) SayFlushFailed();
    try {
      if (file_) file_->Resize(written_ ? end_ : 0);
    } catch (const FileError&) {
      // What stands there of the record says nothing: no page of it is written.
    }
    if (!written_) Forget();
    throw;
  }
  written_ = true;
  end_ = end;
  last_ = record.number;
  word_before_ = record.word_before;
  word_after_ = record.word_after;
  unflushed_ = flush ? 0 : unflushed_ + 1;
  flush_next_ = flush_next_ && !flush;
  named_ = named_ || flush;
  for (const auto* pages : {&record.old_pages, &record.kept_pages}) {
    for (const JournalPage& page : *pages) MarkTouched(page.number);
  }
}

void Journal::Finish(const CommitWords& words) {
  if (words.First() == word_after_) finished_ = last_;
  words_ = words;
}

void Journal::FlushRest(const CommitWords& words) {
  // One without its mark has ended: all that it is about was flushed.
  if (!begun_ || !written_ || !IsStillMine()) return;
  const bool all = unflushed_ == 0 && !flush_next_ && !spoiled_ && words.First() == words_.First();
  if (all) return;
  if (spoiled_) {
    const std::optional<JournalContent> content = Load(end_);
    if (!content || content->head.salt != head_.salt || content->records.size() < last_)
      throw FileError(FileProblem::Other, "what should have been flushed is lost");
    WriteAgain(*content);
  }
  spoiled_ = true;
  ++flushes_;
  file_->Flush();
  if (!named_) files_.FlushFolder(path_);
  spoiled_ = false;
  named_ = true;
  unflushed_ = 0;
}

// What a flush that failed has given up is no business of the next one.
void Journal::WriteAgain(const JournalContent& content) {
  file_->WriteAt(0, Bytes(content.storage).first(static_cast<size_t>(content.end)));
}

void Journal::FlushWhatIsThere(const JournalContent& content) {
  if (!file_ || !file_->Bears(path_)) file_ = files_.Open(path_, FileAccess::ReadWriteBeside);
  WriteAgain(content);
  ++flushes_;
  file_->Flush();
  files_.FlushFolder(path_);
}

void Journal::Discard() {
  Forget();
  if (!files_.Exists(path_)) return;
  if (!file_ || !file_->Bears(path_)) file_ = files_.Open(path_, FileAccess::ReadWriteBeside);
  Unmark();
  file_.reset();
  RemoveRemains();
}

void Journal::Unmark() {
  const std::array<uint8_t, sizeof(uint64_t)> zeros{};
  file_->WriteAt(0, zeros);
}

void Journal::UnmarkMine() {
  if (begun_ && written_ && IsStillMine()) Unmark();
  Forget();
}

void Journal::DiscardMine() {
  if (!begun_ || !written_ || !file_->Bears(path_) || !IsStillMine()) return;
  Discard();
}

void Journal::RemoveRemains() {
  file_.reset();
  if (!files_.Exists(path_)) return;
  if (ReadHead(*files_.Open(path_, FileAccess::ReadBeside))) return;
  try {
    files_.Remove(path_);
  } catch (const FileError&) {
    // Somebody who has it open removes it, or the next one who writes uses it.
  }
}

}  // namespace rdv::jet
