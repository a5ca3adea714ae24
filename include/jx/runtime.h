/* The run-time routines that the module exports: formatted text, numbers, atomic cells, memory and
   strings, journal, time. All are reentrant, and none allocates unless its comment says so. */
#ifndef JX_RUNTIME_H
#define JX_RUNTIME_H

#include <stdarg.h>

#include "jx/base.h"
#include "jx/host.h"

JX_EXTERN_C_BEGIN

/* ---- Formatted text ----------------------------------------------------------------------- */

/* Formats into buffer, never beyond capacity_chars and never with a terminator.
   locale gives the decimal point; null means ".". format_chars 0: the format ends at its first
   zero. *length_out (may be null) receives the length in JXChars of the complete output, even if it
   does not fit, at most 2^32 - 1. 0, JX_E_TRUNCATED (the buffer holds the pieces before the first
   that does not fit), JX_E_BADFORMAT (an argument number outside 1 to 10, or "*" and digits without
   "$"; the length is 0) or JX_E_BADARG (a negative format_chars). Uses no heap and at most 6 KiB of
   stack.

   A directive is %[N$][-+ #0][width][.precision][h|l|ll|L]conversion. Width and precision are
   digits, "*" (the next argument, an int) or "*N$" (argument N). The text of a combination that is
   not in this list of conversions and their arguments is output between "<<" and ">>":
     d i          int, l long, ll long long: decimal digits with a sign
     u o x X      the same, unsigned, in base 10, 8 and 16
     p P          a pointer, in base 16
     c C          int: one JXChar (h and L change nothing)
     s            JXChars up to a zero, at most precision of them; null is empty
     hs           bytes up to a zero, at most precision of them, decoded by the host's native
                  decoder (call jxextent first)
     S hS         the same, but exactly precision units, zeros included; not valid without a
                  precision
     e E f g G    double, L long double
     %            no argument: a percent sign; "%%" only */
JX_EXPORT JXStatus jxzFormatBuffV(const JXLocale *locale, const JXChar *format,
                                  int32_t format_chars, JXChar *buffer, int32_t capacity_chars,
                                  uint32_t *length_out, va_list args);
/* The same with the arguments after length_out. */
JX_EXPORT JXStatus jxzFormatBuff(const JXLocale *locale, const JXChar *format, int32_t format_chars,
                                 JXChar *buffer, int32_t capacity_chars, uint32_t *length_out, ...);

/* Copies length_chars JXChars; a null source is empty. *count_out (may be null) receives the length
   either way. 0 or JX_E_TRUNCATED (nothing is written). */
JX_EXPORT JXStatus skzfJXString(const JXChar *source, uint32_t length_chars, JXChar *destination,
                                int32_t capacity_chars, uint32_t *count_out);
/* The same for length_bytes bytes of native text, decoded by the host's native decoder (call
   jxextent first). Every byte counts as one character, even if the decoder fails or joins some. */
JX_EXPORT JXStatus skzfString(const char *source, uint32_t length_bytes, JXChar *destination,
                              uint32_t capacity_chars, uint32_t *count_out);

/* ---- Numbers ------------------------------------------------------------------------------ */

/* Digits of an unsigned integer in base 2 to 16 (above 16: 16; 0 and 1: 10). *count_out (may be
   null) receives the number of characters needed. 0 or JX_E_TRUNCATED (nothing is written). */
JX_EXPORT JXStatus skzfIFast(uint32_t value, uint32_t base, uint8_t uppercase, JXChar *destination,
                             int32_t capacity_chars, uint32_t *count_out);
JX_EXPORT JXStatus skzfIMax(uint64_t value, uint32_t base, uint8_t uppercase, JXChar *destination,
                            int32_t capacity_chars, uint32_t *count_out);

