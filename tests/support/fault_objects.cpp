// The operations of the test host and its objects: count, fail when armed, else pass the call on.
#include <algorithm>
#include <cstdlib>
#include <type_traits>

#include "support/fault_host.hpp"
#include "support/text.hpp"

namespace jx::test {

namespace {

template <typename Object>
Shell<Object> *shell_of(Object *object) {
  return reinterpret_cast<Shell<Object> *>(object);
}

// An argument in a trace: empty for zero and for a pointer to something else.
template <typename Argument>
std::string word_of(Argument argument) {
  if constexpr (std::is_same_v<Argument, const char *>) return argument;
  if constexpr (std::is_same_v<Argument, JXOwner>) {
    return word_of(reinterpret_cast<uintptr_t>(argument));
  }
  if constexpr (std::is_integral_v<Argument>) return argument ? std::to_string(argument) : "";
  return "";
}

template <typename... Arguments>
std::string describe(Arguments... arguments) {
  std::string text;
  for (const std::string &word : {word_of(arguments)...}) {
    text += (text.empty() || word.empty() ? "" : " ") + word;
  }
  return text;
}

}  // namespace

template <typename Object>
bool FaultHost::is_alive(Shell<Object> *shell) {
  const std::lock_guard guard(mutex_);
  if (shell->ended) misuse_ += "use after the end of " + shell->label + "\n";
  return !shell->ended;
}

template <typename Object>
bool FaultHost::end(Shell<Object> *shell) {
  if (!is_alive(shell)) return false;
  const std::lock_guard guard(mutex_);
  shell->ended = true;
  live_.erase(shell);
  return true;
}

struct HostCalls {
  // ---- Shared by most operations

  // Makes an object: null when the call has to fail or the reference host fails.
  template <Call kCall, auto kSlot>
  struct Make;
  template <Call kCall, typename Maker, typename Object, typename... Arguments,
            Object *(*Maker::*kSlot)(Maker *, Arguments...)>
  struct Make<kCall, kSlot> {
    static Object *call(Maker *maker, Arguments... arguments) {
      FaultHost &self = *shell_of(maker)->owner;
      const std::string detail = describe(arguments...);
      if constexpr (kCall == Call::create_pool || kCall == Call::create_lock) {
        const bool is_zero =
            ((!std::is_integral_v<Arguments> || word_of(arguments).empty()) && ...);
        if (!is_zero) self.complain("attributes not zero\n");
      }
      if (self.fails(kCall, detail)) return nullptr;
      Maker *inner = shell_of(maker)->inner;
      return self.adopt(kCall, (inner->*kSlot)(inner, arguments...), detail);
    }
  };

  // Passes a call on to the inner object. Calls that destroy or release do so even when they have
  // to fail, so that the test can go on.
  static constexpr Calls kEnds =
      calls(Call::destroy_pool, Call::destroy_lock, Call::destroy_table, Call::close_file);
  static constexpr Calls kDoneAnyway = kEnds | calls(Call::lock_release);
  template <Call kCall, auto kSlot>
  struct Pass;
  template <Call kCall, typename Object, typename Result, typename... Arguments,
            Result (*Object::*kSlot)(Object *, Arguments...)>
  struct Pass<kCall, kSlot> {
    static Result call(Object *object, Arguments... arguments) {
      Shell<Object> *shell = shell_of(object);
      FaultHost &self = *shell->owner;
      // A signed result is an answer, not a status.
      const auto refuse = [](JXStatus status) {
        return static_cast<Result>(std::is_signed_v<Result> ? 0 : status);
      };
      const bool fails = self.fails(kCall, shell->label);
      if (fails && !(calls(kCall) & kDoneAnyway)) return refuse(self.status_);
      const bool is_end = (calls(kCall) & kEnds) != 0;
      if (!(is_end ? self.end(shell) : self.is_alive(shell))) return refuse(JXHOST_E_BADOBJECT);
      const Result result = (shell->inner->*kSlot)(shell->inner, arguments...);
      return fails ? refuse(self.status_) : result;
    }
  };

  // ---- Pools

  static JXStatus destroy_pool(JXPool *pool) {
    const JXStatus status = Pass<Call::destroy_pool, &JXPool::destroy_pool>::call(pool);
    FaultHost &self = *shell_of(pool)->owner;
    const std::lock_guard guard(self.mutex_);
    self.misuse_ += self.blocks_.free_all(pool);
    return status;
  }

