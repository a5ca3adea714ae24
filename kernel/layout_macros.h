/* The macros of a list of layout checks. Without an include guard: a header that is such a list
   undefines them at its end, and the next list includes them again. */
#include <assert.h>
#include <stddef.h>

#ifdef __cplusplus
#include <type_traits>
#define PLAIN(type) \
  static_assert(std::is_standard_layout_v<type> && std::is_trivially_copyable_v<type>, #type);
#else
#define PLAIN(type)
#endif
#define PICK(i386, x86_64) (sizeof(void *) == 4 ? (size_t)(i386) : (size_t)(x86_64))
#define AT(type, field, i386, x86_64) \
  static_assert(offsetof(type, field) == PICK(i386, x86_64), #type "." #field);
#define WORD(type, field, index) AT(type, field, 4 * (index), 8 * (index))
#define SIZE(type, i386, x86_64)                            \
  static_assert(sizeof(type) == PICK(i386, x86_64), #type); \
  PLAIN(type)
