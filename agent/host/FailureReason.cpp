#include "agent/host/FailureReason.h"

#include <utility>

namespace agent {
namespace {

struct Explained {
  CORBA::ULong code = 0;
  std::string reason;
};

thread_local Explained pending;

}  // namespace

void explainFailure(CORBA::ULong code, const std::string& reason) {
  pending = {code, code == 0 ? std::string() : reason};
}

std::string takeReason(CORBA::ULong code) {
  const Explained taken = std::exchange(pending, {});
  return taken.code == code ? taken.reason : std::string();
}

}  // namespace agent
