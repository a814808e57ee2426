// topo-conformance: checks that a host of the module keeps the contracts.

#include <csignal>
#include <filesystem>
#include <iostream>
#include <string>

#include "conformance/Options.h"
#include "conformance/Report.h"
#include "conformance/Run.h"

namespace {

// The file in its folder of an installed tree, or in the lib folder of a build. Both places are
// relative to this program.
std::string installed(const std::string& file) {
  namespace fs = std::filesystem;
  std::error_code status;
  const fs::path bin = fs::read_symlink("/proc/self/exe", status).parent_path();
  const fs::path inTree = (bin / TOPO_INSTALLED_MODULE_FOLDER / file).lexically_normal();
  return fs::exists(inTree, status) ? inTree : (bin / "../lib" / file).lexically_normal();
}

}  // namespace

int main(int argc, char* argv[]) {
  std::signal(SIGPIPE, SIG_IGN);  // a host that has ended does not end this program
  try {
    const conformance::Options options = conformance::parseOptions(
        argc, argv, {installed("libzu_corba_topo.so"), installed("libtopo_conformance_probe.so")});
    if (!options.notice.empty()) {
      std::cout << options.notice << std::flush;
      return std::cout ? conformance::kAllPassed : conformance::kNotRun;
    }
    return conformance::run(options, std::cout, std::cerr);
  } catch (const conformance::UsageError& failure) {
    std::cerr << "topo-conformance: " << failure.what() << '\n';
    return conformance::kNotRun;
  }
}
