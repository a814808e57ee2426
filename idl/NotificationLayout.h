// The texts by which a notification is read: names and types of the structured events that the
// agent sends, in the layout of the public TMF (MTNM) interface.
//
// An event's fixed header has the type (kDomain, one of the type names) and an empty event name.
// Its filterable data are the fields below, in this order; what each holds:
//   notificationId    string, a decimal number that rises from event to event
//   objectName        globaldefs::NVSList_T
//   objectType        notifications::ObjectType_T
//   emsTime           string, when the event was made: UTC, yyyyMMddHHmmss.sZ (.s: tenths)
//   neTime            string, empty: elements do not tell
//   edgePointRelated  boolean
//   attributeList     notifications::NVList_T, in attribute value changes alone
// The remainder of the body is the created object in an object creation and empty otherwise.
//
// An event of the type kEventsLost tells one receiver that it missed events: it should read the
// views again. It has no object; its filterable data are firstLostId and lastLostId (strings, the
// range in which the missed ids lie), lostCount (unsigned long long, 0 when it is not known) and
// emsTime.

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
