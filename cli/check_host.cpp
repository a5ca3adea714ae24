// The command "check-host": jxcheck.so examines the reference host, as it would any other.
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "cli/commands.hpp"
#include "cli/descriptor.hpp"
#include "cli/session.hpp"
#include "jx/jxcheck.h"
#include "jx/jxhost.h"

namespace cli {
namespace {

struct EndHost {
  void operator()(JXHost *host) const { jxhost_destroy(host); }
};
struct Unload {
  void operator()(void *library) const { ::dlclose(library); }
};

// Where jxcheck.so is: beside the module.
std::string checker_path(Session &session) {
  session.module();
  const std::string &module = session.module_path();
  return module.substr(0, module.rfind('/') + 1) + "jxcheck.so";
}

uint32_t format_of(const Arguments &arguments) {
  if (arguments.has("--json") && arguments.has("--tap")) {
    throw UsageError("--json excludes --tap");
  }
  return arguments.has("--json")  ? JXCHECK_JSON
         : arguments.has("--tap") ? JXCHECK_TAP
                                  : JXCHECK_TEXT;
}

}  // namespace

int run_check_host(Session &session, const Arguments &arguments) {
  JXCheckConfig config = JXCHECK_CONFIG_INIT;
  config.format = format_of(arguments);
  const std::string folder = arguments.operands().empty() ? "/tmp" : arguments.operand(0);
  const Descriptor work(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (work.get() < 0) throw system_failure(folder, errno);
  config.folder_fd = work.get();
  config.output_fd = STDOUT_FILENO;

  const std::string path = checker_path(session);
  const std::unique_ptr<void, Unload> checker(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (!checker) {
    throw Failure("", JXWEM_E_NOTFOUND)
        .saying(::dlerror(), "it comes with the SDK, on Debian in the package libjxhost-dev");
  }
  const auto run = reinterpret_cast<decltype(&jxcheck_run)>(::dlsym(checker.get(), "jxcheck_run"));
  if (!run) throw Failure(path, JX_E_UNSUPPORTED);

  JXHostConfig quiet = JXHOST_CONFIG_INIT;
  quiet.journal_sink = [](void *, uint32_t, JXStatus, const char *) {};
  const std::unique_ptr<JXHost, EndHost> host(jxhost_create(&quiet));
  if (!host) throw Failure("", JX_E_NOMEM);
  config.journal = jxhost_journal(host.get());
  const wem::Status status(run(host.get(), &config, nullptr));
  if (status == JXWEM_E_FAILED) {
    throw Failure("", status).saying("the host does not do what the module relies on");
  }
  require(status, folder);
  return 0;
}

}  // namespace cli
