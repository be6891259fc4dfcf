#include "data/jet/file/pager.h"

#include <algorithm>
#include <cstring>

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

uint16_t NextCommitWord(uint16_t word) {
  const bool counts_on = word >= kCommitIdle && word != 0xFFFF;
  return counts_on ? static_cast<uint16_t>(word + 1) : static_cast<uint16_t>(kCommitIdle + 1);
}

// For giving something up at the end: an unlocking that fails leaves the lock to the closing of the
// file, a file beside the database that cannot be removed hinders nobody.
template <typename Action>
void Quietly(Action action) noexcept {
  try {
    action();
  } catch (const FileError&) {
    return;
  }
}

}  // namespace

Pager::Pager(FileSystem& files, Text path, std::chrono::milliseconds lock_wait, size_t cache_pages)
    : files_(files),
      path_(std::move(path)),
      lock_wait_(lock_wait),
      user_file_(files, path_),
      journal_(files, path_),
      cache_(cache_pages) {
  try {
    OpenFile();
    LockShared();
    ReadHeaderPage();
    lock_->Release();
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

void Pager::OpenFile() {
  try {
    file_ = files_.Open(path_, FileAccess::ReadWrite);
  } catch (const FileError& error) {
    if (error.Problem() != FileProblem::Denied) throw;
    why_read_only_ = error.what();
    file_ = files_.Open(path_, FileAccess::Read);
  }
  lock_.emplace(*file_, lock_wait_);
}

// The header is judged after a statement that was cut off has been put back: the file may have an
// incomplete page at its end until then.
void Pager::ReadHeaderPage() {
  std::vector<uint8_t> start(kJet4.page_size);
  start.resize(file_->ReadAt(0, start));
  if (start.size() >= kIdentitySize) identity_ = JournalIdentity(Bytes(start).first(kIdentitySize));
  const bool jet4 = start.size() == kJet4.page_size &&
                    Load32(start.data() + kHeaderVersion) == static_cast<uint32_t>(Version::Jet4);
  if (jet4 && Load16(start.data() + kJet4.header.commit_words) < kCommitIdle) {
    Refresh();
    RecoverAsReader();
  }
  header_ = ReadHeader(
      start, !overlay_.empty() ? uint64_t{PageCount()} * PageSize() : file_->Stamp().size, path_);
}

void Pager::LockShared() {
  if (!lock_->AcquireShared()) RaiseFileInUse(path_);
}

void Pager::BeginRead() {
  if (writing_ || readers_ > 0) {
    ++readers_;
    return;
  }
  try {
    LockShared();
    Refresh();
    while (Interrupted()) RecoverAsReader();
    AwaitForeignWriter();
    readers_ = 1;
  } catch (const FileError& error) {
    lock_->Release();
    RaiseFileError(error, path_);
  } catch (...) {
    lock_->Release();
    throw;
  }
}

void Pager::EndRead() noexcept {
  if (--readers_ > 0 || writing_) return;
  cache_.Trim();
  Quietly([this] { lock_->Release(); });
}

bool Pager::UnchangedSinceBegin() {
  try {
    return writing_ || ReadCommitWords() == commit_words_;
  } catch (const FileError& error) {
    RaiseFileError(error, path_);
  }
}

Pager::CommitWords Pager::ReadCommitWords() {
  CommitWords words{};
  file_->ReadAt(Layout().header.commit_words, words);
  return words;
}

// Makes pages in memory good for the state of the file under the lock just taken.
void Pager::Refresh() {
  const CommitWords words = ReadCommitWords();
  const FileStamp stamp = file_->Stamp();
  if (words == commit_words_ && stamp == stamp_) return;
  commit_words_ = words;
  stamp_ = stamp;
  ForgetPages(stamp.size);
  overlay_.clear();
  journal_missed_ = false;
}

bool Pager::Interrupted() const {
  return Load16(commit_words_.data()) < kCommitIdle && overlay_.empty() && !journal_missed_;
}

// With the shared lock, before and after.
void Pager::RecoverAsReader() {
  if (why_read_only_.empty()) {
    lock_->Release();
    if (!lock_->AcquireExclusive()) RaiseFileInUse(path_);
    Refresh();
    if (Interrupted()) RecoverLocked();
    lock_->Release();
    LockShared();
    Refresh();
    return;
  }
  const std::optional<JournalContent> content = LoadJournal();
  journal_missed_ = !content;
  if (!content) return;
  for (const PageImage& page : content->pages)
    overlay_[page.number].assign(page.bytes, page.bytes + PageSize());
  ForgetPages(content->file_size);
}

void Pager::RecoverLocked() {
  const std::optional<JournalContent> content = LoadJournal();
  journal_missed_ = !content;
  if (!content) return;
  if (user_file_.HasUsers()) RaiseFileInUse(path_);
  PutBack(*content);
  journal_.Invalidate();
  Refresh();
}

// The journal of the statement that the file was left in, if there is one.
std::optional<JournalContent> Pager::LoadJournal() {
  std::optional<JournalContent> content = journal_.Load(PageSize(), PageCount());
  if (!content || content->identity != identity_) return std::nullopt;
  const auto others = [](const auto& words) { return Bytes(words).subspan(sizeof(uint16_t)); };
  const bool of_this_state =
      std::ranges::equal(others(content->commit_words), others(commit_words_)) &&
      content->file_size <= kLargestFile && content->file_size % PageSize() == 0;
  const bool inside = std::ranges::all_of(content->pages, [&](const PageImage& page) {
    return page.number > 0 && (uint64_t{page.number} + 1) * PageSize() <= content->file_size;
  });
  if (!of_this_state || !inside) return std::nullopt;
  return content;
}

void Pager::PutBack(const JournalContent& content) {
  for (const PageImage& page : content.pages)
    file_->WriteAt(uint64_t{page.number} * PageSize(), Bytes(page.bytes, PageSize()));
  file_->Resize(content.file_size);
  WriteFirstCommitWord(Load16(content.commit_words.data()));
  written_ = true;
}

// Another program announces its writing by a 0 in a commit word of its own, too.
void Pager::AwaitForeignWriter() {
  const auto at_work = [this] {
    for (size_t slot = 1; slot < kCommitWordCount; ++slot) {
      if (Load16(commit_words_.data() + slot * sizeof(uint16_t)) == kCommitWriting) return true;
    }
    return false;
  };
  if (!at_work()) return;
  Patience patience(lock_wait_);
  while (at_work() && user_file_.HasUsers()) {
    if (!patience.Wait()) RaiseFileInUse(path_);
    Refresh();
  }
}

void Pager::BeginWrite(bool mending) {
  if (writing_ || readers_ > 0) Raise(LanguageError::InvalidProcedureCall);
  if (!why_read_only_.empty()) RaiseReadOnly(path_, FromUtf8(why_read_only_));
  if (!Layout().IsJet4()) RaiseReadOnly(path_, u"Access 97 files are only read");
  try {
    if (!lock_->AcquireExclusive()) RaiseFileInUse(path_);
    began_writing_ = true;
    ExcludeOtherPrograms();
    Refresh();
    if (Interrupted()) RecoverLocked();
    const std::optional<Text> suspect = SuspectState(commit_words_);
    if (suspect && !mending) RaiseDamaged(path_, *suspect);
    writing_ = true;
    ++statement_;
  } catch (const FileError& error) {
    EndWrite();
    RaiseFileError(error, path_);
  } catch (...) {
    EndWrite();
    throw;
  }
}

void Pager::ExcludeOtherPrograms() {
  Patience patience(std::min(kForeignWait, lock_wait_));
  while (!user_file_.TryExclude()) {
    if (!patience.Wait()) RaiseFileInUse(path_);
  }
}

// Gives up what BeginWrite took.
void Pager::EndWrite() noexcept {
  writing_ = false;
  order_.Clear();
  Quietly([this] { user_file_.Release(); });
  Quietly([this] { lock_->Release(); });
}

void Pager::Commit() {
  try {
    if (!cache_.Changed().empty()) WritePages();
  } catch (const FileError& error) {
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
  if (!cache_.Changed().empty()) ++generation_;
  cache_.Restore();
  cache_.Trim();
  EndWrite();
}

void Pager::WritePages() {
  std::vector<uint32_t>& changed = cache_.Changed();
  const uint32_t count_before = cache_.CountBefore();
  std::ranges::sort(changed);
  std::vector<PageImage> images;
  for (const uint32_t number : changed) {
    if (number < count_before) images.push_back({number, cache_.At(number).before.get()});
  }
  const uint16_t word_before = Load16(commit_words_.data());
  written_ = true;
  journal_.Write(PageSize(), uint64_t{count_before} * PageSize(), identity_, commit_words_, images);
  try {
    WriteFirstCommitWord(kCommitWriting);
    // New pages first: until one of the others leads to them they are nobody's.
    const auto first_new = std::ranges::lower_bound(changed, count_before);
    const auto write = [this](uint32_t number) {
      file_->WriteAt(uint64_t{number} * PageSize(),
                     Bytes(cache_.At(number).bytes.get(), PageSize()));
    };
    std::for_each(first_new, changed.end(), write);
    std::vector<uint32_t> old_pages(changed.begin(), first_new);
    if (!order_.Empty()) {
      order_.Rank();
      std::ranges::stable_sort(old_pages, {}, [&](uint32_t page) { return order_.RankOf(page); });
    }
    std::ranges::for_each(old_pages, write);
    WriteFirstCommitWord(NextCommitWord(word_before));
  } catch (const FileError&) {
    UndoWritePages(word_before);
    throw;
  }
  counters_.pages_written += changed.size();
  ++counters_.commits;
  try {
    journal_.Invalidate();
    stamp_ = file_->Stamp();
  } catch (const FileError&) {
    // The statement is in the file. The journal is that of a state which the commit word says is
    // past, and the pages in memory are read again for want of a stamp.
    stamp_ = {};
  }
}

// What was written of a statement that failed is put back at once. Where that fails, too, the
// commit word and the journal are there for whoever begins the next statement.
void Pager::UndoWritePages(uint16_t word_before) {
  try {
    for (const uint32_t number : cache_.Changed()) {
      if (number >= cache_.CountBefore()) break;
      file_->WriteAt(uint64_t{number} * PageSize(),
                     Bytes(cache_.At(number).before.get(), PageSize()));
    }
    file_->Resize(uint64_t{cache_.CountBefore()} * PageSize());
    WriteFirstCommitWord(word_before);
    journal_.Invalidate();
    stamp_ = file_->Stamp();
  } catch (const FileError&) {
    stamp_ = {};
  }
}

void Pager::WriteFirstCommitWord(uint16_t word) {
  std::array<uint8_t, sizeof word> bytes{};
  Store16(bytes.data(), word);
  file_->WriteAt(Layout().header.commit_words, bytes);
  std::ranges::copy(bytes, commit_words_.begin());
  CopyCommitWordsToHeaderPage();
}

void Pager::CopyCommitWordsToHeaderPage() {
  const PageCache::Page* header = cache_.Find(0);
  if (header == nullptr || !header->bytes) return;
  std::ranges::copy(commit_words_, header->bytes.get() + Layout().header.commit_words);
}

void Pager::MendCommitWords() {
  for (size_t slot = 1; slot < kCommitWordCount; ++slot)
    Store16(commit_words_.data() + slot * sizeof(uint16_t), kCommitIdle);
  Store16(commit_words_.data(), kCommitIdle + 1);
  written_ = true;
  try {
    file_->WriteAt(Layout().header.commit_words, commit_words_);
    CopyCommitWordsToHeaderPage();
    stamp_ = file_->Stamp();
  } catch (const FileError& error) {
    RaiseFileError(error, path_);
  }
}

void Pager::RequireInFile(uint32_t number) const {
  if (number >= PageCount()) RaisePageOutsideFile(path_, number, PageCount());
}

Bytes Pager::Page(uint32_t number) {
  return Bytes(Load(number).bytes.get(), PageSize());
}

// The page, to stay for the statement.
PageCache::Page& Pager::Load(uint32_t number) {
  RequireInFile(number);
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
  RequireInFile(number);
  PageCache::Page& page = cache_.At(number);
  if (!page.bytes) ReadPages(number, next);
  page.used = true;
  if (writing_) page.statement = statement_;
  const bool alone = page.holder == PageCache::Holder::Nobody;
  page.holder = alone ? PageCache::Holder::Passerby : PageCache::Holder::Statement;
  return Bytes(page.bytes.get(), PageSize());
}

void Pager::GiveBack(uint32_t number) {
  cache_.GiveBack(number);
}

// The first page, and with it as many of the others as lie close enough together: to read a few
// bytes more is cheaper than to read once more.
void Pager::ReadPages(uint32_t first, std::span<const uint32_t> next) {
  uint32_t end = first + 1;
  size_t wanted = 1;
  for (const uint32_t number : next) {
    const uint32_t span = number - first + 1;
    const bool close = span <= kLongestRead && span <= 2 * (wanted + 1);
    if (!close || number >= PageCount() || !overlay_.empty()) break;
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
      PageCache::Buffer bytes = cache_.NewBuffer();
      std::memcpy(bytes.get(), &read_ahead_[start], PageSize());
      cache_.Keep(number, std::move(bytes));
      ++counters_.pages_read;
    };
    keep(first);
    std::ranges::for_each(next.first(wanted - 1), keep);
  } catch (const FileError& error) {
    RaiseFileError(error, path_);
  }
}

void Pager::ReadPage(uint32_t number) {
  PageCache::Buffer bytes = cache_.NewBuffer();
  const auto overlaid = overlay_.find(number);
  if (overlaid != overlay_.end()) {
    std::ranges::copy(overlaid->second, bytes.get());
  } else if (file_->ReadAt(uint64_t{number} * PageSize(), {bytes.get(), PageSize()}) < PageSize()) {
    RaisePageOutsideFile(path_, number, PageCount());
  }
  cache_.Keep(number, std::move(bytes));
  ++counters_.pages_read;
}

uint8_t* Pager::Edit(uint32_t number) {
  if (!writing_ || number == 0) Raise(LanguageError::InvalidProcedureCall);
  Load(number);
  return cache_.Change(number);
}

uint32_t Pager::Append() {
  if (!writing_) Raise(LanguageError::InvalidProcedureCall);
  if ((uint64_t{PageCount()} + 1) * PageSize() > kLargestFile)
    RaiseDiskError(path_, u"A database cannot grow beyond 2 gigabytes");
  return cache_.Append();
}

void Pager::ForgetPages(uint64_t file_size) {
  cache_.Reset(static_cast<uint32_t>(std::min(file_size, kLargestFile) / PageSize()), PageSize());
  ++generation_;
}

void Pager::Close() {
  if (!file_) return;
  std::optional<FileError> failure;
  try {
    if (written_) {
      file_->Flush();
      ++counters_.flushes;
    }
  } catch (const FileError& error) {
    failure = error;
  }
  // Nobody else can be about to use the files beside the database while the lock is held, and
  // nobody needs them when no statement was left unfinished.
  Quietly([this] {
    if (!began_writing_ || !lock_->AcquireExclusive()) return;
    const bool unfinished = Load16(ReadCommitWords().data()) < kCommitIdle;
    if (written_ && !unfinished) Quietly([this] { journal_.Remove(); });
    user_file_.RemoveIfEmpty();
  });
  lock_.reset();
  file_.reset();
  if (failure) RaiseFileError(*failure, path_);
}

}  // namespace rdv::jet
