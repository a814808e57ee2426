#include "agent/bundle/ModuleLoader.h"

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace agent {
namespace {

constexpr const char* kFactory = "_make_zu_corba_topo";

ModuleError moduleError(const std::string& file, const std::exception& reason) {
  return ModuleError("module " + file + ": " + reason.what());
}

}  // namespace

ModuleLoader::ModuleLoader(std::filesystem::path file) : file_(std::move(file)) {}

void ModuleLoader::prepare() {
  prepared_.reset();
  auto copy = std::make_unique<ModuleCopy>(file_);
  copy->check(kFactory);
  try {
    host_defaults::ModuleFile::checkPath(copy->path());
  } catch (const std::runtime_error& reason) {
    throw moduleError(copy->path(), reason);
  }
  prepared_ = std::move(copy);
}

void ModuleLoader::load() {
  if (!prepared_) {
    prepare();
  }
  const std::unique_ptr<ModuleCopy> copy = std::move(prepared_);
  version_ = copy->version();
  try {
    mapped_.load(copy->path());
  } catch (const std::runtime_error& reason) {
    throw moduleError(file_.string(), reason);
  }
}

void ModuleLoader::unload() noexcept {
  mapped_.unload();
}

}  // namespace agent
