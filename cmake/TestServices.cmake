# Programs outside of this project that tests start.
#   TOPO_NAMING_SERVICE          a CORBA naming service
#   TOPO_EVENT_SERVICE           a CORBA event service, its object at TOPO_EVENT_SERVICE_KEY
#   TOPO_EVENT_CHANNEL_FACTORY   the program that creates a channel in the event service
#   TOPO_NOTIFY_SERVICE          TAO's notification service; not found on machines without it

find_program(TOPO_NAMING_SERVICE omniNames REQUIRED)
find_program(TOPO_EVENT_SERVICE omniEvents REQUIRED PATHS /usr/sbin)
set(TOPO_EVENT_SERVICE_KEY omniEvents)
find_program(TOPO_EVENT_CHANNEL_FACTORY eventc REQUIRED)
find_program(TOPO_NOTIFY_SERVICE tao_cosnotification
  HINTS ${TOPO_TAO_ROOTS} PATH_SUFFIXES bin orbsvcs/Notify_Service)
if(NOT TOPO_NOTIFY_SERVICE)
  set(TOPO_NOTIFY_SERVICE "")
endif()
