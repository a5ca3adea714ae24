// The binary contract of the module's own blocks: the place of every field, in bytes on i386 and on
// x86-64. A word is a pointer; a 64-bit field of an i386 record is aligned to 4 bytes.
#include <cstddef>
#include <type_traits>

#include "jx/wem.h"
#include "kernel/handle.hpp"

namespace {

constexpr size_t pick(size_t i386, size_t x86_64) { return sizeof(void *) == 4 ? i386 : x86_64; }

#define AT(field, i386, x86_64) \
  static_assert(offsetof(Record, field) == pick(i386, x86_64), "offset of " #field);
#define WORD(field, index) AT(field, 4 * (index), 8 * (index))
#define ENDS_AT(i386, x86_64)                                                               \
  static_assert(std::is_standard_layout_v<Record> && std::is_trivially_copyable_v<Record>); \
  static_assert(sizeof(Record) == pick(i386, x86_64), "size");

namespace instance {
using Record = JXInstance;
AT(eye_catcher, 0, 0)
WORD(empty1, 1)
WORD(get_required_version, 3)
WORD(get_version, 4)
WORD(host, 5)
WORD(destroy, 6)
WORD(empty2, 7)
WORD(directory_open, 9)
WORD(open, 10)
WORD(empty3, 11)
WORD(build_path, 12)
WORD(build_path_release, 13)
WORD(split_path, 14)
WORD(split_path_release, 15)
WORD(copy, 16)
WORD(exist, 17)
WORD(make_directory, 18)
WORD(remove, 19)
WORD(rename, 20)
WORD(info, 21)
WORD(file_system_info, 22)
WORD(create_name, 23)
WORD(create_name_release, 24)
WORD(directory_list, 25)
WORD(pool_host, 26)
WORD(pool, 27)
WORD(working_pool, 28)
WORD(journal, 29)
WORD(nls, 30)
WORD(elm, 31)
WORD(name_counter, 32)
WORD(secure, 33)
WORD(host_name, 34)
AT(host_name_chars, 256, 392)
AT(native_encoder, 260, 400)
AT(native_decoder, 264, 408)
ENDS_AT(268, 416)
}  // namespace instance

namespace open_options {
using Record = JXOpenOptions;
AT(access_mode, 32, 32)
AT(buffered, 36, 36)
AT(record_length, 40, 40)
AT(not_read, 44, 44)
AT(record_format, 48, 48)
AT(reserved_switch, 52, 52)
AT(lock_mode, 56, 56)
AT(user_values, 60, 60)
AT(user_value_count, 188, 188)
AT(file_encoding, 192, 192)
AT(record_encoding, 196, 196)
AT(open_flags, 200, 200)
AT(journal, 204, 208)
ENDS_AT(208, 216)
}  // namespace open_options

namespace attributes {
using Record = JXFileAttributes;
AT(name, 0, 0)
AT(name_chars, 4096, 4096)
AT(access_mode, 4100, 4100)
AT(buffered, 4104, 4104)
AT(record_length, 4108, 4108)
AT(zero, 4112, 4112)
AT(record_format, 4116, 4116)
AT(reserved_switch, 4120, 4120)
AT(lock_mode, 4124, 4124)
AT(user_values, 4128, 4128)
AT(user_value_count, 4256, 4256)
ENDS_AT(4260, 4260)
}  // namespace attributes

namespace file_head {
using Record = JXFile;
AT(eye_catcher, 0, 0)
WORD(caller_tag, 1)
WORD(close, 2)
WORD(flush, 3)
WORD(empty1, 4)
WORD(read, 13)
WORD(write, 14)
WORD(empty2, 15)
WORD(note, 16)
WORD(point, 17)
WORD(position_to_record, 18)
WORD(record_to_position, 19)
WORD(position_to_byte, 20)
WORD(byte_to_position, 21)
WORD(truncate, 22)
WORD(attach_journal, 23)
WORD(attributes, 24)
ENDS_AT(4356, 4456)
}  // namespace file_head

namespace file_handle {
using Record = jx::FileHandle;
AT(head, 0, 0)
AT(instance, 4356, 4456)
AT(host_file, 4360, 4464)
AT(pool, 4364, 4472)
AT(working_pool, 4368, 4480)
AT(journal, 4372, 4488)
AT(open_lock, 4376, 4496)
AT(name, 4380, 4504)
AT(name_chars, 4384, 4512)
AT(access_mode, 4388, 4516)
AT(buffered, 4392, 4520)
AT(record_length, 4396, 4524)
AT(record_format, 4400, 4528)
AT(reserved_switch, 4404, 4532)
AT(lock_mode, 4408, 4536)
AT(user_values, 4412, 4540)
AT(user_value_count, 4540, 4668)
AT(file_encoding, 4544, 4672)
AT(record_encoding, 4548, 4676)
AT(open_flags, 4552, 4680)
AT(record_buffer, 4556, 4688)
AT(record_buffer_bytes, 4560, 4696)
AT(block_bytes, 4564, 4700)
AT(buffer_count, 4568, 4704)
AT(buffer_offset, 4572, 4708)
AT(control_group, 4576, 4712)
AT(control_extra_bytes, 4580, 4716)
AT(end_seen, 4584, 4720)
AT(tracked_position, 4588, 4728)
AT(outbound, 4596, 4736)
AT(inbound, 4668, 4880)
AT(transcode_buffer, 4692, 4928)
AT(transcode_buffer_bytes, 4696, 4936)
AT(nls, 4700, 4944)
AT(read_transcoder, 4704, 4952)
AT(write_transcoder, 4708, 4960)
AT(bom, 4712, 4968)
AT(bom_bytes, 4716, 4972)
AT(bom_pending, 4720, 4976)
AT(methods, 4724, 4984)
ENDS_AT(4772, 5080)
}  // namespace file_handle

namespace methods {
using Record = jx::MethodVector;
WORD(record_open, 0)
WORD(record_close, 1)
WORD(record_flush, 2)
WORD(record_read, 3)
WORD(record_write, 4)
WORD(host_open, 5)
WORD(host_close, 6)
WORD(host_read, 7)
WORD(host_write, 8)
WORD(host_flush, 9)
WORD(host_point, 10)
WORD(host_note, 11)
ENDS_AT(48, 96)
}  // namespace methods

namespace host_file {
using Record = jx::HostFile;
AT(descriptor, 0, 0)
WORD(open_file, 1)
ENDS_AT(8, 16)
}  // namespace host_file

namespace directory {
using Record = JXDirectory;
AT(eye_catcher, 0, 0)
WORD(name, 1)
WORD(close, 2)
WORD(member_exist, 3)
WORD(member_list, 4)
WORD(read, 5)
WORD(empty1, 6)
WORD(instance, 7)
WORD(pool, 8)
WORD(working_pool, 9)
WORD(journal, 10)
WORD(stream_holder, 11)
WORD(options, 12)
WORD(path, 13)
WORD(path_chars, 14)
WORD(empty2, 15)
ENDS_AT(68, 136)
}  // namespace directory

namespace info_item {
using Record = JXInfoItem;
AT(type, 0, 0)
WORD(name, 1)
WORD(name_chars, 2)
WORD(value, 3)
AT(second_block, 20, 32)
AT(reserved, 24, 40)
AT(pool, 28, 48)
AT(format, 32, 56)
ENDS_AT(36, 64)
}  // namespace info_item

namespace member {
using Record = JXMember;
AT(name, 0, 0)
WORD(name_chars, 1)
AT(empty, 8, 12)
AT(information, 36, 40)
AT(pool, 40, 48)
AT(next, 44, 56)
ENDS_AT(48, 64)
}  // namespace member

namespace directory_entry {
using Record = JXDirectoryEntry;
AT(name, 0, 0)
WORD(name_chars, 1)
WORD(size_bytes, 2)
AT(modified, 16, 24)
AT(second_time, 24, 32)
AT(is_dir, 32, 40)
AT(empty, 36, 44)
AT(pool, 40, 48)
AT(next, 44, 56)
ENDS_AT(48, 64)
}  // namespace directory_entry

namespace create_name {
using Record = JXCreateName;
AT(prefix, 0, 0)
WORD(prefix_chars, 1)
WORD(extension, 2)
WORD(extension_chars, 3)
AT(flags, 16, 28)
ENDS_AT(20, 32)
}  // namespace create_name

}  // namespace
