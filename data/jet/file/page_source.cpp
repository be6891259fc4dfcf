#include "data/jet/file/page_source.h"

#include "data/jet/format/errors.h"

namespace rdv::jet {

Bytes PageSource::PageInPassing(uint32_t number, std::span<const uint32_t>) {
  return Page(number);
}
void PageSource::GiveBack(uint32_t) {}

void PageSource::RaiseTooMuchWork() const {
  RaiseDamaged(Path(), u"A statement on it takes more work than a sound file of its size can make");
}

Bytes BufferPageSource::Page(uint32_t number) {
  if (number >= PageCount()) RaisePageOutsideFile(path_, number, PageCount());
  return Bytes(bytes_).subspan(size_t{number} * page_size_, page_size_);
}

}  // namespace rdv::jet
