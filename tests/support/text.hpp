// JXChar text in tests: from literals and back.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "jx/base.h"

namespace jx::test {

using JXString = std::basic_string<JXChar>;

// Byte n becomes character n, as in the native encoding.
JXString jx(std::string_view bytes);
JXString jx(std::u32string_view text);

// Character n up to 255 becomes byte n, every other one \u{HEX}. Null is empty.
std::string narrow(const JXChar *text, size_t chars);
std::string narrow(const JXString &text);

// The length as the module takes it.
inline uint32_t chars(const JXString &text) { return static_cast<uint32_t>(text.size()); }

}  // namespace jx::test
