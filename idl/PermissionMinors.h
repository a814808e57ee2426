// The minor codes of the agent's NO_PERMISSION: why the agent refuses a request.

#ifndef IDL_PERMISSIONMINORS_H
#define IDL_PERMISSIONMINORS_H

namespace permission_minor {

constexpr unsigned long kNoRole = 0x54500001;    // the client has not the role of the operation
constexpr unsigned long kReadOnly = 0x54500002;  // the agent refuses every change
constexpr unsigned long kOtherEndpoint = 0x54500003;  // the object is served at another endpoint
constexpr unsigned long kPushAddress = 0x54500004;    // the agent does not push to this address

}  // namespace permission_minor

#endif
