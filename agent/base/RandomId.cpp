#include "agent/base/RandomId.h"

#include <sys/random.h>

#include <cerrno>
#include <system_error>

namespace agent {
namespace {

constexpr CORBA::ULong kIdOctets = 16;

}  // namespace

PortableServer::ObjectId* randomObjectId() {
  PortableServer::ObjectId_var id = new PortableServer::ObjectId;
  id->length(kIdOctets);
  // Reads of up to 256 bytes are never cut short.
  if (getrandom(id->get_buffer(), kIdOctets, 0) != static_cast<ssize_t>(kIdOctets)) {
    throw std::system_error(errno, std::generic_category(), "no random numbers");
  }
  return id._retn();
}

}  // namespace agent
