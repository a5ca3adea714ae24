// Machine-readable output. The only file that knows the JSON library.
#include <nlohmann/json.hpp>

#include "cli/output.hpp"
#include "cli/printable.hpp"

namespace cli {
namespace {

bool is_utf8(std::string_view bytes) {
  try {
    static_cast<void>(nlohmann::json(bytes).dump());
    return true;
  } catch (const nlohmann::json::type_error &) {
    return false;
  }
}

std::string to_base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
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
  return text;
}

}  // namespace

Row &Row::add(std::string key, Value value) {
  fields_.emplace_back(std::move(key), std::move(value));
  return *this;
}

Row &Row::add_name(const std::string &key, std::string_view bytes) {
  if (is_utf8(bytes)) return add(key, std::string(bytes));
  return add(key + "_base64", to_base64(bytes));
}

std::string Row::to_json() const {
  nlohmann::ordered_json object = nlohmann::ordered_json::object();
  for (const auto &[key, value] : fields_) {
    std::visit([&object, &name = key](const auto &held) { object[name] = held; }, value);
  }
  return to_printable_json(object.dump());
}

}  // namespace cli
