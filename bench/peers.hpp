// The libraries that a build may do without: GLib, ICU and libunistring in 64-bit builds only,
// simdutf where JX_BENCH_SIMDUTF names it.
#pragma once

#ifdef JX_BENCH_GLIB
#include <gio/gio.h>
#include <glib/gstdio.h>
#endif
#ifdef JX_BENCH_ICU
#include <unicode/ustdio.h>
#include <unicode/ustring.h>
#endif
#ifdef JX_BENCH_UNISTRING
#include <unistr.h>
#endif
#ifdef JX_BENCH_SIMDUTF
#include <simdutf.h>
#endif
