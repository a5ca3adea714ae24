// Comparing, and writing from the first difference on.
#include "cli/revision.hpp"

#include <algorithm>
#include <span>

namespace cli {
namespace {

constexpr uint32_t kPieceBytes = 65536;

}  // namespace

Revision::Revision(Target &target, bool is_trial)
    : target_(target), is_trial_(is_trial), is_new_(target.old_fd() < 0) {}

bool Revision::continues_old(std::string_view bytes) const {
  return size_ + bytes.size() <= static_cast<uint64_t>(target_.file_status().st_size) &&
         read_at(target_.old_fd(), bytes.size(), size_, target_.shown()) == bytes;
}

void Revision::write(std::string_view bytes) {
  if (!is_new_ && !continues_old(bytes)) begin();
  if (is_new_) write_new(bytes);
  size_ += bytes.size();
}

void Revision::begin() {
  is_new_ = true;
  for (uint64_t at = 0; at < size_ && !is_trial_;) {
    const auto count = static_cast<size_t>(std::min<uint64_t>(size_ - at, kPieceBytes));
    const std::string same = read_at(target_.old_fd(), count, at, target_.shown());
    if (same.size() < count) throw changed_failure(target_.shown());
    write_new(same);
    at += count;
  }
}

void Revision::write_new(std::string_view bytes) {
  if (is_trial_) return;
  if (!file_) file_ = &target_.open(target_.options().binary(kPieceBytes).direct());
  while (!bytes.empty()) {
    const auto part = bytes.substr(0, kPieceBytes);
    target_.require_written(file_->write(std::as_bytes(std::span(part))));
    bytes.remove_prefix(part.size());
  }
}

bool Revision::commit(ChangedFolders *folders) {
  if (!is_new_ && size_ != static_cast<uint64_t>(target_.file_status().st_size)) begin();
  if (!is_new_) return false;
  write_new({});
  if (!is_trial_) target_.commit(folders);
  return true;
}

}  // namespace cli
