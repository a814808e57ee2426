// Splitting of domain names.
//
// An FDN (full distinguished name) is a list of CLASS=value terms joined by ",". Its class (MOC,
// the managed-object class) is that of its last term.

#ifndef PLATFORM_UTIL_UTILCOMMON_H
#define PLATFORM_UTIL_UTILCOMMON_H

#include <map>
#include <string>

#include "platform/framework/Export.h"

namespace NS_UTIL {

// Thread-safety: stateless, any thread.
class PLATFORM_API UtilCommon {
 public:
  static UtilCommon* Instance();

  // Adds the class and value of every term to parts. A term without "=" gives no part; of several
  // terms of one class the first is kept.
  void GetSpliteFDNData(std::map<std::string, std::string>& parts, const std::string& fdn,
                        const std::string& separator);

  // The class of an FDN; empty for a text without "=" in its last term.
  std::string GetMoc(const std::string& fdn);

  // Stores the integer value of the part called name; true when it did. Leaves value alone when the
  // part is missing or is not a signed 32-bit decimal number.
  bool GetIntegerValueByName(const std::map<std::string, std::string>& parts,
                             const std::string& name, int& value);
};

// The decimal value of a text: an optional sign and leading digits, 0 when there are none, held to
// the limits of a signed 32-bit integer.
PLATFORM_API int Str2Int(const std::string& text);

}  // namespace NS_UTIL

#endif
