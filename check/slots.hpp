// The slots that a host must have: their names, and sets of them.
#pragma once

#include <bit>
#include <cstdint>
#include <iterator>

namespace jxcheck {

// X(enumerator, name): the words of each object in the order of its layout, one object after
// another.
#define JXCHECK_SLOTS(X)                                \
  X(create_lock, "handle.create_lock")                  \
  X(create_pool, "handle.create_pool")                  \
  X(create_table, "handle.create_table")                \
  X(load_extension, "handle.load_extension")            \
  X(get_option, "handle.get_option")                    \
  X(nls, "handle.nls")                                  \
  X(locale, "handle.locale")                            \
  X(native_decoder, "locale.native_decoder")            \
  X(destroy_pool, "pool.destroy_pool")                  \
  X(pool_allocate, "pool.pool_allocate")                \
  X(pool_free, "pool.pool_free")                        \
  X(destroy_lock, "lock.destroy_lock")                  \
  X(lock_acquire, "lock.lock_acquire")                  \
  X(lock_release, "lock.lock_release")                  \
  X(destroy_table, "table.destroy_table")               \
  X(table_insert, "table.table_insert")                 \
  X(set_destructor, "table.table_set_entry_destructor") \
  X(measure_conversion, "nls.measure_conversion")       \
  X(needs_conversion, "nls.needs_conversion")           \
  X(encoding_info, "nls.encoding_info")                 \
  X(create_transcoder, "nls.create_transcoder")         \
  X(create_decoder, "nls.create_decoder")               \
  X(create_encoder, "nls.create_encoder")               \
  X(destroy_transcoder, "nls.destroy_transcoder")       \
  X(transcode, "transcoder.transcode")                  \
  X(release_elm, "jxelm.release_extension")             \
  X(open_file, "jxelm.open_file")                       \
  X(close_file, "open file.close_file")                 \
  X(descriptor, "open file.descriptor")                 \
  X(release_itcp, "jxitcp.release_extension")           \
  X(get_host_name, "jxitcp.get_host_name")              \
  X(release_secure, "jxsecure.release_extension")       \
  X(message_to_buffer, "journal.message_to_buffer")     \
  X(message_to_journal, "journal.message_to_journal")   \
  X(status_to_buffer, "journal.status_to_buffer")       \
  X(status_to_journal, "journal.status_to_journal")

enum class Slot : uint32_t {
#define JXCHECK_ENUMERATOR(slot, name) slot,
  JXCHECK_SLOTS(JXCHECK_ENUMERATOR)
#undef JXCHECK_ENUMERATOR
};

inline constexpr const char *kSlotNames[] = {
#define JXCHECK_NAME(slot, name) name,
    JXCHECK_SLOTS(JXCHECK_NAME)
#undef JXCHECK_NAME
};

// A set of slots, a bit each.
using Slots = uint64_t;
static_assert(std::size(kSlotNames) <= 64);

constexpr uint32_t index_of(Slot slot) { return static_cast<uint32_t>(slot); }
constexpr const char *name_of(Slot slot) { return kSlotNames[index_of(slot)]; }
constexpr Slots slots(auto... slot) { return ((Slots{1} << index_of(slot)) | ... | 0); }
// The first of a set that is not empty.
constexpr Slot first_of(Slots set) { return static_cast<Slot>(std::countr_zero(set)); }

// What a check needs of an object that it makes and ends.
inline constexpr Slots kPoolSlots =
    slots(Slot::create_pool, Slot::destroy_pool, Slot::pool_allocate, Slot::pool_free);
inline constexpr Slots kLockSlots =
    slots(Slot::create_lock, Slot::destroy_lock, Slot::lock_acquire, Slot::lock_release);
inline constexpr Slots kTableSlots =
    slots(Slot::create_table, Slot::destroy_table, Slot::table_insert, Slot::set_destructor);
inline constexpr Slots kDecoderSlots =
    slots(Slot::nls, Slot::create_decoder, Slot::destroy_transcoder, Slot::transcode);
inline constexpr Slots kEncoderSlots =
    slots(Slot::nls, Slot::create_encoder, Slot::destroy_transcoder, Slot::transcode);
inline constexpr Slots kTranscoderSlots =
    slots(Slot::nls, Slot::create_transcoder, Slot::destroy_transcoder, Slot::transcode);
inline constexpr Slots kElmSlots = slots(Slot::load_extension, Slot::release_elm, Slot::open_file);
inline constexpr Slots kFileSlots = kElmSlots | slots(Slot::close_file, Slot::descriptor);

}  // namespace jxcheck
