#include "messages.h"

#include <ace/CDR_Base.h>
#include <ace/Malloc_Allocator.h>
#include <ace/Service_Config.h>
#include <ace/Service_Types.h>
#include <sys/socket.h>
#include <tao/CDR.h>
#include <tao/GIOP_Fragmentation_Strategy.h>
#include <tao/LRU_Connection_Purging_Strategy.h>
#include <tao/ORB_Constants.h>
#include <tao/ORB_Core.h>
#include <tao/SystemException.h>
#include <tao/Transport.h>
#include <tao/default_resource.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

#include "calls.h"
#include "incoming.h"

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

// Buffers of messages that are being read, and of answers that are being written. The ORB does not
// look whether it gets one, so what is over the limit ends its connection instead: nothing more
// arrives, and whoever is handed a message that is complete by then refuses it. A buffer takes no
// memory before it is filled.
class IncomingBuffers final : public ACE_New_Allocator {
 public:
  void* malloc(std::size_t bytes) override {
    void* const buffer = allocate(bytes);
    LastCall& call = lastCall();
    if (call.reading) {
      call.replyBegun = true;
      // Buffers of fragments are up to twice as large as what is in them, and one more is for all.
      if (bytes > limit().buffer || held(call) > 3 * limit().buffer) {
        call.tooLarge = true;
        end(*call.transport);
      }
    }
    return buffer;
  }

  void* calloc(std::size_t bytes, char initial) override {
    void* const buffer = malloc(bytes);
    return buffer == nullptr ? nullptr : std::memset(buffer, initial, bytes);
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
  static constexpr std::size_t kOverhead = 256;  // what the ORB keeps beside each buffer

  // Reset when it is closed: the peer may be stuck in sending.
  static void end(TAO_Transport& transport) {
    const ACE_HANDLE connection = transport.event_handler_i()->get_handle();
    const linger atOnce{1, 0};
    static_cast<void>(setsockopt(connection, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce));
    static_cast<void>(::shutdown(connection, SHUT_RDWR));
  }

  static std::size_t held(const LastCall& call) {
    return static_cast<std::size_t>(std::max<std::int64_t>(call.bytesReceived, 0));
  }

  static void* allocate(std::size_t bytes) {
    void* const block = ::operator new(kHeader + bytes, std::nothrow);
    if (block == nullptr) {
      errno = ENOMEM;
      return nullptr;
    }
    const auto size = static_cast<std::int64_t>(bytes + kOverhead);
    new (block) std::int64_t(size);
    lastCall().bytesReceived += size;
    return static_cast<char*>(block) + kHeader;
  }
};

// The ORB asks before it writes whether a message is to be sent in pieces. It is not, but it may be
// over the limit. Of texts it asks without their length: the last one of a message is not measured.
class MessageLimit final : public TAO_GIOP_Fragmentation_Strategy {
 public:
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
  static void countAttempt(std::size_t written) {
    constexpr int kMost = 10;
    LastCall& call = lastCall();
    if (call.attempts == 0 || written < call.requestBytes) {
      ++call.attempts;
    }
    call.requestBytes = written;
    if (call.attempts > kMost) {
      throw CORBA::COMM_FAILURE(TAO::VMCID | TAO_INVOCATION_SEND_REQUEST_MINOR_CODE,
                                CORBA::COMPLETED_NO);
    }
  }

  const ACE_Message_Block* current_ = nullptr;  // that the message is being written to
  std::size_t before_ = 0;                      // bytes of the message in the blocks before it
};

// Is told of each connection before it is read from: by its thread, or by the call that takes it.
class Reading final : public TAO_LRU_Connection_Purging_Strategy {
 public:
  using TAO_LRU_Connection_Purging_Strategy::TAO_LRU_Connection_Purging_Strategy;

  void update_item(TAO_Transport& transport) override {
    TAO_LRU_Connection_Purging_Strategy::update_item(transport);
    lastCall().transport = &transport;
    lastCall().reading = true;
  }
};

class MessageResources final : public TAO_Default_Resource_Factory {
  // A pointer that owns, of the kind that this version of the ORB uses.
  using Fragmentation =
      decltype(std::declval<const TAO_Default_Resource_Factory&>().create_fragmentation_strategy(
          nullptr, 0));

 public:
  ACE_Allocator* input_cdr_buffer_allocator() override { return new IncomingBuffers; }
  TAO_Connection_Purging_Strategy* create_purging_strategy() override {
    return new Reading(cache_maximum());
  }

  // Called by every ORB of the process.
  int init_protocol_factories() override {
    if (get_protocol_factories()->size() > 0) {
      return 0;
    }
    auto item = std::make_unique<TAO_Protocol_Item>("TopoProtocol");
    item->factory(makeProtocol().release(), 1);  // which the item owns
    return get_protocol_factories()->insert(item.release());
  }

  // The ORB refuses connections beyond this, and purges idle ones before it comes to that.
  int cache_maximum() const override {
    constexpr std::size_t kOutgoing = 4096;
    return static_cast<int>(ownConnections()->options().maxConnections + kOutgoing);
  }

  // Has the ORB copy what it takes out of a message: a few octets would hold all of it otherwise.
  int input_cdr_allocator_type_locked() override { return 0; }
  ACE_Allocator* output_cdr_buffer_allocator() override { return new OutgoingBuffers; }

  Fragmentation create_fragmentation_strategy(TAO_Transport* /*transport*/,
                                              CORBA::ULong /*most*/) const override {
    return Fragmentation(new MessageLimit);
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
  TAO_ORB_Core::set_resource_factory(kName);
}

}  // namespace orb
