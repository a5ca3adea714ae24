// How the checks get objects of the host.
#include "check/objects.hpp"

#include <stdio.h>

namespace jxcheck {

namespace {

// Reports a null. Returns its argument.
template <typename Object>
Object *made(Probe &probe, Object *object, const char *what) {
  if (!object) probe.found("%s: null", what);
  return object;
}

}  // namespace

Pool make_pool(Probe &probe) {
  JXHost *host = probe.host;
  return Pool(made(probe, host->create_pool(host, 0, 0, 0, nullptr, "jxcheck pool"), "a pool"));
}

Lock make_lock(Probe &probe) {
  JXHost *host = probe.host;
  return Lock(made(probe, host->create_lock(host, 0, 0, 0, "jxcheck lock"), "a lock"));
}

Table make_table(Probe &probe) {
  JXHost *host = probe.host;
  return Table(
      made(probe, host->create_table(host, 0, 0, 0, 0, 0, 0, 0, "jxcheck table"), "a table"));
}

Extension load_extension(Probe &probe, const char *name) {
  const Probe::Name text = probe.name(name);
  return Extension(
      made(probe, probe.host->load_extension(probe.host, text.chars, text.count, nullptr), name));
}

Transcoder make_transcoder(Probe &probe, uint32_t from, uint32_t to) {
  JXNls *nls = probe.nls;
  JXTranscoder *transcoder = nls->create_transcoder(nls, from, to, 0, nullptr);
  if (!transcoder) probe.found("a transcoder from %u to %u: null", from, to);
  return Transcoder(nls, transcoder);
}

Probe::Name name_in_folder(const Probe &probe, const char *name) {
  char path[340];
  ::snprintf(path, sizeof path, "/proc/self/fd/%d/%s", probe.folder_fd, name);
  return probe.name(path);
}

OpenFile::OpenFile(const Probe &probe, const Elm &elm, const Opening &opening) {
  const Probe::Name name = name_in_folder(probe, opening.name);
  open(elm, {name.chars, name.count, opening.permissions, opening.flags, {}}, opening.lock_word);
}

OpenFile::OpenFile(const Elm &elm, JXOpenRequest request, uint32_t lock_word) {
  open(elm, request, lock_word);
}

void OpenFile::open(const Elm &elm, const JXOpenRequest &request, uint32_t lock_word) {
  status_ = ~JX_OK;  // no status of a host
  file_ = elm.get()->open_file(elm.get(), &request, 1, lock_word, nullptr, &status_);
}

JXStatus OpenFile::close() {
  static constexpr uint32_t kZeros[8] = {};
  JXOpenFile *file = std::exchange(file_, nullptr);
  return file ? file->close_file(file, kZeros, nullptr) : JX_OK;
}

bool expect_open(Probe &probe, const OpenFile &file, const char *what) {
  if (!file) {
    probe.found("%s: null and status 0x%x", what, file.status());
  } else if (file.status() != JX_OK) {
    probe.found("%s: an open file and status 0x%x", what, file.status());
  }
  return file && file.status() == JX_OK;
}

}  // namespace jxcheck
