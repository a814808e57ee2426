// Timeouts and causes of failures of outgoing calls.

#ifndef ORB_TAO_OUTGOINGCALLS_H
#define ORB_TAO_OUTGOINGCALLS_H

#include <chrono>
#include <cstddef>
#include <cstdint>

class TAO_ORB_Core;
class TAO_Transport;

// Marks a function whose definition is shared by all libraries of the process that contain this
// code: with default visibility the dynamic linker selects one definition.
#define ORB_ONE_PER_PROCESS __attribute__((visibility("default")))

namespace orb {

// The latest outgoing call of a thread, with details that are missing in the ORB's exceptions. A
// call reads its own reply on its own thread, so all bytes read until the end of the call belong to
// the call. Thread-safety: one object per thread.
struct LastCall {
  int attempts = 0;                    // attempts to send the request, each on a connection
  std::size_t requestBytes = 0;        // bytes written by the current attempt
  TAO_Transport* transport = nullptr;  // borrowed; the transport from which the thread reads
  bool reading = false;                // the thread reads messages from the transport
  bool streamBroken = false;           // the transport cannot write any more
  bool replyBegun = false;
  bool tooLarge = false;           // a received message is over the size limit
  std::int64_t bytesReceived = 0;  // size of the buffers of incomplete messages
};

ORB_ONE_PER_PROCESS LastCall& lastCall();

// The minor code of COMM_FAILURE when the connection ended in the middle of the reply.
constexpr std::uint32_t kBrokenOff = 0x54410fff;  // above the ORB's own codes

// Installs the interceptor that refines the exceptions of calls, for every ORB of the process.
// REQUIRES: no ORB was started.
void installCallObserver();

// Sets the default timeout of the calls of an ORB; 0: no timeout.
void setCallTimeout(TAO_ORB_Core& core, std::chrono::milliseconds timeout);

// Removes the timeouts of single references, each of which holds a reference to an object of the
// ORB. Called before the end of the ORB.
void clearCallTimeouts();

}  // namespace orb

#endif
