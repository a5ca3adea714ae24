// Scans, comparisons, fills and copies of runs: the exported routines, and each body that a
// processor may get, against plain loops; at every alignment, with unreadable memory on both sides.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "jx/runtime.h"
#include "kernel/long_runs_bodies.hpp"
#include "support/scale.hpp"
#include "vector/plain.hpp"
#include "vector/processor.hpp"

namespace {

constexpr uint32_t kLongest = 300;  // units
constexpr size_t kPage = 4096;

// The routines under one name each.
struct Routines {
  const char *name;
  size_t shortest_bytes;  // shorter runs are not for this body
  jx::LongRuns runs;
};

template <class Ops>
Routines bodies(const char *name) {
  using Runs = jx::LongRunsOf<Ops>;
  return {name,
          jx::kShortRunBytes + 1,
          {Runs::find_byte, Runs::find_other_byte, Runs::find_char, Runs::find_other_char,
           Runs::compare_bytes, Runs::compare_chars, Runs::fill_chars, Runs::copy_bytes,
           Runs::length_of_bytes, Runs::length_of_chars, Runs::note_bytes}};
}

const Routines kExported = {
    "exported",
    0,
    {skMemScan, skMemNScan,
     [](const void *buffer, uint32_t count, uint32_t value) {
       return jxzspos(static_cast<const JXChar *>(buffer), static_cast<int32_t>(count), value);
     },
     [](const void *buffer, uint32_t count, uint32_t value) {
       return skMemTNScan(static_cast<const uint32_t *>(buffer), count, value);
     },
     skMemCmp,
     [](const void *first, const void *second, uint32_t count) {
       return skWMemCmp(static_cast<const uint32_t *>(first), static_cast<const uint32_t *>(second),
                        count);
     },
     skMemTSet, skMemCpy,
     [](const void *string) { return skStrLen(static_cast<const char *>(string)); },
     [](const void *string) { return skStrTLen(static_cast<const JXChar *>(string)); }, nullptr}};

std::vector<Routines> all_routines() {
  std::vector<Routines> all = {kExported, bodies<jx::vector::Plain>("plain"),
                               bodies<jx::vector::Base>("base")};
#if !JX_ONE_LEVEL
  if (jx::vector::processor_level() >= jx::vector::Level::avx2) {
    all.push_back(bodies<jx::vector::Avx2>("avx2"));
  }
#endif
  return all;
}

// Readable pages between two that are not.
class FencedPages {
 public:
  FencedPages() {
    void *all = mmap(nullptr, 4 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(all, MAP_FAILED);
    begin_ = static_cast<uint8_t *>(all) + kPage;
    EXPECT_EQ(mprotect(begin_, 2 * kPage, PROT_READ | PROT_WRITE), 0);
  }
  FencedPages(const FencedPages &) = delete;
  FencedPages &operator=(const FencedPages &) = delete;
  ~FencedPages() { munmap(begin_ - kPage, 4 * kPage); }

  // `bytes` that begin `gap` bytes after the first fence, or end as much before the last one.
  uint8_t *at_begin(size_t gap) const { return begin_ + gap; }
  uint8_t *at_end(size_t bytes, size_t gap) const { return begin_ + 2 * kPage - bytes - gap; }

 private:
  uint8_t *begin_;
};

template <typename T>
T unit_at(const uint8_t *data, size_t index) {
  T unit;
  std::memcpy(&unit, data + index * sizeof(T), sizeof unit);
  return unit;
}

template <typename T>
void put_unit(uint8_t *data, size_t index, T unit) {
  std::memcpy(data + index * sizeof(T), &unit, sizeof unit);
}

template <typename T>
class RunsTest : public testing::Test {
 protected:
  static auto find(const Routines &routines) {
    if constexpr (sizeof(T) == 1) return routines.runs.find_byte;
    if constexpr (sizeof(T) == 4) return routines.runs.find_char;
  }
  static auto find_other(const Routines &routines) {
    if constexpr (sizeof(T) == 1) return routines.runs.find_other_byte;
    if constexpr (sizeof(T) == 4) return routines.runs.find_other_char;
  }
  static auto compare(const Routines &routines) {
    if constexpr (sizeof(T) == 1) return routines.runs.compare_bytes;
    if constexpr (sizeof(T) == 4) return routines.runs.compare_chars;
  }
  static auto length(const Routines &routines) {
    if constexpr (sizeof(T) == 1) return routines.runs.length_of_bytes;
    if constexpr (sizeof(T) == 4) return routines.runs.length_of_chars;
  }
  static int32_t order(T first, T second) {
    if (first == second) return 0;
    if constexpr (sizeof(T) == 1) return first > second ? 1 : -1;
    return static_cast<uint32_t>(first) - second < 0x80000000u ? 1 : -1;
  }

