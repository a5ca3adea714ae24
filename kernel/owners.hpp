// Owners of host objects: pool blocks, pools, locks, tables, extensions and transcoders.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>

#include "jx/base.h"
#include "jx/host.h"

namespace jx {

// Owns a pool block that holds elements of type T, and frees it in its pool.
template <typename T>
class PoolBlock {
 public:
  PoolBlock() = default;
  PoolBlock(JXPool *pool, T *block) : pool_(pool), block_(block) {}
  PoolBlock(PoolBlock &&other) noexcept : pool_(other.pool_), block_(other.release()) {}
  PoolBlock &operator=(PoolBlock &&other) noexcept {
    if (this != &other) {
      reset();
      pool_ = other.pool_;
      block_ = other.release();
    }
    return *this;
  }
  PoolBlock(const PoolBlock &) = delete;
  PoolBlock &operator=(const PoolBlock &) = delete;
  ~PoolBlock() { reset(); }

  // A block for count elements; empty if memory is out or the size exceeds 32 bits.
  static PoolBlock allocate(JXPool *pool, uint64_t count, uint32_t flags = 0) {
    if (count > UINT32_MAX / sizeof(T)) return {};
    const auto bytes = static_cast<uint32_t>(count * sizeof(T));
    return {pool, static_cast<T *>(pool->pool_allocate(pool, bytes, flags))};
  }

  T *get() const { return block_; }
  T *operator->() const { return block_; }
  T &operator[](size_t index) const { return block_[index]; }
  explicit operator bool() const { return block_ != nullptr; }
  // The block is then the caller's.
  [[nodiscard]] T *release() { return std::exchange(block_, nullptr); }
  void reset() {
    if (block_) pool_->pool_free(pool_, release());
  }

 private:
  JXPool *pool_ = nullptr;
  T *block_ = nullptr;
};

// Releases a host object through its own slot.
inline JXStatus end_host_object(JXPool *pool) { return pool->destroy_pool(pool); }
inline JXStatus end_host_object(JXLock *lock) { return lock->destroy_lock(lock); }
inline JXStatus end_host_object(JXTable *table) { return table->destroy_table(table); }
inline JXStatus end_host_object(JXExtension *extension) {
  return extension->release_extension(extension);
}

// Owns a pool, a lock, a table or an extension.
template <typename T>
class HostObject {
 public:
  explicit HostObject(T *object = nullptr) : object_(object) {}
  HostObject(HostObject &&other) noexcept : object_(other.release()) {}
  HostObject &operator=(HostObject &&other) noexcept {
    if (this != &other) {
      reset();
      object_ = other.release();
    }
    return *this;
  }
  HostObject(const HostObject &) = delete;
  HostObject &operator=(const HostObject &) = delete;
  ~HostObject() { reset(); }

  T *get() const { return object_; }
  T *operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }
  // The object is then the caller's.
  [[nodiscard]] T *release() { return std::exchange(object_, nullptr); }
  void reset() {
    if (object_) end_host_object(release());
  }

 private:
  T *object_;
};

// Owns a transcoder of the character-set service.
class Transcoder {
 public:
  Transcoder() = default;
  Transcoder(JXNls *nls, JXTranscoder *transcoder) : nls_(nls), transcoder_(transcoder) {}
  Transcoder &operator=(Transcoder &&other) noexcept {
    if (this != &other) {
      reset();
      nls_ = other.nls_;
      transcoder_ = other.release();
    }
    return *this;
  }
  Transcoder(const Transcoder &) = delete;
  Transcoder &operator=(const Transcoder &) = delete;
  ~Transcoder() { reset(); }

  JXTranscoder *get() const { return transcoder_; }
  explicit operator bool() const { return transcoder_ != nullptr; }
  [[nodiscard]] JXTranscoder *release() { return std::exchange(transcoder_, nullptr); }
  // Destroys the transcoder and returns the status; JX_OK if there is none.
  JXStatus reset() { return transcoder_ ? nls_->destroy_transcoder(nls_, release()) : JX_OK; }

 private:
  JXNls *nls_ = nullptr;
  JXTranscoder *transcoder_ = nullptr;
};

}  // namespace jx
