#include "agent/host/SecurityService.h"

namespace agent {
namespace {

thread_local AccessContext access;

}  // namespace

void SecurityService::setAccessIdentity(const std::string& identity) {
  access.identity = identity;
}

void SecurityService::setAccessLevel(const int& level) {
  access.level = level;
}

AccessContext SecurityService::currentAccess() {
  return access;
}

}  // namespace agent