/* Text of a double without its sign, rounded once, half away from zero, exact to the last digit for
   every precision. conversion is 'e', 'f' or 'g'; alternate keeps the decimal point and the zeros
   of 'g'; a negative precision means 6. Infinities give "inf", NaNs "nan", except missing values,
   whose 16 highest bits are set: these give their dot code. *count_out (may be null) receives the
   number of characters needed. 0 or JX_E_TRUNCATED (nothing is written). Uses no heap and at most
   5 KiB of stack. */
JX_EXPORT JXStatus skzfDouble(double value, uint32_t conversion, JXChar decimal_point,
                              uint8_t uppercase, int32_t precision, uint8_t alternate,
                              JXChar *destination, int32_t capacity_chars, uint32_t *count_out);
/* The same for a long double, which is rounded to double first. */
JX_EXPORT JXStatus skzflDouble(long double value, uint32_t conversion, JXChar decimal_point,
                               uint8_t uppercase, int32_t precision, uint8_t alternate,
                               JXChar *destination, int32_t capacity_chars, uint32_t *count_out);

/* Digits of the integer part of a double's absolute value: none below 1, at most 309. If
   trailing_zeros_out is not null, trailing zeros are counted there and not stored. *digit_count_out
   receives the count of the other digits either way. 0 or JX_E_TRUNCATED (nothing is written). */
JX_EXPORT JXStatus skzfIDblToBuff(double value, JXChar *destination, uint32_t capacity_chars,
                                  uint32_t *digit_count_out, uint32_t *trailing_zeros_out);
/* Stores the first digit_count digits after the decimal point, exact, not rounded, with zeros after
   the end of the expansion; none for zero and numbers from 2^52 on. If leading_zeros_out is not
   null, leading zeros are counted there and not stored, and a fraction of zero has no digits.
   *count_out receives the count of digits stored. Returns 0. */
JX_EXPORT JXStatus skzfFDblToBuff(double value, JXChar *destination, uint32_t digit_count,
                                  uint32_t *count_out, uint32_t *leading_zeros_out);

/* ---- Atomic cells and the lock-free stack -------------------------------------------------- */

/* Plain stores: of value before the cell is shared, of 0 after. Return 0. */
JX_EXPORT int32_t jxAtomicInit(uint32_t *cell, uint32_t value);
JX_EXPORT int32_t jxAtomicDestroy(uint32_t *cell);
/* Stores value if the cell holds expected. 1 if it did, else 0. Like the three routines below, one
   atomic step and a full barrier; any number of threads may call them on one cell. */
JX_EXPORT int32_t jxAtomicSet(uint32_t *cell, uint32_t expected, uint32_t value);
/* Add, and, or; return the new value. */
JX_EXPORT uint32_t jxAtomicAdd(uint32_t *cell, int32_t delta);
JX_EXPORT uint32_t jxAtomicAnd(uint32_t *cell, uint32_t mask);
JX_EXPORT uint32_t jxAtomicOr(uint32_t *cell, uint32_t mask);

/* Pushes a node, which stays the caller's memory; *head is null when the stack is empty. The link
   to the node below is a pointer at link_offset bytes into the node; nodes have even addresses.
   Returns the previous top. Any number of threads may push and pop; a popped node may be pushed
   again at once. While a pop is at work *head is odd and other calls spin; they never sleep. */
JX_EXPORT void *jxAStackPush(void **head, void *node, uint32_t link_offset);
/* Pops the top node and returns it; null when the stack is empty. */
JX_EXPORT void *jxAStackPop(void **head, uint32_t link_offset);

/* ---- Memory and strings -------------------------------------------------------------------- */

/* Units before the terminating zero; 0 for a null string. */
JX_EXPORT uint32_t skStrLen(const char *string);
JX_EXPORT uint32_t skStrTLen(const JXChar *string);
/* Copies a string with its terminator, source first. A null source is empty; a null destination
   changes nothing. */
