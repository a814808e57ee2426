// Visibility of the types and functions that cross between the module and its host.
//
// The module is built with hidden visibility. Whatever both sides must agree on at run time (type
// information of exceptions and interfaces, functions that the host provides) is marked with this.

#ifndef PLATFORM_FRAMEWORK_EXPORT_H
#define PLATFORM_FRAMEWORK_EXPORT_H

#define PLATFORM_API __attribute__((visibility("default")))

#endif
