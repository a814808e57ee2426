#include "client/commands/Backup.h"

#include "client/base/File.h"
#include "client/output/PrintFunctions.h"

namespace topoctl {
namespace {

struct Backup {
  CORBA::ULongLong bytes = 0;
};

const RecordFields<Backup>& backupFields() {
  static const RecordFields<Backup> fields = {
      {"bytes", [](const Backup& done) -> Value { return static_cast<std::int64_t>(done.bytes); }},
  };
  return fields;
}

// Cancels a backup whose transfer has failed. The caller reports the first failure, so a failure of
// this call is ignored.
void cancel(TopoAgent::Console_I_ptr console, CORBA::ULongLong id) {
  try {
    console->endBackup(id);
  } catch (const CORBA::Exception&) {
    return;
  }
}

Backup fetch(TopoAgent::Console_I_ptr console, CORBA::ULongLong id, NewFile& file) {
  Backup done;
  for (bool isLast = false; !isLast;) {
    const TopoAgent::BackupPart_T_var part = console->continueBackup(id);
    file.write(part->content.get_buffer(), part->content.length());
    done.bytes += part->content.length();
    isLast = part->isLast;
  }
  file.finish();
  return done;
}

// Begins a backup or an export, and returns its id.
using Begin = CORBA::ULongLong (*)(TopoAgent::Console_I_ptr);

PrintFunction fetchNew(TopoAgent::Console_I_ptr console, const Options& options, Begin begin) {
  NewFile file(options.arguments.file);
  const CORBA::ULongLong id = begin(console);
  try {
    return recordPrinter(fetch(console, id, file), backupFields(), options.style());
  } catch (...) {
    cancel(console, id);
    throw;
  }
}

}  // namespace

PrintFunction backup(TopoAgent::Console_I_ptr console, const Options& options) {
  return fetchNew(console, options,
                  [](TopoAgent::Console_I_ptr agent) { return agent->beginBackup(); });
}

PrintFunction exportNetwork(TopoAgent::Console_I_ptr console, const Options& options) {
  return fetchNew(console, options,
                  [](TopoAgent::Console_I_ptr agent) { return agent->beginExport(); });
}

}  // namespace topoctl
