// The layout of the structured events that the agent sends: the layout of the public TMF (MTNM)
// interface.
//
// The fixed header contains the type (kDomain and one of the type names) and an empty event name.
// The filterable data contain these fields, in this order:
//   notificationId    string, a decimal number below 2^63 that rises from event to event, in steps
//                     of any size: change number * 2^20 + position in the change
//   objectName        globaldefs::NVSList_T
//   objectType        notifications::ObjectType_T, by the class of the object (the name of the last
//                     pair of objectName):
//                       ManagedElement, ONE   OT_MANAGED_ELEMENT
//                       TopoSubnetwork        OT_MULTILAYER_SUBNETWORK
//                       ClockTopoLinkId       OT_TOPOLOGICAL_LINK
//                       OS, or an empty name  OT_EMS
//   emsTime           string, time when the event was made: UTC, yyyyMMddHHmmss.sZ (.s: tenths)
//   neTime            string, empty: network elements report no time
//   edgePointRelated  boolean
//   attributeList     notifications::NVList_T, in attribute value changes only
// The remainder of the body contains the created object in an object creation and is empty
// otherwise.
//
// An event of type kEventsLost reports a gap to one receiver, which should read the views again.
// The filterable data contain firstLostId and lastLostId (strings, the range of the missed ids),
// lostCount (unsigned long long, missed notifications; 0: unknown) and emsTime.

#ifndef IDL_NOTIFICATIONLAYOUT_H
#define IDL_NOTIFICATIONLAYOUT_H

namespace notification_layout {

constexpr const char* kDomain = "tmf_mtnm";

// Types of events.
constexpr const char* kObjectCreation = "NT_OBJECT_CREATION";
constexpr const char* kObjectDeletion = "NT_OBJECT_DELETION";
constexpr const char* kAttributeValueChange = "NT_ATTRIBUTE_VALUE_CHANGE";
constexpr const char* kEventsLost = "NT_EVENTS_LOST";  // this agent's own

// Names of filterable data.
constexpr const char* kNotificationId = "notificationId";
constexpr const char* kObjectName = "objectName";
constexpr const char* kObjectType = "objectType";
constexpr const char* kEmsTime = "emsTime";
constexpr const char* kNeTime = "neTime";
constexpr const char* kEdgePointRelated = "edgePointRelated";
constexpr const char* kAttributeList = "attributeList";
constexpr const char* kFirstLostId = "firstLostId";
constexpr const char* kLastLostId = "lastLostId";
constexpr const char* kLostCount = "lostCount";

}  // namespace notification_layout

#endif
