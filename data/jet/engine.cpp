#include "data/jet/engine.h"

#include <map>
#include <optional>
#include <unordered_map>

#include "data/jet/catalog/catalog.h"
#include "data/jet/catalog/creation.h"
#include "data/jet/catalog/table_spec.h"
#include "data/jet/file/pager.h"
#include "data/jet/file/write_context.h"
#include "data/jet/format/errors.h"
#include "data/jet/rows/memory_budget.h"
#include "data/jet/table/page_users.h"
#include "data/jet/table/table_writer.h"
#include "runtime/error.h"

namespace rdv::jet {

struct Engine::State : public AllTables {
  State(const Text& path, const EngineOptions& options)
      : pager(options.files ? *options.files : NativeFileSystem(), path, options.lock_wait,
              options.cache_pages, options.reads_suspect ? Suspects::Read : Suspects::Refused),
        file(pager, pager.FileHeader()),
        context{pager, file} {}

  // Forgets what was derived from pages that may have changed since.
  void Revalidate();

  Catalog& OpenCatalog();
  const TableDefinition& TableAt(uint32_t page) override;
  const TableDefinition* FindTableAt(uint32_t page) override;
  std::vector<uint32_t> TablePages() override;
  void KnowObjects();
  void RequireWritable(const TableDefinition& table) const;

  // Runs a change of rows; one that fails half done makes the scope unfit to be committed.
  template <typename Change>
  auto MakeChange(const TableDefinition& table, Change change) {
    RequireWritable(table);
    try {
      return change();
    } catch (...) {
      broken = broken || writer->Changing();
      throw;
    }
  }

  // As MakeChange, for changes of definitions.
  template <typename Change>
  void MakeDefinition(Change change) {
    if (!pager.Writing()) Raise(LanguageError::InvalidProcedureCall);
    broken = true;  // until it is done
    SchemaWriter schema(context, *allocator, *this, *writer);
    change(schema);
    broken = false;
    Forget();
  }
  void Forget();
  // Reads the definition of a table that is not known yet, and keeps it.
  const TableDefinition* Know(const CatalogObject& object);

