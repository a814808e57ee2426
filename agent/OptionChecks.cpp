#include "agent/OptionChecks.h"

#include <unistd.h>

#include <cerrno>
#include <memory>
#include <string>
#include <system_error>

#include "agent/bundle/ModuleLoader.h"
#include "orb/orb.h"
#include "orb/resolve.h"

namespace agent {
namespace {

void checkReference(CORBA::ORB_ptr orb, const char* kind, const std::string& reference) {
  if (reference.empty()) {
    return;
  }
  try {
    orb::checkReference(orb, reference);
  } catch (const orb::MalformedReference& failure) {
    throw UsageError(kind + (" " + reference) + ": " + failure.what());
  }
}

}  // namespace

void checkReferences(CORBA::ORB_ptr orb, const Options& options) {
  checkReference(orb, "naming service", options.naming);
  checkReference(orb, "event channel", options.eventChannel);
}

void checkOptions(const Options& options) {
  const std::unique_ptr<orb::Orb> client = orb::startClient({});
  checkReferences(client->get(), options);
  if (!options.network.empty() && access(options.network.c_str(), R_OK) != 0) {
    throw UsageError(options.network.string() + ": " + std::generic_category().message(errno));
  }
  ModuleLoader(options.module).prepare();
}

}  // namespace agent
