// Machine-readable output.
#include <array>
#include <charconv>
#include <stdexcept>
#include <type_traits>

#include "cli/output.hpp"
#include "cli/printable.hpp"

namespace cli {
namespace {

void append_base64(std::string &text, std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const std::string_view group = bytes.substr(i, 3);
    uint32_t bits = 0;
    for (size_t j = 0; j < 3; ++j) {
      bits = bits << 8 | (j < group.size() ? static_cast<unsigned char>(group[j]) : 0u);
    }
    for (size_t j = 0; j < 4; ++j) {
      text += j <= group.size() ? kDigits[bits >> (18 - 6 * j) & 63] : '=';
    }
  }
}

void append_value(std::string &json, std::nullptr_t) { json += "null"; }
void append_value(std::string &json, bool value) { json += value ? "true" : "false"; }

void append_value(std::string &json, std::string_view text) {
  if (!append_json_string(json, text)) throw std::invalid_argument("text that is not UTF-8");
}

void append_value(std::string &json, const Row &row) { (json += row.open_json()) += '}'; }

template <typename Item>
void append_value(std::string &json, std::span<const Item> items) {
  json += '[';
  for (const Item &item : items) {
    if (&item != &items[0]) json += ',';
    append_value(json, item);
  }
  json += ']';
}

template <typename Number>
requires(std::is_integral_v<Number>) void append_value(std::string &json, Number number) {
  std::array<char, 24> digits;
  const auto end = std::to_chars(digits.begin(), digits.end(), number).ptr;
  json.append(digits.data(), end);
}

}  // namespace

void Row::begin(std::string_view key) {
  json_ += json_.size() > 1 ? ",\"" : "\"";
  json_ += key;
  json_ += "\":";
}

Row &Row::add(std::string_view key, Value value) {
  begin(key);
  std::visit([this](const auto &held) { append_value(json_, held); }, value);
  return *this;
}

Row &Row::add_name(std::string_view key, std::string_view bytes) {
  const size_t start = json_.size();
  begin(key);
  if (append_json_string(json_, bytes)) return *this;
  json_.resize(start);
  begin(std::string(key) + "_base64");
  json_ += '"';
  append_base64(json_, bytes);
  json_ += '"';
  return *this;
}

}  // namespace cli
