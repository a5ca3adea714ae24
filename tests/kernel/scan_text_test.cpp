// The searches in short text: every body against a plain search, between pages that must not be
// touched.
#include "kernel/scan_text.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <random>
#include <vector>

#include "vector/plain.hpp"

namespace jx::test {
namespace {

// A page with a forbidden one on either side.
class FencedPage {
 public:
  FencedPage() {
    mprotect(memory_, bytes_, PROT_NONE);
    mprotect(begin() + bytes_, bytes_, PROT_NONE);
  }
  FencedPage(const FencedPage &) = delete;
  FencedPage &operator=(const FencedPage &) = delete;
  ~FencedPage() { munmap(memory_, 3 * bytes_); }

  char *begin() const { return static_cast<char *>(memory_) + bytes_; }
  char *end() const { return begin() + bytes_; }

 private:
  const size_t bytes_ = static_cast<size_t>(getpagesize());
  void *memory_ =
      mmap(nullptr, 3 * bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
};

// Checks a search in texts of every length up to a few blocks, at both ends of the page. The wanted
// unit is rare, frequent or missing.
template <typename Unit, typename Search, typename Reference>
void check(std::initializer_list<Unit> alphabet, Search search, Reference reference) {
  const FencedPage page;
  std::mt19937 random(1);
  for (size_t count = 0; count <= 80; ++count) {
    for (int round = 0; round < 60; ++round) {
      std::vector<Unit> text(count, *alphabet.begin());
      for (Unit &unit : text) {
        if (random() % (1u << (round % 8)) == 0)
          unit = alphabet.begin()[random() % alphabet.size()];
      }
      auto *at =
          reinterpret_cast<Unit *>(round % 2 ? page.begin() : page.end()) - (round % 2 ? 0 : count);
      std::copy(text.begin(), text.end(), at);
      ASSERT_EQ(search(at, count), reference(text)) << count << " units, round " << round;
    }
  }
}

template <typename Ops>
void check_both() {
  check<uint32_t>(
      {'x', '/', 0x2F2F2F2F, 0x2F00, 0},
      [](const uint32_t *text, size_t count) { return end_of_last<Ops>(text, count, '/'); },
      [](const auto &text) {
        return static_cast<size_t>(text.rend() -
                                   std::find(text.rbegin(), text.rend(), uint32_t{'/'}));
      });
  check<char>(
      {'x', '$', '\0', '\x80'},
      [](const char *text, size_t count) { return first_zero_or<Ops>(text, count, '$'); },
      [](const auto &text) {
        const auto is_wanted = [](char c) { return c == '$' || c == '\0'; };
        return static_cast<size_t>(std::find_if(text.begin(), text.end(), is_wanted) -
                                   text.begin());
      });
}

TEST(ScanText, FindsWhatAPlainSearchFinds) {
  check_both<vector::Base>();
  check_both<vector::Plain>();
}

}  // namespace
}  // namespace jx::test
