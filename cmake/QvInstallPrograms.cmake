# The companion services with what a system needs to run them, and the operators' tools.

function(qv_install_programs component section)
  foreach(program IN LISTS ARGN)
    if(NOT TARGET ${program})
      continue()
    endif()
    install(TARGETS ${program} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT ${component})
    foreach(folder packaging/man services/notify/program)
      if(EXISTS ${PROJECT_SOURCE_DIR}/${folder}/${program}.${section})
        install(FILES ${PROJECT_SOURCE_DIR}/${folder}/${program}.${section}
          DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
      endif()
    endforeach()
  endforeach()
endfunction()
qv_install_programs(services 8 Naming_Service Notify_Service)
qv_install_programs(tools 1 qv_audit qv_config qv_spans qv_ssl qv_user)

# What Naming_Service loads into omniNames; nobody links it.
if(TARGET qv_naming_ssl)
  set_target_properties(qv_naming_ssl PROPERTIES INSTALL_RPATH "")
  install(TARGETS qv_naming_ssl LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/qv_corba_pub COMPONENT services)
endif()

# Units name the programs by their full path, which is known when they are installed.
install(CODE "
  set(bindir \"${CMAKE_INSTALL_BINDIR}\")
  set(sysconfdir \"${CMAKE_INSTALL_SYSCONFDIR}\")
  set(source \"${PROJECT_SOURCE_DIR}/packaging/systemd\")
  set(work \"${PROJECT_BINARY_DIR}/package\")
  include(\"${PROJECT_SOURCE_DIR}/cmake/QvInstallUnits.cmake\")
" COMPONENT services)
