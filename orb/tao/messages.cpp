#include "messages.h"

#include <ace/CDR_Base.h>
#include <ace/Malloc_Allocator.h>
#include <ace/Message_Block.h>
#include <ace/Service_Config.h>
#include <ace/Service_Types.h>
#include <ace/Thread_Hook.h>
#include <tao/CDR.h>
#include <tao/GIOP_Fragmentation_Strategy.h>
#include <tao/ORB_Constants.h>
#include <tao/ORB_Core.h>
#include <tao/SystemException.h>
#include <tao/Transport.h>
#include <tao/default_resource.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "calls.h"

namespace orb {

struct Limit {
  std::atomic<std::size_t> message{0};
  std::atomic<std::size_t> buffer{0};  // buffers grow in steps and align their contents
};

ORB_ONE_PER_PROCESS Limit& limit();

Limit& limit() {
  static Limit bytes;
  return bytes;
}

namespace {

[[noreturn]] void refuse() {
  throw CORBA::MARSHAL(kMessageTooLarge, CORBA::COMPLETED_MAYBE);
}

// Buffers of messages that are being written. A message is a chain of them, so this stops a text
// that is too large in one piece; the sum is MessageLimit's affair.
class OutgoingBuffers final : public ACE_New_Allocator {
 public:
  void* malloc(std::size_t bytes) override {
    if (bytes > limit().buffer) {
      lastCall().streamBroken = true;
      refuse();
    }
    void* const buffer = ACE_New_Allocator::malloc(bytes);
    if (buffer == nullptr) {
      throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_MAYBE);  // the ORB does not look
    }
    return buffer;
  }
};

// The last block of a message that this thread has made while it read.
thread_local const ACE_Message_Block* newestBlock = nullptr;

// Blocks of messages that are being read, each with a buffer.
class IncomingBlocks final : public ACE_New_Allocator {
 public:
  void* malloc(std::size_t bytes) override {
    void* const block = ACE_New_Allocator::malloc(bytes);
    if (block != nullptr) {
      std::memset(block, 0, bytes);
    }
    newestBlock = static_cast<const ACE_Message_Block*>(block);
    return block;
  }

  void free(void* block) override {
    if (block == newestBlock) {
      newestBlock = nullptr;
    }
    ACE_New_Allocator::free(block);
  }
};

// Whether a block is under construction. The ORB makes one first and its buffer then in one case
// only: to put the fragments of a message together.
bool isPuttingTogether() {
  return newestBlock != nullptr && newestBlock->data_block() == nullptr;
}

// Buffers of messages that are being read. The ORB does not look whether it gets one, so a refusal
// is an exception: it ends a call, or the thread of a connection and that connection. The buffer in
// which fragments are put together is not refused, because they would be lost: whoever is handed a
// message that is over the limit then does it.
class IncomingBuffers final : public ACE_New_Allocator {
 public:
  void* malloc(std::size_t bytes) override {
    LastCall& call = lastCall();
    call.replyBegun = true;
    // Buffers of fragments are up to twice as large as what is in them.
    const std::size_t most = 3 * limit().buffer;
    const bool together = isPuttingTogether();
    if (bytes > limit().buffer || (held(call) + bytes > most && !together)) {
      call.tooLarge = true;
    }
    if (call.tooLarge && !together) {
      call.streamBroken = true;
      refuse();
    }
    return allocate(bytes);
  }

  void* calloc(std::size_t bytes, char initial) override {
    return std::memset(malloc(bytes), initial, bytes);
  }

  void* calloc(std::size_t count, std::size_t size, char initial) override {
    return calloc(count * size, initial);
  }

  void free(void* buffer) override {
    if (buffer == nullptr) {
      return;
    }
    char* const block = static_cast<char*>(buffer) - kHeader;
    lastCall().bytesReceived -= *std::launder(reinterpret_cast<std::int64_t*>(block));
    ::operator delete(block);
  }

 private:
  // Before each buffer stands its size.
  static constexpr std::size_t kHeader = alignof(std::max_align_t);

  static std::size_t held(const LastCall& call) {
    return static_cast<std::size_t>(std::max<std::int64_t>(call.bytesReceived, 0));
  }

  static void* allocate(std::size_t bytes) {
    void* const block = ::operator new(kHeader + bytes, std::nothrow);
    if (block == nullptr) {
      throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_MAYBE);
    }
    const auto size = static_cast<std::int64_t>(bytes);
    new (block) std::int64_t(size);
    lastCall().bytesReceived += size;
    return static_cast<char*>(block) + kHeader;
  }
};

