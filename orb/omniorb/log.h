// Where the ORB's own diagnostics go.

#ifndef ORB_OMNIORB_LOG_H
#define ORB_OMNIORB_LOG_H

#include <string>

#include "orb/orb.h"

namespace orb {

// The ORB's log function: passes a message on to the receiver, without its line ends.
void forwardLog(const char* message);

// Passes a line of our own on to the receiver. Thread-safety: any thread.
void writeLog(const std::string& line);

// Null: what the ORB says is dropped. Thread-safety: any thread.
void setLogReceiver(LogFunction log);

}  // namespace orb

#endif
