// Split paths, and requests for unique names.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "jx/wem.h"
#include "jx/wem/handle.hpp"
#include "jx/wem/text.hpp"

namespace wem {

// A split path; a component that the path does not have is empty.
struct SplitPath {
  std::optional<std::u32string> directory;  // before the last slash
  std::optional<std::u32string> member;     // after it
  std::optional<std::u32string> base;       // the member without its extension
  std::optional<std::u32string> extension;  // after the last dot
};

// The parts of a unique name. Without a prefix the name contains the machine's name.
struct NameRequest {
  std::optional<Name> prefix;     // the name begins with it
  std::optional<Name> extension;  // the name ends with a dot and this
};

namespace detail {

// Owns the components of a split path until they are released to the module.
struct LentParts {
  explicit LentParts(JXInstance *its_instance) : instance(its_instance) {}
  LentParts(const LentParts &) = delete;
  LentParts &operator=(const LentParts &) = delete;
  ~LentParts() {
    static_cast<void>(
        call(instance, &JXInstance::split_path_release, text[0], text[1], text[2], text[3]));
  }

  SplitPath copy() const { return {part(0), part(1), part(2), part(3)}; }

  JXInstance *instance;
  JXChar *text[4] = {};  // in the order of SplitPath; null: not there
  int32_t chars[4] = {};

 private:
  std::optional<std::u32string> part(int i) const {
    if (!text[i]) return std::nullopt;
    return std::u32string(as_view(text[i], chars[i]));
  }
};

}  // namespace detail

}  // namespace wem
