// Entering rows in an index and taking them out, whatever becomes of its pages.
//
// The tree: every leaf has entries in order, the leaves are linked in order. A node has an entry
// for each child but the last, a copy of the last entry below that child; the last child is its
// tail. The root never changes its page.
#pragma once

#include <array>
#include <cassert>
#include <cstdint>
#include <optional>
#include <vector>

#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"
#include "data/jet/index/index_key.h"
#include "data/jet/index/index_page_writer.h"
#include "data/jet/rows/allocation.h"

namespace rdv::jet {

class IndexWriter {
 public:
  // `table_page`: of the definition of the table that the index belongs to.
  IndexWriter(const WriteContext& context, PageAllocator& allocator, uint32_t table_page,
              const RealIndex& index);

  // `place`: where the entry belongs, if that is known already.
  void Insert(Key key, RowId row, std::optional<EntryPlace> place = std::nullopt);
  // Raises the damaged file's error when there is no such entry.
  void Remove(Bytes key, RowId row);

  // Makes the index that of the given entries, which are in order: on fresh pages but for the root.
  // Pages that belonged to it are free afterwards.
  void Rebuild(const std::vector<EntryBytes>& entries);

 private:
  static constexpr size_t kTail = static_cast<size_t>(-1);

  // From the root down; of the last step, the leaf, only the page counts.
  struct Step {
    uint32_t page = 0;
    size_t entry_end = kTail;  // of the node's entry that leads on, in the entry area
  };
  // There is one for each change: it lives without memory from the heap.
  class Path {
   public:
    bool Full() const { return size_ == steps_.size(); }
    void Add(uint32_t page) {
      assert(!Full());
      steps_[size_++].page = page;
    }
    size_t size() const { return size_; }
    Step& back() { return steps_[size_ - 1]; }
    const Step& back() const { return steps_[size_ - 1]; }
    const Step& operator[](size_t depth) const { return steps_[depth]; }

   private:
    std::array<Step, kDeepestIndex> steps_;
    size_t size_ = 0;
  };

  struct Piece {
    IndexPageImage image;
    EntryBytes last;  // key and row of the last entry below; not of the last piece
  };

  Path Descend(Bytes entry) const;
  size_t EntryNumber(const IndexPageImage& image, const Step& step) const;
  // `appended`: the last entry is new, so that more are likely to follow it.
  void Save(const Path& path, size_t depth, IndexPageImage image, bool appended = false);
  void Split(const Path& path, size_t depth, IndexPageImage image, bool appended);
  void SplitRoot(std::vector<Piece> pieces, uint8_t level);
  void SplitBelow(const Path& path, size_t depth, std::vector<Piece> pieces);
  std::vector<Piece> Divide(IndexPageImage image, bool appended) const;
  std::vector<size_t> DivideLeaf(const IndexPageImage& image, bool appended) const;
  static std::vector<Piece> DivideNode(IndexPageImage image);
  void LinkAndStore(std::vector<Piece>& pieces, const std::vector<uint32_t>& pages,
                    uint32_t previous, uint32_t next);

  void ReplaceLast(const Path& path, size_t depth, const EntryBytes& last);
  void RemoveChild(const Path& path, size_t depth);
  void Shrink(const Path& path, size_t depth, const IndexPageImage& image);
  void CollapseRoot();
  bool MergeLeft(const Path& path, size_t depth, uint32_t child);
  bool MergeRight(const Path& path, size_t depth, uint32_t child);

  IndexPageImage Load(uint32_t page) const;
  IndexPageImage LoadNode(uint32_t page) const;
  void Store(uint32_t page, const IndexPageImage& image);
  uint32_t AllocatePage();
  void FreePage(uint32_t page);
  void SetLink(uint32_t page, size_t field, uint32_t to);
  void Unlink(const IndexPageImage& image);

  const WriteContext& context_;
  const Format& format_;
  PageAllocator& allocator_;
  uint32_t table_page_;
  uint32_t root_;
  PageSetWriter pages_;
};

}  // namespace rdv::jet
