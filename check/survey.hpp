// Which slots a host has.
#pragma once

#include <span>

#include "check/probe.hpp"

namespace jxcheck {

// An object: the check that gets hold of it and notes its slots, and which slots it has.
struct Object {
  Check get;
  Slot first, last;
};

// All objects; each is made through slots of those before it.
std::span<const Object> objects();

}  // namespace jxcheck
