# Installation: libraries, public headers, the naming service, and what a separate project needs to build on them
# (CMake package qv_corba_pub with the targets qv::corba_pub, qv::orb and qv::platform, and a pkg-config file).
include(CMakePackageConfigHelpers)

set(QV_INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/qv_corba_pub)
set(QV_INSTALL_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/qv_corba_pub)

foreach(needed qv_orb qv_platform qv_bundlemgr qv_selfgovernedutil qv_callchain qv_corba_pub)
  if(NOT TARGET ${needed})
    message(STATUS "No installation: the target ${needed} is not built")
    return()
  endif()
endforeach()

# In this tree and from the package alike, the targets go by one name.
foreach(name corba_pub orb platform bundlemgr selfgovernedutil callchain)
  add_library(qv::${name} ALIAS qv_${name})
  set_target_properties(qv_${name} PROPERTIES EXPORT_NAME ${name})
endforeach()
# The libraries lie in one folder.
set_target_properties(qv_orb qv_bundlemgr qv_selfgovernedutil qv_callchain qv_corba_pub PROPERTIES INSTALL_RPATH "$ORIGIN")

install(TARGETS qv_orb qv_platform qv_bundlemgr qv_selfgovernedutil qv_callchain qv_corba_pub
  EXPORT qv_corba_pub-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  FILE_SET HEADERS DESTINATION ${QV_INSTALL_HEADERS})
foreach(program Naming_Service Notify_Service qv_config)
  if(TARGET ${program})
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  endif()
endforeach()

# What Naming_Service loads into omniNames.
if(TARGET qv_naming_ssl)
  install(TARGETS qv_naming_ssl LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endif()

if(TARGET Notify_Service)
  install(FILES ${PROJECT_SOURCE_DIR}/services/notify/program/Notify_Service.8 DESTINATION ${CMAKE_INSTALL_MANDIR}/man8)
endif()

# Public is a header that exports something; the two others consist of inline code that those refer to.
function(qv_install_public_headers)
  foreach(folder IN LISTS ARGN)
    file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    foreach(header IN LISTS headers)
      file(STRINGS ${header} exports REGEX "QV_API|QV_ORB_API" LIMIT_COUNT 1)
      get_filename_component(name ${header} NAME)
      if(exports OR name MATCHES "^(pos_for_dbg|service_lookup)\\.h$")
        install(FILES ${header} DESTINATION ${QV_INSTALL_HEADERS}/${folder})
      endif()
    endforeach()
  endforeach()
endfunction()
qv_install_public_headers(time logging agent request notification orb)

if(NOT QV_ORB STREQUAL "TAO")
  # TAO's header names, and the stubs of the OMG's services, generated and compiled into libqv_orb.
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/orb/omniorb/include/ DESTINATION ${QV_INSTALL_HEADERS})
  install(DIRECTORY ${PROJECT_BINARY_DIR}/orb/generated/ DESTINATION ${QV_INSTALL_HEADERS}
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hh")
endif()

# The IDL function with its back-end.
install(FILES ${PROJECT_SOURCE_DIR}/cmake/QvIdl.cmake DESTINATION ${QV_INSTALL_PACKAGE})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/cmake/idl DESTINATION ${QV_INSTALL_PACKAGE} FILES_MATCHING PATTERN "*.py")

install(EXPORT qv_corba_pub-targets NAMESPACE qv:: FILE qv_corba_pubTargets.cmake
  DESTINATION ${QV_INSTALL_PACKAGE})
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qv_corba_pubConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/qv_corba_pubConfig.cmake
  INSTALL_DESTINATION ${QV_INSTALL_PACKAGE})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/qv_corba_pubConfigVersion.cmake
  COMPATIBILITY SameMinorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/qv_corba_pubConfig.cmake
  ${PROJECT_BINARY_DIR}/package/qv_corba_pubConfigVersion.cmake
  DESTINATION ${QV_INSTALL_PACKAGE})

if(QV_ORB STREQUAL "TAO")
  set(QV_PKG_CONFIG_ORB "TAO_PortableServer TAO_PI_Server TAO_DynamicAny")
else()
  set(QV_PKG_CONFIG_ORB "omniDynamic4 omniORB4")
endif()
file(RELATIVE_PATH QV_PKG_CONFIG_UP /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
string(REGEX REPLACE "/$" "" QV_PKG_CONFIG_UP "${QV_PKG_CONFIG_UP}")
configure_file(${PROJECT_SOURCE_DIR}/cmake/qv_corba_pub.pc.in ${PROJECT_BINARY_DIR}/package/qv_corba_pub.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/package/qv_corba_pub.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
