// The catalogue: names and meanings of all status codes.
#include <algorithm>
#include <iterator>

#include "jx/jxhost.h"

namespace {

struct Row {
  JXStatus status;
  const char *name;  // of the constant
  const char *text;  // meaning
};

#define JX_ROW(name, text) {name, #name, text},
constexpr Row kCatalogue[] = {JX_STATUS_LIST(JX_ROW) JXHOST_STATUS_LIST(JX_ROW)
                                  JXELM_STATUS_LIST(JX_ROW)};
#undef JX_ROW

constexpr Row kSuccess = {JX_OK, "JX_OK", "success"};

constexpr const Row *find(JXStatus status) {
  if (status == JX_OK) return &kSuccess;
  const Row *row = std::ranges::find(kCatalogue, status, &Row::status);
  return row == std::end(kCatalogue) ? nullptr : row;
}

static_assert(std::ranges::all_of(kCatalogue,
                                  [](const Row &row) { return find(row.status) == &row; }),
              "a status is in the catalogue twice");

}  // namespace

extern "C" {

const char *jxhost_status_name(JXStatus status) {
  const Row *row = find(status);
  return row ? row->name : nullptr;
}

const char *jxhost_status_text(JXStatus status) {
  const Row *row = find(status);
  return row ? row->text : nullptr;
}

JXStatus jxhost_status_at(uint32_t index) {
  return index < std::size(kCatalogue) ? kCatalogue[index].status : JX_OK;
}

}  // extern "C"
