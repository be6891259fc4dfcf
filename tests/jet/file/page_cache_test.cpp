// Which pages stay in memory, and what becomes of changed ones.
#include "data/jet/file/page_cache.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace rdv::jet {
namespace {

constexpr uint32_t kSmallPage = 16;

void Read(PageCache& cache, uint32_t number, uint8_t fill) {
  std::fill_n(cache.Room(), kSmallPage, fill);
  cache.Keep(number);
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
  cache.Reset(1000, kSmallPage);
  EXPECT_EQ(cache.Find(500), nullptr);
  Read(cache, 500, 1);
  ASSERT_NE(cache.Find(500), nullptr);
  EXPECT_EQ(cache.Find(500)->bytes[3], 1);
  EXPECT_EQ(cache.Find(100), nullptr);
  EXPECT_EQ(cache.Find(1000), nullptr);
  cache.Reset(501, kSmallPage);
  EXPECT_EQ(cache.Find(500), nullptr);
  EXPECT_EQ(cache.Count(), 501u);
}

TEST(PageCache, HoldsNoMoreThanItsBudgetAndGivesUpUnusedPagesFirst) {
  PageCache cache(3);
  cache.Reset(2000, kSmallPage);
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
  cache.Reset(40, kSmallPage);
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
  cache.Reset(40, kSmallPage);
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
  cache.Reset(10, kSmallPage);
  for (const uint32_t number : {1u, 2u}) {
    Read(cache, number, 1);
    cache.At(number).holder = PageCache::Holder::Passerby;
  }
  cache.GiveBack(2);
  EXPECT_FALSE(cache.At(2).bytes);
  cache.GiveBack(1);
  EXPECT_TRUE(cache.At(1).bytes);
}

// As a scan does it.
void Pass(PageCache& cache, uint32_t number) {
  if (!cache.At(number).bytes) Read(cache, number, static_cast<uint8_t>(number));
  PageCache::Page& page = cache.At(number);
  if (page.holder == PageCache::Holder::Nobody) page.holder = PageCache::Holder::Passerby;
  EXPECT_EQ(page.bytes[0], static_cast<uint8_t>(number));
  cache.GiveBack(number);
}

TEST(PageCache, ScansKeepAQuarterOfTheBudgetAndLeaveTheOthersTheirPages) {
  PageCache cache(40);
  cache.Reset(200, kSmallPage);
  for (const uint32_t number : {1u, 2u}) {
    Read(cache, number, static_cast<uint8_t>(number));
    cache.At(number).holder = PageCache::Holder::Statement;
  }
  Read(cache, 50, 50);
  cache.Change(50)[5] = 7;
  for (uint32_t number = 0; number < 200; ++number) Pass(cache, number);
  EXPECT_EQ(InMemory(cache), 2u + 1u + 10u);
  EXPECT_TRUE(cache.At(1).bytes);
  EXPECT_TRUE(cache.At(2).bytes);
  EXPECT_EQ(cache.At(50).bytes[5], 7);
  for (uint32_t number = 190; number < 200; ++number) EXPECT_TRUE(cache.At(number).bytes) << number;
}

TEST(PageCache, PagesThatFitTheScansPartStayFromScanToScan) {
  PageCache cache(40);
  cache.Reset(200, kSmallPage);
  for (int scan = 0; scan < 5; ++scan) {
    for (uint32_t number = 100; number < 110; ++number) {
      EXPECT_EQ(cache.At(number).bytes != nullptr, scan > 0);
      Pass(cache, number);
    }
  }
}

// Each with what is its own, whichever memory it has got: that of pages that were given up is used
// again.
TEST(PageCache, NoTwoPagesShareTheirMemoryWhateverWasGivenUpBetween) {
  PageCache cache(8);
  cache.Reset(64, kSmallPage);
  const auto fill_of = [](uint32_t number) { return static_cast<uint8_t>(number * 3 + 1); };
  for (uint32_t round = 0; round < 40; ++round) {
    for (uint32_t i = 0; i < 24; ++i) {
      const uint32_t number = (round * 7 + i * 5) % 64;
      if (!cache.At(number).bytes) Read(cache, number, fill_of(number));
      cache.At(number).holder = PageCache::Holder::Statement;
      if (i % 3 == 0) cache.Change(number)[1] = 0xFF;
    }
    if (round % 2 == 0) {
      cache.Restore();
    } else {
      for (const uint32_t number : cache.Changed()) cache.At(number).bytes[1] = fill_of(number);
      cache.Settle();
    }
    for (uint32_t number = 0; number < 64; ++number) {
      const PageCache::Page& page = cache.At(number);
      if (!page.bytes) continue;
      const auto differs = [&](uint8_t byte) { return byte != fill_of(number); };
      EXPECT_TRUE(std::none_of(page.bytes, page.bytes + kSmallPage, differs))
          << round << ' ' << number;
    }
    cache.Trim();
    EXPECT_LE(InMemory(cache), 8u);
  }
}

}  // namespace
}  // namespace rdv::jet
