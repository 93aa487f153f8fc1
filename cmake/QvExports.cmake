# qv_limit_exports(<target> <map>)
#
# Has a shared library export what the version script packaging/abi/<map> lists, and nothing else. Not under sanitizers:
# their checks want one type information per class in the whole process, also of classes that are nobody else's business.
function(qv_limit_exports target map)
  if(QV_SANITIZE)
    return()
  endif()
  set(script ${PROJECT_SOURCE_DIR}/packaging/abi/${map})
  target_link_options(${target} PRIVATE "LINKER:--version-script=${script}")
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${script})
endfunction()
