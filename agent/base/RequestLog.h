// Log lines and records about single requests of clients, for operators.

#ifndef AGENT_BASE_REQUESTLOG_H
#define AGENT_BASE_REQUESTLOG_H

#include <functional>
#include <new>
#include <string>
#include <string_view>

#include "orb/orb.h"

namespace agent {

// The functions make a line only if its level is logged, and drop the line when memory is short.
// peer: the address of the client, or "" for a call of this process. Thread-safety: any thread.

// Logs "PEER: OPERATION SUBJECT" at kLogEvents, after a change.
void logChange(std::string_view peer, std::string_view operation,
               std::string_view subject) noexcept;

// Logs "PEER: OPERATION is refused: REASON" at kLogTraces.
void logRefusal(std::string_view peer, std::string_view operation,
                std::string_view reason) noexcept;

// Runs the steps that follow a change, such as the log line of the change. Skips the remaining
// steps when memory is short: the change is complete, so its client receives a reply without an
// exception.
template <typename Steps>
void afterChange(const Steps& steps) {
  try {
    steps();
  } catch (const std::bad_alloc&) {
    // A complete change does not fail for lack of a log line.
  }
}

// A change, a failed change or a refused request, for the audit log.
struct RequestRecord {
  enum class Outcome {
    kDone,     // the change is made
    kFailed,   // the client was allowed to ask for the change; the reason says why it failed
    kRefused,  // the client was not allowed to call the operation
  };

  orb::Peer peer;
  std::string object;     // the key of the object, or a name for objects without a constant key
  std::string operation;  // the name on the wire
  std::string target;     // the object of the change; "" for a refusal
  Outcome outcome = Outcome::kDone;
  std::string reason;  // "" for kDone
};

// Called on the threads of requests, on several threads at the same time. Must not block or throw.
using RequestRecorder = std::function<void(const RequestRecord&)>;

// Installs the recorder of the process in place of the present one; null removes the recorder.
// Returns when no call of the former recorder is running. Thread-safety: any thread.
void setRequestRecorder(RequestRecorder recorder);

// Whether there is a recorder.
bool isRecorded();

// Passes a record to the recorder. Drops the record when there is no recorder.
void recordRequest(const RequestRecord& record);

// Records the result of make(). When make() throws std::bad_alloc, the record has only the outcome
// and a reason, so that a complete change neither fails nor lacks a record when memory is short.
template <typename Make>
void recordWith(RequestRecord::Outcome outcome, const Make& make) {
  RequestRecord record;
  try {
    record = make();
  } catch (const std::bad_alloc&) {
    record.outcome = outcome;
    record.reason = "out of memory";  // so short that nothing is allocated
  }
  recordRequest(record);
}

}  // namespace agent

#endif
