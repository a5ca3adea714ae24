// Random hidden names.
#include "cli/hidden_name.hpp"

#include <sys/random.h>

#include <array>
#include <cerrno>

#include "cli/failure.hpp"
#include "cli/output.hpp"

namespace cli {
namespace {

constexpr size_t kChanceBytes = 16;

}  // namespace

std::string hidden_name(const std::string &shown) {
  std::array<char, kChanceBytes> chance;
  if (::getrandom(chance.data(), chance.size(), 0) != static_cast<ssize_t>(chance.size())) {
    throw system_failure(shown, errno);
  }
  return ".jxfile-" + to_hex({chance.data(), chance.size()}, "");
}

}  // namespace cli
