// Which pages stay in memory, and what becomes of changed ones.
#include "data/jet/file/page_cache.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace rdv::jet {
namespace {

constexpr uint32_t kPageSize = 16;

void Read(PageCache& cache, uint32_t number, uint8_t fill) {
  PageCache::Buffer bytes = cache.NewBuffer();
  std::fill_n(bytes.get(), kPageSize, fill);
  cache.Keep(number, std::move(bytes));
}

uint32_t InMemory(PageCache& cache) {
  uint32_t pages = 0;
  for (uint32_t number = 0; number < cache.Count(); ++number) {
    const PageCache::Page* page = cache.Find(number);
    if (page != nullptr && page->bytes) ++pages;
  }
  return pages;
}

TEST(PageCache, KnowsWhatWasAskedForAndForgetsEverythingAtOnce) {
  PageCache cache(10);
  cache.Reset(1000, kPageSize);
  EXPECT_EQ(cache.Find(500), nullptr);
  Read(cache, 500, 1);
  ASSERT_NE(cache.Find(500), nullptr);
  EXPECT_EQ(cache.Find(500)->bytes[3], 1);
  EXPECT_EQ(cache.Find(100), nullptr);
  EXPECT_EQ(cache.Find(1000), nullptr);
  cache.Reset(501, kPageSize);
  EXPECT_EQ(cache.Find(500), nullptr);
  EXPECT_EQ(cache.Count(), 501u);
}

TEST(PageCache, HoldsNoMoreThanItsBudgetAndGivesUpUnusedPagesFirst) {
  PageCache cache(3);
  cache.Reset(2000, kPageSize);
  for (const uint32_t number : {1u, 70u, 71u, 1500u, 1999u}) {
    Read(cache, number, 1);
    cache.At(number).used = number == 70 || number == 1999;
  }
  cache.Trim();
  EXPECT_EQ(InMemory(cache), 3u);
  EXPECT_TRUE(cache.At(70).bytes);
  EXPECT_TRUE(cache.At(1999).bytes);
}

TEST(PageCache, PutsChangedPagesBackAsTheyWere) {
  PageCache cache(10);
  cache.Reset(40, kPageSize);
  Read(cache, 5, 1);
  cache.Change(5)[0] = 9;
  cache.Change(5)[1] = 9;
  const uint32_t added = cache.Append();
  EXPECT_EQ(added, 40u);
  cache.Change(added)[0] = 7;
  EXPECT_EQ(cache.CountBefore(), 40u);
  EXPECT_EQ(cache.Changed(), (std::vector<uint32_t>{5, 40}));
  cache.Restore();
  EXPECT_EQ(cache.Count(), 40u);
  EXPECT_EQ(cache.At(5).bytes[0], 1);
  EXPECT_EQ(cache.At(5).bytes[1], 1);
  EXPECT_TRUE(cache.Changed().empty());
  EXPECT_EQ(InMemory(cache), 1u);
  EXPECT_EQ(cache.Append(), 40u);
  EXPECT_EQ(cache.At(40).bytes[0], 0) << "a new page is all zeros";
}

TEST(PageCache, KeepsChangedPagesAsTheyBecame) {
  PageCache cache(1);
  cache.Reset(40, kPageSize);
  Read(cache, 5, 1);
  Read(cache, 6, 1);
  cache.Change(5)[0] = 9;
  cache.Trim();
  EXPECT_TRUE(cache.At(5).bytes) << "a changed page is not given up";
  cache.Append();
  cache.Settle();
  EXPECT_EQ(cache.CountBefore(), 41u);
  EXPECT_EQ(cache.At(5).bytes[0], 9);
  cache.Change(5)[0] = 10;
  cache.Restore();
  EXPECT_EQ(cache.At(5).bytes[0], 9);
  EXPECT_EQ(cache.Count(), 41u);
}

TEST(PageCache, APageThatWasReadInPassingIsGivenUpWhenThereAreTooMany) {
  PageCache cache(1);
  cache.Reset(10, kPageSize);
  for (const uint32_t number : {1u, 2u}) {
    Read(cache, number, 1);
    cache.At(number).holder = PageCache::Holder::Passerby;
  }
  cache.GiveBack(2);
  EXPECT_FALSE(cache.At(2).bytes);
  cache.GiveBack(1);
  EXPECT_TRUE(cache.At(1).bytes);
}

}  // namespace
}  // namespace rdv::jet
