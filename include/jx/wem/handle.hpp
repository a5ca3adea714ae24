// Ownership of files, directories and tables: who keeps the module loaded, who closes, who only
// observes.
#pragma once

#include <iterator>
#include <memory>
#include <ranges>
#include <utility>

#include "jx/wem/status.hpp"

namespace wem {

// Keeps alive what must outlive a handle, usually the loaded module; empty when the caller does.
using Keeper = std::shared_ptr<const void>;

namespace detail {

// Calls a slot of an instance or a handle. JXWEM_E_NOHANDLE when that is null.
template <typename Raw, typename Slot, typename... Arguments>
Status call(Raw *raw, Slot Raw::*slot, Arguments... arguments) {
  return Status(raw ? (raw->*slot)(raw, arguments...) : JXWEM_E_NOHANDLE);
}

// Owns a handle of the module and closes it once; observers (see watch()) find null afterwards. A
// moved-from object is empty; assigning closes what was held.
template <typename Raw>
class Handle {
  struct Held {
    Held(Keeper its_keeper, Raw *its_raw) : keeper(std::move(its_keeper)), raw(its_raw) {}
    Keeper keeper;
    Raw *raw;
  };
  struct Close {
    void operator()(Raw *raw) const { raw->close(raw); }
  };

 public:
  // An observer of a handle; null once the handle is closed.
  class Watch {
   public:
    explicit Watch(const Handle &handle) : held_(handle.held_) {}
    Raw *get() const { return held_ ? held_->raw : nullptr; }

   private:
    std::shared_ptr<const Held> held_;
  };

  Handle() = default;
  // Takes ownership of the handle, and closes it when out of memory.
  Handle(Raw *raw, Keeper keeper) {
    std::unique_ptr<Raw, Close> guard(raw);
    if (raw) held_ = std::make_shared<Held>(std::move(keeper), raw);
    static_cast<void>(guard.release());
  }
  Handle(Handle &&) noexcept = default;
  Handle &operator=(Handle &&other) noexcept {
    if (this == &other) return *this;
    static_cast<void>(close());
    held_ = std::move(other.held_);
    return *this;
  }
  ~Handle() { static_cast<void>(close()); }

  Raw *get() const { return held_ ? held_->raw : nullptr; }
  Watch watch() const { return Watch(*this); }
  // The keeper, for objects that came from the handle and may outlive it.
  Keeper keeper() const { return held_ ? held_->keeper : nullptr; }

  // The status of the handle's close; 0 when there is none.
  Status close() {
    const std::shared_ptr<Held> held = std::exchange(held_, nullptr);
    if (!held) return Status();
    const Status status = call(std::exchange(held->raw, nullptr), &Raw::close);
    held->keeper.reset();  // observers do not keep the module loaded
    return status;
  }

 private:
  std::shared_ptr<Held> held_;
};

}  // namespace detail

// The items of a reader as an input range. Every step is one read; copies share their state. A loop
// ends at the end or at a failure: error() tells which.
template <typename Reader>
class ReadRange : public std::ranges::view_base {
  using Item = typename Reader::Item;
  struct Loop {
    void advance() {
      next = reader.read();
      status = next.status();
    }
    Reader reader;
    Result<Item> next;  // the current item
    Status status = {};
  };

 public:
  // An input iterator: the items are read as it moves.
  class Iterator {
   public:
    using value_type = Item;                           // what it points to
    using difference_type = std::ptrdiff_t;            // required of iterators
    using iterator_concept = std::input_iterator_tag;  // required of iterators
    // At what begin() has read.
    explicit Iterator(Loop *loop) : loop_(loop) {}
    // The item, valid until the next step.
    const Item &operator*() const { return *loop_->next; }
    // Reads the next item.
    Iterator &operator++() {
      loop_->advance();
      return *this;
    }
    void operator++(int) { ++*this; }
    // Whether there was nothing more, or a failure.
    bool operator==(std::default_sentinel_t) const { return !loop_->next; }

   private:
    Loop *loop_;
  };

  // Files and directories make it: File::records(), File::lines(), Directory::entries().
  explicit ReadRange(Reader reader)
      : loop_(std::make_shared<Loop>(Loop{std::move(reader), Failed(JXWEM_E_NOHANDLE)})) {}
  // Reads the first item. Iterators are valid as long as the range or a copy of it.
  Iterator begin() const { return ++Iterator(loop_.get()); }
  std::default_sentinel_t end() const { return {}; }

  // What ended the loop: JXWEM_E_EOF at the end, or the failure. 0 while it goes on.
  Status status() const { return loop_->status; }
  // The failure that ended the loop; 0 when everything was read.
  Status error() const { return status() == JXWEM_E_EOF ? Status() : status(); }

 private:
  std::shared_ptr<Loop> loop_;
};

}  // namespace wem
