// The C++20 wrapper over the module's operation tables, header-only and without exceptions: handles
// that end themselves, text as std::u32string_view, range-for over records, entries and tables, and
// statuses that know their name and meaning.
//
//   wem::Module module = wem::Module::load("./jxwem.so");
//   auto file = module.instance().open(U"notes.txt", wem::OpenOptions::input().text(4096));
//   if (!file) return report(file.status());
//   for (const wem::Record &record : file->records()) use(record.text());
//
// Module and the walk over tables come from the reference host and need libjxhost; a host with a
// kernel of its own wraps its instance in wem::Instance and needs only these headers.
#pragma once

#include "jx/wem/file.hpp"
#include "jx/wem/instance.hpp"
#include "jx/wem/lists.hpp"
#include "jx/wem/module.hpp"
#include "jx/wem/status.hpp"