  Pager pager;
  FileReader file;
  WriteContext context;
  uint64_t generation = ~uint64_t{0};  // of the pages
  uint64_t definitions = 0;            // how often all that was known of them has been forgotten
  std::optional<Catalog> catalog;
  std::unordered_map<uint32_t, std::unique_ptr<TableDefinition>> tables;  // by page
  std::optional<MemoryBudget> of_definitions;
  std::map<Text, const TableDefinition*, std::less<>> tables_by_name;  // upper case
  std::map<uint32_t, CatalogObject> objects;  // local tables by page, once one is sought
  TablesAsPageUsers page_users{file, *this};
  std::optional<PageAllocator> allocator;
  std::optional<TableWriter> writer;
  bool broken = false;
  mutable EngineCounters counters;
};

void Engine::State::Revalidate() {
  if (generation == pager.Generation()) return;
  generation = pager.Generation();
  Forget();
}

void Engine::State::Forget() {
  ++definitions;
  catalog.reset();
  tables_by_name.clear();
  tables.clear();
  of_definitions = MemoryBudget::OfDefinitions(file);
  objects.clear();
  allocator.emplace(context, &page_users);
  writer.emplace(context, *allocator, *this);
}

Catalog& Engine::State::OpenCatalog() {
  if (!catalog) catalog.emplace(file);
  return *catalog;
}

const TableDefinition& Engine::State::TableAt(uint32_t page) {
  const TableDefinition* table = FindTableAt(page);
  if (!table) file.DamagedPage(page, u"is no table of the catalog");
  return *table;
}

const TableDefinition* Engine::State::FindTableAt(uint32_t page) {
  const auto known = tables.find(page);
  if (known != tables.end()) return known->second.get();
  KnowObjects();
  const auto object = objects.find(page);
  if (object == objects.end()) return nullptr;
  return Know(object->second);
}

const TableDefinition* Engine::State::Know(const CatalogObject& object) {
  auto table = std::make_unique<TableDefinition>(OpenCatalog().Table(object));
  of_definitions->Take(HeldBytes(*table));
  return tables.emplace(static_cast<uint32_t>(object.id), std::move(table)).first->second.get();
}

void Engine::State::KnowObjects() {
  if (!objects.empty()) return;
  for (CatalogObject& object : OpenCatalog().All()) {
    const auto page = static_cast<uint32_t>(object.id);
    if (object.IsLocalTable()) objects.try_emplace(page, std::move(object));
  }
}

std::vector<uint32_t> Engine::State::TablePages() {
  KnowObjects();
  std::vector<uint32_t> pages;
  for (const auto& [page, object] : objects) pages.push_back(page);
  return pages;
}

// The engine's own tables change by their own rules; keys of texts are known for one order only.
void Engine::State::RequireWritable(const TableDefinition& table) const {
  if (!pager.Writing()) Raise(LanguageError::InvalidProcedureCall);
  if (table.system)
    RaiseReadOnly(pager.Path(), u"The table " + table.name + u" is the engine's own");
}

Engine::Engine(std::unique_ptr<State> state) : state_(std::move(state)) {}
Engine::~Engine() = default;

std::unique_ptr<Engine> Engine::Open(const Text& path, const EngineOptions& options) {
  return std::unique_ptr<Engine>(new Engine(std::make_unique<State>(path, options)));
}

void Engine::Create(const Text& path, const EngineOptions& options,
                    const std::function<void(Engine&)>& fill) {
  CreateDatabase(options.files ? *options.files : NativeFileSystem(), path, StampOfNow(),
                 [&](const Text& draft) {
                   if (!fill) return;
                   const auto engine = Open(draft, options);
                   fill(*engine);
                   engine->Close();
                 });
}

void Engine::Close() {
  state_->pager.Close();
}

Engine::ReadScope::ReadScope(Engine& engine) : engine_(engine) {
  engine_.state_->pager.BeginRead();
  engine_.state_->Revalidate();
}
Engine::ReadScope::~ReadScope() {
  engine_.state_->pager.EndRead();
}
bool Engine::ReadScope::StillValid() const {
  return engine_.state_->pager.UnchangedSinceBegin();
}

Engine::WriteScope::WriteScope(Engine& engine) : engine_(engine) {
  engine_.state_->pager.BeginWrite();
  engine_.state_->broken = false;
  engine_.state_->Revalidate();
}
Engine::WriteScope::~WriteScope() {
  if (open_) engine_.state_->pager.Rollback();
}
void Engine::WriteScope::Commit() {
  State& state = *engine_.state_;
  if (!open_ || state.broken) Raise(LanguageError::InvalidProcedureCall);
  open_ = false;
  state.pager.Commit();
}

void Engine::BeginStatement() {
  state_->pager.BeginPart();
}

const TableDefinition& Engine::Table(TextView name) {
  const TableDefinition* table = FindTable(name);
  if (!table) RaiseCannotFindTable(name);
  return *table;
}

const TableDefinition* Engine::FindTable(TextView name) {
  const Text key = UpperCase(name);
  const auto known = state_->tables_by_name.find(key);
  if (known != state_->tables_by_name.end()) return known->second;
  const std::optional<CatalogObject> object = state_->OpenCatalog().Find(kTablesContainer, name);
  if (!object || !object->IsLocalTable()) return nullptr;
  const auto page = static_cast<uint32_t>(object->id);
  const auto read = state_->tables.find(page);
  const TableDefinition* table =
      read != state_->tables.end() ? read->second.get() : state_->Know(*object);
  return state_->tables_by_name.emplace(key, table).first->second;
}

const TableDefinition& Engine::TableAt(uint32_t page) {
  return state_->TableAt(page);
}

std::vector<Text> Engine::UserTableNames() {
  std::vector<Text> names;
  for (const CatalogObject& table : state_->OpenCatalog().UserTables()) names.push_back(table.name);
  return names;
}

std::optional<LinkedTable> Engine::Link(TextView name) {
  const Catalog& catalog = state_->OpenCatalog();
  const std::optional<CatalogObject> object = catalog.Find(kTablesContainer, name);
  if (!object || !object->IsLink()) return std::nullopt;
  return catalog.Link(*object);
}

uint64_t Engine::Generation() const {
  return state_->definitions;
}

const FileReader& Engine::File() const {
  return state_->file;
}

RowId Engine::Insert(const TableDefinition& table, std::span<const Assignment> values) {
  return state_->MakeChange(table, [&] { return state_->writer->Insert(table, values); });
}

void Engine::Update(const TableDefinition& table, RowId row,
                    std::span<const Assignment> assignments) {
  state_->MakeChange(table, [&] { state_->writer->Update(table, row, assignments); });
}

void Engine::Delete(const TableDefinition& table, RowId row) {
  state_->MakeChange(table, [&] { state_->writer->Delete(table, row); });
}

bool Engine::ChangesForTheFirstTime(RowId row) {
  return state_->pager.IsNewToJournal(row.page);
}

void Engine::Expect(std::span<const RowId> rows) {
  for (const RowId row : rows) state_->pager.Expect(row.page);
}

void Engine::CreateTable(const TableSpec& spec) {
  state_->MakeDefinition([&](SchemaWriter& schema) { schema.CreateTable(spec); });
}

void Engine::CreateRelationship(const RelationshipSpec& spec) {
  state_->MakeDefinition([&](SchemaWriter& schema) { schema.CreateRelationship(spec); });
}

const EngineCounters& Engine::Counters() const {
  const PagerCounters counters = state_->pager.Counters();
  state_->counters = {counters.pages_read, counters.pages_written, counters.commits,
                      counters.flushes};
  return state_->counters;
}

}  // namespace rdv::jet
