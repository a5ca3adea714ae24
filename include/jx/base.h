/* The ground types of the SDK: the character unit, status codes and the markers that every public
   declaration uses. Valid as C11 and as C++20. */
#ifndef JX_BASE_H
#define JX_BASE_H

#include <stdint.h>

/* Around the declarations of a header that C and C++ share. */
#ifdef __cplusplus
#define JX_EXTERN_C_BEGIN extern "C" {
#define JX_EXTERN_C_END }
#else
#define JX_EXTERN_C_BEGIN
#define JX_EXTERN_C_END
#endif

/* JX_NODISCARD marks a result that must be used: the compiler warns when it is dropped. JX_EXPORT
   marks what the module exports by name. */
#if defined(__GNUC__)
#define JX_NODISCARD __attribute__((warn_unused_result))
#define JX_EXPORT __attribute__((visibility("default")))
#else
#define JX_NODISCARD
#define JX_EXPORT
#endif

/* The version of this SDK, of the module that get_version reports, and of the reference host. */
#define JX_VERSION_MAJOR 3u
#define JX_VERSION_MINOR 2u
#define JX_VERSION_PATCH 1u

/* Times count from 1 January 1960 00:00; this many seconds later POSIX time begins. */
#define JX_SECONDS_1960_TO_1970 315619200.0

/* One Unicode code point (UTF-32, little-endian in memory). Text is a pointer and a length in
   JXChars and is never zero-terminated unless a declaration says so. */
typedef uint32_t JXChar;

/* The outcome of an operation: 0 is success, every other value names one failure. Compare for
   equality only; single bits have no meaning. */
typedef uint32_t JXStatus;

/* The opaque word that the host hands to entry, open and directory open and gets back whenever
   the module creates a pool, a transcoder or an extension on its behalf. */
typedef void *JXOwner;

/* Encoding numbers of the host's NLS service that the module itself knows. */
#define JX_ENCODING_DEFAULT 0u  /* unspecified: the operation chooses */
#define JX_ENCODING_UTF8 20u    /* UTF-8 */
#define JX_ENCODING_UTF16BE 24u /* UTF-16, big-endian */
#define JX_ENCODING_UTF16LE 25u /* UTF-16, little-endian */
#define JX_ENCODING_UTF32BE 26u /* UTF-32, big-endian */
#define JX_ENCODING_UTF32LE 27u /* UTF-32, little-endian: JXChar */
#define JX_ENCODING_NATIVE 62u  /* names and texts of the operating system, one byte a character */

/* The byte-order mark of every encoding that has one, X(encoding, size in bytes, bytes). Longer
   marks come first, because that of UTF-16 begins that of UTF-32. */
#define JX_BYTE_ORDER_MARKS(X)                   \
  X(JX_ENCODING_UTF32BE, 4u, "\x00\x00\xFE\xFF") \
  X(JX_ENCODING_UTF32LE, 4u, "\xFF\xFE\x00\x00") \
  X(JX_ENCODING_UTF8, 3u, "\xEF\xBB\xBF")        \
  X(JX_ENCODING_UTF16BE, 2u, "\xFE\xFF")         \
  X(JX_ENCODING_UTF16LE, 2u, "\xFF\xFE")

#define JX_OK ((JXStatus)0u) /* success */

/* Status codes shared with the host kernel. JX_STATUS_LIST has the meaning of each. */
#define JX_E_NOMEM ((JXStatus)0x803fc002u)
#define JX_E_BADARG ((JXStatus)0x803fc003u)
#define JX_E_UNSUPPORTED ((JXStatus)0x803fc004u)
#define JX_E_BADFORMAT ((JXStatus)0x803fc009u)
#define JX_E_TRUNCATED ((JXStatus)0x803fc0c9u)