JX_EXPORT void skStrCpy(const char *source, char *destination);
JX_EXPORT void skStrTCpy(const JXChar *source, JXChar *destination);
/* Turns the letters a to z among count bytes into A to Z, in place. */
JX_EXPORT void skStrUp(char *buffer, uint32_t count);
/* 1 when all count units equal value (count 0 too), else 0. */
JX_EXPORT int32_t skMemNot(uint8_t value, const void *buffer, uint32_t count);
JX_EXPORT int32_t skMemTNot(uint32_t value, const uint32_t *buffer, uint32_t count);
/* Fills count units with value. */
JX_EXPORT void skMemSet(void *buffer, uint8_t value, uint32_t count);
JX_EXPORT void skMemTSet(uint32_t *buffer, uint32_t value, uint32_t count);
/* -1, 0 or 1 by the first difference among count units: unsigned bytes, or the sign of the
   wrapping difference of 32-bit units. */
JX_EXPORT int32_t skMemCmp(const void *first, const void *second, uint32_t count);
JX_EXPORT int32_t skWMemCmp(const uint32_t *first, const uint32_t *second, uint32_t count);
/* Copies count bytes, source first; the ranges must not overlap. */
JX_EXPORT void skMemCpy(const void *source, void *destination, uint32_t count);
/* Copies count bytes, source first, also between overlapping ranges. Returns destination. */
JX_EXPORT void *skMemSCpy(const void *source, void *destination, uint32_t count);
/* A copy of count bytes in a block of the pool, which the caller frees. Null when an argument is
   null or 0, or out of memory. */
JX_EXPORT void *skMemDup(const void *source, uint32_t count, JXPool *pool);
/* Index of the first unit that equals (Scan, jxzspos) or differs from (NScan) value; -1 when there
   is none, the buffer is null or the count is 0 (jxzspos: or negative). */
JX_EXPORT int32_t skMemScan(const void *buffer, uint32_t count, uint8_t value);
JX_EXPORT int32_t skMemNScan(const void *buffer, uint32_t count, uint8_t value);
JX_EXPORT int32_t skMemTNScan(const uint32_t *buffer, uint32_t count, uint32_t value);
JX_EXPORT int32_t jxzspos(const JXChar *buffer, int32_t count, JXChar value);
/* 1 when one of count 8-byte elements has its most significant 16 bits all set (a missing value
   among doubles), else 0. */
JX_EXPORT int32_t skMissArray(const void *array, uint32_t count);
/* For the slot of an operation that is not offered: returns JX_E_UNSUPPORTED. */
JX_EXPORT JXStatus skUnsup(void);

/* ---- Journal ------------------------------------------------------------------------------- */

/* Forward the words and the arguments after them to the journal's message_to_buffer,
   message_to_journal, status_to_buffer and status_to_journal slots. Return the slot's status. */
JX_EXPORT JXStatus jxlMessageToBuf(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                   uintptr_t w4, uintptr_t w5, ...);
JX_EXPORT JXStatus jxlMessageToJnl(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                   ...);
JX_EXPORT JXStatus jxlStatusToBuf(JXJournal *journal, uintptr_t w1, uintptr_t w2, uintptr_t w3,
                                  uintptr_t w4, ...);
JX_EXPORT JXStatus jxlStatusToJnl(JXJournal *journal, uintptr_t level, uintptr_t status, ...);

/* ---- Time and order ------------------------------------------------------------------------ */

/* Seconds since 1 January 1970, UTC, with microseconds as the fraction. */
JX_EXPORT double bkztod(void);
/* Seconds since 1 January 1960, UTC. *gmt_offset_out (may be null) receives the seconds to add for
   the host's time zone. */
JX_EXPORT double jxzdtgmt(double *gmt_offset_out);
/* The local time of day, with microseconds as the fraction of the seconds. Returns 0. */
JX_EXPORT int32_t jxztime(uint32_t *hour_out, uint32_t *minute_out, double *seconds_out);
/* Reverse count bytes (and return 0) or count 32-bit units, in place. */
JX_EXPORT int32_t jxzbytrv(void *bytes, uint32_t count);
JX_EXPORT void jxztchrv(uint32_t *units, uint32_t count);

JX_EXTERN_C_END

#endif
