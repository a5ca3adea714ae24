// The operations of the test host and its objects: count, fail when asked to, else hand on.
#include <cstdlib>

#include "support/fault_shells.hpp"
#include "support/text.hpp"

namespace jx::test {

struct HostCalls {
  // Ends an object by the given operation of its inner one.
  template <typename Object>
  static JXStatus end(Call call, Object *object, JXStatus (*Object::*operation)(Object *)) {
    auto *shell = shell_of(object);
    FaultHost &host = *shell->owner;
    const bool fails = host.fails(call, shell->label);
    if (!host.end(shell)) return JXHOST_E_BADOBJECT;
    const JXStatus status = (shell->inner->*operation)(shell->inner);
    return fails ? host.fault_status() : status;
  }

  // ---- Pools

  static JXPool *create_pool(JXHost *host, uint32_t zero1, uint32_t zero2, uint32_t zero3,
                             JXOwner owner, const char *name8) {
    FaultHost &self = *shell_of(host)->owner;
    const std::string owner_number = number(reinterpret_cast<uintptr_t>(owner));
    if (self.fails(Call::create_pool, std::string(name8) + " " + owner_number)) return nullptr;
    if (zero1 | zero2 | zero3) self.complain("create_pool: attributes not zero\n");
    return self.adopt<JXPool>(
        ObjectKind::pool,
        {.destroy_pool = destroy_pool, .pool_allocate = pool_allocate, .pool_free = pool_free},
        nullptr, name8);
  }

  static JXStatus destroy_pool(JXPool *pool) {
    auto *shell = shell_of(pool);
    FaultHost &self = *shell->owner;
    self.fails(Call::destroy_pool, shell->label);
    if (!self.end(shell)) return JXHOST_E_BADOBJECT;
    const std::lock_guard guard(self.mutex_);
    self.misuse_ += self.blocks_.free_all(pool);
    return JX_OK;
  }

  static void *pool_allocate(JXPool *pool, uint32_t bytes, uint32_t flags) {
    auto *shell = shell_of(pool);
    FaultHost &self = *shell->owner;
    if (self.fails(Call::pool_allocate, shell->label) || !self.is_alive(shell)) return nullptr;
    if (flags & ~JX_POOL_ZERO_FILL) self.complain("pool_allocate: unknown flags\n");
    const std::lock_guard guard(self.mutex_);
    if (bytes > self.largest_block_) return nullptr;
    return self.blocks_.allocate(pool, bytes, (flags & JX_POOL_ZERO_FILL) != 0);
  }

  static JXStatus pool_free(JXPool *pool, void *block) {
    auto *shell = shell_of(pool);
    FaultHost &self = *shell->owner;
    self.fails(Call::pool_free, shell->label);
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    const std::lock_guard guard(self.mutex_);
    const std::string misuse = self.blocks_.free(pool, block);
    self.misuse_ += misuse;
    return misuse.empty() ? JX_OK : JXHOST_E_BADOBJECT;
  }

  // ---- Locks

  static JXLock *create_lock(JXHost *host, uint8_t zero1, uint8_t zero2, uint32_t zero3,
                             const char *name8) {
    FaultHost &self = *shell_of(host)->owner;
    if (self.fails(Call::create_lock, name8)) return nullptr;
    if (zero1 | zero2 | zero3) self.complain("create_lock: attributes not zero\n");
    JXHost *inner = self.reference();
    JXLock *lock = inner->create_lock(inner, zero1, zero2, zero3, name8);
    if (!lock) return nullptr;
    return self.adopt<JXLock>(
        ObjectKind::lock,
        {.destroy_lock = destroy_lock, .lock_acquire = lock_acquire, .lock_release = lock_release},
        lock, name8);
  }

  static JXStatus destroy_lock(JXLock *lock) {
    if (shell_of(lock)->held != 0) shell_of(lock)->owner->complain("end of a lock that is held\n");
    return end(Call::destroy_lock, lock, &JXLock::destroy_lock);
  }

