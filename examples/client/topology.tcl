# A client of a topology agent in Tcl, for Debian's package tcl-combat.
#   tclsh topology.tcl IOR-FILE list                        prints the nodes of the topology
#   tclsh topology.tcl IOR-FILE label EMS CLASS VALUE TEXT  sets the user label of an object
# IOR-FILE is the file of the agent's option --ior-file, because Combat sends and receives texts beyond
# ISO-8859-1 through an IOR only.

package require combat

# With this code set Combat converts all texts to the UTF-8 of the agent. With utf-8 Combat converts nothing.
corba::init -ORBNativeCodeSet iso8859-1
fconfigure stdout -encoding utf-8
fconfigure stderr -encoding utf-8

# The used part of the IDL. The translator idl2tcl needs an interface repository, which Debian does not have.
combat::ir add {
  {module {IDL:globaldefs:1.0 globaldefs 1.0} {
    {struct {IDL:globaldefs/NameAndStringValue_T:1.0 NameAndStringValue_T 1.0}
      {{name string} {value string}} {}}
    {typedef {IDL:globaldefs/NVSList_T:1.0 NVSList_T 1.0}
      {sequence IDL:globaldefs/NameAndStringValue_T:1.0}}
    {enum {IDL:globaldefs/ExceptionType_T:1.0 ExceptionType_T 1.0} {
      EXCPT_NOT_IMPLEMENTED EXCPT_INTERNAL_ERROR EXCPT_INVALID_INPUT EXCPT_OBJECT_IN_USE
      EXCPT_TP_INVALID_ENDPOINT EXCPT_ENTITY_NOT_FOUND EXCPT_TIMESLOT_IN_USE
      EXCPT_PROTECTION_EFFORT_NOT_MET EXCPT_NOT_IN_VALID_STATE EXCPT_UNABLE_TO_COMPLY
      EXCPT_NE_COMM_LOSS EXCPT_CAPACITY_EXCEEDED EXCPT_ACCESS_DENIED EXCPT_TOO_MANY_OPEN_ITERATORS
      EXCPT_UNSUPPORTED_ROUTING_CONSTRAINTS EXCPT_USERLABEL_IN_USE}}
    {exception {IDL:globaldefs/ProcessingFailureException:1.0 ProcessingFailureException 1.0}
      {{exceptionType IDL:globaldefs/ExceptionType_T:1.0} {errorReason string}} {}}}}
  {module {IDL:TopoManagementManager:1.0 TopoManagementManager 1.0} {
    {struct {IDL:TopoManagementManager/Node_T:1.0 Node_T 1.0} {
      {name IDL:globaldefs/NVSList_T:1.0} {nativeEMSName string} {nodeType {unsigned long}}
      {nodeParam1 long} {nodeParam2 long} {relatedName IDL:globaldefs/NVSList_T:1.0}
      {additionalInfo IDL:globaldefs/NVSList_T:1.0}} {}}
    {interface {IDL:TopoManagementManager/NodeIterator_I:1.0 NodeIterator_I 1.0} {} {
      {operation {IDL:TopoManagementManager/NodeIterator_I/next_n:1.0 next_n 1.0} boolean
        {{in how_many {unsigned long}}
         {out nodeList {sequence IDL:TopoManagementManager/Node_T:1.0}}}
        IDL:globaldefs/ProcessingFailureException:1.0}}}
    {interface {IDL:TopoManagementManager/TopoMgr_I:1.0 TopoMgr_I 1.0} {} {
      {operation {IDL:common/Common_I/setUserLabel:1.0 setUserLabel 1.0} void
        {{in objectName IDL:globaldefs/NVSList_T:1.0} {in userLabel string}
         {in enforceUniqueness boolean}} IDL:globaldefs/ProcessingFailureException:1.0}
      {operation {IDL:TopoManagementManager/TopoMgr_I/getTopoSubnetworkViewInfo:1.0
          getTopoSubnetworkViewInfo 1.0} void
        {{in how_many {unsigned long}}
         {out nodeList {sequence IDL:TopoManagementManager/Node_T:1.0}}
         {out nodeIt IDL:TopoManagementManager/NodeIterator_I:1.0}}
        IDL:globaldefs/ProcessingFailureException:1.0}}}}}
}

proc printNodes {nodes} {
  foreach fields $nodes {
    array set node $fields
    array set ems [lindex $node(name) 0]
    array set object [lindex $node(name) 1]
    puts "$ems(value)  $object(name)=$object(value)  $node(nativeEMSName)"
  }
}

proc listNodes {manager} {
  $manager getTopoSubnetworkViewInfo 20 nodes rest
  printNodes $nodes
  set more [expr {$rest ne "0"}]
  while {$more} {
    set more [$rest next_n 20 nodes]  ;# 0: the iterator has ended
    printNodes $nodes
  }
}

proc main {iorFile command args} {
  set manager [corba::string_to_object file://[file normalize $iorFile]]
  switch $command {
    list { listNodes $manager }
    label {
      lassign $args ems class value text
      $manager setUserLabel [list [list name EMS value $ems] [list name $class value $value]] $text 0
    }
  }
}

# An exception is an error with the exception's id and fields.
if {[catch {main {*}$argv} failure]} {
  puts stderr $failure
  exit 1
}
