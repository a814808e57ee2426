// The receiver of the ORB's diagnostics, one per process.

#ifndef ORB_OMNIORB_LOG_H
#define ORB_OMNIORB_LOG_H

#include <string>

#include "orb/orb.h"

namespace orb {

// The ORB's log function: forwards a message without line ends to the receiver.
void forwardLog(const char* message);

// Forwards a line to the receiver. Thread-safety: any thread; lines are written one at a time.
void writeLog(const std::string& line);

// Sets the receiver; null drops all lines. Thread-safety: any thread.
void setLogReceiver(LogFunction log);

}  // namespace orb

#endif
