// Parses domain names.
//
// An FDN (full distinguished name) is a list of CLASS=VALUE terms, separated by ",". The class of
// an FDN (MOC, managed-object class) is the class of its last term.
//
// Thread-safety: any thread; the functions have no state. Ownership: arguments are borrowed for the
// call. Texts are UTF-8.
//
// Errors: malformed input is never an error. The functions must not raise anything but CORBA
// exceptions during a request: any other exception, std::bad_alloc included, ends the process. A
// client triggers the calls with every view that has an element. During an event every exception is
// logged, and ends the event.

#ifndef PLATFORM_UTIL_UTILCOMMON_H
#define PLATFORM_UTIL_UTILCOMMON_H

#include <map>
#include <string>

#include "platform/framework/Export.h"

namespace NS_UTIL {

class PLATFORM_API UtilCommon {
 public:
  // Never null; the host owns the object. Must not raise: as all functions of this header.
  static UtilCommon* Instance();

  // Adds the class and the value of every term to parts. Skips terms without "=". When a class
  // occurs twice, the first value stays. Must not raise: ends the process, see above.
  void GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                        const std::string& separator);

  // The class of an FDN; "" when its last term has no "=". Must not raise: ends the process, see
  // above.
  std::string GetMoc(const std::string& fdn);

  // Stores the integer value of the part with this name and returns true. Returns false, and leaves
  // value unchanged, when the part is missing or is not a signed 32-bit decimal number. Must not
  // raise: ends the process, see above.
  bool GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                             const std::string& name, int& value);
};

// The decimal value of a text: an optional sign and leading digits; 0 when the text begins with
// neither. Values outside the range of a signed 32-bit integer become its nearest limit. Must not
// raise: ends the process, see above.
PLATFORM_API int Str2Int(const std::string& text);

}  // namespace NS_UTIL

#endif
