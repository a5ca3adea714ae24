// The reference host's internal interface: the list of live objects, the host, and what its files
// offer one another. Nothing throws; memory comes from the C library, and a failure is a null.
#pragma once

#include <sys/single_threaded.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <new>

#include "jx/jxhost.h"

namespace jxhost {

struct Host;

struct FreeBlock {
  void operator()(void *block) const { std::free(block); }
};
// Owns a block from malloc.
template <typename T>
using Block = std::unique_ptr<T, FreeBlock>;

// Tells whether a block of that size can exist. On a 32-bit machine a 32-bit size can exceed half
// the address space, and no block does.
constexpr bool is_possible_size(uint64_t bytes) { return bytes <= uint64_t{PTRDIFF_MAX}; }

// Tells whether the process has one thread: then there is nobody to exclude. The C library says so
// for less than a lock costs: two locks were a third of what a block allocated and freed took.
inline bool is_one_thread() { return __libc_single_threaded != 0; }

// Holds a mutex for the length of a scope, in which no thread starts.
class Guard {
 public:
  explicit Guard(std::mutex &mutex) : mutex_(is_one_thread() ? nullptr : &mutex) {
    if (mutex_) mutex_->lock();
  }
  Guard(const Guard &) = delete;
  Guard &operator=(const Guard &) = delete;
  ~Guard() {
    if (mutex_) mutex_->unlock();
  }

 private:
  std::mutex *mutex_;  // held, or null
};

// A copy of a zero-terminated text; empty when out of memory.
Block<char> copy_text(const char *text8);

// ---- host.cpp -----------------------------------------------------------------------------------

// The base of every object that a host makes: its links in the host's list of live objects. The
// destructor of an object frees all it owns and calls no code of the module.
struct Live {
  Live() = default;
  Live(const Live &) = delete;
  Live &operator=(const Live &) = delete;
  virtual ~Live() = default;
  // Live blocks of a pool; 0 for other objects.
  virtual uint64_t live_blocks() const { return 0; }

  Host *host = nullptr;      // owner of the object
  const char *kind = "";     // "pool", "lock", ...
  Live *previous = nullptr;  // made before this one
  Live *next = nullptr;      // made after this one
  char name[32] = {};        // truncated; for the journal line about a leak
};

// Puts a new object into the host's list. name8 may be null.
void enlist(JXHost *handle, Live *object, const char *kind, const char *name8);
// Takes an object out of its host's list.
void delist(Live *object);

// Makes an object of type T in the host's list; null when out of memory. Freed by end_live.
template <typename T>
T *make_live(JXHost *host, const char *kind, const char *name8) {
  T *object = host ? new (std::nothrow) T : nullptr;
  if (object) enlist(host, object, kind, name8);
  return object;
}

// Ends an object that make_live made. 0, or JXHOST_E_BADOBJECT for null.
template <typename T>
JXStatus end_live(T *object) {
  if (!object) return JXHOST_E_BADOBJECT;
  delist(object);
  delete object;
  return JX_OK;
}

// ---- journal.cpp --------------------------------------------------------------------------------

// The journal of a host.
struct Journal : JXJournal {
  Journal();
  std::mutex mutex;                  // held while a line is written
  JXHostJournalSink sink = nullptr;  // or null: the descriptor
  void *context = nullptr;           // handed to sink
  int fd = -1;                       // of the embedding program, or -1
};

// Writes a line with an ASCII text to a journal of any host; does nothing for a null journal.
void report(JXJournal *journal, uint32_t level, JXStatus status, const char *text8);

// ---- option.cpp ---------------------------------------------------------------------------------

// 32-bit values by name: the options of a host, and the descriptors that it offers.
class NamedValues {
 public:
  NamedValues() = default;
  NamedValues(const NamedValues &) = delete;
  NamedValues &operator=(const NamedValues &) = delete;
  ~NamedValues();

  // Adds or replaces. name8 is not empty. 0 or JX_E_NOMEM.
  JXStatus set(const char *name8, int32_t value);
  // False when there is none of that name, which is ASCII.
  bool get(const JXChar *name, uint32_t name_chars, int32_t *value_out) const;
  // Forgets a name; does nothing when there is none.
  void remove(const char *name8);

 private:
  struct Entry;
  mutable std::mutex mutex_;
  Entry *first_ = nullptr;
};

// Tells whether a text of JXChars is the given text of bytes, character n for byte n.
bool is_text(const JXChar *text, uint32_t chars, const char *text8);

// ---- The host -----------------------------------------------------------------------------------

struct Host : JXHost {
  Host();
  ~Host();
  // Copies the configuration and makes the character-set service. False when out of memory.
  bool set_up(const JXHostConfig &config);
  // Destroys the decoder of the locale, if there is one.
  void drop_native_decoder();

  JXLocale locale_context{};             // the target of locale
  std::atomic<uint32_t> live_objects{};  // length of the list
  mutable std::mutex mutex;              // guards the list
  Live *oldest = nullptr;                // the list of live objects
  Live *newest = nullptr;
  NamedValues options;
  NamedValues offers;  // descriptors that "jxelm" opens instead of a file, by path
  Journal journal;
  uint32_t extensions = 0;  // JXHOST_* bits
  Block<char> host_name;    // answer of "jxitcp"; null: the machine's name
};

// The operations of the handle, each in the file of its object.
JXLock *create_lock(JXHost *host, uint8_t zero1, uint8_t zero2, uint32_t zero3, const char *name8);
JXPool *create_pool(JXHost *host, uint32_t zero1, uint32_t zero2, uint32_t zero3, JXOwner owner,
                    const char *name8);
JXTable *create_table(JXHost *host, uint32_t a1, uint32_t a2, uint32_t a3, uint32_t a4, uint32_t a5,
                      uint32_t a6, uint32_t zero, const char *name8);
JXExtension *load_extension(JXHost *host, const JXChar *name, uint32_t name_chars, JXOwner owner);
JXStatus get_option(JXHost *host, const JXChar *name, uint32_t name_chars, uint32_t type,
                    void *buffer, uint32_t *size_bytes);

// ---- loader.cpp ---------------------------------------------------------------------------------

// Unloads every module that the host still has.
void unload_all(Host *host);

// ---- elm.cpp ------------------------------------------------------------------------------------

// The extension "jxelm"; null when out of memory.
JXExtension *make_elm(JXHost *host);

// The status of "jxelm" for the errno of a failed open or close, and of a failed lock.
JXStatus elm_status_of_open(int error);
JXStatus elm_status_of_lock(int error);

}  // namespace jxhost
