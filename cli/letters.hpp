// The letters of alphabets, in both cases.
#pragma once

namespace cli {

// The small letter of a Latin, Greek or Cyrillic one; any other character as it is.
char32_t to_small(char32_t c);
// Whether a character is a Latin, Greek or Cyrillic letter.
bool is_letter(char32_t c);

}  // namespace cli
