// Objects of the host for the length of a check.
#pragma once

#include "check/probe.hpp"
#include "kernel/owners.hpp"

namespace jxcheck {

using Pool = jx::HostObject<JXPool>;
using Lock = jx::HostObject<JXLock>;
using Table = jx::HostObject<JXTable>;
using Extension = jx::HostObject<JXExtension>;
using jx::Transcoder;

// Each reports a null result.
Pool make_pool(Probe &probe);
Lock make_lock(Probe &probe);
Table make_table(Probe &probe);
Extension load_extension(Probe &probe, const char *name);
Transcoder make_transcoder(Probe &probe, uint32_t from, uint32_t to);

// The extension "jxelm".
class Elm {
 public:
  explicit Elm(Probe &probe) : extension_(load_extension(probe, "jxelm")) {}
  explicit operator bool() const { return static_cast<bool>(extension_); }
  JXElm *get() const { return reinterpret_cast<JXElm *>(extension_.get()); }

 private:
  Extension extension_;
};

// How a file is opened: a name in the folder of the probe, POSIX flags, permissions and lock word.
struct Opening {
  const char *name;
  uint32_t flags;
  uint32_t lock_word = JXELM_LOCK_NONE;
  uint32_t permissions = 0600;
};

// The path of a name in the folder of the probe, until the next name. At most 300 bytes of name.
Probe::Name name_in_folder(const Probe &probe, const char *name);

// An open file of "jxelm", or the status with which it was refused. Reports nothing.
class OpenFile {
 public:
  OpenFile(const Probe &probe, const Elm &elm, const Opening &opening);
  // The path is given instead of a name in the folder.
  OpenFile(const Elm &elm, JXOpenRequest request, uint32_t lock_word);
  OpenFile(const OpenFile &) = delete;
  OpenFile &operator=(const OpenFile &) = delete;
  ~OpenFile() { close(); }

  explicit operator bool() const { return file_ != nullptr; }
  const JXOpenFile *get() const { return file_; }
  JXStatus status() const { return status_; }
  int fd() const { return *file_->descriptor; }
  // Closes it, once; the status of the slot.
  JXStatus close();
  // Leaves it open, for want of a slot.
  void abandon() { file_ = nullptr; }

 private:
  void open(const Elm &elm, const JXOpenRequest &request, uint32_t lock_word);

  JXOpenFile *file_ = nullptr;
  JXStatus status_ = JX_OK;
};

// Reports a file that is not open though it should be. True when it is.
bool expect_open(Probe &probe, const OpenFile &file, const char *what);

}  // namespace jxcheck
