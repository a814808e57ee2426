#include "messagelimit.h"

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

#include "incoming.h"
#include "outgoingcalls.h"
#include "transports.h"

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

[[noreturn]] void throwTooLarge() {
  throw CORBA::MARSHAL(kMessageTooLarge, CORBA::COMPLETED_MAYBE);
}

// Allocates the buffers of outgoing messages. A message is a chain of buffers, so this class limits
// a single large string; MessageLimit limits the sum.
class OutgoingBuffers final : public ACE_New_Allocator {
 public:
  void* malloc(std::size_t bytes) override {
    if (bytes > limit().buffer) {
      lastCall().streamBroken = true;
      throwTooLarge();
    }
    void* const buffer = ACE_New_Allocator::malloc(bytes);
    if (buffer == nullptr) {
      throw CORBA::NO_MEMORY(0, CORBA::COMPLETED_MAYBE);  // the ORB does not check for null
    }
    return buffer;
  }
};

// Allocates the buffers of incoming messages and of replies. The ORB does not check for a null
// buffer, so a buffer is allocated in any case; over the limit the connection is shut down, and
// LastCall::tooLarge rejects a message that is already complete. A large buffer occupies no memory
// before bytes are written.
class IncomingBuffers final : public ACE_New_Allocator {
 public:
  void* malloc(std::size_t bytes) override {
    void* const buffer = allocate(bytes);
    LastCall& call = lastCall();
    if (call.reading) {
      call.replyBegun = true;
      // Buffers of fragments are up to twice as large as their contents, and one buffer joins them.
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
  // The size of a buffer is stored in front of the buffer.
  static constexpr std::size_t kHeader = alignof(std::max_align_t);
  static constexpr std::size_t kOverhead = 256;  // memory of the ORB per buffer

  // Resets the connection, because the peer may be blocked in sending.
  static void end(TAO_Transport& transport) {
    const ACE_HANDLE connection = transport.event_handler_i()->get_handle();
    const linger noLinger{1, 0};
    static_cast<void>(setsockopt(connection, SOL_SOCKET, SO_LINGER, &noLinger, sizeof noLinger));
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

// The ORB calls fragment() before each write to ask whether to send a fragment. This class never
// sends fragments, but measures the message. For strings the ORB does not pass the length, so the
// last string of a message is not measured.
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
    throwTooLarge();
  }

 private:
  // Called before each number and string, so the size of full blocks is computed only once.
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

  // The ORB retries a request whenever the connection ends before the request is sent; without this
  // limit the ORB retries forever if the peer refuses the request.
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

  const ACE_Message_Block* current_ = nullptr;  // the block in use, borrowed from the message
  std::size_t before_ = 0;                      // bytes of the message in the earlier blocks
};

// Records in lastCall() the transport from which a thread is about to read. The ORB calls
// update_item() before each read.
class ReadObserver final : public TAO_LRU_Connection_Purging_Strategy {
 public:
  using TAO_LRU_Connection_Purging_Strategy::TAO_LRU_Connection_Purging_Strategy;

  void update_item(TAO_Transport& transport) override {
    TAO_LRU_Connection_Purging_Strategy::update_item(transport);
    lastCall().transport = &transport;
    lastCall().reading = true;
  }
};

class MessageResources final : public TAO_Default_Resource_Factory {
  // The owning pointer type of this version of the ORB.
  using Fragmentation =
      decltype(std::declval<const TAO_Default_Resource_Factory&>().create_fragmentation_strategy(
          nullptr, 0));

 public:
  ACE_Allocator* input_cdr_buffer_allocator() override { return new IncomingBuffers; }
  TAO_Connection_Purging_Strategy* create_purging_strategy() override {
    return new ReadObserver(cache_maximum());
  }

  // Called once per ORB of the process.
  int init_protocol_factories() override {
    if (get_protocol_factories()->size() > 0) {
      return 0;
    }
    return addProtocol("TopoProtocol", makeProtocol()) == 0
               ? addProtocol("TopoUnixProtocol", makeUnixProtocol())
               : -1;
  }

  // The ORB refuses connections beyond this number and purges idle connections near it.
  int cache_maximum() const override {
    constexpr std::size_t kOutgoing = 4096;
    return static_cast<int>(currentConnections()->options().maxConnections + kOutgoing);
  }

  // Makes the ORB copy values out of a message. Otherwise a few octets would keep the whole message
  // in memory.
  int input_cdr_allocator_type_locked() override { return 0; }
  ACE_Allocator* output_cdr_buffer_allocator() override { return new OutgoingBuffers; }

  Fragmentation create_fragmentation_strategy(TAO_Transport* /*transport*/,
                                              CORBA::ULong /*most*/) const override {
    return Fragmentation(new MessageLimit);
  }

 private:
  int addProtocol(const char* name, std::unique_ptr<TAO_Protocol_Factory> factory) {
    auto item = std::make_unique<TAO_Protocol_Item>(name);
    item->factory(factory.release(), 1);  // 1: the item owns the factory
    return get_protocol_factories()->insert(item.release());
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
