#include "data/jet/file/pager.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <utility>

#include "data/jet/file/draft.h"
#include "data/jet/file/recovery.h"
#include "data/jet/format/errors.h"
#include "runtime/error.h"

namespace rdv::jet {
namespace {

// The beginning of the header page, which stays as it is as long as the file does: kind, version,
// the time of its creation.
constexpr size_t kIdentitySize = kHeaderSize;
// Pages that are read at once for whoever reads many.
constexpr uint32_t kLongestRead = 32;
// How long to wait for a program that does not know this engine's locks; it may hold the file for
// hours, but others of this engine look into its lock file for a moment.
constexpr std::chrono::milliseconds kForeignWait{200};

[[noreturn]] void RaiseOthersAtWork() {
  throw FileError(FileProblem::InUse, "others are at work");
}

}  // namespace

Pager::Pager(FileSystem& files, Text path, std::chrono::milliseconds lock_wait, size_t cache_pages,
             Suspects suspects)
    : files_(files),
      path_(std::move(path)),
      lock_wait_(lock_wait),
      suspects_(suspects),
      cache_(cache_pages) {
  try {
    OpenFile();
    ReadHeaderPage();
  } catch (const FileError& error) {
    RaiseFileError(error, path_);
  }
}

Pager::~Pager() {
  try {
    Close();
  } catch (const RuntimeError&) {
    // Whoever wants to know calls Close.
  }
}

// Whatever lies beside the file is found by its one name, whichever link led to it.
void Pager::OpenFile() {
  database_.path = files_.CanonicalPath(path_);
  try {
    file_ = files_.Open(database_.path, FileAccess::ReadWrite);
  } catch (const FileError& error) {
    if (error.Problem() != FileProblem::Denied) throw;
    why_read_only_ = error.what();
    file_ = files_.Open(database_.path, FileAccess::Read);
  }
  if (file_->Stamp().several_names) RemoveNameOfDraft(files_, *file_, database_.path);
  database_.content = file_.get();
  lock_.emplace(*file_, lock_wait_);
  user_file_.emplace(files_, database_.path);
  transaction_.emplace(files_, database_.path);
}

// A file may have an incomplete page at its end while a statement is written, and until one that
// was cut off has been put back.
void Pager::ReadHeaderPage() {
  std::vector<uint8_t> start(kJet4.page_size);
  start.resize(file_->ReadAt(0, start));
  if (start.size() >= kIdentitySize)
    database_.identity = JournalIdentity(Bytes(start).first(kIdentitySize));
  const bool jet4 = start.size() == kJet4.page_size &&
                    Load32(start.data() + kHeaderVersion) == static_cast<uint32_t>(Version::Jet4);
  if (jet4) {
    database_.page_size = kJet4.page_size;
    database_.words_at = kJet4.header.commit_words;
  }
  uint64_t size = file_->Stamp().size;
  if (jet4 && size % kJet4.page_size != 0) {
    LockShared();
    Refresh();
    while (!judged_) PutRightAsReader();
    size = overlaid_ ? uint64_t{cache_.Count()} * database_.page_size : file_->Stamp().size;
    lock_->Release();
  }
  header_ = ReadHeader(start, size, path_);
  database_.page_size = Layout().page_size;
  database_.words_at = Layout().header.commit_words;
}

PagerCounters Pager::Counters() const {
  return {.pages_read = pages_read_,
          .pages_written = transaction_->PagesWritten(),
          .commits = transaction_->Commits(),
          .flushes = transaction_->Flushes()};
}

// --- Reading statements ---

void Pager::LockShared() {
  if (!lock_->AcquireShared()) RaiseFileInUse(path_);
}

void Pager::LockAlone() {
  if (!lock_->AcquireExclusive()) RaiseFileInUse(path_);
}

void Pager::BeginRead() {
  if (writing_ || readers_ > 0) {
    ++readers_;
    return;
  }
  try {
    LockShared();
    Refresh();
    while (!judged_) PutRightAsReader();
    AwaitOtherProgram();
    RefuseSuspect(suspects_ != Suspects::Refused);
    readers_ = 1;
    BeginPart();
  } catch (const FileError& error) {
    Quietly([this] { lock_->Release(); });
    RaiseFileError(error, path_);
  } catch (...) {
    Quietly([this] { lock_->Release(); });
    throw;
  }
}

void Pager::EndRead() noexcept {
  assert(readers_ > 0);
  if (--readers_ > 0 || writing_) return;
  cache_.Trim();
  Quietly([this] { lock_->Release(); });
}

bool Pager::UnchangedSinceBegin() {
  try {
    return writing_ || ReadCommitWords() == words_;
  } catch (const FileError& error) {
    RaiseFileError(error, path_);
  }
}

CommitWords Pager::ReadCommitWords() {
  CommitWords words;
  file_->ReadAt(database_.words_at, words.Storage());
  return words;
}

// Makes pages in memory good for the state of the file under the lock just taken.
void Pager::Refresh() {
  const CommitWords words = ReadCommitWords();
  const FileStamp stamp = file_->Stamp();
  if (words == words_ && stamp == stamp_) return;
  words_ = words;
  at_rest_ = words.AllAtRest();
  stamp_ = stamp;
  overlay_.clear();
  overlaid_ = false;
  judged_ = false;
  ForgetPages(static_cast<uint32_t>(std::min(stamp.size, kLargestFile) / database_.page_size));
}

// Another program announces its writing by a 0 in a commit word of its own, too.
void Pager::AwaitOtherProgram() {
  if (at_rest_ || !words_.OtherIsWriting()) return;
  Patience patience(lock_wait_);
  while (words_.OtherIsWriting() && user_file_->HasUsers()) {
    if (!patience.Wait()) RaiseFileInUse(path_);
    Refresh();
  }
}

// What lies beside one name does not lie beside the others.
void Pager::RefuseSeveralNames() const {
  if (stamp_.several_names)
    RaiseReadOnly(path_, u"It has several names (hard links), so others may write it unseen");
}

// Users who are at work have been waited for; those that are left are not.
void Pager::RefuseSuspect(bool allowed) {
  if (allowed || overlaid_ || at_rest_) return;
  if (const std::optional<Text> suspect = SuspectState(words_.Stored()))
    RaiseDamaged(path_, *suspect);
}

// --- What was left behind ---

// By a process that died in the middle of a statement, or by all that wrote.
bool Pager::WasLeftBehind() {
  if (database_.page_size != kJet4.page_size) return false;
  if (words_.First() == kCommitWriting) return transaction_->Log().Exists();
  return !lock_->IsPresent() && transaction_->Log().Exists() && !lock_->OthersArePresent();
}

// With the shared lock, before and after.
void Pager::PutRightAsReader() {
  if (!WasLeftBehind()) {
    judged_ = true;
    return;
  }
  if (why_read_only_.empty() && !stamp_.several_names) {
    lock_->Release();
    const bool done = TryPutRight();
    LockShared();
    Refresh();
    if (done) return;
  }
  if (WasLeftBehind()) PutRightInMemory();
  judged_ = true;
}

// Without any lock, before and after. False when others are in the way, or the file cannot be
// written just now, be it that the disk is full: it can be read all the same.
bool Pager::TryPutRight() {
  bool done = false;
  try {
    if (lock_->AcquireExclusive()) {
      Refresh();
      done = judged_ || !WasLeftBehind() || PutRight();
    }
  } catch (const FileError&) {
    done = false;
  }
  lock_->Release();
  return done;
}

// That of this file, if there is one.
std::optional<JournalContent> Pager::LoadJournal() {
  const uint64_t size = file_->Stamp().size;
  std::optional<JournalContent> journal = transaction_->Log().Load(size);
  const JournaledFile now = {database_.identity, database_.page_size,
                             static_cast<uint32_t>(size / database_.page_size)};
  if (journal && !now.IsOf(journal->head)) journal.reset();
  return journal;
}

// With the exclusive lock. A journal that the file has left behind is done with; one that does not
// fit an unfinished statement stays for whoever repairs. False when another program is in the way.
bool Pager::PutRight() {
  judged_ = false;  // as long as it fails
  const std::optional<JournalContent> journal = LoadJournal();
  std::optional<RecoveryPlan> plan;
  if (journal) plan = PlanRecovery(*journal, *file_, words_);
  if (!plan) {
    if (!journal && IsAtRest(words_.First())) transaction_->Log().RemoveRemains();
    judged_ = true;
    return true;
  }
  try {
    if (!TryKeepOtherProgramsOut()) return false;
    const auto flush = [this] { transaction_->FlushDatabase(*file_, true); };
    if (plan->outcome != Outcome::GoneBeyond) {
      transaction_->Log().FlushWhatIsThere(*journal);
      PutBack(*file_, plan->state, database_.page_size, words_, database_.words_at, flush,
              plan->outcome == Outcome::NothingLost);
    }
    flush();
    transaction_->Log().Discard();
    Quietly([this] { user_file_->RemoveIfEmpty(*file_); });
  } catch (...) {
    Quietly([this] { user_file_->Release(); });
    throw;
  }
  Quietly([this] { user_file_->Release(); });
  stamp_ = {};
  Refresh();
  judged_ = true;
  return true;
}

void Pager::PutRightInMemory() {
  judged_ = true;
  const std::optional<JournalContent> journal = LoadJournal();
  if (!journal) return;
  std::optional<RecoveryPlan> plan = PlanRecovery(*journal, *file_, words_);
  if (!plan || plan->outcome == Outcome::GoneBeyond) return;
  ForgetPages(plan->state.page_count);
  overlay_ = std::move(plan->state.pages);
  std::vector<uint8_t>& header = overlay_[0];
  header.resize(database_.page_size);
  file_->ReadAt(0, header);
  std::ranges::copy(plan->state.words.Stored(), header.data() + database_.words_at);
  overlaid_ = true;
}

// --- Writing statements ---

void Pager::BeginWrite() {
  if (writing_ || readers_ > 0) Raise(LanguageError::InvalidProcedureCall);
  if (!why_read_only_.empty()) RaiseReadOnly(path_, FromUtf8(why_read_only_));
  if (!Layout().IsJet4()) RaiseReadOnly(path_, u"Access 97 files are only read");
  try {
    LockAlone();
    began_writing_ = true;
    KeepOtherProgramsOut();
    Refresh();
    RefuseSeveralNames();
    // A journal may have been left behind by those who were present when the file was looked at.
    const bool is_new = !judged_ || overlaid_ || !lock_->IsPresent();
    if ((is_new && WasLeftBehind()) || transaction_->Log().SaysFlushFailed()) {
      if (!PutRight()) RaiseFileInUse(path_);
      KeepOtherProgramsOut();
      Refresh();
    }
    judged_ = true;
    RefuseSuspect(suspects_ == Suspects::Mended);
    writing_ = true;
    ++statement_;
    BeginPart();
  } catch (const FileError& error) {
    EndWrite();
    RaiseFileError(error, path_);
  } catch (...) {
    EndWrite();
    throw;
  }
}

bool Pager::TryKeepOtherProgramsOut() {
  Patience patience(std::min(kForeignWait, lock_wait_));
  while (!user_file_->TryExclude(*file_)) {
    if (!patience.Wait()) return false;
  }
  return true;
}

void Pager::KeepOtherProgramsOut() {
  if (!TryKeepOtherProgramsOut()) RaiseFileInUse(path_);
}

// Gives up what BeginWrite took.
void Pager::EndWrite() noexcept {
  writing_ = false;
  mends_ = false;
  order_.Clear();
  expected_.clear();
  Quietly([this] { user_file_->Release(); });
  Quietly([this] { lock_->Release(); });
}

void Pager::Commit() {
  assert(writing_ && readers_ == 0);
  try {
    if (!cache_.Changed().empty() || mends_) {
      written_ = true;
      lock_->BePresent();
      transaction_->Write(database_, cache_, order_, expected_, words_, mends_);
      ShowCommitWords(words_);
      stamp_ = file_->Stamp();
    }
  } catch (const FileError& error) {
    // What the file is like is seen when the next statement begins.
    stamp_ = {};
    Rollback();
    RaiseFileError(error, path_);
  } catch (...) {
    Rollback();
    throw;
  }
  cache_.Settle();
  cache_.Trim();
  EndWrite();
}

void Pager::Rollback() noexcept {
  assert(writing_);
  if (!cache_.Changed().empty()) ++generation_;
  cache_.Restore();
  if (mends_) ShowCommitWords(words_);
  cache_.Trim();
  EndWrite();
}

void Pager::MendCommitWords() {
  assert(writing_);
  Load(0);
  mends_ = true;
  ShowCommitWords(Transaction::Mended(words_));
}

// In the header page, as far as that is in memory.
void Pager::ShowCommitWords(const CommitWords& words) {
  const PageCache::Page* header = cache_.Find(0);
  if (header == nullptr || !header->bytes) return;
  std::ranges::copy(words.Stored(), header->bytes + database_.words_at);
}

// --- Pages ---

void Pager::RequireInFile(uint32_t number) const {
  if (number >= PageCount()) RaisePageOutsideFile(path_, number, PageCount());
}

void Pager::BeginPart() {
  work_.Begin(uint64_t{PageCount()} * PageSize());
}

Bytes Pager::Page(uint32_t number) {
  return Bytes(Load(number).bytes, PageSize());
}

// The page, to stay for the statement.
PageCache::Page& Pager::Load(uint32_t number) {
  assert(writing_ || readers_ > 0);
  RequireInFile(number);
  Charge(WorkBudget::kPageRequest);
  PageCache::Page& page = cache_.At(number);
  if (!page.bytes) ReadPages(number, {});
  page.used = true;
  page.holder = PageCache::Holder::Statement;
  if (writing_) page.statement = statement_;
  return page;
}

bool Pager::AskedFor(uint32_t number) {
  const PageCache::Page* page = cache_.Find(number);
  return page != nullptr && page->statement == statement_;
}

void Pager::GiveUp(uint32_t number) {
  if (PageCache::Page* page = cache_.Find(number)) page->statement = 0;
}

Bytes Pager::PageInPassing(uint32_t number, std::span<const uint32_t> next) {
  assert(writing_ || readers_ > 0);
  RequireInFile(number);
  // Others may have taken its place since it was last asked for.
  Charge(PageSize());
  PageCache::Page& page = cache_.At(number);
  if (!page.bytes) ReadPages(number, next);
  page.used = true;
  if (writing_) page.statement = statement_;
  const bool alone = page.holder == PageCache::Holder::Nobody;
  page.holder = alone ? PageCache::Holder::Passerby : PageCache::Holder::Statement;
  return Bytes(page.bytes, PageSize());
}

// The first page, and with it as many of the others as lie close enough together: to read a few
// bytes more is cheaper than to read once more.
void Pager::ReadPages(uint32_t first, std::span<const uint32_t> next) {
  uint32_t end = first + 1;
  size_t wanted = 1;
  for (const uint32_t number : next) {
    const uint32_t span = number - first + 1;
    const bool close = span <= kLongestRead && span <= 2 * (wanted + 1);
    if (!close || number >= PageCount() || overlaid_) break;
    end = number + 1;
    ++wanted;
  }
  try {
    if (wanted == 1) return ReadPage(first);
    const size_t size = size_t{end - first} * PageSize();
    if (size > read_ahead_size_) {
      read_ahead_ = std::make_unique_for_overwrite<uint8_t[]>(size);
      read_ahead_size_ = size;
    }
    const size_t read = file_->ReadAt(uint64_t{first} * PageSize(), {read_ahead_.get(), size});
    if (read < PageSize()) RaisePageOutsideFile(path_, first, PageCount());
    const auto keep = [&](uint32_t number) {
      const size_t start = size_t{number - first} * PageSize();
      if (cache_.At(number).bytes || start + PageSize() > read) return;
      std::memcpy(cache_.Room(), &read_ahead_[start], PageSize());
      cache_.Keep(number);
      ++pages_read_;
    };
    keep(first);
    std::ranges::for_each(next.first(wanted - 1), keep);
  } catch (const FileError& error) {
    RaiseFileError(error, path_);
  }
}

void Pager::ReadPage(uint32_t number) {
  uint8_t* const bytes = cache_.Room();
  const auto overlaid = overlay_.find(number);
  if (overlaid != overlay_.end()) {
    std::ranges::copy(overlaid->second, bytes);
  } else if (file_->ReadAt(uint64_t{number} * PageSize(), {bytes, PageSize()}) < PageSize()) {
    RaisePageOutsideFile(path_, number, PageCount());
  }
  cache_.Keep(number);
  ++pages_read_;
}

uint8_t* Pager::Edit(uint32_t number) {
  if (!writing_ || number == 0) Raise(LanguageError::InvalidProcedureCall);
  Load(number);
  return cache_.Change(number);
}

// Whoever needs the page later will say what is wrong with it.
void Pager::Expect(uint32_t number) {
  if (!writing_ || number == 0 || number >= PageCount()) return;
  PageCache::Page& page = cache_.At(number);
  try {
    if (!page.bytes) ReadPages(number, {});
  } catch (const RuntimeError&) {
    return;
  }
  page.holder = PageCache::Holder::Statement;
  if (std::ranges::find(expected_, number) == expected_.end()) expected_.push_back(number);
}

uint32_t Pager::Append() {
  if (!writing_) Raise(LanguageError::InvalidProcedureCall);
  if ((uint64_t{PageCount()} + 1) * PageSize() > kLargestFile)
    RaiseDiskError(path_, u"A database cannot grow beyond 2 gigabytes");
  work_.Grow(PageSize());
  return cache_.Append();
}

void Pager::ForgetPages(uint32_t page_count) {
  assert(!writing_ && readers_ == 0);
  cache_.Reset(page_count, database_.page_size);
  ++generation_;
}

// --- The end ---

void Pager::Close() {
  if (!file_) return;
  std::optional<FileError> failure;
  try {
    if (written_) LetJournalEnd();
  } catch (const FileError& error) {
    failure = error;
  }
  Quietly([this] {
    lock_->Release();
    if (!began_writing_ || !lock_->AcquireExclusive()) return;
    // Each for itself: what bears the journal's name may be nothing that is opened.
    Quietly([this] {
      if (IsAtRest(ReadCommitWords().First())) transaction_->Log().RemoveRemains();
    });
    user_file_->RemoveIfEmpty(*file_);
  });
  lock_.reset();
  file_.reset();
  if (failure) RaiseFileError(*failure, path_);
}

void Pager::FlushForClosing(const CommitWords& words) {
  try {
    transaction_->Log().FlushRest(words);
    transaction_->FlushDatabase(*file_);
  } catch (const FileError&) {
    Quietly([this] {
      if (lock_->IsExclusive() || lock_->KeepWritersOut()) transaction_->Log().SayFlushFailed();
    });
    throw;
  }
}

// What the journal says has to be on the disk with what it is about: its name may be there again
// after a loss of power. When all is, nobody needs it any more; it stays while a statement is
// unfinished, and when only readers are in the way. If others go on with it, though, what is on the
// disk now is not there for good.
void Pager::LetJournalEnd() {
  const CommitWords flushed = ReadCommitWords();
  FlushForClosing(flushed);
  if (!lock_->AcquireExclusive()) {
    const bool alone = lock_->KeepWritersOut() && ReadCommitWords() == flushed;
    if (!alone || transaction_->Log().SaysFlushFailed()) RaiseOthersAtWork();
    lock_->EndPresence();
    if (lock_->OthersArePresent()) RaiseOthersAtWork();
    lock_->Release();
    return;
  }
  // What somebody else's flush has lost does not come with this one's.
  if (transaction_->Log().SaysFlushFailed()) {
    Refresh();
    if (!PutRight()) RaiseOthersAtWork();
  }
  const CommitWords words = ReadCommitWords();
  if (IsAtRest(words.First())) {
    if (words != flushed) FlushForClosing(words);
    // Another file may have the name by now: what this journal says must not be played into it.
    const bool named = file_->Bears(database_.path);
    try {
      named ? transaction_->Log().DiscardMine() : transaction_->Log().UnmarkMine();
    } catch (const FileError&) {
      // It stays. Who goes on with it may lose with the power what is on the disk now.
      lock_->EndPresence();
      if (lock_->OthersArePresent()) throw;
    }
  }
  lock_->Release();
}

}  // namespace rdv::jet
