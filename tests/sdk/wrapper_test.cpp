// The C++ wrapper: what compiles, closed handles, and lifetimes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <ranges>

#include "sdk/wrapper_support.hpp"

namespace {
long allocations_left = -1;  // before one fails; -1: none fails
}  // namespace

[[gnu::noinline]] void *operator new(size_t bytes, const std::nothrow_t &) noexcept {
  if (allocations_left == 0) return nullptr;
  if (allocations_left > 0) --allocations_left;
  return std::malloc(bytes ? bytes : 1);
}
[[gnu::noinline]] void *operator new(size_t bytes) {
  if (void *block = operator new(bytes, std::nothrow)) return block;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void *block) noexcept { std::free(block); }
[[gnu::noinline]] void operator delete(void *block, size_t) noexcept { std::free(block); }

namespace jx::test {
namespace {

using wem::Failed;
using wem::OpenOptions;
using wem::Result;
using wem::Status;

static_assert(Status(JXWEM_E_EOF).name() == std::string_view("JXWEM_E_EOF"));
static_assert(Status().ok() && Status(JXStatus{1}).name() == std::string_view("unknown"));
static_assert(Status(JXHOST_E_MALFORMED).text() ==
              std::string_view("input is not valid in its encoding"));
static_assert(Failed(JX_OK).status() == JXWEM_E_FAILED);

// Nothing converts to a status or a result implicitly.
template <typename To, typename... From>
constexpr bool is_none_convertible = (!std::is_convertible_v<From, To> && ...);
template <typename To, typename... From>
constexpr bool is_none_usable = (!std::is_constructible_v<To, From> && ...);
static_assert(is_none_convertible<Status, int, bool, double, JXStatus, int64_t>);
static_assert(is_none_usable<Status, int, bool, double, int64_t>);
static_assert(is_none_convertible<Result<int64_t>, int, bool, double, JXStatus, int64_t, Status>);
static_assert(is_none_usable<Result<int64_t>, int, bool, double, JXStatus, Status>);
static_assert(is_none_convertible<bool, Status, Result<int64_t>, Result<bool>, wem::File>);

// Lending from a temporary does not compile; the ranges have the right category.
template <typename T>
concept Arrows = requires(T &&t) {
  static_cast<T &&>(t).operator->();
};
static_assert(Arrows<Result<wem::File> &> && !Arrows<Result<wem::File>>);
static_assert(Arrows<Result<wem::Record>> && !Arrows<Result<wem::Table<JXMember>>>);
template <typename T>
concept Lends = requires(T &&t) {
  static_cast<T &&>(t).records();
}
|| requires(T &&t) { static_cast<T &&>(t).lines(); }
|| requires(T &&t) { static_cast<T &&>(t).entries(); }
|| requires(T &&t) { static_cast<T &&>(t).read(1u); }
|| requires(T &&t) { static_cast<T &&>(t).begin(); };
static_assert(Lends<wem::File &> && Lends<wem::Directory &> && Lends<wem::Table<JXMember> &>);
static_assert(!Lends<wem::File> && !Lends<wem::Directory> && !Lends<wem::Table<JXMember>>);
static_assert(std::ranges::view<wem::RecordRange> && std::ranges::input_range<wem::RecordRange>);
static_assert(std::ranges::view<wem::LineRange> && std::ranges::view<wem::EntryRange>);
static_assert(std::ranges::forward_range<wem::Table<JXMember> &>);

using Wrapper = WrapperTest;

TEST_F(Wrapper, ValueThatIsNotThereStopsWithItsName) {
  const Result<int64_t> failed = Failed(JXWEM_E_INUSE);
  EXPECT_DEATH(static_cast<void>(*failed), "JXWEM_E_INUSE 0x80bfe807");
  EXPECT_DEATH(static_cast<void>(failed.value()), "JXWEM_E_INUSE");
  auto file = instance().open(at("none"), OpenOptions::input());
  EXPECT_DEATH(static_cast<void>(file->close()), "JXWEM_E_NOTFOUND");
  EXPECT_EQ(failed.value_or(7), 7);
  EXPECT_EQ(Result<int64_t>(int64_t{8}).value_or(7), 8);
}

template <typename... Answers>
void expect_no_handle(Answers... answers) {
  for (const Status answer : {answers...}) EXPECT_EQ(answer, JXWEM_E_NOHANDLE);
}

TEST_F(Wrapper, FailuresAreValuesOrExceptions) {
  using Number = Result<int64_t>;
  const auto halved = [](int64_t value) {
    return value % 2 == 0 ? Number(value / 2) : Number(Failed(JX_E_BADARG));
  };
  const auto text = [](int64_t value) { return std::to_string(value); };
  EXPECT_EQ(Number(int64_t{12}).and_then(halved).and_then(halved).transform(text).or_throw(), "3");
  EXPECT_EQ(Number(int64_t{6}).and_then(halved).and_then(halved).transform(text).error(),
            JX_E_BADARG);
  const auto replaced = [](Status status) { return Number(int64_t{status.code()}); };
  EXPECT_EQ(*Number(Failed(JX_E_BADARG)).or_else(replaced), int64_t{JX_E_BADARG});
  EXPECT_EQ(*Number(int64_t{1}).or_else(replaced), 1);
  try {
    const wem::File file = instance().open(at("gone"), OpenOptions::input()).or_throw();
    ADD_FAILURE();
  } catch (const wem::Error &error) {
    EXPECT_EQ(error.status(), JXWEM_E_NOTFOUND);
    EXPECT_STREQ(error.what(), Status(JXWEM_E_NOTFOUND).text());
  }
  EXPECT_NO_THROW(Status().or_throw());
}

TEST_F(Wrapper, HandleThatIsNotThereIsToldByEveryCall) {
  put("text", "one\n");
  wem::File closed = *instance().open(at("text"), OpenOptions::input().text());
  wem::RecordRange records = closed.records();
  EXPECT_TRUE(closed.close().ok());
  wem::File moved = *instance().open(at("text"), OpenOptions::input().text());
  const wem::File taken = std::move(moved);
  wem::File never;
  for (wem::File *file : {&closed, &moved, &never}) {
    expect_no_handle(file->read().status(), file->read_line().status(), file->write(U"x"),
                     file->read_bytes().status(), file->write_line("x"), file->point(0).status(),
                     file->flush(), file->for_each_record([](const wem::Record &) {}));
    EXPECT_EQ(file->attributes().record_length + file->name().size(), 0u);
  }
  for ([[maybe_unused]] const wem::Record &record : records) ADD_FAILURE();
  wem::Directory folder = *instance().open_directory(at(""));
  EXPECT_TRUE(folder.close().ok());
  expect_no_handle(records.error(), folder.read().status(), folder.contains("text"),
                   folder.members().status());

  wem::Instance gone = instance();
  const wem::Instance other = std::move(gone);
  for (const wem::Instance &none : {gone, wem::Instance()}) {
    expect_no_handle(none.open("x", OpenOptions::input()).status(), none.exist("x"),
                     none.open_directory("x").status(), none.build_path("x").status(),
                     none.split_path("x").status(), none.info("x").status());
    EXPECT_EQ(none.version().a, 0u);
  }
}

// Makes an object from a module, drops the module, and uses the object, which alone keeps it
// loaded.
template <typename Make, typename Use>
void use_alone(Make make, Use use) {
  wem::Module module = wem::Module::load(JXWEM_PATH);
  ASSERT_TRUE(module);
  auto made = make(module.instance());
  ASSERT_TRUE(made);
  module = {};
  use(*made);
}

TEST_F(Wrapper, HandlesOutliveTheirModule) {
  put("text", "one\n");
  // Loaded over itself: the old instance is destroyed, the new one works.
  module_ = wem::Module::load(JXWEM_PATH, nullptr, &error_);
  ASSERT_TRUE(module_) << error_;
  EXPECT_TRUE(instance().exist(at("text")).ok());
  module_ = {};
  const wem::Name folder = at(""), text = at("text");
  use_alone([&](const auto &of) { return of.open(text, OpenOptions::input().text()); },
            [](wem::File &file) { EXPECT_EQ(*file.read_line(), "one"); });
  use_alone([&](const auto &of) { return of.open_directory(folder); },
            [](wem::Directory &open) { EXPECT_EQ((*open.members()).size(), 1u); });
  use_alone([&](const auto &of) { return of.open_directory(folder).value().members(); },
            [](auto &members) { EXPECT_EQ(wem::name_of(*members.begin()), U"text"); });
  use_alone([&](const auto &of) { return of.directory_list(folder); },
            [](auto &list) { EXPECT_EQ(list.size(), 2u); });
  use_alone([&](const auto &of) { return Result<wem::Instance>(of); },
            [&](wem::Instance &last) { EXPECT_TRUE(last.exist(text).ok()); });
}

TEST_F(Wrapper, AssignmentClosesWhatWasHeld) {
  wem::File file = *instance().open(at("old"), OpenOptions::output().text());
  EXPECT_TRUE(file.write_line("kept").ok());
  wem::File next = *instance().open(at("new"), OpenOptions::output().text());
  file = std::move(next);
  EXPECT_EQ(get("old"), "kept\n");
  EXPECT_TRUE(instance().open(at("old"), OpenOptions::output().text()));  // not locked any more
  wem::File &self = file;
  file = std::move(self);
  EXPECT_TRUE(file.write_line("x").ok());

  // A table ends before its pool.
  static std::string order;
  wem::Directory directory = *instance().open_directory(at(""));
  auto members = *directory.members();
  JXTable *table = members.raw();
  JXPool *pool = members.begin()->pool;
  static const auto end_table = table->destroy_table;
  static const auto end_pool = pool->destroy_pool;
  table->destroy_table = [](JXTable *ended) { return order += "table ", end_table(ended); };
  pool->destroy_pool = [](JXPool *ended) { return order += "pool ", end_pool(ended); };
  members = *directory.members();
  EXPECT_EQ(order, "table pool ");
}

// A range outlives the close of its handle, without what the handle kept.
TEST_F(Wrapper, CloseReleasesWhatIsKept) {
  struct Raw {
    JXStatus (*close)(Raw *);
  };
  Raw raw = {[](Raw *) { return JXStatus{JXWEM_E_DISKFULL}; }};
  auto keeper = std::make_shared<const int>(0);
  const std::weak_ptr<const int> kept = keeper;
  wem::detail::Handle<Raw> handle(&raw, std::move(keeper));
  const auto watch = handle.watch();
  EXPECT_EQ(handle.close(), JXWEM_E_DISKFULL);
  EXPECT_TRUE(kept.expired());
  EXPECT_EQ(watch.get(), nullptr);
}

TEST_F(Wrapper, OutOfMemoryLeaksNothing) {
  put("text", "a line that is longer than a string keeps in itself\n");
  const auto use_all = [this] {
    const wem::Name folder = at(""), text = at("text");
    auto file = instance().open(text, OpenOptions::input().text());
    auto directory = instance().open_directory(folder);
    if (!file || !directory) return false;
    for (const wem::Record &record : file->records()) EXPECT_FALSE(record.utf8()->empty());
    for (const std::u32string &entry : directory->entries()) EXPECT_EQ(entry, U"text");
    return instance().split_path(text) && instance().build_path(folder, "text") &&
           instance().create_name(folder, {"p", {}}) && instance().info(text) &&
           instance().directory_list(folder) && instance().read_lines(text) &&
           instance().read_bytes(text);
  };
  const auto live = [this] {
    return jxhost_live_objects(module_.host()) + jxhost_live_blocks(module_.host());
  };
  const auto before = live();
  bool is_done = false;
  long count = 0;
  for (; !is_done; ++count) {
    allocations_left = count;
    try {
      is_done = use_all();
    } catch (const std::bad_alloc &) {
    }
    allocations_left = -1;
    ASSERT_EQ(live(), before) << "after allocation " << count;
  }
  EXPECT_GT(count, 10);
}

TEST_F(Wrapper, JournalOfTheConfigurationIsUsed) {
  module_ = {};
  std::string told, other_told;
  JXHostConfig config = JXHOST_CONFIG_INIT;
  config.journal_context = &told;
  config.journal_sink = [](void *context, uint32_t, JXStatus, const char *text8) {
    *static_cast<std::string *>(context) = text8;
  };
  module_ = wem::Module::load(JXWEM_PATH, &config, &error_);
  ASSERT_TRUE(module_) << error_;
  put("file", "x");
  put("other", "x");
  EXPECT_EQ(instance().rename(at("file"), at("other") + "/x"), JXWEM_E_SYSTEM);
  EXPECT_NE(std::exchange(told, ""), "");
  EXPECT_FALSE(instance().open(at(std::string(300, 'x')), OpenOptions::input()));
  EXPECT_NE(told, "");
  // Another context is that of another host, for which the module is taken.
  config.journal_context = &other_told;
  EXPECT_FALSE(wem::Module::load(JXWEM_PATH, &config, &error_));
}

}  // namespace
}  // namespace jx::test
