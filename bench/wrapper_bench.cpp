// Records read through the C++ wrapper, beside the operation table that it calls.
#include <string>

#include "bench/contender.hpp"
#include "jx/wem.hpp"

namespace {

using namespace jx::bench;

void tally(Tally *tally, const wem::Record &record) {
  tally->line(record.raw_text().data(), record.bytes.size());
}

uint64_t by_call(const std::string &path, const wem::OpenOptions &options) {
  auto file = wem::Instance(instance()).open(path, options);
  Tally sum;
  const auto use = [&sum](const wem::Record &record) { tally(&sum, record); };
  if (!file->for_each_record(use).ok()) fail("the wrapper does not read " + path);
  return sum.value();
}

uint64_t by_range(const std::string &path, const wem::OpenOptions &options) {
  auto file = wem::Instance(instance()).open(path, options);
  Tally sum;
  const wem::RecordRange records = file->records();
  for (const wem::Record &record : records) tally(&sum, record);
  return sum.value();
}

void add_case(Job &job, const std::string &name, const std::string &path, size_t count,
              const wem::OpenOptions &options) {
  job.begin(name, static_cast<double>(count));
  const JXOpenOptions raw = options.raw();
  const uint32_t wish = raw.record_format == JX_FORMAT_BINARY ? raw.record_length : 0;
  job.add(
      "operation table", [=](Watch &) { return tally_records(path, raw, wish); }, Kind::kPeer);
  job.add(
      "File::records()", [=](Watch &) { return by_range(path, options); }, Kind::kPeer);
  job.add(
      "File::for_each_record()", [=](Watch &) { return by_call(path, options); }, Kind::kModule);
  job.end();
}

}  // namespace

int main() {
  const Scratch scratch;
  const std::string path = scratch.at("records");
  Job job("wrapper", "Records through the C++ wrapper", "ns/record", 1e9);
  const auto text = wem::OpenOptions::input().text(512).record_encoding(JX_ENCODING_UTF8);
  for (const size_t mean : {20u, 80u}) {
    const auto lines = make_lines(Script::kAscii, mean, 8 << 20);
    write_file(path, join_utf8(lines));
    add_case(job, "lines of " + std::to_string(mean) + " B", path, lines.size(), text);
  }
  write_file(path, std::string(80 * 100'000, 'x'));
  add_case(job, "binary records of 80 B", path, 100'000,
           wem::OpenOptions::input().binary(80).encodings({0, 0}));
  job.print();
  return 0;
}