/* Status codes of the module. */
#define JXWEM_E_NOTFOUND ((JXStatus)0x80bfe801u)
#define JXWEM_E_ACCESS ((JXStatus)0x80bfe803u)
#define JXWEM_E_BADOPTIONS ((JXStatus)0x80bfe804u)
#define JXWEM_E_BADMEMBER ((JXStatus)0x80bfe805u)
#define JXWEM_E_INUSE ((JXStatus)0x80bfe807u)
#define JXWEM_E_FAILED ((JXStatus)0x80bfe808u)
#define JXWEM_E_EOF ((JXStatus)0x80bfe80au)
#define JXWEM_E_READONLY ((JXStatus)0x80bfe80bu)
#define JXWEM_E_OPENREFUSED ((JXStatus)0x80bfe80du)
#define JXWEM_E_NOHANDLE ((JXStatus)0x80bfe80eu)
#define JXWEM_E_PARTIAL ((JXStatus)0x80bfe80fu)
#define JXWEM_E_BADRECFORMAT ((JXStatus)0x80bfe810u)
#define JXWEM_E_DISKFULL ((JXStatus)0x80bfe811u)
#define JXWEM_E_NAMETOOLONG ((JXStatus)0x80bfe812u)
#define JXWEM_E_BADNAME ((JXStatus)0x80bfe813u)
#define JXWEM_E_NOTSUPPORTED ((JXStatus)0x80bfe814u)
#define JXWEM_E_SYSTEM ((JXStatus)0x80bfe815u)
#define JXWEM_E_NOPATH ((JXStatus)0x80bfe816u)
#define JXWEM_E_BADACCESS ((JXStatus)0x80bfe819u)
#define JXWEM_E_BADBUFFERING ((JXStatus)0x80bfe81au)
#define JXWEM_E_TOOLONG ((JXStatus)0x80bfe81bu)
#define JXWEM_E_BADSWITCH ((JXStatus)0x80bfe81cu)
#define JXWEM_E_NOTEMPTY ((JXStatus)0x80bfe81du)
#define JXWEM_E_EXISTS ((JXStatus)0x80bfe81eu)
#define JXWEM_E_NOROOM ((JXStatus)0x80bfe820u)
#define JXWEM_E_BADLOCKMODE ((JXStatus)0x80bfe824u)
#define JXWEM_E_NOMEMBER ((JXStatus)0x80bfe825u)

/* Every status code above with its meaning, X(name, text): the texts are here only; catalogues and
   tools expand the list. */
#define JX_STATUS_LIST(X)                                            \
  X(JX_E_NOMEM, "out of memory")                                     \
  X(JX_E_BADARG, "invalid argument")                                 \
  X(JX_E_UNSUPPORTED, "operation not supported")                     \
  X(JX_E_BADFORMAT, "invalid format string")                         \
  X(JX_E_TRUNCATED, "the output did not fit the destination")        \
  X(JXWEM_E_NOTFOUND, "file or directory not found")                 \
  X(JXWEM_E_ACCESS, "access denied")                                 \
  X(JXWEM_E_BADOPTIONS, "invalid combination of options")            \
  X(JXWEM_E_BADMEMBER, "member name missing or empty")               \
  X(JXWEM_E_INUSE, "file busy or locked")                            \
  X(JXWEM_E_FAILED, "operation failed")                              \
  X(JXWEM_E_EOF, "end of file or of the directory")                  \
  X(JXWEM_E_READONLY, "the file is open for input only")             \
  X(JXWEM_E_OPENREFUSED, "the file-open extension refused the open") \
  X(JXWEM_E_NOHANDLE, "instance or handle missing or not valid")     \
  X(JXWEM_E_PARTIAL, "the record came without its line end")         \
  X(JXWEM_E_BADRECFORMAT, "invalid record format")                   \
  X(JXWEM_E_DISKFULL, "no space left on the device")                 \
  X(JXWEM_E_NAMETOOLONG, "name or path too long")                    \
  X(JXWEM_E_BADNAME, "a required name is missing or empty")          \
  X(JXWEM_E_NOTSUPPORTED, "not available for this handle or device") \
  X(JXWEM_E_SYSTEM, "system error")                                  \
  X(JXWEM_E_NOPATH, "a directory on the path is missing")            \
  X(JXWEM_E_BADACCESS, "invalid access mode")                        \
  X(JXWEM_E_BADBUFFERING, "invalid buffering value")                 \
  X(JXWEM_E_TOOLONG, "longer than the record length")                \
  X(JXWEM_E_BADSWITCH, "invalid reserved switch")                    \
  X(JXWEM_E_NOTEMPTY, "directory not empty")                         \
  X(JXWEM_E_EXISTS, "the target exists already")                     \
  X(JXWEM_E_NOROOM, "the name does not fit the buffer")              \
  X(JXWEM_E_BADLOCKMODE, "invalid lock mode")                        \
  X(JXWEM_E_NOMEMBER, "the name has no member part")

#endif
