# libqv_corba_pub: one shared object whose sources come from the folders time, logging, agent, request and notification.
find_library(QV_ACE_LIBRARY NAMES ACE REQUIRED)
find_package(OpenSSL REQUIRED)

add_library(qv_corba_pub SHARED ${CMAKE_CURRENT_SOURCE_DIR}/platform/export.h)
set_target_properties(qv_corba_pub PROPERTIES
  LINKER_LANGUAGE CXX
  CXX_VISIBILITY_PRESET hidden
  VISIBILITY_INLINES_HIDDEN ON
  VERSION ${PROJECT_VERSION}
  SOVERSION 1)
qv_limit_exports(qv_corba_pub libqv_corba_pub.map)
target_include_directories(qv_corba_pub PUBLIC
  $<BUILD_INTERFACE:${CMAKE_CURRENT_SOURCE_DIR}>
  $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/qv_corba_pub>)
target_link_libraries(qv_corba_pub
  PUBLIC qv_orb qv_platform ${QV_ACE_LIBRARY}
  PRIVATE qv_bundlemgr qv_selfgovernedutil qv_callchain OpenSSL::SSL OpenSSL::Crypto qv_warnings)
# Its log lines name sources as the tree does, wherever it was built.
target_compile_options(qv_corba_pub PRIVATE -fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_precompile_headers(qv_corba_pub PRIVATE
  <map> <string> <vector> <ace/Task.h> <tao/ORB.h> <tao/PortableServer/PortableServer.h> <tao/PI_Server/PI_Server.h>)
