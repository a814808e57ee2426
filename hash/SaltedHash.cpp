#include "hash/SaltedHash.h"

#include <sys/random.h>

#include <cerrno>
#include <cstring>
#include <system_error>

namespace salted {
namespace {

constexpr std::size_t kWord = sizeof(std::uint64_t);

// getrandom returns a salt of this size completely or fails; a partial result is impossible.
Salt randomSalt() {
  Salt salt{};
  while (::getrandom(salt.data(), sizeof salt, 0) != static_cast<ssize_t>(sizeof salt)) {
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "no salt for hash tables");
    }
  }
  return salt;
}

const Salt& processSalt() {
  static const Salt salt = randomSalt();
  return salt;
}

std::uint64_t rotated(std::uint64_t word, int bits) {
  return (word << bits) | (word >> (64 - bits));
}

// The state of SipHash, with the names of the paper by Aumasson and Bernstein ("SipHash: a fast
// short-input PRF").
class Sip {
 public:
  explicit Sip(const Salt& salt)
      : v0_(salt[0] ^ 0x736f6d6570736575),
        v1_(salt[1] ^ 0x646f72616e646f6d),
        v2_(salt[0] ^ 0x6c7967656e657261),
        v3_(salt[1] ^ 0x7465646279746573) {}

  void take(std::uint64_t word) {
    v3_ ^= word;
    round();
    round();
    v0_ ^= word;
  }

  std::uint64_t finish() {
    v2_ ^= 0xff;
    for (int i = 0; i < 4; ++i) {
      round();
    }
    return v0_ ^ v1_ ^ v2_ ^ v3_;
  }

 private:
  void round() {
    v0_ += v1_;
    v1_ = rotated(v1_, 13) ^ v0_;
    v0_ = rotated(v0_, 32);
    v2_ += v3_;
    v3_ = rotated(v3_, 16) ^ v2_;
    v0_ += v3_;
    v3_ = rotated(v3_, 21) ^ v0_;
    v2_ += v1_;
    v1_ = rotated(v1_, 17) ^ v2_;
    v2_ = rotated(v2_, 32);
  }

  std::uint64_t v0_;
  std::uint64_t v1_;
  std::uint64_t v2_;
  std::uint64_t v3_;
};

// Reads the bytes in the machine's order; on a big-endian machine the hashes differ, which is
// harmless, because a hash never leaves the process.
std::uint64_t wordOf(const char* bytes, std::size_t count) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, count);
  return word;
}

}  // namespace

std::uint64_t sipHash(const Salt& salt, std::string_view text) {
  Sip sip(salt);
  const std::uint64_t length = static_cast<std::uint64_t>(text.size()) << 56;
  for (; text.size() >= kWord; text.remove_prefix(kWord)) {
    sip.take(wordOf(text.data(), kWord));
  }
  sip.take(length | wordOf(text.data(), text.size()));
  return sip.finish();
}

std::size_t Hash::operator()(std::string_view text) const {
  return sipHash(processSalt(), text);
}

std::size_t Hash::operator()(std::uint64_t number) const {
  char bytes[kWord];
  std::memcpy(bytes, &number, kWord);
  return (*this)(std::string_view(bytes, kWord));
}

}  // namespace salted
