// Rows on the data pages of one owner: the rows of a table, or the long values of a column.
#pragma once

#include <cstdint>

#include "data/jet/file/write_context.h"
#include "data/jet/format/schema.h"
#include "data/jet/rows/allocation.h"

namespace rdv::jet {

class RowStore {
 public:
  // `owner` as it stands on the pages.
  RowStore(const WriteContext& context, PageAllocator& allocator, uint32_t owner, RowId owned_map,
           RowId free_map);

  // On a page with room for it, or a new one. `flags` as in the slot.
  RowId Insert(Bytes content, uint16_t flags = 0);
  // On a new page that takes no other rows.
  RowId InsertAlone(Bytes content);
  // The row keeps its id: where its page has no room for it, it moves and leaves a pointer.
  void Replace(RowId row, Bytes content);
  // Also the moved row that a pointer leads to. The page remains the owner's.
  void Remove(RowId row);
  // As Remove, but a page that holds no rows any more is given back.
  void RemoveWithPage(RowId row);

 private:
  bool InsertInPage(uint32_t page, Bytes content, uint16_t flags, RowId& row);
  uint32_t NewPage();
  void RemoveSlot(RowId row);

  const WriteContext& context_;
  PageAllocator& allocator_;
  uint32_t owner_;
  PageSetWriter owned_;
  PageSetWriter free_;
};

}  // namespace rdv::jet
