// The roles of clients.

#ifndef AGENT_ACCESS_ROLES_H
#define AGENT_ACCESS_ROLES_H

namespace agent {

enum class Role : unsigned {
  kRead = 1,     // views, iterators, capabilities, subscriptions
  kWrite = 2,    // the setters of the manager
  kOperate = 4,  // the console
};

// A set of roles. No role includes another role. A plain value.
class Roles {
 public:
  constexpr Roles() = default;

  static constexpr Roles all() {
    return Roles().with(Role::kRead).with(Role::kWrite).with(Role::kOperate);
  }

  constexpr Roles with(Role role) const {
    Roles result = *this;
    result.bits_ |= static_cast<unsigned>(role);
    return result;
  }

  constexpr bool has(Role role) const { return (bits_ & static_cast<unsigned>(role)) != 0; }
  constexpr bool empty() const { return bits_ == 0; }
  constexpr bool operator==(Roles other) const { return bits_ == other.bits_; }

 private:
  unsigned bits_ = 0;
};

}  // namespace agent

#endif
