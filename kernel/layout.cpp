// The binary contract of the module's own records, and of the public ones as the module sees them.
#include "kernel/layout.h"

#include "kernel/handle.hpp"
#include "kernel/layout_macros.h"

namespace jx {
namespace {

AT(FileHandle, head, 0, 0)
AT(FileHandle, instance, 4356, 4456)
AT(FileHandle, host_file, 4360, 4464)
AT(FileHandle, pool, 4364, 4472)
AT(FileHandle, working_pool, 4368, 4480)
AT(FileHandle, journal, 4372, 4488)
AT(FileHandle, open_lock, 4376, 4496)
AT(FileHandle, name, 4380, 4504)
AT(FileHandle, name_chars, 4384, 4512)
AT(FileHandle, access.mode, 4388, 4516)
AT(FileHandle, buffered, 4392, 4520)
AT(FileHandle, record_length, 4396, 4524)
AT(FileHandle, record_format, 4400, 4528)
AT(FileHandle, reserved_switch, 4404, 4532)
AT(FileHandle, lock_mode, 4408, 4536)
AT(FileHandle, user.values, 4412, 4540)
AT(FileHandle, user.count, 4540, 4668)
AT(FileHandle, encodings.file, 4544, 4672)
AT(FileHandle, encodings.record, 4548, 4676)
AT(FileHandle, flags.bits, 4552, 4680)
AT(FileHandle, buffer.data, 4556, 4688)
AT(FileHandle, buffer.size_bytes, 4560, 4696)
AT(FileHandle, buffer.block_bytes, 4564, 4700)
AT(FileHandle, buffer.unread_bytes, 4568, 4704)
AT(FileHandle, buffer.free_bytes, 4568, 4704)
AT(FileHandle, buffer.unread_offset, 4572, 4708)
AT(FileHandle, buffer.used_bytes, 4572, 4708)
AT(FileHandle, control_group, 4576, 4712)
AT(FileHandle, control_extra_bytes, 4580, 4716)
AT(FileHandle, end_seen, 4584, 4720)
AT(FileHandle, tracked_position, 4588, 4728)
AT(FileHandle, controls.outbound, 4596, 4736)
AT(FileHandle, controls.inbound, 4668, 4880)
AT(FileHandle, transcode_buffer.data, 4692, 4928)
AT(FileHandle, transcode_buffer.size_bytes, 4696, 4936)
AT(FileHandle, nls, 4700, 4944)
AT(FileHandle, read_transcoder, 4704, 4952)
AT(FileHandle, write_transcoder, 4708, 4960)
AT(FileHandle, mark.bytes, 4712, 4968)
AT(FileHandle, mark.size, 4716, 4972)
AT(FileHandle, mark.is_pending, 4720, 4976)
AT(FileHandle, methods, 4724, 4984)
AT(FileHandle, read_held, 4772, 5080)
AT(FileHandle, line_feeds, 4784, 5092)

WORD(MethodVector, record_open, 0)
WORD(MethodVector, record_close, 1)
WORD(MethodVector, record_flush, 2)
WORD(MethodVector, record_read, 3)
WORD(MethodVector, record_write, 4)
WORD(MethodVector, host_open, 5)
WORD(MethodVector, host_close, 6)
WORD(MethodVector, host_read, 7)
WORD(MethodVector, host_write, 8)
WORD(MethodVector, host_flush, 9)
WORD(MethodVector, host_point, 10)
WORD(MethodVector, host_note, 11)
SIZE(MethodVector, 48, 96)

AT(HostFile, descriptor, 0, 0)
WORD(HostFile, open_file, 1)
SIZE(HostFile, 8, 16)

}  // namespace
}  // namespace jx
