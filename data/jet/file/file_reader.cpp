#include "data/jet/file/file_reader.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <utility>

#include "data/jet/format/errors.h"
#include "data/jet/format/text_units.h"

namespace rdv::jet {
namespace {

constexpr uint8_t kRunEnd = 0x00;

void AppendUnits(Bytes stored, Text& to) {
  const size_t old_size = to.size();
  const size_t count = stored.size() / kUnitSize;
  to.resize(old_size + count);
  if constexpr (std::endian::native == std::endian::little) {
    if (count != 0) std::memcpy(&to[old_size], stored.data(), count * kUnitSize);
    return;
  }
  for (size_t i = 0; i < count; ++i) {
    to[old_size + i] = static_cast<char16_t>(Load16(stored.data() + kUnitSize * i));
  }
}

void AppendSingleBytes(Bytes stored, Text& to) {
  const size_t old_size = to.size();
  to.resize(old_size + stored.size());
  WidenBytes(stored.data(), stored.size(), to.data() + old_size);
}

// Runs take turns, one byte to a unit first, then whole units; a zero byte ends a run.
void AppendCompressed(Bytes stored, Text& to) {
  bool one_byte_units = true;
  size_t position = 0;
  while (position < stored.size()) {
    size_t end = position;
    const size_t step = one_byte_units ? 1 : kUnitSize;
    while (end + step <= stored.size() && stored[end] != kRunEnd) end += step;
    const Bytes run = stored.subspan(position, end - position);
    if (one_byte_units) {
      AppendSingleBytes(run, to);
    } else {
      AppendUnits(run, to);
    }
    position = end + 1;
    one_byte_units = !one_byte_units;
  }
}

}  // namespace

FileReader::FileReader(PageSource& pages, TextView password)
    : FileReader(pages, ReadHeader(pages.PageCount() == 0 ? Bytes() : pages.Page(0),
                                   uint64_t{pages.PageCount()} * pages.PageSize(), pages.Path(),
                                   password)) {}

FileReader::FileReader(PageSource& pages, Header header)
    : pages_(&pages), header_(std::move(header)), format_(&header_.Layout()) {
  if (pages.PageSize() != format_->page_size) {
    Damaged(u"The pages were read with the size of another version of the format");
  }
}

Bytes FileReader::Page(uint32_t number, PageType type) const {
  return CheckedPage(pages_->Page(number), number, type);
}

Bytes FileReader::CheckedPage(Bytes page, uint32_t number, PageType type) const {
  if (number == 0 || page[0] != static_cast<uint8_t>(type) || page[1] != kPageMark) {
    DamagedPage(number, u"is not of the kind that is expected there");
  }
  return page;
}

Bytes FileReader::IndexPage(uint32_t number, uint32_t table_page) const {
  const Bytes page = pages_->Page(number);
  const bool is_index = page[0] == static_cast<uint8_t>(PageType::IndexLeaf) ||
                        page[0] == static_cast<uint8_t>(PageType::IndexNode);
  if (!is_index || page[1] != kPageMark || Load32(&page[kPageOwner]) != table_page) {
    DamagedPage(number, u"is not a page of the index that leads to it");
  }
  return page;
}

Bytes FileReader::DataPage(uint32_t number, uint32_t owner) const {
  return CheckedDataPage(pages_->Page(number), number, owner);
}

Bytes FileReader::DataPageInPassing(uint32_t number, uint32_t owner,
                                    std::span<const uint32_t> next) const {
  return CheckedDataPage(pages_->PageInPassing(number, next), number, owner);
}

Bytes FileReader::CheckedDataPage(Bytes page, uint32_t number, uint32_t owner) const {
  CheckedPage(page, number, PageType::Data);
  if (Load32(&page[kPageOwner]) != owner) DamagedPage(number, u"belongs to another owner");
  return page;
}

Text FileReader::DecodeText(Bytes stored) const {
  Text text;
  AppendText(stored, text);
  return text;
}

void FileReader::AppendText(Bytes stored, Text& to) const {
  if (!format_->IsJet4()) {
    to += DecodeName(stored);
    return;
  }
  if (stored.size() >= kUnitSize && Load16(stored.data()) == kCompressedMark) {
    const Bytes content = stored.subspan(kUnitSize);
    // Nearly every text is one run of single bytes, without the byte that ends it.
    const size_t old_size = to.size();
    to.resize(old_size + content.size());
    static_assert(kRunEnd == 0);
    if (!WidenBytes(content.data(), content.size(), to.data() + old_size)) {
      to.resize(old_size);
      AppendCompressed(content, to);
    }
    return;
  }
  AppendUnits(stored, to);
}

Text FileReader::DecodeName(Bytes stored) const {
  if (format_->IsJet4()) {
    Text name;
    AppendUnits(stored, name);
    return name;
  }
  const std::string_view bytes(reinterpret_cast<const char*>(stored.data()), stored.size());
  const auto beyond_ascii = [](char byte) { return static_cast<uint8_t>(byte) >= 0x80; };
  if (header_.code_page != kCodePageWestern &&
      std::any_of(bytes.begin(), bytes.end(), beyond_ascii)) {
    RaiseUnsupportedFormat(
        pages_->Path(),
        u"Its texts are in code page " + Decimal(header_.code_page) + u", which is not supported");
  }
  return FromWindows1252(bytes);
}

void FileReader::Damaged(const Text& reason) const {
  RaiseDamaged(pages_->Path(), reason);
}

void FileReader::DamagedPage(uint32_t number, TextView reason) const {
  Damaged(u"Page " + Decimal(number) + u" " + Text(reason));
}

}  // namespace rdv::jet
