# Installation, in components of `cmake --install`:
#   runtime        the shared libraries
#   development    headers, IDL compiler function, CMake package (targets qv::…), pkg-config files, links for the linker
#   services       Naming_Service and Notify_Service, with manual pages and units for systemd
#   tools          what operators run: qv_audit, qv_config, qv_spans, qv_ssl, qv_user, with manual pages
#   documentation  the pages of docs/, and the manual as HTML where it has been built
# The demo is in none of them: it shows what an agent looks like, and lives on parts of this tree that nobody else gets.
include(CMakePackageConfigHelpers)

set(QV_INSTALL_HEADERS ${CMAKE_INSTALL_INCLUDEDIR}/qv_corba_pub)
set(QV_INSTALL_PACKAGE ${CMAKE_INSTALL_LIBDIR}/cmake/qv_corba_pub)
set(QV_INSTALL_PKG_CONFIG ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
set(QV_PUBLIC_TARGETS corba_pub orb platform bundlemgr selfgovernedutil callchain)

foreach(name IN LISTS QV_PUBLIC_TARGETS)
  if(NOT TARGET qv_${name})
    message(STATUS "No installation: the target qv_${name} is not built")
    return()
  endif()
endforeach()

include(QvInstallHeaders)
include(QvInstallPrograms)

# In this tree and from the package alike, the targets go by one name.
foreach(name IN LISTS QV_PUBLIC_TARGETS)
  add_library(qv::${name} ALIAS qv_${name})
  set_target_properties(qv_${name} PROPERTIES EXPORT_NAME ${name})
endforeach()
# The libraries lie in one folder.
set_target_properties(qv_orb qv_bundlemgr qv_selfgovernedutil qv_callchain qv_corba_pub PROPERTIES INSTALL_RPATH "$ORIGIN")

list(TRANSFORM QV_PUBLIC_TARGETS PREPEND qv_ OUTPUT_VARIABLE targets)
install(TARGETS ${targets}
  EXPORT qv_corba_pub-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  FILE_SET HEADERS DESTINATION ${QV_INSTALL_HEADERS} COMPONENT development)

# The IDL function with its back-end.
install(FILES ${PROJECT_SOURCE_DIR}/cmake/QvIdl.cmake DESTINATION ${QV_INSTALL_PACKAGE} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/cmake/idl DESTINATION ${QV_INSTALL_PACKAGE} COMPONENT development
  FILES_MATCHING PATTERN "*.py")

install(EXPORT qv_corba_pub-targets NAMESPACE qv:: FILE qv_corba_pubTargets.cmake
  DESTINATION ${QV_INSTALL_PACKAGE} COMPONENT development)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/qv_corba_pubConfig.cmake.in
  ${PROJECT_BINARY_DIR}/package/qv_corba_pubConfig.cmake
  INSTALL_DESTINATION ${QV_INSTALL_PACKAGE})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/package/qv_corba_pubConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES
  ${PROJECT_BINARY_DIR}/package/qv_corba_pubConfig.cmake
  ${PROJECT_BINARY_DIR}/package/qv_corba_pubConfigVersion.cmake
  DESTINATION ${QV_INSTALL_PACKAGE} COMPONENT development)

if(QV_ORB STREQUAL "TAO")
  set(QV_PKG_CONFIG_ORB "TAO_PortableServer TAO_PI_Server TAO_DynamicAny")
else()
  set(QV_PKG_CONFIG_ORB "omniDynamic4 omniORB4")
endif()
file(RELATIVE_PATH QV_PKG_CONFIG_UP /prefix/${QV_INSTALL_PKG_CONFIG} /prefix)
string(REGEX REPLACE "/$" "" QV_PKG_CONFIG_UP "${QV_PKG_CONFIG_UP}")
foreach(name qv_corba_pub qv_orb)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${PROJECT_BINARY_DIR}/package/${name}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/package/${name}.pc DESTINATION ${QV_INSTALL_PKG_CONFIG} COMPONENT development)
endforeach()

install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "steps" EXCLUDE PATTERN "reference" EXCLUDE)
install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
# The tutorial's projects, to be copied and built.
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/bundle/steps DESTINATION ${CMAKE_INSTALL_DOCDIR}/bundle
  COMPONENT documentation OPTIONAL)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/build/docs/html DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation
  OPTIONAL)