  static void *pool_allocate(JXPool *pool, uint32_t bytes, uint32_t flags) {
    constexpr uint32_t kLargestBlock = 256u << 20;
    Shell<JXPool> *shell = shell_of(pool);
    FaultHost &self = *shell->owner;
    if (self.fails(Call::pool_allocate, shell->label) || !self.is_alive(shell)) return nullptr;
    if (flags & ~JX_POOL_ZERO_FILL) self.complain("pool_allocate: unknown flags\n");
    const std::lock_guard guard(self.mutex_);
    if (bytes > kLargestBlock) return nullptr;
    return self.blocks_.allocate(pool, bytes, (flags & JX_POOL_ZERO_FILL) != 0);
  }

  static JXStatus pool_free(JXPool *pool, void *block) {
    Shell<JXPool> *shell = shell_of(pool);
    FaultHost &self = *shell->owner;
    self.fails(Call::pool_free, shell->label);
    if (!self.is_alive(shell)) return JXHOST_E_BADOBJECT;
    const std::lock_guard guard(self.mutex_);
    const std::string misuse = self.blocks_.free(pool, block);
    self.misuse_ += misuse;
    return misuse.empty() ? JX_OK : JXHOST_E_BADOBJECT;
  }

  static JXPool operations(JXPool *) { return {destroy_pool, pool_allocate, pool_free}; }

  // ---- Locks

  static JXStatus destroy_lock(JXLock *lock) {
    if (shell_of(lock)->held != 0) shell_of(lock)->owner->complain("end of a lock that is held\n");
    return Pass<Call::destroy_lock, &JXLock::destroy_lock>::call(lock);
  }

  static JXStatus lock_acquire(JXLock *lock, uint32_t one1, uint32_t one2) {
    const JXStatus status = Pass<Call::lock_acquire, &JXLock::lock_acquire>::call(lock, one1, one2);
    if (status == JX_OK) ++shell_of(lock)->held;
    return status;
  }

  static JXStatus lock_release(JXLock *lock) {
    if (shell_of(lock)->held-- <= 0) shell_of(lock)->owner->complain("release of a free lock\n");
    return Pass<Call::lock_release, &JXLock::lock_release>::call(lock);
  }

  static JXLock operations(JXLock *) { return {destroy_lock, lock_acquire, lock_release}; }

  // ---- Tables

  static JXTable operations(JXTable *) {
    return {.destroy_table = Pass<Call::destroy_table, &JXTable::destroy_table>::call,
            .table_insert = Pass<Call::table_insert, &JXTable::table_insert>::call,
            .table_set_entry_destructor =
                Pass<Call::table_set_entry_destructor, &JXTable::table_set_entry_destructor>::call};
  }

  // ---- Extensions

  template <typename Extension>
  static JXStatus release(JXExtension *extension) {
    auto *shell = reinterpret_cast<Shell<Extension> *>(extension);
    shell->owner->fails(Call::release_extension, shell->label);
    if (!shell->owner->end(shell)) return JXHOST_E_BADOBJECT;
    return shell->inner->release_extension(reinterpret_cast<JXExtension *>(shell->inner));
  }

  static JXExtension operations(JXExtension *) { return {release<JXExtension>}; }
  static JXElm operations(JXElm *) { return {release<JXElm>, open_file}; }
  static JXItcp operations(JXItcp *) { return {release<JXItcp>, get_host_name}; }

  static JXStatus get_host_name(JXItcp *itcp, JXChar *buffer, uint32_t *chars, uint32_t form) {
    if (*chars != JX_HOST_NAME_CHARS || form != 2) {
      shell_of(itcp)->owner->complain("get_host_name: another room or form\n");
    }
    return Pass<Call::get_host_name, &JXItcp::get_host_name>::call(itcp, buffer, chars, form);
  }

  static JXExtension *load_extension(JXHost *host, const JXChar *name, uint32_t name_chars,
                                     JXOwner owner) {
    FaultHost &self = *shell_of(host)->owner;
    const std::string name8 = narrow(name, name_chars);
    const std::string detail = describe(name8.c_str(), owner);
    if (self.fails(Call::load_extension, detail)) return nullptr;
    JXHost *inner = self.reference();
    JXExtension *extension = inner->load_extension(inner, name, name_chars, owner);
    const auto adopt = [&]<typename Extension>(Extension *loaded) {
      return reinterpret_cast<JXExtension *>(self.adopt(Call::load_extension, loaded, detail));
    };
    if (name8 == "jxelm") return adopt(reinterpret_cast<JXElm *>(extension));
    if (name8 == "jxitcp") return adopt(reinterpret_cast<JXItcp *>(extension));
    return adopt(extension);
  }

