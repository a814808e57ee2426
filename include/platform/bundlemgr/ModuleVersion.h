// The version of a module. A module exports one symbol only, so its version is a text in a section
// of its file: `readelf -p .topo.version libzu_corba_topo.so` prints the version.

#ifndef PLATFORM_BUNDLEMGR_MODULEVERSION_H
#define PLATFORM_BUNDLEMGR_MODULEVERSION_H

namespace NS_BUNDLEMGR1 {

// The section contains one NUL-terminated text. A module defines it so:
//   [[gnu::used, gnu::section(".topo.version")]] constexpr char kVersion[] = "1.2.3";
constexpr const char* kVersionSection = ".topo.version";

}  // namespace NS_BUNDLEMGR1

#endif
