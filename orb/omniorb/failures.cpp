// Classification of the ORB's exceptions by their minor codes.

#include "orb/orb.h"

#include <omniORB4/minorCode.h>

namespace orb {

std::string describe(const CORBA::SystemException& failure) {
  const char* cause = failure.NP_minorString();
  std::string text = failure._name();
  if (cause != nullptr) {
    text += std::string(" (") + cause + ")";
  }
  return text;
}

bool isMessageTooLarge(const CORBA::SystemException& failure) {
  if (CORBA::MARSHAL::_downcast(&failure) == nullptr) {
    return false;
  }
  switch (failure.minor()) {
    case omni::MARSHAL_MessageSizeExceedLimit:
    case omni::MARSHAL_MessageSizeExceedLimitOnClient:
    case omni::MARSHAL_MessageSizeExceedLimitOnServer:
    case omni::MARSHAL_MessageTooLong:
    // Raised in a message of several fragments when a value crosses the limit.
    case omni::MARSHAL_PassEndOfMessage:
    case omni::MARSHAL_SequenceIsTooLong:
    case omni::MARSHAL_StringIsTooLong:
      return true;
    default:
      return false;
  }
}

bool isBrokenOff(const CORBA::SystemException& failure) {
  return CORBA::COMM_FAILURE::_downcast(&failure) != nullptr &&
         failure.minor() == omni::COMM_FAILURE_UnMarshalResults;
}

bool isTimeout(const CORBA::SystemException& failure) {
  return CORBA::TIMEOUT::_downcast(&failure) != nullptr ||
         (CORBA::TRANSIENT::_downcast(&failure) != nullptr &&
          failure.minor() == omni::TRANSIENT_CallTimedout);
}

bool isConnectionClosed(const CORBA::SystemException& failure) {
  return CORBA::COMM_FAILURE::_downcast(&failure) != nullptr ||
         (CORBA::TRANSIENT::_downcast(&failure) != nullptr &&
          failure.minor() == omni::TRANSIENT_ConnectionClosed);
}

bool isNotConnected(const CORBA::SystemException& failure) {
  return CORBA::TRANSIENT::_downcast(&failure) != nullptr &&
         (failure.minor() == omni::TRANSIENT_ConnectFailed ||
          failure.minor() == omni::TRANSIENT_NoUsableProfile);
}

// The codes of the switch are those of the calling ORB. All other codes come from the server.
bool isRejected(const CORBA::SystemException& failure) {
  if (CORBA::TRANSIENT::_downcast(&failure) == nullptr ||
      failure.completed() != CORBA::COMPLETED_NO) {
    return false;
  }
  switch (failure.minor()) {
    case omni::TRANSIENT_NoUsableProfile:
    case omni::TRANSIENT_RequestCancelled:
    case omni::TRANSIENT_FailedOnForwarded:
    case omni::TRANSIENT_ConnectFailed:
    case omni::TRANSIENT_CallTimedout:
    case omni::TRANSIENT_BiDirConnIsGone:
    case omni::TRANSIENT_BiDirConnUsedWithNoPOA:
    case omni::TRANSIENT_ConnectionClosed:
      return false;
    default:
      return true;
  }
}

bool isUnreachable(const CORBA::SystemException& failure) {
  if (isBrokenOff(failure)) {
    return false;
  }
  return CORBA::TRANSIENT::_downcast(&failure) != nullptr ||
         CORBA::COMM_FAILURE::_downcast(&failure) != nullptr ||
         CORBA::TIMEOUT::_downcast(&failure) != nullptr ||
         CORBA::OBJECT_NOT_EXIST::_downcast(&failure) != nullptr;
}

}  // namespace orb