  static JXStatus lock_acquire(JXLock *lock, uint32_t one1, uint32_t one2) {
    auto *shell = shell_of(lock);
    FaultHost &self = *shell->owner;
    if (self.fails(Call::lock_acquire, shell->label)) return self.fault_status();
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    const JXStatus status = shell->inner->lock_acquire(shell->inner, one1, one2);
    if (status == JX_OK) ++shell->held;
    return status;
  }

  // A release that fails lets go all the same, so that the test can go on.
  static JXStatus lock_release(JXLock *lock) {
    auto *shell = shell_of(lock);
    FaultHost &self = *shell->owner;
    const bool fails = self.fails(Call::lock_release, shell->label);
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    if (shell->held <= 0) self.complain("release of a lock that is not held\n");
    --shell->held;
    const JXStatus status = shell->inner->lock_release(shell->inner);
    return fails ? self.fault_status() : status;
  }

  // ---- Tables

  static JXTable *create_table(JXHost *host, uint32_t a1, uint32_t a2, uint32_t a3, uint32_t a4,
                               uint32_t a5, uint32_t a6, uint32_t zero, const char *name8) {
    FaultHost &self = *shell_of(host)->owner;
    if (self.fails(Call::create_table, name8)) return nullptr;
    JXHost *inner = self.reference();
    JXTable *table = inner->create_table(inner, a1, a2, a3, a4, a5, a6, zero, name8);
    if (!table) return nullptr;
    return self.adopt<JXTable>(ObjectKind::table,
                               {.destroy_table = destroy_table,
                                .table_insert = table_insert,
                                .table_set_entry_destructor = table_set_entry_destructor},
                               table, name8);
  }

  static JXStatus destroy_table(JXTable *table) {
    return end(Call::destroy_table, table, &JXTable::destroy_table);
  }

  static int32_t table_insert(JXTable *table, uint32_t zero1, uint32_t zero2, void *value,
                              JXTableEntry **entry_out, const void *key, uint32_t key_bytes,
                              uint32_t zero3) {
    auto *shell = shell_of(table);
    FaultHost &self = *shell->owner;
    if (self.fails(Call::table_insert, shell->label) || !self.is_alive(shell)) return 0;
    return shell->inner->table_insert(shell->inner, zero1, zero2, value, entry_out, key, key_bytes,
                                      zero3);
  }

  static JXStatus table_set_entry_destructor(JXTable *table, uint32_t zero,
                                             JXEntryDestructor destructor) {
    auto *shell = shell_of(table);
    FaultHost &self = *shell->owner;
    if (self.fails(Call::table_set_entry_destructor, shell->label)) return self.fault_status();
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    return shell->inner->table_set_entry_destructor(shell->inner, zero, destructor);
  }

  // ---- Options and extensions

  static JXStatus get_option(JXHost *host, const JXChar *name, uint32_t name_chars, uint32_t type,
                             void *buffer, uint32_t *size_bytes) {
    FaultHost &self = *shell_of(host)->owner;
    if (self.fails(Call::get_option, narrow(name, name_chars))) return self.fault_status();
    JXHost *inner = self.reference();
    return inner->get_option(inner, name, name_chars, type, buffer, size_bytes);
  }

  static JXExtension *load_extension(JXHost *host, const JXChar *name, uint32_t name_chars,
                                     JXOwner owner) {
    FaultHost &self = *shell_of(host)->owner;
    const std::string name8 = narrow(name, name_chars);
    const std::string detail = name8 + " " + number(reinterpret_cast<uintptr_t>(owner));
    if (self.fails(Call::load_extension, detail)) return nullptr;
    JXHost *inner = self.reference();
    JXExtension *extension = inner->load_extension(inner, name, name_chars, owner);
    if (!extension) return nullptr;
    if (name8 == "jxelm") {
      return as_extension(self.adopt<JXElm>(
          ObjectKind::extension, {.release_extension = release<JXElm>, .open_file = open_file},
          reinterpret_cast<JXElm *>(extension), name8));
    }
    if (name8 == "jxitcp") {
      return as_extension(
          self.adopt<JXItcp>(ObjectKind::extension,
                             {.release_extension = release<JXItcp>, .get_host_name = get_host_name},
                             reinterpret_cast<JXItcp *>(extension), name8));
    }
    return self.adopt<JXExtension>(ObjectKind::extension,
                                   {.release_extension = release<JXExtension>}, extension, name8);
  }

