// Where the pages of a database file come from.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "data/jet/file/work_budget.h"
#include "data/jet/format/bytes.h"
#include "runtime/text.h"

namespace rdv::jet {

// Not thread-safe.
class PageSource {
 public:
  PageSource() = default;
  PageSource(const PageSource&) = delete;
  PageSource& operator=(const PageSource&) = delete;
  virtual ~PageSource() = default;

  virtual uint32_t PageSize() const = 0;  // in bytes
  virtual uint32_t PageCount() const = 0;

  // A whole page. Raises the error of a damaged file for a number that the file does not have. The
  // bytes stay where they are until the end of the statement.
  virtual Bytes Page(uint32_t number) = 0;

  // The same, for whoever reads many pages one after the other and needs the bytes of each only
  // until it gives the page back. `next`: those that will be asked for after it, ascending.
  virtual Bytes PageInPassing(uint32_t number, std::span<const uint32_t> next);
  virtual void GiveBack(uint32_t number);

  // For the texts of errors.
  virtual const Text& Path() const = 0;

  // Counts what the statement at work makes of the file beside the requests for pages, which count
  // by themselves. Raises the damaged file's error once it is more than the file can stand for.
  void Charge(uint64_t bytes) {
    if (!work_.Take(bytes)) RaiseTooMuchWork();
  }

 protected:
  WorkBudget work_;

 private:
  [[noreturn]] void RaiseTooMuchWork() const;
};

// A file that lies in memory as a whole. Knows of no statements, and gives them no budget.
class BufferPageSource : public PageSource {
 public:
  // A last page that is cut off is no page.
  BufferPageSource(std::vector<uint8_t> bytes, uint32_t page_size, Text path)
      : bytes_(std::move(bytes)), page_size_(page_size), path_(std::move(path)) {}

  uint32_t PageSize() const override { return page_size_; }
  uint32_t PageCount() const override { return static_cast<uint32_t>(bytes_.size() / page_size_); }
  Bytes Page(uint32_t number) override;
  const Text& Path() const override { return path_; }

 private:
  std::vector<uint8_t> bytes_;
  uint32_t page_size_;
  Text path_;
};

}  // namespace rdv::jet
