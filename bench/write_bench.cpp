// Writing text lines as they are, and binary records.
#include "bench/peers.hpp"
#include "bench/target.hpp"

namespace {

using namespace jx::bench;

std::string joined(const std::vector<std::string> &records, bool is_text) {
  std::string all;
  for (const auto &record : records) {
    all += record;
    if (is_text) all += '\n';
  }
  return all;
}

#ifdef JX_BENCH_GLIB
void add_gio(Job &job, const Target &target, const std::vector<std::string> &records,
             bool is_text) {
  job.add("GLib GBufferedOutputStream", [=, &target, &records](Watch &watch) {
    if (target.path != kSink) unlink(target.path.c_str());
    GFile *file = g_file_new_for_path(target.path.c_str());
    GFileOutputStream *raw = g_file_append_to(file, G_FILE_CREATE_NONE, nullptr, nullptr);
    GOutputStream *stream = g_buffered_output_stream_new_sized(G_OUTPUT_STREAM(raw), 8192);
    watch.start();
    for (const auto &record : records) {
      g_output_stream_write_all(stream, record.data(), record.size(), nullptr, nullptr, nullptr);
      if (is_text) g_output_stream_write_all(stream, "\n", 1, nullptr, nullptr, nullptr);
    }
    g_output_stream_flush(stream, nullptr, nullptr);
    watch.stop();
    g_object_unref(stream);
    g_object_unref(raw);
    g_object_unref(file);
    return uint64_t{0};
  });
}
#endif

// Text records get a line end after them, as a call of its own.
void add_peers(Job &job, const Target &target, const std::vector<std::string> &records,
               bool is_text) {
  add_stdio(job, is_text ? "fwrite, putc" : "fwrite", target, [&records, is_text](std::FILE *file) {
    for (const auto &record : records) {
      std::fwrite(record.data(), 1, record.size(), file);
      if (is_text) std::putc('\n', file);
    }
  });
  add_stdio(job, is_text ? "fwrite_unlocked, putc_unlocked" : "fwrite_unlocked", target,
            [&records, is_text](std::FILE *file) {
              for (const auto &record : records) {
                fwrite_unlocked(record.data(), 1, record.size(), file);
                if (is_text) putc_unlocked('\n', file);
              }
            });
  add_stream<std::ofstream>(job, "ofstream.write", target, [&records, is_text](std::ostream &file) {
    for (const auto &record : records) {
      file.write(record.data(), static_cast<std::streamsize>(record.size()));
      if (is_text) file.put('\n');
    }
  });
  add_stream<std::ofstream>(job, "filebuf.sputn", target, [&records, is_text](std::ofstream &file) {
    std::filebuf &buffer = *file.rdbuf();
    for (const auto &record : records) {
      buffer.sputn(record.data(), static_cast<std::streamsize>(record.size()));
      if (is_text) buffer.sputc('\n');
    }
  });
#ifdef JX_BENCH_GLIB
  add_gio(job, target, records, is_text);
#endif
  add_blocks(job, "memcpy, write(2) 8 KiB", target, 8192, Kind::kLimit,
             [&records, is_text](BlockWriter &writer) {
               for (const auto &record : records) {
                 writer.put(record.data(), record.size());
                 if (is_text) writer.put("\n", 1);
               }
             });
}

// A case on a file in memory and one on /dev/null.
void write_cases(Job &job, const std::string &path, size_t bytes,
                 const std::vector<std::string> &records, const JXOpenOptions &options) {
  const bool is_text = options.record_format == JX_FORMAT_VARIABLE;
  const std::string name = std::to_string(bytes) + " B";
  for (const bool is_sink : {false, true}) {
    const Target target{is_sink ? kSink : path, joined(records, is_text)};
    job.begin(is_sink ? name + ", " + kSink : name, static_cast<double>(records.size()));
    add_peers(job, target, records, is_text);
    add_module(job, target, options, records);
    job.end();
  }
}

}  // namespace

int main() {
  const Scratch scratch;
  const std::string path = scratch.at("written");
  Job lines("write-lines", "Text lines written", "ns/line", 1e9);
  for (const size_t mean : {20u, 80u, 1000u}) {
    std::vector<std::string> records;
    for (const auto &line : make_lines(Script::kAscii, mean, 8 << 20)) {
      records.push_back(to_utf8(line));
    }
    write_cases(lines, path, mean, records,
                text_options(JX_ACCESS_OUTPUT, 16384, JX_ENCODING_UTF8));
  }
  lines.print();

  Job binary("write-binary", "Binary records written", "ns/record", 1e9);
  for (const size_t bytes : {80u, 4096u}) {
    const std::vector<std::string> records((8 << 20) / bytes, std::string(bytes, 'x'));
    write_cases(binary, path, bytes, records,
                binary_options(JX_ACCESS_OUTPUT, static_cast<uint32_t>(bytes)));
  }
  binary.print();
  return 0;
}