  static JXOpenFile *open_file(JXElm *elm, const JXOpenRequest *request, uint32_t one,
                               uint32_t lock_word, JXJournal *journal, JXStatus *status_out) {
    Shell<JXElm> *shell = shell_of(elm);
    FaultHost &self = *shell->owner;
    const std::string path = narrow(request->path, request->path_chars);
    const bool fails = self.fails(Call::open_file, path);
    if (!self.is_alive(shell)) return nullptr;
    const auto [zero1, zero2, zero3, zero4] = request->zero;
    {
      const std::lock_guard guard(self.mutex_);
      self.last_open_ = {
          path,
          {request->permissions, request->flags, zero1, zero2, zero3, zero4, one, lock_word},
          journal};
    }
    *status_out = self.status_;
    if (fails) return nullptr;
    JXElm *inner = shell->inner;
    return self.adopt(Call::open_file,
                      inner->open_file(inner, request, one, lock_word, journal, status_out), path);
  }

  static JXStatus close_file(JXOpenFile *file, const uint32_t *zeros, JXJournal *journal) {
    if (std::any_of(zeros, zeros + 8, [](uint32_t word) { return word != 0; })) {
      shell_of(file)->owner->complain("close_file: words not zero\n");
    }
    return Pass<Call::close_file, &JXOpenFile::close_file>::call(file, zeros, journal);
  }

  static JXOpenFile operations(JXOpenFile *inner) { return {close_file, inner->descriptor}; }

  // ---- Transcoders

  static JXStatus destroy_transcoder(JXNls *nls, JXTranscoder *transcoder) {
    Shell<JXTranscoder> *shell = shell_of(transcoder);
    FaultHost &self = *shell->owner;
    const bool fails = self.fails(Call::destroy_transcoder, shell->label);
    if (!self.end(shell)) return JXHOST_E_BADOBJECT;
    JXNls *inner = shell_of(nls)->inner;
    const JXStatus status = inner->destroy_transcoder(inner, shell->inner);
    return fails ? self.status_ : status;
  }

  static JXTranscoder operations(JXTranscoder *) {
    return {Pass<Call::transcode, &JXTranscoder::transcode>::call};
  }

  // ---- The services

  static JXNls operations(JXNls *) {
    return {.measure_conversion = Pass<Call::measure_conversion, &JXNls::measure_conversion>::call,
            .needs_conversion = Pass<Call::needs_conversion, &JXNls::needs_conversion>::call,
            .encoding_info = Pass<Call::encoding_info, &JXNls::encoding_info>::call,
            .create_transcoder = Make<Call::create_transcoder, &JXNls::create_transcoder>::call,
            .create_decoder = Make<Call::create_decoder, &JXNls::create_decoder>::call,
            .create_encoder = Make<Call::create_encoder, &JXNls::create_encoder>::call,
            .destroy_transcoder = destroy_transcoder};
  }

  static JXHost operations(JXHost *inner, JXNls *nls) {
    return {.create_lock = Make<Call::create_lock, &JXHost::create_lock>::call,
            .create_pool = Make<Call::create_pool, &JXHost::create_pool>::call,
            .create_table = Make<Call::create_table, &JXHost::create_table>::call,
            .load_extension = load_extension,
            .get_option = Pass<Call::get_option, &JXHost::get_option>::call,
            .nls = nls,
            .locale = inner->locale,
            .time_zone = inner->time_zone};
  }
};

template <typename Object>
Object *FaultHost::adopt(Call made_by, Object *inner, const std::string &detail) {
  if (!inner) return nullptr;
  const std::string call = call_name(made_by);
  auto shell = std::make_shared<Shell<Object>>(Shell<Object>{
      HostCalls::operations(inner), this, inner, call.substr(call.find('_') + 1) + " " + detail});
  const std::lock_guard guard(mutex_);
  live_[shell.get()] = shell->label;
  shells_.push_back(shell);
  return &shell->object;
}

FaultHost::FaultHost(uint32_t extensions) {
  JXHostConfig config = JXHOST_CONFIG_INIT;
  config.extensions = extensions;
  JXHost *reference = jxhost_create(&config);
  if (!reference) std::abort();
  nls_ = {HostCalls::operations(reference->nls), this, reference->nls};
  host_ = {HostCalls::operations(reference, &nls_.object), this, reference};
}

}  // namespace jx::test
