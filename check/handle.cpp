// The handle's own facts, options and extensions.
#include <string.h>

#include "check/objects.hpp"

namespace jxcheck {

namespace {

constexpr uint32_t kTypeInt32 = 3;
constexpr uint32_t kHostNameForm = 2;
constexpr uint32_t kHostNameChars = 30;

void check_time_zone(Probe &probe) {
  constexpr int32_t kDay = 24 * 60 * 60;
  const int32_t zone = probe.host->time_zone;
  if (zone <= -kDay || zone >= kDay) probe.found("%d", zone);
}

void check_decimal_point(Probe &probe) {
  if (probe.host->locale->decimal_point == 0) probe.found("0");
}

void check_process_id(Probe &probe) {
  const Probe::Name name = probe.name("host.process_id");
  const Room room = probe.room(sizeof(int32_t));
  uint32_t size_bytes = room.bytes;
  const JXStatus status = probe.host->get_option(probe.host, name.chars, name.count, kTypeInt32,
                                                 room.data, &size_bytes);
  if (room.spilled_bytes() != 0) return probe.found("%u bytes beyond", room.spilled_bytes());
  if (!probe.expect_status("4 bytes of room", status, JX_OK)) return;
  if (size_bytes != sizeof(int32_t)) probe.found("a size of %u", size_bytes);
}

void check_unknown_option(Probe &probe) {
  const Probe::Name name = probe.name("jxcheck.no_such_option");
  const Room room = probe.room(sizeof(int32_t));
  uint32_t size_bytes = room.bytes;
  probe.expect_failure("an unknown name",
                       probe.host->get_option(probe.host, name.chars, name.count, kTypeInt32,
                                              room.data, &size_bytes));
}

void check_unknown_extension(Probe &probe) {
  for (const char *unknown : {"jxnone", "jxel", "jxelms", "jxsecur", "JXELM"}) {
    const Probe::Name name = probe.name(unknown);
    if (probe.host->load_extension(probe.host, name.chars, name.count, nullptr)) {
      return probe.found("an extension for \"%s\"", unknown);
    }
  }
}

void release_twice(Probe &probe, const char *name) {
  // One after another, as the instances of a module do.
  for (int i = 0; i < 2; ++i) {
    Extension extension = load_extension(probe, name);
    if (!extension) return;
    JXExtension *ended = extension.release();
    probe.expect_status("to release it", ended->release_extension(ended), JX_OK);
  }
}

void check_release_elm(Probe &probe) { release_twice(probe, "jxelm"); }
void check_release_secure(Probe &probe) { release_twice(probe, "jxsecure"); }
void check_release_itcp(Probe &probe) { release_twice(probe, "jxitcp"); }

void check_host_name(Probe &probe) {
  const Extension extension = load_extension(probe, "jxitcp");
  if (!extension) return;
  auto *itcp = reinterpret_cast<JXItcp *>(extension.get());
  for (const uint32_t room_chars : {kHostNameChars, 1u}) {
    const Room room = probe.room(room_chars * sizeof(JXChar));
    uint32_t chars = room_chars;
    // A status other than 0 is allowed: the name that was cut is good.
    (void)itcp->get_host_name(itcp, reinterpret_cast<JXChar *>(room.data), &chars, kHostNameForm);
    if (room.spilled_bytes() != 0) return probe.found("%u bytes beyond", room.spilled_bytes());
    if (chars > room_chars) return probe.found("a length of %u for room %u", chars, room_chars);
    for (uint32_t i = 0; i < chars; ++i) {
      if (reinterpret_cast<const JXChar *>(room.data)[i] == 0)
        return probe.found("a zero in the name");
    }
  }
}

constexpr Check kChecks[] = {
    {Slot::create_lock, "the time zone", "seconds west of UTC, less than a day", guide::kKernel, 0,
     check_time_zone},
    {Slot::locale, "the decimal point", "a character", guide::kKernel, slots(Slot::locale),
     check_decimal_point},
    {Slot::get_option, "\"host.process_id\", type 3", "status 0 and a size of 4", guide::kKernel,
     slots(Slot::get_option), check_process_id},
    {Slot::get_option, "an option that there is not", "a status other than 0", guide::kKernel,
     slots(Slot::get_option), check_unknown_option},
    {Slot::load_extension, "names of no extension", "null", guide::kKernel,
     slots(Slot::load_extension), check_unknown_extension},
    {Slot::release_elm, "to load and release it twice", "status 0", guide::kKernel,
     slots(Slot::load_extension, Slot::release_elm), check_release_elm},
    {Slot::release_secure, "to load and release it twice", "status 0", guide::kKernel,
     slots(Slot::load_extension, Slot::release_secure), check_release_secure},
    {Slot::release_itcp, "to load and release it twice", "status 0", guide::kKernel,
     slots(Slot::load_extension, Slot::release_itcp), check_release_itcp},
    {Slot::get_host_name, "the name of the machine, form 2",
     "at most as many JXChars as there is "
     "room for",
     guide::kKernel, slots(Slot::load_extension, Slot::release_itcp, Slot::get_host_name),
     check_host_name},
};

}  // namespace

std::span<const Check> handle_checks() { return kChecks; }

}  // namespace jxcheck
