// Bytes put together in memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <memory>
#include <string_view>

namespace cli {

// Room that only grows and is not cleared first, unlike a string's.
class ByteRoom {
 public:
  // Room for that many bytes more, to be filled and then committed as far as it was used.
  char *reserve(size_t bytes) {
    if (size_ - used_ < bytes) [[unlikely]] {
      grow(bytes);
    }
    return room_.get() + used_;
  }
  void commit(size_t bytes) { used_ += bytes; }
  void append(std::string_view bytes) {
    if (bytes.empty()) return;
    std::memcpy(reserve(bytes.size()), bytes.data(), bytes.size());
    commit(bytes.size());
  }
  void clear() { used_ = 0; }
  // Drops all but the first bytes.
  void cut(size_t bytes) { used_ = bytes; }
  size_t size() const { return used_; }
  std::string_view bytes() const { return {room_.get(), used_}; }

 private:
  void grow(size_t bytes) {
    const size_t size = std::max(size_ * 2, used_ + bytes);
    auto room = std::make_unique_for_overwrite<char[]>(size);
    if (used_ > 0) std::memcpy(room.get(), room_.get(), used_);
    room_ = std::move(room);
    size_ = size;
  }

  std::unique_ptr<char[]> room_;
  size_t size_ = 0;
  size_t used_ = 0;
};

}  // namespace cli
