# Run by `cmake --install`: units, their settings and their users, for the folder that is installed to. Wants bindir,
# sysconfdir (both absolute or below the prefix), source (the templates) and work (a folder to write to).
foreach(folder bindir sysconfdir)
  cmake_path(ABSOLUTE_PATH ${folder} BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}" NORMALIZE)
endforeach()
foreach(unit qv-naming qv-notify)
  configure_file("${source}/${unit}.service.in" "${work}/${unit}.service" @ONLY)
  file(INSTALL "${work}/${unit}.service" DESTINATION "${CMAKE_INSTALL_PREFIX}/lib/systemd/system")
  file(INSTALL "${source}/${unit}.default" DESTINATION "${sysconfdir}/default" RENAME ${unit})
endforeach()
file(INSTALL "${source}/qv-corba-services.sysusers" DESTINATION "${CMAKE_INSTALL_PREFIX}/lib/sysusers.d"
  RENAME qv-corba-services.conf)
