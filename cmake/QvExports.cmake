# qv_limit_exports(<target> <map>)
#
# Has a shared library export what the version script packaging/abi/<map> lists, and nothing else.
function(qv_limit_exports target map)
  set(script ${PROJECT_SOURCE_DIR}/packaging/abi/${map})
  target_link_options(${target} PRIVATE "LINKER:--version-script=${script}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
