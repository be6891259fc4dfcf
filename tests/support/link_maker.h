// Tables of one database that another has.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "data/jet/catalog/catalog.h"
#include "data/jet/catalog/system_tables.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/table/table_writer.h"

namespace rdv::test {

// Enters a link in the catalog, as another program does.
class LinkMaker : public jet::TableSource {
 public:
  explicit LinkMaker(const Text& path, jet::FileSystem& files = jet::NativeFileSystem())
      : pager_(files, path, std::chrono::milliseconds(0), 16), file_(pager_, pager_.FileHeader()) {
    pager_.BeginRead();
    objects_ = jet::ReadTableDefinition(file_, jet::kObjectsPage, jet::kObjectsName);
    pager_.EndRead();
  }

  void Make(const jet::LinkedTable& link) {
    pager_.BeginWrite();
    const jet::WriteContext context{pager_, file_};
    jet::PageAllocator allocator(context);
    jet::TableWriter rows(context, allocator, *this);
    std::vector<jet::Assignment> values =
        jet::ObjectRow({.id = static_cast<int32_t>(0x80000100u + made_++),
                        .parent = jet::kTablesContainer,
                        .type = link.server ? jet::kObjectLinkedOdbcTable : jet::kObjectLinkedTable,
                        .name = link.name,
                        .date = 40000,
                        .owner = jet::EncryptedSid(pager_.FileHeader().sid_key, jet::kAdminSid),
                        .flags = 0x200000});
    values.push_back({kObjectDatabase, link.database});
    values.push_back({kObjectConnect, link.connect});
    values.push_back({kObjectForeignName, link.foreign_name});
    rows.Insert(objects_, values);
    pager_.Commit();
  }

  const jet::TableDefinition& TableAt(uint32_t) override { return objects_; }

 private:
  // Columns of the catalog.
  static constexpr size_t kObjectDatabase = 8;
  static constexpr size_t kObjectConnect = 9;
  static constexpr size_t kObjectForeignName = 10;

  jet::Pager pager_;
  jet::FileReader file_;
  jet::TableDefinition objects_;
  uint32_t made_ = 0;
};

}  // namespace rdv::test