  // Runs of one value with others at the end and at one place before it.
  void check_run(uint8_t *data, uint8_t *other, uint32_t count, uint32_t place) {
    constexpr T kValues[] = {static_cast<T>(0x80000001u), 0,
                             static_cast<T>(~T{0}),       static_cast<T>(0x7F7F7F7Fu),
                             static_cast<T>(0x01010100u), 1};
    const T value = kValues[random_() % std::size(kValues)];
    const T odd = kValues[random_() % std::size(kValues)];
    for (uint32_t i = 0; i < count; ++i) {
      put_unit<T>(data, i, value);
      put_unit<T>(other, i, value);
    }
    if (count != 0 && random_() % 2 != 0) put_unit<T>(data, count - 1, odd);
    if (place < count) put_unit<T>(data, place, odd);
    const auto first = [&](auto wanted) {
      uint32_t i = 0;
      while (i < count && !wanted(i)) ++i;
      return i == count ? -1 : static_cast<int32_t>(i);
    };
    const int32_t equal = first([&](uint32_t i) { return unit_at<T>(data, i) == odd; });
    const int32_t unequal = first([&](uint32_t i) { return unit_at<T>(data, i) != value; });
    const int32_t sign =
        unequal < 0 ? 0 : order(unit_at<T>(data, static_cast<uint32_t>(unequal)), value);
    const int32_t reverse =
        unequal < 0 ? 0 : order(value, unit_at<T>(data, static_cast<uint32_t>(unequal)));
    for (const Routines &routines : all_) {
      if (count * sizeof(T) < routines.shortest_bytes) continue;
      ASSERT_EQ(find(routines)(data, count, odd), equal) << routines.name;
      ASSERT_EQ(find_other(routines)(data, count, value), unequal) << routines.name;
      ASSERT_EQ(compare(routines)(data, other, count), sign) << routines.name;
      ASSERT_EQ(compare(routines)(other, data, count), reverse) << routines.name;
    }
    const auto *units = reinterpret_cast<const uint32_t *>(data);
    ASSERT_EQ(sizeof(T) == 1 ? skMemNot(static_cast<uint8_t>(value), data, count)
                             : skMemTNot(value, units, count),
              unequal < 0);
  }

