// Text and classification of the ORB's system exceptions by their minor codes.

#include <tao/ORB_Constants.h>
#include <tao/SystemException.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <string>

#include "messagelimit.h"
#include "orb/orb.h"
#include "outgoingcalls.h"

namespace orb {
namespace {

constexpr CORBA::ULong kVendor = 0xfffff000;
constexpr CORBA::ULong kLocation =
    0x00000f80;  // the place of the failure, in the ORB's own minor codes
constexpr CORBA::ULong kErrno = 0x0000007f;
constexpr CORBA::ULong kNoUsableProfile = CORBA::OMGVMCID | 2;

CORBA::ULong locationOf(const CORBA::SystemException& failure) {
  return (failure.minor() & kVendor) == TAO::VMCID ? failure.minor() & kLocation : 0;
}

bool isTransient(const CORBA::SystemException& failure) {
  return CORBA::TRANSIENT::_downcast(&failure) != nullptr;
}

bool isCommFailure(const CORBA::SystemException& failure) {
  return CORBA::COMM_FAILURE::_downcast(&failure) != nullptr;
}

// The ORB has its own numbers for common errors and uses errno values for all others.
int errorOf(CORBA::ULong code) {
  static constexpr int kErrors[] = {0,      ETIMEDOUT,  ENFILE, EMFILE, EPIPE,        ECONNREFUSED,
                                    ENOENT, EBADF,      ENOSYS, EPERM,  EAFNOSUPPORT, EAGAIN,
                                    ENOMEM, EACCES,     EFAULT, EBUSY,  EEXIST,       EINVAL,
                                    ECOMM,  ECONNRESET, ENOTSUP};
  return code < std::size(kErrors) ? kErrors[code] : static_cast<int>(code);
}

// Returns a text for the minor codes of this ORB and for the OMG codes that the ORB raises; "" for
// all other codes.
std::string causeOf(const CORBA::SystemException& failure) {
  if (isNotConnected(failure)) {
    return "no connection";
  }
  if (isTransient(failure) && failure.minor() == (CORBA::OMGVMCID | 1)) {
    return "requests are discarded";
  }
  if (isBrokenOff(failure)) {
    return "the connection ended within the answer";
  }
  if (isMessageTooLarge(failure)) {
    return "a message is over the size limit";
  }
  switch (locationOf(failure)) {
    case TAO_INVOCATION_SEND_REQUEST_MINOR_CODE:
      return "the request was not sent";
    case TAO_INVOCATION_RECV_REQUEST_MINOR_CODE:
      return "the connection ended before the answer";
    case TAO_TIMEOUT_CONNECT_MINOR_CODE:
      return "no connection in time";
    case TAO_TIMEOUT_SEND_MINOR_CODE:
      return "the request was not sent in time";
    case TAO_TIMEOUT_RECV_MINOR_CODE:
      return "no answer in time";
    default:
      break;
  }
  const int error = errorOf(failure.minor() & kErrno);
  const bool own = (failure.minor() & kVendor) == TAO::VMCID;
  return own && error != 0 ? std::strerror(error) : "";
}

}  // namespace

std::string describe(const CORBA::SystemException& failure) {
  const std::string cause = causeOf(failure);
  return failure._name() + (cause.empty() ? "" : " (" + cause + ")");
}

bool isMessageTooLarge(const CORBA::SystemException& failure) {
  return CORBA::MARSHAL::_downcast(&failure) != nullptr && failure.minor() == kMessageTooLarge;
}

bool isBrokenOff(const CORBA::SystemException& failure) {
  return isCommFailure(failure) && failure.minor() == kBrokenOff;
}

bool isTimeout(const CORBA::SystemException& failure) {
  return CORBA::TIMEOUT::_downcast(&failure) != nullptr;
}

bool isConnectionClosed(const CORBA::SystemException& failure) {
  return isCommFailure(failure);
}

bool isNotConnected(const CORBA::SystemException& failure) {
  return isTransient(failure) && failure.minor() == kNoUsableProfile;
}

// Of this ORB's own codes only those of a POA manager come from the server.
bool isRejected(const CORBA::SystemException& failure) {
  if (!isTransient(failure) || failure.completed() != CORBA::COMPLETED_NO) {
    return false;
  }
  if ((failure.minor() & kVendor) == TAO::VMCID) {
    const CORBA::ULong location = locationOf(failure);
    return location == TAO_POA_DISCARDING || location == TAO_POA_HOLDING;
  }
  return failure.minor() != kNoUsableProfile;
}

bool isUnreachable(const CORBA::SystemException& failure) {
  if (isBrokenOff(failure)) {
    return false;
  }
  return isTransient(failure) || isCommFailure(failure) || isTimeout(failure) ||
         CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr;
}

}  // namespace orb
