// Calls to other processes: how long they may take, and what became of the last one.

#ifndef ORB_TAO_CALLS_H
#define ORB_TAO_CALLS_H

#include <chrono>
#include <cstddef>
#include <cstdint>

class TAO_ORB_Core;
class TAO_Transport;

// Of what carries this mark there is one in the process, whatever libraries have this code in them:
// the dynamic linker takes the same definition for all.
#define ORB_ONE_PER_PROCESS __attribute__((visibility("default")))

namespace orb {

// Of the calling thread: what the ORB's exceptions do not tell. A call reads its own reply, so
// whatever is read before it ends belongs to it.
struct LastCall {
  int attempts = 0;                    // to send the request, each on a connection
  std::size_t requestBytes = 0;        // that the current attempt has written
  TAO_Transport* transport = nullptr;  // that the thread reads from
  bool reading = false;                // messages, from it
  bool streamBroken = false;           // the transport can write nothing more
  bool replyBegun = false;
  bool tooLarge = false;           // what was read is over the size limit
  std::int64_t bytesReceived = 0;  // held by buffers of messages that are being read
};

ORB_ONE_PER_PROCESS LastCall& lastCall();

// The minor code of COMM_FAILURE when the connection ended within the reply.
constexpr std::uint32_t kBrokenOff = 0x54410fff;  // the ORB's own codes end below

// Has the exceptions of calls say what became of them, in every ORB of the process. Before the
// first one starts.
void installCallObserver();

// Of every call of an ORB from here on that has no time-out of its own; 0: none.
void setCallTimeout(TAO_ORB_Core& core, std::chrono::milliseconds timeout);

// Before the ORB ends: time-outs hold their references.
void forgetCallTimeouts();

}  // namespace orb

#endif
