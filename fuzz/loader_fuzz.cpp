// Modules that are none, and modules with a broken entry: the loader refuses them with a reason,
// takes no half-made instance, and destroys each that it took once.
#include <dlfcn.h>

#include <array>
#include <cstring>
#include <tuple>

#include "fuzz/broken_module.hpp"
#include "fuzz/scratch.hpp"

namespace jx::fuzz {
namespace {

// It is beside the program.
const std::string &broken_module() {
  static const std::string path =
      (fs::read_symlink("/proc/self/exe").parent_path() / "broken_module.so").string();
  return path;
}

// Kept in the process, so that its plan stays where it is.
BrokenPlan &plan() {
  static BrokenPlan *const one = [] {
    void *library = dlopen(broken_module().c_str(), RTLD_NOW);
    require(library, "the broken module");
    return reinterpret_cast<BrokenPlan *(*)()>(dlsym(library, "broken_plan"))();
  }();
  return *one;
}

// A module or a reason, never both.
JXHostModule *load(const std::string &path) {
  JXHostModule *module = nullptr;
  const char *reason = nullptr;
  JXInstance *made = jxhost_load(host(), path.c_str(), nullptr, &module, &reason);
  require((made != nullptr) == (module != nullptr), "an instance without a module");
  require((made == nullptr) == (reason != nullptr && *reason != '\0'),
          "a refusal without a reason");
  return module;
}

void load_file_of_any_bytes(FuzzedDataProvider *input) {
  // The system's loader trusts the headers of a real library; what it takes for one is its affair.
  const fs::path path = scratch() / "module.so";
  std::string content = input->ConsumeRandomLengthString();
  if (content.starts_with("\x7f"
                          "ELF"))
    content[0] = 'x';
  write_file(path, content);
  require(!load(path.string()), "a file that is no library");
  require(!load(scratch().string()) && !load((path / "x").string()), "a path that is no file");
}

void load_broken_module(FuzzedDataProvider *input) {
  BrokenPlan &given = plan();
  given = {};
  given.has_instance = input->ConsumeIntegral<uint8_t>() % 8 != 0;
  const bool is_caught = input->ConsumeIntegral<uint8_t>() % 4 != 0;
  const uint32_t catcher = is_caught ? 0 : input->ConsumeIntegral<uint32_t>();
  std::memcpy(given.eye_catcher,
              is_caught ? JX_EYE_CATCHER : reinterpret_cast<const char *>(&catcher),
              sizeof given.eye_catcher);
  for (uint32_t &part : given.version) part = input->ConsumeIntegralInRange<uint32_t>(0, 3);
  if (input->ConsumeBool()) given.version_status = input->ConsumeIntegral<uint32_t>();
  given.destroy_status = input->ConsumeIntegral<uint32_t>();

  const std::array needed = {given.version[0], given.version[1], given.version[2]};
  const std::array offered = {JX_VERSION_MAJOR, JX_VERSION_MINOR, JX_VERSION_PATCH};
  const bool is_module =
      given.has_instance != 0 && std::memcmp(given.eye_catcher, JX_EYE_CATCHER, 4) == 0;
  const bool is_taken = is_module && given.version_status == JX_OK && needed <= offered;
  JXHostModule *module = load(broken_module());
  require((module != nullptr) == is_taken, "a module is taken if nothing is wrong with it");
  require(given.entered == 1, "the module gets its host once");
  require(given.destroyed == (is_module && !is_taken ? 1u : 0u), "a refused instance is destroyed");
  jxhost_unload(module);
  require(given.destroyed == (is_module ? 1u : 0u), "an instance is destroyed once");
}

}  // namespace
}  // namespace jx::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  FuzzedDataProvider input(data, size);
  if (input.ConsumeBool()) {
    jx::fuzz::load_file_of_any_bytes(&input);
  } else {
    jx::fuzz::load_broken_module(&input);
  }
  return 0;
}
