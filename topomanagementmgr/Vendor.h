// The vendor pair of nodes in test mode.

#ifndef TOPOMANAGEMENTMGR_VENDOR_H
#define TOPOMANAGEMENTMGR_VENDOR_H

namespace topo {

constexpr const char* kVendorName = "Vendor";
constexpr const char* kVendorValue = "KORVANE TECHNOLOGIES CO., LTD";

}  // namespace topo

#endif