  template <typename Object>
  static JXExtension *as_extension(Object *object) {
    return reinterpret_cast<JXExtension *>(object);
  }

  template <typename Object>
  static JXStatus release(JXExtension *extension) {
    auto *shell = reinterpret_cast<Shell<Object> *>(extension);
    FaultHost &self = *shell->owner;
    self.fails(Call::release_extension, shell->label);
    if (!self.end(shell)) return JXHOST_E_BADOBJECT;
    JXExtension *inner = as_extension(shell->inner);
    return inner->release_extension(inner);
  }

  static JXStatus get_host_name(JXItcp *itcp, JXChar *buffer, uint32_t *length_chars,
                                uint32_t form) {
    auto *shell = shell_of(itcp);
    FaultHost &self = *shell->owner;
    const std::string detail = number(*length_chars) + " " + number(form);
    if (self.fails(Call::get_host_name, detail)) return self.fault_status();
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    return shell->inner->get_host_name(shell->inner, buffer, length_chars, form);
  }

  static JXOpenFile *open_file(JXElm *elm, const JXOpenRequest *request, uint32_t one,
                               uint32_t lock_word, JXJournal *journal, JXStatus *status_out) {
    auto *shell = shell_of(elm);
    FaultHost &self = *shell->owner;
    const std::string path = narrow(request->path, request->path_chars);
    const bool fails = self.fails(Call::open_file, path);
    if (!self.is_alive(shell)) return nullptr;
    const uint32_t *zero = request->zero;
    {
      const std::lock_guard guard(self.mutex_);
      self.last_open_ = {path,           request->permissions,
                         request->flags, one,
                         lock_word,      (zero[0] | zero[1] | zero[2] | zero[3]) == 0,
                         journal};
    }
    if (fails) {
      *status_out = self.fault_status();
      return nullptr;
    }
    JXOpenFile *file =
        shell->inner->open_file(shell->inner, request, one, lock_word, journal, status_out);
    if (!file) return nullptr;
    return self.adopt<JXOpenFile>(ObjectKind::open_file,
                                  {.close_file = close_file, .descriptor = file->descriptor}, file,
                                  path);
  }

  // A close that fails has closed all the same, as with the system's own.
  static JXStatus close_file(JXOpenFile *file, const uint32_t *zeros, JXJournal *journal) {
    auto *shell = shell_of(file);
    FaultHost &self = *shell->owner;
    const bool fails = self.fails(Call::close_file, shell->label);
    if (!self.end(shell)) return JXHOST_E_BADOBJECT;
    for (int i = 0; i < 8; ++i) {
      if (zeros[i] != 0) self.complain("close_file: words not zero\n");
    }
    const JXStatus status = shell->inner->close_file(shell->inner, zeros, journal);
    return fails ? self.fault_status() : status;
  }
};

FaultHost::FaultHost(uint32_t extensions) {
  JXHostConfig config = JXHOST_CONFIG_INIT;
  config.extensions = extensions;
  JXHost *reference = jxhost_create(&config);
  if (!reference) std::abort();
  nls_.owner = this;
  nls_.inner = reference->nls;
  nls_.object = kNlsOperations;
  locale_ = *reference->locale;
  host_.owner = this;
  host_.inner = reference;
  host_.object = {.create_lock = HostCalls::create_lock,
                  .create_pool = HostCalls::create_pool,
                  .create_table = HostCalls::create_table,
                  .load_extension = HostCalls::load_extension,
                  .get_option = HostCalls::get_option,
                  .nls = &nls_.object,
                  .locale = &locale_,
                  .time_zone = reference->time_zone};
}

}  // namespace jx::test
