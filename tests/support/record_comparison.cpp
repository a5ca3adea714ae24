#include "support/record_comparison.hpp"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "kernel/handle.hpp"
#include "support/files.hpp"
#include "support/syscalls.hpp"

namespace jx::test {

std::string RecordComparison::run(const Script &script) {
  if (script.content) {
    write_file(path_, *script.content);
  } else {
    std::filesystem::remove(path_);
  }
  content_ = script.content;
  for (size_t i = 0; i < script.steps.size(); ++i) {
    const Step &step = script.steps[i];
    if (step.act == Act::open) {
      open(step.options);
    } else if (file_) {
      operate(step);
    }
    compare_tracked();
    if (differs_) return "step " + std::to_string(i) + difference_.str();
  }
  return "";
}

void RecordComparison::compare_status(JXStatus actual, JXStatus expected) {
  if (actual == expected) return;
  difference_ << std::hex;
  compare("status", actual, expected);
  difference_ << std::dec;
}

// Direct text handles track the offset of their descriptor.
void RecordComparison::compare_tracked() {
  if (!file_ || !model_->is_text() || model_->is_buffered()) return;
  const FileHandle *handle = handle_of(file_);
  const auto offset = static_cast<uint64_t>(lseek64(handle->host_file->descriptor, 0, SEEK_CUR));
  // The tracked position does not cover the start of an append, nor a failed point.
  if (handle->access.mode != JX_ACCESS_APPEND && !is_lost_) {
    compare("tracked position", handle->tracked_position, offset);
  }
}

void RecordComparison::compare_files() {
  const std::string actual = content_ ? read_file(path_) : "";
  if (actual == content_.value_or("")) return;
  compare("file", hex(actual), hex(*content_));
  const auto [at, same] =
      std::mismatch(actual.begin(), actual.end(), content_->begin(), content_->end());
  differ() << ", first differs at " << at - actual.begin();
}

void RecordComparison::open(const JXOpenOptions &options) {
  model_ = std::make_unique<RecordModel>(content_);
  JXStatus status = 0;
  file_ = instance_->open(instance_, name_.data(), chars(name_), &options, 0, nullptr, nullptr,
                          &status);
  compare_status(status, model_->open(options));
  compare("handle", file_ != nullptr, status == JX_OK);
  last_ = nullptr;
  is_lost_ = false;
}

void RecordComparison::operate(const Step &step) {
  if (step.act == Act::read) {
    for (uint32_t i = 0; i < step.times && read(step) && !differs_; ++i) {
    }
    return;
  }
  if (step.act == Act::write) {
    for (uint32_t i = 0; i < step.times && write(step.data.data(), step.data, step.offset); ++i) {
    }
  } else if (step.act == Act::write_back) {
    if (last_) write(last_, last_record_, {});
  } else {
    position(step);
  }
  last_ = nullptr;
}

bool RecordComparison::read(const Step &step) {
  const int64_t offset = step.offset.value_or(0);
  last_ = nullptr;
  memory_ = std::make_unique<char[]>(std::max(step.count, 1u));
  void *const before = memory_.get();
  void *data = before;
  uint32_t length = step.count;
  const bool is_cut = most_bytes_ != 0 && model_->is_text() && model_->is_buffered();
  if (is_cut) {
    arm_syscalls(syscalls(Syscall::read), {.most_bytes = most_bytes_, .to_the_end = true});
  }
  const JXStatus status = file_->read(file_, &data, &length, 0, offset_of(step));
  if (is_cut) disarm_syscalls();
  const ModelRead expected = model_->read(step.count, step.offset ? &offset : nullptr);
  compare_status(status, expected.status);
  compare("length", length, expected.length);
  compare("offset", offset_, offset);
  if (expected.pointer == ModelRead::null) compare<void *>("pointer", data, nullptr);
  if (expected.pointer == ModelRead::stays) compare<void *>("pointer", data, before);
  if (differs_ || expected.pointer != ModelRead::leads) return false;
  if (model_->transfers()) compare<void *>("pointer", data, before);
  if (!data && (length != 0 || model_->is_text())) differ() << ", a null pointer";
  last_ = length != 0 ? data : nullptr;
  last_record_.assign(static_cast<const char *>(data), data ? length : 0);
  if (last_record_ != expected.record) {
    differ() << ", record: " << hex(last_record_) << ", expected " << hex(expected.record);
  }
  return status != JXWEM_E_EOF;
}

bool RecordComparison::write(const void *data, const std::string &bytes,
                             std::optional<int64_t> offset) {
  offset_ = offset.value_or(0);
  // The model first: data may lie in the handle's own buffers.
  int64_t expected_offset = offset_;
  const JXStatus expected = model_->write(bytes, offset ? &expected_offset : nullptr);
  const JXStatus status = file_->write(file_, data, static_cast<uint32_t>(bytes.size()), 0,
                                       offset ? &offset_ : nullptr);
  compare_status(status, expected);
  compare("offset", offset_, expected_offset);
  return status == JX_OK;
}

void RecordComparison::position(const Step &step) {
  int64_t expected = step.offset.value_or(0);
  offset_ = expected;
  switch (step.act) {
    case Act::note:
      compare_status(file_->note(file_, &offset_), model_->note(&expected));
      break;
    case Act::point:
      compare_status(file_->point(file_, &offset_, step.count),
                     model_->point(&expected, step.count));
      is_lost_ = offset_ < 0;
      break;
    case Act::truncate:
      compare_status(file_->truncate(file_, &offset_), model_->truncate(expected));
      break;
    case Act::flush:
      compare_status(file_->flush(file_), model_->flush());
      compare_files();
      break;
    default:
      JXFile *file = std::exchange(file_, nullptr);
      compare_status(file->close(file), model_->close());
      compare_files();
  }
  compare("offset", offset_, expected);
}

}  // namespace jx::test
