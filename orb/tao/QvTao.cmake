# With a real TAO the seam is TAO itself: its headers are found under the names that the library includes, and only
# what stands in orb/*.h needs an implementation.
find_package(TAO REQUIRED)
add_library(qv_orb SHARED ${CMAKE_CURRENT_LIST_DIR}/event_octets.cpp
  ${CMAKE_CURRENT_LIST_DIR}/event_argument.cpp ${CMAKE_CURRENT_LIST_DIR}/object_access.cpp ${CMAKE_CURRENT_LIST_DIR}/portability.cpp
  ${CMAKE_CURRENT_LIST_DIR}/request_hold.cpp ${CMAKE_CURRENT_LIST_DIR}/request_values.cpp ${CMAKE_CURRENT_LIST_DIR}/value_access.cpp)
set_target_properties(qv_orb PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 1)
target_include_directories(qv_orb
  PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qv_corba_pub>)
target_link_libraries(qv_orb
  PUBLIC TAO::PI_Server TAO::PortableServer TAO::CosNaming TAO::CosNotification_Skel TAO::IORTable TAO::DynamicAny TAO::Messaging
  PRIVATE qv_warnings)
