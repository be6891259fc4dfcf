// A database file as all reading parts share it: its pages, its layout and its header.
#pragma once

#include "data/jet/file/page_source.h"
#include "data/jet/format/format.h"
#include "data/jet/format/header.h"
#include "data/jet/format/schema.h"

namespace rdv::jet {

// Refers to the page source, which must outlive it. Pages are not kept beyond what the source
// itself keeps.
class FileReader {
 public:
  // Reads page 0; raises what ReadHeader raises.
  explicit FileReader(PageSource& pages, TextView password = {});
  // With a header that was read before.
  FileReader(PageSource& pages, Header header);

  const Format& Layout() const { return *format_; }
  const Header& FileHeader() const { return header_; }
  uint32_t PageCount() const { return pages_->PageCount(); }

  // A page of the given kind; raises the damaged file's error when it is none, and for page 0.
  Bytes Page(uint32_t number, PageType type) const;
  // An index page of either kind, owned by the table.
  Bytes IndexPage(uint32_t number, uint32_t table_page) const;
  // A data page with the given owner.
  Bytes DataPage(uint32_t number, uint32_t owner) const;
  // The same, for a scan; see PageSource.
  Bytes DataPageInPassing(uint32_t number, uint32_t owner, std::span<const uint32_t> next) const;
  void GiveBack(uint32_t number) const { pages_->GiveBack(number); }
  // See PageSource.
  void Charge(uint64_t bytes) const { pages_->Charge(bytes); }
  // Any page.
  Bytes RawPage(uint32_t number) const { return pages_->Page(number); }

  // Text as it is stored in a row (possibly compressed) or, in Jet 3, in the code page.
  Text DecodeText(Bytes stored) const;
  void AppendText(Bytes stored, Text& to) const;
  // Text as it is stored in definitions and properties: never compressed.
  Text DecodeName(Bytes stored) const;

  [[noreturn]] void Damaged(const Text& reason) const;
  [[noreturn]] void DamagedPage(uint32_t number, TextView reason) const;

 private:
  Bytes CheckedPage(Bytes page, uint32_t number, PageType type) const;
  Bytes CheckedDataPage(Bytes page, uint32_t number, uint32_t owner) const;

  PageSource* pages_;
  Header header_;
  const Format* format_;
};

}  // namespace rdv::jet
