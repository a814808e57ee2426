// All classifications of a failed call in one line.

#ifndef TESTS_UNIT_ORB_VERDICTS_H
#define TESTS_UNIT_ORB_VERDICTS_H

#include <string>

#include "orb/orb.h"

// Returns "TEXT: WORD, WORD", with the text of the failure and the classifications that are true.
inline std::string verdictsOn(const CORBA::SystemException& failure) {
  std::string line = orb::describe(failure) + ":";
  const auto add = [&line](bool isSo, const char* word) {
    if (isSo) {
      line += (line.back() == ':' ? " " : ", ") + std::string(word);
    }
  };
  add(orb::isMessageTooLarge(failure), "message too large");
  add(orb::isBrokenOff(failure), "broken off");
  add(orb::isTimeout(failure), "time-out");
  add(orb::isConnectionClosed(failure), "connection closed");
  add(orb::isNotConnected(failure), "not connected");
  add(orb::isRejected(failure), "rejected");
  add(orb::isUnreachable(failure), "unreachable");
  return line;
}

template <typename Failure>
std::string verdictsOn(CORBA::ULong minor) {
  return verdictsOn(Failure(minor, CORBA::COMPLETED_NO));
}

#endif
