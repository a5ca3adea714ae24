// The C++20 wrapper over the module's operation tables. Header-only: handles that close themselves
// and keep the module loaded, names and lines in UTF-8, records, entries and tables as ranges,
// trees with a call for each member, statuses that know their name and meaning. A failure is a
// value; it is thrown by or_throw() alone.
//
//   std::string error;
//   wem::Module module = wem::Module::load("./jxwem.so", nullptr, &error);
//   if (!module) return complain(error);
//   auto file = module.instance().open("notes.txt", wem::OpenOptions::input().text());
//   if (!file) return complain(file.status().text());
//   wem::LineRange lines = file->lines();
//   for (const std::string &line : lines) use(line);
//   if (!lines.error().ok()) return complain(lines.error().text());
//
// Or in one call: module.instance().read_lines("notes.txt"), or read_text() for one string, and
// with exceptions module.instance().read_text("notes.txt").or_throw(). File::for_each_record() and
// File::records() give the records themselves, without a copy.
//
// A host with a kernel of its own wraps its instance in wem::Instance and needs only these headers.
// What only the reference host can do needs libjxhost: Module; begin(), size(), empty() and find()
// of a Table; and Instance::info() and file_system_info(), which read such a table. Other hosts
// walk Table::raw() themselves.
#pragma once

#include "jx/wem/directory.hpp"
#include "jx/wem/file.hpp"
#include "jx/wem/instance.hpp"
#include "jx/wem/module.hpp"
#include "jx/wem/options.hpp"
#include "jx/wem/paths.hpp"
#include "jx/wem/status.hpp"
#include "jx/wem/tables.hpp"
#include "jx/wem/text.hpp"
#include "jx/wem/tree.hpp"
