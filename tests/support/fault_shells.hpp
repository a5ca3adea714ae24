// What the operations of the test host's objects share: making, finding and ending a shell.
#pragma once

#include "support/fault_host.hpp"

namespace jx::test {

template <typename Object>
Shell<Object> *shell_of(Object *object) {
  return reinterpret_cast<Shell<Object> *>(object);
}

inline std::string number(uintptr_t value) { return std::to_string(value); }

template <typename Object>
Object *FaultHost::adopt(ObjectKind kind, const Object &operations, Object *inner,
                         std::string label) {
  auto shell = std::make_shared<Shell<Object>>();
  shell->object = operations;
  shell->owner = this;
  shell->inner = inner;
  const std::lock_guard guard(mutex_);
  live_[shell.get()] = {kind, label};
  shell->label = std::move(label);
  shells_.push_back(shell);
  return &shell->object;
}

template <typename Object>
bool FaultHost::is_alive(Shell<Object> *shell) {
  const std::lock_guard guard(mutex_);
  if (shell->ended) misuse_ += "use after the end of " + shell->label + "\n";
  return !shell->ended;
}

template <typename Object>
bool FaultHost::end(Shell<Object> *shell) {
  if (!is_alive(shell)) return false;
  const std::lock_guard guard(mutex_);
  shell->ended = true;
  live_.erase(shell);
  return true;
}

// The operations of the character-set service.
extern const JXNls kNlsOperations;

}  // namespace jx::test
