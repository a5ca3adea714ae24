// The names of an enumeration, from the list that defines it.
#pragma once

#include <cstdint>
#include <sstream>
#include <string>

namespace jx::test {

#define JX_TEST_TEXT(...) #__VA_ARGS__
#define JX_TEST_TEXT_OF(list) JX_TEST_TEXT(list)

// The n-th name, from 0, of the text of a list: JX_TEST_TEXT_OF((a, b)).
inline std::string name_in(const char *list, uint32_t n) {
  std::istringstream names(list);
  std::string name;
  for (uint32_t i = 0; i <= n; ++i) names >> name;
  std::erase_if(name, [](char letter) { return letter == ',' || letter == '(' || letter == ')'; });
  return name;
}

}  // namespace jx::test
