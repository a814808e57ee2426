#include "agent/OptionChecks.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "agent/bundle/ModuleLoader.h"
#include "orb/orb.h"
#include "orb/resolve.h"

namespace agent {
namespace {

// Where the configuration file sets the option; empty for an option of the command line.
std::string placeOf(const Options& options, const std::string& name) {
  const auto line = options.configLines.find(name);
  return line == options.configLines.end() ? "" : line->second;
}

// place: as returned by placeOf.
void checkReference(CORBA::ORB_ptr orb, const std::string& place, const char* kind,
                    const std::string& reference) {
  if (reference.empty()) {
    return;
  }
  try {
    orb::checkReference(orb, reference);
  } catch (const orb::MalformedReference& failure) {
    throw UsageError(place + kind + " " + reference + ": " + failure.what());
  }
}

void checkNetwork(const Options& options) {
  if (options.network.empty()) {
    return;
  }
  const std::string prefix = placeOf(options, "network") + options.network.string() + ": ";
  if (access(options.network.c_str(), R_OK) != 0) {
    throw UsageError(prefix + std::generic_category().message(errno));
  }
  if (!std::filesystem::is_regular_file(options.network)) {
    throw UsageError(prefix + "is not a regular file");
  }
}

void checkModule(const Options& options) {
  try {
    ModuleLoader(options.module).prepare();
  } catch (const ModuleError& failure) {
    throw UsageError(placeOf(options, "module") + failure.what());
  }
}

}  // namespace

void checkReferences(CORBA::ORB_ptr orb, const Options& options) {
  checkReference(orb, placeOf(options, "naming"), "naming service", options.naming);
  checkReference(orb, placeOf(options, "event-channel"), "event channel", options.eventChannel);
}

void checkOptions(const Options& options) {
  const std::unique_ptr<orb::Orb> client = orb::startClient({});
  checkReferences(client->get(), options);
  checkNetwork(options);
  checkModule(options);
}

}  // namespace agent
