#include "data/jet/file/journal.h"

#include <array>
#include <bit>
#include <cstring>

#include "data/jet/format/format.h"

namespace rdv::jet {
namespace {

constexpr std::array<uint8_t, 8> kMark = {'R', 'D', 'V', 'J', 'R', 'N', 'L', '2'};
constexpr size_t kPageSizeAt = 8;
constexpr size_t kPageCountAt = 12;
constexpr size_t kFileSizeAt = 16;
constexpr size_t kChecksumAt = 24;
constexpr size_t kIdentityAt = 32;
constexpr size_t kCommitWordsAt = 40;
constexpr size_t kPagesAt = kCommitWordsAt + kCommitWordCount * sizeof(uint16_t);
constexpr size_t kPageNumberSize = 8;

// Four independent sums, so that the processor works on all of them at once. Guards against
// journals that were cut off, not against malice.
uint64_t Checksum(Bytes bytes) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15;
  std::array<uint64_t, 4> sums = {1, 2, 3, 4};
  size_t position = 0;
  for (size_t lane = 0; position + 8 <= bytes.size(); position += 8, lane = (lane + 1) % 4)
    sums[lane] = std::rotl(sums[lane] ^ Load64(bytes.data() + position), 29) * kFactor;
  for (; position < bytes.size(); ++position) sums[0] = (sums[0] ^ bytes[position]) * kFactor;
  uint64_t total = bytes.size();
  for (const uint64_t sum : sums) total = std::rotl(total ^ sum, 31) * kFactor;
  return total;
}

// Of the whole journal, the checksum's own place counting as zeros.
uint64_t JournalChecksum(std::span<uint8_t> journal) {
  Store64(journal.data() + kChecksumAt, 0);
  return Checksum(journal);
}

}  // namespace

uint64_t JournalIdentity(Bytes header) {
  return Checksum(header);
}

Journal::Journal(FileSystem& files, const Text& database_path)
    : files_(files), path_(database_path + u"-journal") {}

void Journal::Open() {
  if (file_ && !file_->Stamp().linked) file_.reset();
  if (!file_) file_ = files_.Open(path_, FileAccess::Create);
}

void Journal::Write(uint32_t page_size, uint64_t file_size, uint64_t identity, Bytes commit_words,
                    std::span<const PageImage> pages) {
  Open();
  buffer_.resize(kPagesAt + pages.size() * (kPageNumberSize + page_size));
  uint8_t* to = buffer_.data();
  std::memcpy(to, kMark.data(), kMark.size());
  Store32(to + kPageSizeAt, page_size);
  Store32(to + kPageCountAt, static_cast<uint32_t>(pages.size()));
  Store64(to + kFileSizeAt, file_size);
  Store64(to + kIdentityAt, identity);
  std::memcpy(to + kCommitWordsAt, commit_words.data(), commit_words.size());
  to += kPagesAt;
  for (const PageImage& page : pages) {
    Store64(to, page.number);
    std::memcpy(to + kPageNumberSize, page.bytes, page_size);
    to += kPageNumberSize + page_size;
  }
  const uint64_t checksum = JournalChecksum(buffer_);
  Store64(buffer_.data() + kChecksumAt, checksum);
  file_->WriteAt(0, buffer_);
}

void Journal::Invalidate() {
  Open();
  const std::array<uint8_t, kMark.size()> zeros{};
  file_->WriteAt(0, zeros);
}

std::optional<JournalContent> Journal::Load(uint32_t page_size, uint32_t page_count) {
  if (!files_.Exists(path_)) return std::nullopt;
  const std::unique_ptr<File> file = files_.Open(path_, FileAccess::Read);
  std::vector<uint8_t> bytes(kPagesAt);
  if (file->ReadAt(0, bytes) < kPagesAt) return std::nullopt;
  if (std::memcmp(bytes.data(), kMark.data(), kMark.size()) != 0) return std::nullopt;

  JournalContent content;
  content.page_size = page_size;
  content.file_size = Load64(bytes.data() + kFileSizeAt);
  content.identity = Load64(bytes.data() + kIdentityAt);
  const uint32_t count = Load32(bytes.data() + kPageCountAt);
  if (Load32(bytes.data() + kPageSizeAt) != page_size || count > page_count) return std::nullopt;
  // A journal is written over a longer one of an earlier statement; what is behind it is nothing.
  const uint64_t size = kPagesAt + uint64_t{count} * (kPageNumberSize + page_size);
  if (size > file->Stamp().size) return std::nullopt;
  bytes.resize(static_cast<size_t>(size));
  if (file->ReadAt(0, bytes) < size) return std::nullopt;
  const uint64_t stored_checksum = Load64(bytes.data() + kChecksumAt);
  if (JournalChecksum(bytes) != stored_checksum) return std::nullopt;

  content.storage = std::move(bytes);
  const uint8_t* from = content.storage.data();
  content.commit_words.assign(from + kCommitWordsAt, from + kPagesAt);
  from += kPagesAt;
  for (uint64_t i = 0; i < count; ++i, from += kPageNumberSize + content.page_size)
    content.pages.push_back({Load32(from), from + kPageNumberSize});
  return content;
}

void Journal::Remove() {
  file_.reset();
  if (files_.Exists(path_)) files_.Remove(path_);
}

}  // namespace rdv::jet
