// Symbol visibility of the types and functions that module and host share.
//
// The module is compiled with hidden visibility. PLATFORM_API marks every symbol that both sides
// must agree on at run time: type information of exceptions and interfaces, and functions that the
// host defines.

#ifndef PLATFORM_FRAMEWORK_EXPORT_H
#define PLATFORM_FRAMEWORK_EXPORT_H

#define PLATFORM_API __attribute__((visibility("default")))

#endif
