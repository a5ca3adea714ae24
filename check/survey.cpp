// Gets hold of each object of a host and looks which of its words are null.
#include "check/survey.hpp"

#include <fcntl.h>

#include "check/objects.hpp"

namespace jxcheck {

namespace {

// Notes the slots of an object, of which the first is its first word.
void note_words(Probe &probe, const void *object, Slot first, Slot last) {
  if (!object) return;
  const auto *words = static_cast<const void *const *>(object);
  for (uint32_t i = 0; i <= index_of(last) - index_of(first); ++i) {
    if (words[i]) probe.note_present(Slots{1} << (index_of(first) + i));
  }
}

void look_at_handle(Probe &probe) {
  note_words(probe, probe.host, Slot::create_lock, Slot::locale);
}

void look_at_locale(Probe &probe) {
  note_words(probe, probe.host->locale, Slot::native_decoder, Slot::native_decoder);
}

void look_at_pool(Probe &probe) {
  Pool pool = make_pool(probe);
  note_words(probe, pool.get(), Slot::destroy_pool, Slot::pool_free);
  if (pool && !pool->destroy_pool) (void)pool.release();
}

void look_at_lock(Probe &probe) {
  Lock lock = make_lock(probe);
  note_words(probe, lock.get(), Slot::destroy_lock, Slot::lock_release);
  if (lock && !lock->destroy_lock) (void)lock.release();
}

void look_at_table(Probe &probe) {
  Table table = make_table(probe);
  note_words(probe, table.get(), Slot::destroy_table, Slot::set_destructor);
  if (table && !table->destroy_table) (void)table.release();
}

void look_at_service(Probe &probe) {
  note_words(probe, probe.nls, Slot::measure_conversion, Slot::destroy_transcoder);
}

void look_at_transcoder(Probe &probe) {
  JXTranscoder *decoder = probe.nls->create_decoder(probe.nls, JX_ENCODING_NATIVE, 0, 0);
  if (!decoder) return probe.found("null");
  note_words(probe, decoder, Slot::transcode, Slot::transcode);
  if (probe.nls->destroy_transcoder) probe.nls->destroy_transcoder(probe.nls, decoder);
}

void look_at_extension(Probe &probe, const char *name, Slot first, Slot last) {
  Extension extension = load_extension(probe, name);
  note_words(probe, extension.get(), first, last);
  if (extension && !extension->release_extension) (void)extension.release();
}

void look_at_elm(Probe &probe) {
  look_at_extension(probe, "jxelm", Slot::release_elm, Slot::open_file);
}

void look_at_itcp(Probe &probe) {
  const Probe::Name name = probe.name("jxitcp");
  Extension itcp(probe.host->load_extension(probe.host, name.chars, name.count, nullptr));
  if (!itcp) return probe.skip("the host has no \"jxitcp\", which is allowed");
  note_words(probe, itcp.get(), Slot::release_itcp, Slot::get_host_name);
  if (!itcp->release_extension) (void)itcp.release();
}

void look_at_secure(Probe &probe) {
  look_at_extension(probe, "jxsecure", Slot::release_secure, Slot::release_secure);
}

void look_at_file(Probe &probe) {
  if (probe.folder_fd < 0) return probe.skip("no folder was given");
  const Elm elm(probe);
  if (!elm) return;
  OpenFile file(probe, elm, {.name = "file", .flags = O_RDWR | O_CREAT});
  if (!expect_open(probe, file, "a new file")) return;
  note_words(probe, file.get(), Slot::close_file, Slot::descriptor);
  if (!file.get()->close_file) file.abandon();
}

void look_at_journal(Probe &probe) {
  if (!probe.journal) return probe.skip("no journal was given");
  note_words(probe, probe.journal, Slot::message_to_buffer, Slot::status_to_journal);
}

constexpr Object kObjects[] = {
    {{Slot::create_lock, "the handle", "a handle", guide::kKernel, 0, look_at_handle},
     Slot::create_lock,
     Slot::locale},
    {{Slot::locale, "the locale", "never null", guide::kKernel, slots(Slot::locale),
      look_at_locale},
     Slot::native_decoder,
     Slot::native_decoder},
    {{Slot::create_pool, "a pool", "a pool", guide::kKernel, slots(Slot::create_pool),
      look_at_pool},
     Slot::destroy_pool,
     Slot::pool_free},
    {{Slot::create_lock, "a lock", "a lock", guide::kKernel, slots(Slot::create_lock),
      look_at_lock},
     Slot::destroy_lock,
     Slot::lock_release},
    {{Slot::create_table, "a table", "a table", guide::kKernel, slots(Slot::create_table),
      look_at_table},
     Slot::destroy_table,
     Slot::set_destructor},
    {{Slot::nls, "the character-set service", "a service", guide::kKernel, slots(Slot::nls),
      look_at_service},
     Slot::measure_conversion,
     Slot::destroy_transcoder},
    {{Slot::create_decoder, "a decoder of encoding 62", "a transcoder", guide::kKernel,
      slots(Slot::nls, Slot::create_decoder), look_at_transcoder},
     Slot::transcode,
     Slot::transcode},
    {{Slot::load_extension, "\"jxelm\"", "an extension", guide::kKernel,
      slots(Slot::load_extension), look_at_elm},
     Slot::release_elm,
     Slot::open_file},
    {{Slot::open_file, "a new file", "an open file and status 0", guide::kElm, kElmSlots,
      look_at_file},
     Slot::close_file,
     Slot::descriptor},
    {{Slot::load_extension, "\"jxitcp\"", "an extension, or null", guide::kKernel,
      slots(Slot::load_extension), look_at_itcp},
     Slot::release_itcp,
     Slot::get_host_name},
    {{Slot::load_extension, "\"jxsecure\"", "an extension", guide::kKernel,
      slots(Slot::load_extension), look_at_secure},
     Slot::release_secure,
     Slot::release_secure},
    {{Slot::status_to_journal, "the journal", "a journal", guide::kJournal, 0, look_at_journal},
     Slot::message_to_buffer,
     Slot::status_to_journal},
};

}  // namespace

std::span<const Object> objects() { return kObjects; }

}  // namespace jxcheck
