#include "metering.h"

#include <tao/CDR.h>
#include <tao/GIOPC.h>
#include <tao/IOPC.h>
#include <tao/Object.h>
#include <tao/SystemException.h>
#include <tao/TAO_Server_Request.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <utility>

namespace orb {
namespace {

// The exception in a reply. A plain value.
struct RepliedException {
  std::string name;  // "": the reply contains no exception
  bool isSystemException = false;
};

// "NO_PERMISSION" for "IDL:omg.org/CORBA/NO_PERMISSION:1.0".
std::string nameIn(const std::string& repositoryId) {
  const std::size_t end = repositoryId.rfind(':');
  const std::size_t slash = repositoryId.find_last_of("/:", end == 0 ? 0 : end - 1);
  const std::size_t begin = slash == std::string::npos ? 0 : slash + 1;
  return repositoryId.substr(begin, end - begin);
}

// Skeletons catch the exceptions of their servants and send them, so that only the reply contains
// the exception. The first buffer of a reply contains the header and the type of the exception,
// also after the reply was sent.
RepliedException exceptionIn(const TAO_OutputCDR& reply) {
  constexpr std::ptrdiff_t kHeader = 12;
  constexpr std::size_t kVersion = 5;
  const ACE_Message_Block& first = *reply.begin();
  const char* const begin = ACE_ptr_align_binary(first.base(), ACE_CDR::MAX_ALIGNMENT);
  const std::ptrdiff_t size = first.wr_ptr() - begin;
  if (size < kHeader) {
    return {};
  }
  const bool contextsLast = begin[kVersion] >= 2;
  TAO_InputCDR message(begin, static_cast<std::size_t>(size));
  IOP::ServiceContextList contexts;
  CORBA::ULong id = 0;
  CORBA::ULong status = 0;
  const bool complete = message.skip_bytes(kHeader) && (contextsLast || message >> contexts) &&
                        message.read_ulong(id) && message.read_ulong(status);
  const bool isSystemException = status == GIOP::SYSTEM_EXCEPTION;
  if (!complete || (!isSystemException && status != GIOP::USER_EXCEPTION) ||
      (contextsLast && (!(message >> contexts) || message.align_read_ptr(8) != 0))) {
    return {};
  }
  CORBA::String_var exception;
  return message.read_string(exception.out())
             ? RepliedException{nameIn(exception.in()), isSystemException}
             : RepliedException{};
}

// Thread-safety: any thread. Ownership: the ORB owns the dispatcher. Errors: exceptions of the
// request pass.
class MeteredDispatcher final : public TAO_Request_Dispatcher {
 public:
  explicit MeteredDispatcher(RequestMeter meter) : meter_(std::move(meter)) {}

  void dispatch(TAO_ORB_Core* core, TAO_ServerRequest& request,
                CORBA::Object_out forward) override {
    if (request.collocated() || !request.response_expected()) {
      TAO_Request_Dispatcher::dispatch(core, request, forward);
      return;
    }
    const auto start = std::chrono::steady_clock::now();
    FinishedRequest finished;
    finished.operation = request.operation();
    try {
      TAO_Request_Dispatcher::dispatch(core, request, forward);
    } catch (const CORBA::Exception& failure) {
      finished.exception = failure._name();
      finished.isSystemException = dynamic_cast<const CORBA::SystemException*>(&failure) != nullptr;
      finished.duration = std::chrono::steady_clock::now() - start;
      meter_(finished);
      throw;
    }
    finished.duration = std::chrono::steady_clock::now() - start;
    const RepliedException replied = exceptionIn(*request.outgoing());
    finished.exception = replied.name.empty() ? nullptr : replied.name.c_str();
    finished.isSystemException = replied.isSystemException;
    meter_(finished);
  }

 private:
  const RequestMeter meter_;
};

}  // namespace

std::unique_ptr<TAO_Request_Dispatcher> makeMeteredDispatcher(RequestMeter meter) {
  return std::make_unique<MeteredDispatcher>(std::move(meter));
}

}  // namespace orb
