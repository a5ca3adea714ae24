// The C++20 wrapper over the module's operation tables, header-only and without exceptions: handles
// that end themselves, text as std::u32string_view, range-for over records, entries and tables, and
// statuses that know their name and meaning.
//
//   wem::Module module = wem::Module::load("./jxwem.so");
//   auto file = module.instance().open(U"notes.txt", wem::OpenOptions::input().text(4096));
//   if (!file) return report(file.status());
//   for (const wem::Record &record : file->records()) use(record.text());
//
// A host with a kernel of its own wraps its instance in wem::Instance and needs only these headers,
// except for what only the reference host can do, which links with libjxhost: Module; begin(),
// size(), empty() and find() of a Table; and Instance::info() and file_system_info(), which look
// their facts up in one. Table::raw() is for its own walk.
#pragma once

#include "jx/wem/file.hpp"
#include "jx/wem/instance.hpp"
#include "jx/wem/lists.hpp"
#include "jx/wem/module.hpp"
#include "jx/wem/status.hpp"