  const std::vector<Routines> all_ = all_routines();
  std::mt19937 random_{20};
  FencedPages pages_, other_pages_;
};

using Units = testing::Types<uint8_t, uint32_t>;
TYPED_TEST_SUITE(RunsTest, Units);

TYPED_TEST(RunsTest, ScansAndComparisons) {
  for (uint32_t count = 0; count <= kLongest; ++count) {
    const size_t bytes = count * sizeof(TypeParam);
    for (size_t gap = 0; gap < 64; gap += sizeof(TypeParam)) {
      const auto place = static_cast<uint32_t>(this->random_() % (count + 2));
      SCOPED_TRACE(testing::Message() << count << ' ' << gap << ' ' << place);
      ASSERT_NO_FATAL_FAILURE(this->check_run(this->pages_.at_end(bytes, gap),
                                              this->other_pages_.at_end(bytes, 0), count, place));
      ASSERT_NO_FATAL_FAILURE(this->check_run(this->pages_.at_begin(0),
                                              this->other_pages_.at_begin(gap), count, place));
    }
  }
}

// Zeros before a string and units after its end do not count, and the page after it is not touched.
TYPED_TEST(RunsTest, LengthsOfStrings) {
  using T = TypeParam;
  for (uint32_t count = 0; count <= kLongest; ++count) {
    for (size_t gap = 0; gap < 128; gap += sizeof(T)) {
      uint8_t *string = this->pages_.at_end((count + 1) * sizeof(T), gap);
      std::memset(string - 64, 0, 64);
      for (uint32_t i = 0; i < count + gap / sizeof(T) + 1; ++i) {
        put_unit<T>(string, i, static_cast<T>(i % 2 == 0 ? ~T{0} : T{1} << (8 * sizeof(T) - 8)));
      }
      put_unit<T>(string, count, 0);
      for (const Routines &routines : this->all_) {
        ASSERT_EQ(this->length(routines)(string), count) << routines.name << ' ' << gap;
      }
    }
  }
}

// A count beyond the memory is no harm if the first units decide.
TEST(Runs, OverlongCountsStopAtTheFirstMatch) {
  const FencedPages pages, other_pages;
  uint8_t *data = pages.at_end(256, 0), *other = other_pages.at_end(256, 0);
  std::memset(data, 'x', 256);
  std::memset(other, 'x', 256);
  data[8] = 'y';
  EXPECT_EQ(skMemCmp(data, other, UINT32_MAX), 1);
  EXPECT_EQ(skMemCmp(other, data, UINT32_MAX), -1);
  EXPECT_EQ(skMemScan(data, UINT32_MAX, 'y'), 8);
  EXPECT_EQ(skMemNScan(data, UINT32_MAX, 'x'), 8);
}

TEST(Runs, FillWritesExactlyTheRange) {
  const FencedPages pages;
  for (uint32_t count = 0; count <= kLongest; ++count) {
    for (const Routines &routines : all_routines()) {
      if (count * sizeof(uint32_t) < routines.shortest_bytes) continue;
      for (size_t gap = 0; gap < 32; gap += sizeof(uint32_t)) {
        auto *units = reinterpret_cast<uint32_t *>(pages.at_end(4 * count, gap));
        std::fill(units - 9, units + count + gap / 4, 9u);
        routines.runs.fill_chars(units, 0xA0000003u, count);
        const auto is_filled = [](uint32_t unit) { return unit == 0xA0000003u; };
        ASSERT_TRUE(std::all_of(units, units + count, is_filled)) << routines.name << count;
        ASSERT_TRUE(std::none_of(units - 9, units, is_filled)) << routines.name << count;
        ASSERT_TRUE(std::none_of(units + count, units + count + gap / 4, is_filled));
      }
    }
  }
}

// Every place is noted once and in order, however often the search has to go on.
TEST(Runs, NotesEveryPlace) {
  const FencedPages pages;
  std::mt19937 random{21};
  for (uint32_t count = 0; count <= 2 * kLongest; ++count) {
    const uint32_t one_in = 1 + count % 40;
    uint8_t *data = pages.at_end(count, count % 7 / 6);
    std::vector<uint32_t> expected;
    for (uint32_t i = 0; i < count; ++i) {
      data[i] = random() % one_in == 0 ? '\n' : static_cast<uint8_t>(random() | 0x80);
      if (data[i] == '\n') expected.push_back(i);
    }
    for (const Routines &routines : all_routines()) {
      if (!routines.runs.note_bytes) continue;
      std::vector<uint32_t> noted;
      for (uint32_t offset = 0; offset != count;) {
        uint32_t places[jx::kPlacesRoom];
        const uint32_t found = routines.runs.note_bytes(data, &offset, count, '\n', places);
        noted.insert(noted.end(), places, places + found);
        ASSERT_TRUE(found >= jx::kManyPlaces || offset == count) << routines.name << count;
      }
      ASSERT_EQ(noted, expected) << routines.name << ' ' << count;
    }
  }
}

TEST(Runs, CopyAtEveryLength) {
  const FencedPages from, to;
  for (uint32_t count = 0; count <= 2 * kLongest; ++count) {
    std::string text(count, 0);
    for (uint32_t i = 0; i < count; ++i) text[i] = static_cast<char>(i * 7 + count);
    for (size_t gap = 0; gap < 32; ++gap) {
      uint8_t *source = from.at_end(count, 0), *target = to.at_end(count, gap);
      std::memcpy(source, text.data(), count);
      for (const Routines &routines : all_routines()) {
        if (count < routines.shortest_bytes) continue;
        std::memset(target - 1, 0x55, count + gap + 1);
        routines.runs.copy_bytes(source, target, count);
        const std::string all(reinterpret_cast<char *>(target - 1), count + gap + 1);
        ASSERT_EQ(all, "U" + text + std::string(gap, 'U')) << routines.name << count << ' ' << gap;
      }
    }
    std::string set(count + 2, 1);
    skMemSet(set.data() + 1, 3, count);
    ASSERT_EQ(set, "\1" + std::string(count, 3) + "\1");
  }
}

}  // namespace
