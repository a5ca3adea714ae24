// "convert" of many files: each is converted on its own, and what fails does not stop the others.
#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "cli/conversion.hpp"
#include "cli/convert_plan.hpp"
#include "cli/copying.hpp"
#include "cli/input.hpp"
#include "cli/many.hpp"
#include "cli/progress.hpp"
#include "cli/record_filter.hpp"
#include "cli/revision.hpp"
#include "cli/workers.hpp"

namespace cli {
namespace {

constexpr uint64_t kMostThreads = 1024;

// Converts one file after another on one thread.
class Converter {
 public:
  Converter(Session &session, const Plan &plan, ChangedFolders &folders)
      : session_(session), plan_(plan), folders_(folders) {}

  void convert(Job &job) {
    if (job.failure) return;
    try {
      run(job);
    } catch (const Failure &failure) {
      job.failure = Session::explained(failure);
    } catch (const UsageError &error) {
      // Wrong for the encoding that this file turned out to have.
      job.failure = Failure(job.input, JXWEM_E_BADOPTIONS).saying(error.message);
    } catch (const std::exception &error) {
      job.failure = library_failure(error);
      job.failure->path = job.input;
    }
    // It may hold the start of a character of what failed.
    if (job.failure) filter_.reset();
  }

 private:
  void run(Job &job) {
    if (!plan_.is_in_place) {
      Input input(session_, job.input, Input::Use::kBytes);
      Target target(session_, job.output, Target::Mode::kRevise);
      target.refuse_same(input.file_status());
      return copy(job, input, target);
    }
    Target target(session_, job.output, Target::Mode::kRevise);
    if (target.file_status().st_nlink == 0) throw Failure(job.input, JXWEM_E_NOTFOUND);
    if (target.old_fd() < 0) throw Failure(job.input, JXWEM_E_ACCESS);
    target.set_backup(plan_.backup_suffix);
    Input input(session_, target.old_fd(), job.input, Input::Use::kBytes);
    copy(job, input, target);
  }

  Filter &filter(uint32_t from) {
    if (!filter_ || from != from_) {
      const Conversion &conversion = plan_.conversion;
      filter_ = make_filter(session_, from, conversion.to, conversion.changes, conversion.forms);
      from_ = from;
    }
    return *filter_;
  }

  [[noreturn]] void fail(Input &input, uint32_t from, wem::Status status) const {
    const Conversion &conversion = plan_.conversion;
    const auto fault =
        input.find_fault(from, conversion.to, conversion.changes.line_end != LineEnd::kKeep);
    throw fault ? to_failure(input.shown(), *fault) : Failure(input.shown(), status);
  }

  void copy(Job &job, Input &input, Target &target) {
    const Conversion &conversion = plan_.conversion;
    wem::File source = input.open(
        wem::OpenOptions::input().binary(conversion.record_length).direct().direct_transfer());
    ByteReader reader(source, input.shown(), conversion.record_length,
                      input.head_bytes(conversion.from));
    const std::string_view head = reader.next();
    const uint32_t from = conversion.encoding_of(input, head, reader.is_at_end());
    const size_t mark_bytes = conversion.mark_bytes(head, from);
    Revision revision(target, plan_.is_trial);
    const auto write = [&revision](std::string_view bytes) { revision.write(bytes); };
    if (conversion.has_mark(mark_bytes > 0)) write(byte_order_mark(conversion.to));
    Filter &text = filter(from);
    text.begin(input.shown(), mark_bytes);
    wem::Status status = text.feed(head.substr(mark_bytes), write);
    while (status.ok() && !reader.is_at_end()) status = text.feed(reader.next(), write);
    if (status.ok()) status = text.finish(write);
    if (!status.ok()) fail(input, from, status);
    job.had_old = target.file_status().st_nlink > 0;
    job.old_bytes = static_cast<uint64_t>(target.file_status().st_size);
    job.is_changed = revision.commit(&folders_);
    job.new_bytes = revision.size();
    job.tally = text.tally_text();
  }

  Session &session_;
  const Plan &plan_;
  ChangedFolders &folders_;
  std::unique_ptr<Filter> filter_;  // the last one
  uint32_t from_ = 0;               // of it
};

// What one thread works with.
struct Worker {
  Worker(const Session &session, const Plan &plan, ChangedFolders &folders)
      : own(session), converter(own, plan, folders) {}
  Session own;
  Converter converter;
};

// What is told of each file.
class Report {
 public:
  Report(Session &session, const Plan &plan)
      : session_(session), is_trial_(plan.is_trial), progress_(plan.jobs.size()) {}

  size_t failed_count() const { return failed_count_; }

  void add(Job &job, size_t index) {
    progress_.show(index + 1);
    if (job.failure) {
      ++failed_count_;
      progress_.hide();
      session_.report(std::move(*job.failure));
      return;
    }
    if (!job.tally.empty()) {
      progress_.hide();
      session_.note(job.input + ": " + job.tally);
    }
    if (is_trial_ && job.is_changed) print_trial(job);
  }

 private:
  void print_trial(const Job &job) {
    const std::string size = std::to_string(job.new_bytes) + " bytes\n";
    const std::string change = ": would change from " + std::to_string(job.old_bytes) + " to ";
    session_.output() << session_.shown(job.output) + (job.had_old ? change : ": would be new, ")
                      << size;
  }

  Session &session_;
  bool is_trial_;
  Progress progress_;
  size_t failed_count_ = 0;
};

}  // namespace

int convert_many(Session &session, const Arguments &arguments, Conversion conversion) {
  conversion.to = settle(arguments.encoding("--to"), {});
  if (arguments.has("--bom")) require_mark(conversion.to);
  // What an encoding cannot do is wrong usage, not the failure of each file.
  FaultTally none;
  static_cast<void>(Encoder(session, conversion.to, conversion.changes, {}, none));
  if (!conversion.from.is_auto) {
    make_filter(session, settle(conversion.from, {}), conversion.to, conversion.changes,
                conversion.forms)
        ->begin({}, 0);
  }
  const auto threads =
      static_cast<size_t>(arguments.number("--jobs", processor_count(), 1, kMostThreads));
  Plan plan = make_plan(session, arguments, conversion);
  const size_t count = plan.jobs.size();
  static_cast<void>(session.module());
  ChangedFolders folders;
  std::vector<std::unique_ptr<Worker>> workers;
  while (workers.size() < std::min(threads, count)) {
    workers.push_back(std::make_unique<Worker>(session, plan, folders));
  }
  const size_t failed = [&] {
    Report report(session, plan);
    work_in_order(
        count, threads,
        [&](size_t thread, size_t index) { workers[thread]->converter.convert(plan.jobs[index]); },
        [&](size_t index) { report.add(plan.jobs[index], index); });
    return report.failed_count();
  }();
  folders.sync();
  return summarize(session, failed, count);
}

}  // namespace cli
