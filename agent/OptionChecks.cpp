#include "agent/OptionChecks.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "agent/bundle/ModuleLoader.h"
#include "agent/process/ReadFile.h"
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

// Throws UsageError when the audit log cannot be written. Creates no file.
void checkAudit(const Options& options) {
  if (options.audit.empty() || options.audit == "journal") {
    return;
  }
  const std::filesystem::path file = options.audit;
  const std::filesystem::path folder = file.has_parent_path() ? file.parent_path() : ".";
  const bool exists = access(file.c_str(), F_OK) == 0;
  int error = access((exists ? file : folder).c_str(), W_OK) == 0 ? 0 : errno;
  if (std::error_code ignored; std::filesystem::is_directory(file, ignored)) {
    error = EISDIR;
  }
  if (error != 0) {
    throw UsageError(placeOf(options, "audit") + "audit log " + file.string() + ": " +
                     std::generic_category().message(error));
  }
}

void checkModule(const Options& options) {
  try {
    ModuleLoader(options.module).prepare();
  } catch (const ModuleError& failure) {
    throw UsageError(placeOf(options, "module") + failure.what());
  }
}

void requireTogether(bool one, bool other, const char* what, const char* needed) {
  if (one && !other) {
    throw UsageError(std::string(what) + " needs " + needed);
  }
}

}  // namespace

void checkReferences(CORBA::ORB_ptr orb, const Options& options) {
  checkReference(orb, placeOf(options, "naming"), "naming service", options.naming);
  checkReference(orb, placeOf(options, "event-channel"), "event channel", options.eventChannel);
}

void checkTls(const Options& options) {
  const orb::TlsOptions& tls = options.tls;
  const bool hasFile = !tls.certificate.empty() || !tls.key.empty() || !tls.authorities.empty() ||
                       !tls.revoked.empty();
  const auto isTls = [](const orb::Endpoint& endpoint) {
    return endpoint.transport == orb::Transport::kTls;
  };
  const bool serves = std::any_of(options.endpoints.begin(), options.endpoints.end(), isTls);
  if (!hasFile && !serves) {
    return;
  }
  if (!orb::hasTls()) {
    throw UsageError("this program was built without TLS");
  }
  requireTogether(serves, !tls.certificate.empty(), "a TLS endpoint", "--tls-cert");
  requireTogether(!tls.certificate.empty(), !tls.key.empty(), "--tls-cert", "--tls-key");
  requireTogether(!tls.key.empty(), !tls.certificate.empty(), "--tls-key", "--tls-cert");
  requireTogether(!tls.revoked.empty(), !tls.authorities.empty(), "--tls-crl", "--tls-ca");
  requireTogether(serves && tls.clients != orb::TlsOptions::Clients::kNone,
                  !tls.authorities.empty(), "a TLS endpoint that verifies its clients",
                  "--tls-ca, or --tls-clients none");
  try {
    orb::checkTls(tls);
  } catch (const orb::TlsError& failure) {
    throw UsageError(std::string("TLS: ") + failure.what());
  }
}

AccessRules accessRules(const Options& options) {
  try {
    return options.access.empty() ? AccessRules() : AccessRules::read(options.access);
  } catch (const AccessFileError& failure) {
    throw UsageError(placeOf(options, "access") + failure.what());
  }
}

std::unique_ptr<AuditLog> openAudit(const Options& options) {
  if (options.audit.empty()) {
    return nullptr;
  }
  try {
    return std::make_unique<AuditLog>(
        options.audit == "journal" ? auditJournal() : auditFile(options.audit),
        [] { return std::chrono::system_clock::now(); });
  } catch (const FileError& failure) {
    throw UsageError(placeOf(options, "audit") + "audit log " + failure.what());
  }
}

void checkOptions(const Options& options) {
  checkTls(options);
  const std::unique_ptr<orb::Orb> client = orb::startClient({});
  checkReferences(client->get(), options);
  accessRules(options);
  checkAudit(options);
  checkNetwork(options);
  checkModule(options);
}

}  // namespace agent
