#include "agent/ManagerPublication.h"

#include <fstream>
#include <system_error>

#include "agent/process/ReplaceFile.h"
#include "idl/ObjectKeys.h"

namespace agent {
namespace {

// Whether the file is a regular file with exactly this text.
bool hasText(const std::filesystem::path& file, const std::string& text) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(std::filesystem::symlink_status(file, failure)) ||
      std::filesystem::file_size(file, failure) != text.size()) {
    return false;
  }
  std::ifstream stream(file, std::ios::binary);
  std::string found(text.size(), '\0');
  stream.read(found.data(), static_cast<std::streamsize>(found.size()));
  return stream && found == text;
}

}  // namespace

ManagerPublication::ManagerPublication(orb::Server& server, CORBA::Object_ptr manager,
                                       const Options& options,
                                       const std::function<bool()>& stopRequested) {
  if (!options.naming.empty()) {
    entry_.emplace(server.get(), options.naming, object_key::kManager, manager, stopRequested);
  }
  if (!options.iorFile.empty()) {
    iorText_ = referenceText(server, manager) + '\n';
    replaceFile("IOR file", options.iorFile, iorText_);
    iorFile_ = options.iorFile;
  }
}

ManagerPublication::~ManagerPublication() {
  if (!iorFile_.empty() && hasText(iorFile_, iorText_)) {
    std::error_code ignored;
    std::filesystem::remove(iorFile_, ignored);
  }
}

std::string referenceText(orb::Server& server, CORBA::Object_ptr object) {
  const CORBA::String_var text = server.get()->object_to_string(object);
  return text.in();
}

}  // namespace agent
