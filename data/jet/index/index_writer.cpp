#include "data/jet/index/index_writer.h"

#include <algorithm>
#include <cassert>
#include <iterator>

#include "data/jet/file/write_context.h"

namespace rdv::jet {

IndexWriter::IndexWriter(const WriteContext& context, PageAllocator& allocator, uint32_t table_page,
                         const RealIndex& index)
    : context_(context),
      format_(context.Layout()),
      allocator_(allocator),
      table_page_(table_page),
      root_(index.root),
      pages_(context, allocator, index.map) {}

IndexPageImage IndexWriter::Load(uint32_t page) const {
  return LoadIndexPage(context_, table_page_, page);
}

IndexPageImage IndexWriter::LoadNode(uint32_t page) const {
  IndexPageImage image = Load(page);
  if (image.leaf) context_.file.DamagedPage(page, u"is a leaf of an index among nodes");
  return image;
}

// What was divided so that it fits, does fit.
void IndexWriter::Store(uint32_t page, const IndexPageImage& image) {
  if (!StoreIndexPage(context_, table_page_, page, image))
    context_.file.DamagedPage(page, u"has index entries of a length that cannot be");
}

uint32_t IndexWriter::AllocatePage() {
  const uint32_t page = allocator_.Allocate();
  pages_.Add(page);
  return page;
}

void IndexWriter::FreePage(uint32_t page) {
  pages_.Remove(page);
  allocator_.Free(page);
}

IndexWriter::Path IndexWriter::Descend(Bytes entry) const {
  Path path;
  uint32_t page = root_;
  for (;;) {
    const IndexPageView view(context_.file, table_page_, page);
    if (path.Full()) context_.file.DamagedPage(root_, u"is the root of an endless index");
    path.Add(page);
    if (view.IsLeaf()) return path;
    const std::optional<EntryBounds> way = view.WayTo(entry);
    if (way) path.back().entry_end = way->end;
    page = way ? view.Child(*way) : view.Tail();
  }
}

size_t IndexWriter::EntryNumber(const IndexPageImage& image, const Step& step) const {
  if (step.entry_end == kTail) return kTail;
  size_t end = 0;
  for (size_t i = 0; i < image.entries.size(); ++i) {
    end += image.entries[i].size() - (i > 0 ? image.prefix : 0);
    if (end == step.entry_end) return i;
  }
  context_.file.DamagedPage(step.page, u"is part of its own subtree");
}

// --- Inserting ---

void IndexWriter::Insert(Key key, RowId row, std::optional<EntryPlace> place) {
  AppendRow(key, row);
  const EntryBytes& entry = key;
  if (place && InsertEntryInPlace(context_, table_page_, place->leaf, place->offset, entry)) return;
  const Path path = Descend(entry);
  const uint32_t leaf = path.back().page;
  const IndexPageView view(context_.file, table_page_, leaf);
  const auto behind = view.LowerBound(entry);
  const size_t offset = behind ? behind->start : view.Used();
  if (InsertEntryInPlace(context_, table_page_, leaf, offset, entry)) return;
  IndexPageImage image = Load(leaf);
  const auto next =
      std::lower_bound(image.entries.begin(), image.entries.end(), entry, EntryLess());
  const bool appended = next == image.entries.end();
  image.entries.insert(next, entry);
  Save(path, path.size() - 1, std::move(image), appended);
}

void IndexWriter::Save(const Path& path, size_t depth, IndexPageImage image, bool appended) {
  if (!StoreIndexPage(context_, table_page_, path[depth].page, image))
    Split(path, depth, std::move(image), appended);
}

void IndexWriter::Split(const Path& path, size_t depth, IndexPageImage image, bool appended) {
  const uint8_t level = image.level;
  std::vector<Piece> pieces = Divide(std::move(image), appended);
  if (depth == 0) {
    SplitRoot(std::move(pieces), level);
  } else {
    SplitBelow(path, depth, std::move(pieces));
  }
}

// The root's content moves to new pages, and the root becomes their node.
void IndexWriter::SplitRoot(std::vector<Piece> pieces, uint8_t level) {
  assert(pieces.size() > 1);
  std::vector<uint32_t> pages;
  for (size_t i = 0; i < pieces.size(); ++i) pages.push_back(AllocatePage());
  LinkAndStore(pieces, pages, 0, 0);
  IndexPageImage root;
  root.leaf = false;
  root.level = static_cast<uint8_t>(level + 1);
  root.tail = pages.back();
  for (size_t i = 0; i + 1 < pieces.size(); ++i)
    root.entries.push_back(MakeNodeEntry(pieces[i].last, pages[i]));
  Store(root_, root);
}

// The first piece stays on the page, the others come behind it.
void IndexWriter::SplitBelow(const Path& path, size_t depth, std::vector<Piece> pieces) {
  assert(depth > 0 && pieces.size() > 1);
  std::vector<uint32_t> pages = {path[depth].page};
  for (size_t i = 1; i < pieces.size(); ++i) pages.push_back(AllocatePage());
  const uint32_t previous = pieces.front().image.previous;
  const uint32_t next = pieces.front().image.next;
  LinkAndStore(pieces, pages, previous, next);
  if (next != 0) SetLink(next, format_.index.previous, pages.back());

  const Step& step = path[depth - 1];
  IndexPageImage parent = Load(step.page);
  const size_t number = EntryNumber(parent, step);
  std::vector<EntryBytes> added;
  for (size_t i = 0; i + 1 < pieces.size(); ++i)
    added.push_back(MakeNodeEntry(pieces[i].last, pages[i]));
  if (number == kTail) {
    parent.tail = pages.back();
    parent.entries.insert(parent.entries.end(), added.begin(), added.end());
  } else {
    parent.SetChild(number, pages.back());
    parent.entries.insert(parent.entries.begin() + static_cast<ptrdiff_t>(number), added.begin(),
                          added.end());
  }
  Save(path, depth - 1, std::move(parent));
}

void IndexWriter::LinkAndStore(std::vector<Piece>& pieces, const std::vector<uint32_t>& pages,
                               uint32_t previous, uint32_t next) {
  assert(pieces.size() == pages.size());
  for (size_t i = 0; i < pieces.size(); ++i) {
    pieces[i].image.previous = i == 0 ? previous : pages[i - 1];
    pieces[i].image.next = i + 1 == pieces.size() ? next : pages[i + 1];
    Store(pages[i], pieces[i].image);
  }
}

namespace {

// What a page tells but its entries.
IndexPageImage WithoutEntries(const IndexPageImage& image) {
  return {.leaf = image.leaf,
          .level = image.level,
          .previous = image.previous,
          .next = image.next,
          .tail = image.tail,
          .prefix = image.prefix,
          .entries = {}};
}

// Moves the entries from `first` up to `last` to another page's image.
void MoveEntries(IndexPageImage& from, size_t first, size_t last, IndexPageImage& to) {
  const auto begin = std::make_move_iterator(from.entries.begin());
  to.entries.assign(begin + static_cast<ptrdiff_t>(first), begin + static_cast<ptrdiff_t>(last));
}

}  // namespace

std::vector<IndexWriter::Piece> IndexWriter::Divide(IndexPageImage image, bool appended) const {
  if (!image.leaf) return DivideNode(std::move(image));
  std::vector<Piece> pieces;
  size_t start = 0;
  for (const size_t end : DivideLeaf(image, appended)) {
    Piece& piece = pieces.emplace_back(Piece{WithoutEntries(image), image.entries[end - 1]});
    MoveEntries(image, start, end, piece.image);
    start = end;
  }
  return pieces;
}

// Where the pieces end: near the middle, so that both halves have room, but at the very end of the
// index, where ascending values come in, the last entry alone makes the new page. An entry that
// shares nothing with its neighbours may leave them no way but to be on either side of a page of
// its own.
std::vector<size_t> IndexWriter::DivideLeaf(const IndexPageImage& image, bool appended) const {
  const size_t count = image.entries.size();
  const auto fits = [&](size_t first, size_t last) {
    return FitsIndexPage(format_, image, first, last);
  };
  if (appended && image.next == 0 && fits(0, count - 1)) return {count - 1, count};
  for (size_t distance = 0; distance <= count / 2; ++distance) {
    for (const size_t end : {count / 2 - distance, count / 2 + distance}) {
      if (end > 0 && end < count && fits(0, end) && fits(end, count)) return {end, count};
    }
  }
  for (size_t alone = 1; alone + 1 < count; ++alone) {
    if (fits(0, alone) && fits(alone + 1, count)) return {alone, alone + 1, count};
  }
  context_.file.Damaged(u"Index entries are longer than a page");
}

// The entry in the middle moves up: its child becomes the tail of the left half.
std::vector<IndexWriter::Piece> IndexWriter::DivideNode(IndexPageImage image) {
  const size_t count = image.entries.size();
  size_t total = 0;
  for (const EntryBytes& entry : image.entries) total += entry.size();
  size_t middle = 0;
  size_t before = 0;
  while (middle + 1 < count && before + image.entries[middle].size() <= total / 2)
    before += image.entries[middle++].size();
  const Bytes up = image.WithoutChild(middle);
  Piece left{WithoutEntries(image), {up.begin(), up.end()}};
  left.image.tail = image.Child(middle);
  MoveEntries(image, 0, middle, left.image);
  Piece right{WithoutEntries(image), {}};
  MoveEntries(image, middle + 1, count, right.image);
  std::vector<Piece> pieces;
  pieces.push_back(std::move(left));
  pieces.push_back(std::move(right));
  return pieces;
}

// --- Removing ---

void IndexWriter::Remove(Bytes key, RowId row) {
  const EntryBytes entry = MakeEntry(key, row);
  const Path path = Descend(entry);
  const uint32_t leaf = path.back().page;
  const IndexPageView view(context_.file, table_page_, leaf);
  const auto bounds = view.LowerBound(entry);
  std::vector<uint8_t> found;
  if (bounds) view.Restore(*bounds, found);
  if (found != entry) context_.file.DamagedPage(leaf, u"lacks the index entry of a row");

  const size_t used = view.Used();
  const bool only = bounds->start == 0 && bounds->end == used;
  if (only && leaf != root_) {
    Unlink(Load(leaf));
    FreePage(leaf);
    RemoveChild(path, path.size() - 2);
    return;
  }
  const bool last = bounds->end == used;
  if (!RemoveEntryInPlace(context_, table_page_, leaf, *bounds)) {
    IndexPageImage image = Load(leaf);
    std::erase(image.entries, entry);
    Save(path, path.size() - 1, image);
  }
  if (last && !only && path.size() > 1)
    ReplaceLast(path, path.size() - 2, Load(leaf).entries.back());
}

// The last entry below a child has changed: the nearest node above that has an entry for it, and
// not the tail, is told.
void IndexWriter::ReplaceLast(const Path& path, size_t depth, const EntryBytes& last) {
  for (size_t level = depth + 1; level-- > 0;) {
    if (path[level].entry_end == kTail) continue;
    IndexPageImage node = Load(path[level].page);
    const size_t number = EntryNumber(node, path[level]);
    node.entries[number] = MakeNodeEntry(last, node.Child(number));
    Save(path, level, node);
    return;
  }
}

// Takes the child that the path leads through out of the node at `depth`.
void IndexWriter::RemoveChild(const Path& path, size_t depth) {
  const uint32_t page = path[depth].page;
  IndexPageImage node = Load(page);
  const size_t number = EntryNumber(node, path[depth]);
  if (number != kTail) {
    node.entries.erase(node.entries.begin() + static_cast<ptrdiff_t>(number));
    Store(page, node);
  } else if (!node.entries.empty()) {
    const EntryBytes removed = std::move(node.entries.back());
    node.entries.pop_back();
    node.tail = ChildOf(removed);
    Store(page, node);
    if (depth > 0) {
      const EntryBytes last(removed.begin(), removed.end() - ptrdiff_t{kEntryChildSize});
      ReplaceLast(path, depth - 1, last);
    }
  } else if (depth > 0) {
    Unlink(node);
    FreePage(page);
    RemoveChild(path, depth - 1);
    return;
  } else {
    Store(root_, IndexPageImage{});
    return;
  }
  Shrink(path, depth, node);
}

// A node with one child only is not kept, unless its neighbours have no room for that child.
void IndexWriter::Shrink(const Path& path, size_t depth, const IndexPageImage& image) {
  if (!image.entries.empty()) return;
  if (depth == 0) {
    CollapseRoot();
    return;
  }
  // The way down to this node may have changed when the last entry of its parent was replaced.
  const IndexPageImage parent = Load(path[depth - 1].page);
  const bool known =
      parent.tail == path[depth].page ||
      std::ranges::find(parent.entries, path[depth].page, ChildOf) != parent.entries.end();
  if (!known) return;
  if (!MergeLeft(path, depth, image.tail)) MergeRight(path, depth, image.tail);
}

// Each step takes a level away.
void IndexWriter::CollapseRoot() {
  for (int level = 0;; ++level) {
    const IndexPageImage root = Load(root_);
    if (root.leaf || !root.entries.empty()) return;
    if (root.tail == root_ || level > kDeepestIndex)
      context_.file.DamagedPage(root_, u"is the root of an endless index");
    IndexPageImage child = Load(root.tail);
    child.previous = 0;
    child.next = 0;
    Store(root_, child);
    FreePage(root.tail);
  }
}

namespace {

// The number of the entry that leads to the child; the number of entries for the tail.
size_t PlaceOfChild(const IndexPageImage& parent, uint32_t child) {
  for (size_t i = 0; i < parent.entries.size(); ++i) {
    if (parent.Child(i) == child) return i;
  }
  return parent.entries.size();
}

uint32_t ChildAt(const IndexPageImage& parent, size_t place) {
  return place == parent.entries.size() ? parent.tail : parent.Child(place);
}

}  // namespace

bool IndexWriter::MergeLeft(const Path& path, size_t depth, uint32_t child) {
  const uint32_t page = path[depth].page;
  IndexPageImage parent = Load(path[depth - 1].page);
  const size_t place = PlaceOfChild(parent, page);
  if (place == 0) return false;
  const uint32_t left_page = parent.Child(place - 1);
  IndexPageImage left = LoadNode(left_page);
  left.entries.push_back(MakeNodeEntry(parent.WithoutChild(place - 1), left.tail));
  left.tail = child;
  if (!StoreIndexPage(context_, table_page_, left_page, left)) return false;
  if (place == parent.entries.size()) {
    parent.tail = left_page;
  } else {
    parent.SetChild(place, left_page);
  }
  parent.entries.erase(parent.entries.begin() + static_cast<ptrdiff_t>(place - 1));
  Store(path[depth - 1].page, parent);
  Unlink(Load(page));
  FreePage(page);
  Shrink(path, depth - 1, parent);
  return true;
}

bool IndexWriter::MergeRight(const Path& path, size_t depth, uint32_t child) {
  const uint32_t page = path[depth].page;
  IndexPageImage parent = Load(path[depth - 1].page);
  const size_t place = PlaceOfChild(parent, page);
  if (place == parent.entries.size()) return false;
  const uint32_t right_page = ChildAt(parent, place + 1);
  IndexPageImage right = LoadNode(right_page);
  right.entries.insert(right.entries.begin(), MakeNodeEntry(parent.WithoutChild(place), child));
  if (!StoreIndexPage(context_, table_page_, right_page, right)) return false;
  parent.entries.erase(parent.entries.begin() + static_cast<ptrdiff_t>(place));
  Store(path[depth - 1].page, parent);
  Unlink(Load(page));
  FreePage(page);
  Shrink(path, depth - 1, parent);
  return true;
}

void IndexWriter::SetLink(uint32_t page, size_t field, uint32_t to) {
  context_.file.IndexPage(page, table_page_);
  Store32(context_.pager.Edit(page) + field, to);
}

void IndexWriter::Unlink(const IndexPageImage& image) {
  if (image.previous != 0) SetLink(image.previous, format_.index.next, image.next);
  if (image.next != 0) SetLink(image.next, format_.index.previous, image.previous);
}

// --- Rebuilding ---

void IndexWriter::Rebuild(const std::vector<EntryBytes>& entries) {
  uint32_t limit = context_.pager.PageCount();
  while (const auto page = pages_.HighestBelow(limit)) {
    limit = *page;
    pages_.Remove(*page);
    if (*page != root_) allocator_.Free(*page);
  }
  pages_.Add(root_);
  Store(root_, IndexPageImage{});
  for (const EntryBytes& entry : entries) {
    const auto end_of_key = entry.end() - static_cast<ptrdiff_t>(kEntryRowSize);
    Insert(Key(entry.begin(), end_of_key), LoadEntryRow(&*end_of_key));
  }
}

}  // namespace rdv::jet