// The ORB asks before it writes whether a message is to be sent in pieces. It is not, but it may be
// over the limit. Of texts it asks without their length: the last one of a message is not measured.
class MessageLimit final : public TAO_GIOP_Fragmentation_Strategy {
 public:
  explicit MessageLimit(TAO_Transport* transport) : transport_(transport) {}

  int fragment(TAO_OutputCDR& message, ACE_CDR::ULong /*alignment*/, ACE_CDR::ULong more) override {
    const std::size_t written = writtenTo(message);
    if (message.stub() != nullptr) {  // a request
      countAttempt(written);
    }
    if (written + more <= limit().message) {
      return 0;
    }
    refuse();
  }

 private:
  // The ORB asks before each number and text, so blocks that are full are only measured once.
  std::size_t writtenTo(const TAO_OutputCDR& message) {
    const ACE_Message_Block* const block = message.current();
    if (block == message.begin()) {
      before_ = 0;
    } else if (block != current_) {
      before_ = message.total_length() - block->length();
    }
    current_ = block;
    return before_ + block->length();
  }

  // The ORB writes a request anew as often as its connection ends before it is sent, which it does
  // for ever when the peer refuses it.
  void countAttempt(std::size_t written) const {
    constexpr int kMost = 10;
    LastCall& call = lastCall();
    if (call.attempts == 0 || written < call.requestBytes) {
      ++call.attempts;
    }
    call.requestBytes = written;
    call.transport = transport_;
    if (call.attempts > kMost) {
      throw CORBA::COMM_FAILURE(TAO::VMCID | TAO_INVOCATION_SEND_REQUEST_MINOR_CODE,
                                CORBA::COMPLETED_NO);
    }
  }

  TAO_Transport* const transport_;              // owns this
  const ACE_Message_Block* current_ = nullptr;  // that the message is being written to
  std::size_t before_ = 0;                      // bytes of the message in the blocks before it
};

// Ends threads of connections whose message was refused. The end of such a thread closes it.
class ConnectionThreads final : public ACE_Thread_Hook {
 public:
  ACE_THR_FUNC_RETURN start(ACE_THR_FUNC run, void* argument) override {
    try {
      return others_ != nullptr ? others_->start(run, argument) : run(argument);
    } catch (const CORBA::MARSHAL& refusal) {
      if (refusal.minor() != kMessageTooLarge) {
        throw;
      }
    } catch (const CORBA::NO_MEMORY&) {
      // The client is told nothing, and the others go on.
    }
    return {};
  }

 private:
  ACE_Thread_Hook* const others_ = ACE_Thread_Hook::thread_hook();
};

class MessageResources final : public TAO_Default_Resource_Factory {
  // A pointer that owns, of the kind that this version of the ORB uses.
  using Fragmentation =
      decltype(std::declval<const TAO_Default_Resource_Factory&>().create_fragmentation_strategy(
          nullptr, 0));

 public:
  ACE_Allocator* input_cdr_buffer_allocator() override { return new IncomingBuffers; }
  ACE_Allocator* input_cdr_msgblock_allocator() override { return new IncomingBlocks; }
  ACE_Allocator* output_cdr_buffer_allocator() override { return new OutgoingBuffers; }

  Fragmentation create_fragmentation_strategy(TAO_Transport* transport,
                                              CORBA::ULong /*most*/) const override {
    return Fragmentation(new MessageLimit(transport));
  }
};

constexpr const char* kName = "TopoMessageResources";

ACE_Service_Object* makeResources(ACE_Service_Object_Exterminator* exterminator) {
  if (exterminator != nullptr) {
    *exterminator = [](void* made) { delete static_cast<MessageResources*>(made); };
  }
  return new MessageResources;
}

}  // namespace

void limitMessages(std::size_t bytes) {
  limit().message = bytes;
  limit().buffer = ACE_CDR::first_size(bytes + ACE_CDR::MAX_ALIGNMENT);
}

void installMessageLimit() {
  static const ACE_Static_Svc_Descriptor descriptor = {
      kName, ACE_SVC_OBJ_T, makeResources,
      ACE_Service_Type::DELETE_THIS | ACE_Service_Type::DELETE_OBJ, 0};
  ACE_Service_Config::process_directive(descriptor);
  // UTF-8 is 0x05010001 in the OSF registry of code sets.
  const std::string settings = std::string("static ") + kName +
                               " \"-ORBNativeCharCodeset 0x05010001"
                               " -ORBReactorMaskSignals 0 -ORBFlushingStrategy blocking\"";
  ACE_Service_Config::process_directive(settings.c_str());
  static ConnectionThreads threads;
  ACE_Thread_Hook::thread_hook(&threads);
  TAO_ORB_Core::set_resource_factory(kName);
}

}  // namespace orb
