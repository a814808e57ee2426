// Checks of the options that need an ORB or the file system.

#ifndef AGENT_OPTIONCHECKS_H
#define AGENT_OPTIONCHECKS_H

#include <memory>

#include "agent/Options.h"
#include "agent/access/AccessRules.h"
#include "agent/access/AuditLog.h"
#include "orb/corba.h"

namespace agent {

// Throws UsageError when --naming or --event-channel is not an object reference. Makes no call. The
// error of an option of the configuration file begins with the file and the line, here and below.
void checkReferences(CORBA::ORB_ptr orb, const Options& options);

// Reads the file of --access; the default rules without the option. Throws UsageError.
AccessRules accessRules(const Options& options);

// Opens the audit log of --audit; null without the option. Throws UsageError.
std::unique_ptr<AuditLog> openAudit(const Options& options);

// For --check-config: checks the files of TLS, the references, the access file, that the audit log
// can be written, that the network file is readable, and that the module can be loaded. Starts and
// ends an ORB. Throws UsageError. REQUIRES: the process has no ORB.
void checkOptions(const Options& options);

// Checks the options of TLS and reads their files. Throws UsageError. Thread-safety: any thread.
void checkTls(const Options& options);

}  // namespace agent

#endif
