# The headers that a project outside this tree may include.

# Public is a header that exports something; the two others consist of inline code that those refer to.
function(qv_install_public_headers)
  foreach(folder IN LISTS ARGN)
    file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h)
    foreach(header IN LISTS headers)
      file(STRINGS ${header} exports REGEX "QV_API|QV_ORB_API" LIMIT_COUNT 1)
      get_filename_component(name ${header} NAME)
      if(exports OR name MATCHES "^(pos_for_dbg|service_lookup)\\.h$")
        install(FILES ${header} DESTINATION ${QV_INSTALL_HEADERS}/${folder} COMPONENT development)
      endif()
    endforeach()
  endforeach()
endfunction()
qv_install_public_headers(time logging agent request notification orb)

if(NOT QV_ORB STREQUAL "TAO")
  # TAO's header names, and the stubs of the OMG's services, generated and compiled into libqv_orb.
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/orb/omniorb/include/ DESTINATION ${QV_INSTALL_HEADERS} COMPONENT development)
  install(DIRECTORY ${PROJECT_BINARY_DIR}/orb/generated/ DESTINATION ${QV_INSTALL_HEADERS} COMPONENT development
    FILES_MATCHING PATTERN "*.h" PATTERN "*.hh")
endif()
