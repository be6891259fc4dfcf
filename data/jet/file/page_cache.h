// The pages of a file that are in memory, by number, and the pages that the statement at work has
// changed there.
//
// What holds between calls:
//   1. A page that a statement has asked for stays where it is until Settle, Restore or Trim at the
//      statement's end; one that was read in passing until it is given back.
//   2. A changed page that was there before the statement is kept as it was, too, until Settle or
//      Restore; a new one was not there.
//   3. After Trim no more pages are held than the budget says.
//   4. Of the pages that nobody but scans has asked for, no more are kept than a part of the
//   budget: a scan of a large table leaves the others theirs, and its own memory is used again
//   while the processor still has it at hand.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace rdv::jet {

class PageCache {
 public:
  // Who relies on the bytes staying where they are.
  enum class Holder : uint8_t {
    Statement,  // anybody, until the statement ends
    Passerby,   // one that says when it is done with them
    Nobody,
  };

  struct Page {
    uint8_t* bytes = nullptr;  // null when the page is not in memory
    // As it was when the statement began; null for unchanged and for new pages.
    uint8_t* before = nullptr;
    bool dirty = false;
    bool used = false;    // since the cache last looked for pages to give up
    bool passed = false;  // is among those that scans have given back
    Holder holder = Holder::Statement;
    uint32_t statement = 0;  // the last writing one that asked for it; 0 for none
  };

  // `budget`: pages that are kept from one statement to the next.
  explicit PageCache(size_t budget) : budget_(budget) {}

  // Forgets everything: the file has `count` pages of `page_size` bytes now.
  void Reset(uint32_t count, uint32_t page_size);
  uint32_t Count() const { return count_; }

  // A page below Count. It stays in its place.
  Page& At(uint32_t number);
  // Null when it was never asked for.
  Page* Find(uint32_t number);

  // Where the content of the page that Keep takes next is to be put.
  uint8_t* Room();
  // Takes the content of a page that is not in memory.
  void Keep(uint32_t number);
  void GiveBack(uint32_t number);

  // Requires that it is in memory.
  uint8_t* Change(uint32_t number);
  // One more page, all zeros, changed.
  uint32_t Append();
  // In the order in which they were changed, or as sorted by whoever asked last.
  std::vector<uint32_t>& Changed() { return changed_; }
  // Pages when the first change was made; those from there on are new.
  uint32_t CountBefore() const { return count_ - appended_; }

  // Changed pages are from now on what they have become, or again what they were.
  void Settle();
  void Restore();

  void Trim();

 private:
  // In groups, which are made when one of their pages is asked for: to open a large file costs
  // hardly more than to open a small one.
  static constexpr uint32_t kGroup = 8;
  using Group = std::array<Page, kGroup>;
  // Memory is asked for by so many pages at once: a connection that is opened for one command reads
  // about twenty.
  static constexpr size_t kPagesOfSlab = 8;

  uint32_t Next(uint32_t number) const;
  uint8_t* TakeBuffer();
  void PutBuffer(uint8_t* bytes);
  void Drop(Page& page);

  size_t budget_;
  uint32_t page_size_ = 0;
  std::vector<std::unique_ptr<Group>> groups_;
  uint32_t count_ = 0;
  uint32_t appended_ = 0;
  size_t held_ = 0;  // pages with bytes
  uint32_t hand_ = 0;
  std::vector<uint32_t> changed_;
  std::vector<uint32_t> passed_;  // pages that scans have given back, as many as are kept ...
  size_t longest_passed_ = 0;     // ... and where among them the one is that comes round next
  std::vector<std::unique_ptr<uint8_t[]>> slabs_;  // all buffers; given back by Reset
  std::vector<uint8_t*> spare_;                    // those of them that hold nothing
};

}  // namespace rdv::jet
