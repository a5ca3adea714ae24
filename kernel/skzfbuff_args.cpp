// The arguments of jxzFormatBuff: taken from the list in order, or by number once the types of all
// are known.
#include <limits>

#include "kernel/format.hpp"

namespace jx {

namespace {

template <typename Integer>
Integer truncate(const Value &value) {
  const long double wide =
      value.type == ArgumentType::kDouble ? static_cast<long double>(value.real) : value.extended;
  constexpr Integer kLowest = std::numeric_limits<Integer>::min();
  // The first number above the range is a power of two, and so exact in floating point.
  constexpr long double kBeyond = -static_cast<long double>(kLowest);
  const bool is_in_range = wide > -kBeyond - 1.0L && wide < kBeyond;
  return is_in_range ? static_cast<Integer>(wide) : kLowest;
}

}  // namespace

int64_t truncated64_of(const Value &value) { return truncate<int64_t>(value); }
int32_t truncated32_of(const Value &value) { return truncate<int32_t>(value); }

const void *address_of(const Value &value) {
  if (value.type != ArgumentType::kPointer) return nullptr;
  return reinterpret_cast<const void *>(static_cast<intptr_t>(value.integer));
}

void Arguments::take(ArgumentType type, Value *value) {
  value->type = type;
  switch (type) {
    case ArgumentType::kChar:
    case ArgumentType::kInt:
      value->integer = va_arg(list, int);
      break;
    case ArgumentType::kLong:
      value->integer = va_arg(list, long);
      break;
    case ArgumentType::kLongLong:
      value->integer = va_arg(list, long long);
      break;
    case ArgumentType::kPointer:
      value->integer = reinterpret_cast<intptr_t>(va_arg(list, void *));
      break;
    case ArgumentType::kDouble:
      value->real = va_arg(list, double);
      break;
    case ArgumentType::kLongDouble:
      value->extended = va_arg(list, long double);
      break;
    default:
      value->integer = 0;
      break;
  }
}

void Arguments::note_type(int32_t argument, ArgumentType type) {
  ArgumentType &noted = numbered_[argument].type;
  if (type > noted) noted = type;
}

void Arguments::note(const Directive &directive) {
  if (!has_numbered_) {
    for (Value &value : numbered_) value.type = ArgumentType::kNone;
    has_numbered_ = true;
  }
  for (const Amount *amount : {&directive.width, &directive.precision}) {
    if (amount->origin == Amount::Origin::kNumberedArgument) {
      note_type(amount->value, ArgumentType::kLong);
    }
  }
  if (directive.argument >= 0) note_type(directive.argument, directive.type);
}

void Arguments::take_numbered() {
  bool is_used = true;
  for (Value &value : numbered_) {
    is_used = is_used && value.type != ArgumentType::kNone;
    take(is_used ? value.type : ArgumentType::kNone, &value);
  }
}

void Arguments::fetch_value(const Directive &directive, Value *value) {
  if (directive.argument >= 0) {
    *value = numbered_[directive.argument];
    return;
  }
  take(directive.type, value);
}

int32_t Arguments::fetch_amount(const Amount &amount) {
  if (amount.origin == Amount::Origin::kNextArgument) return va_arg(list, int);
  return integer32_of(numbered_[amount.value]);
}

}  // namespace jx
