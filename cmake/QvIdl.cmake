# qv_add_idl(<target> IDL a.idl b.idl … [INCLUDE_DIRS dir…] [TYPE STATIC|SHARED] [LINK target…])
#
# Compiles IDL for the ORB in use into one library: stubs, skeletons and the operation tables by which interceptors see
# a request's arguments. Sources include "aC.h" for the stubs of a.idl and "aS.h" for its skeletons. INCLUDE_DIRS are
# searched for #include in the IDL; LINK names further targets of qv_add_idl whose IDL is included.
if(QV_ORB STREQUAL "TAO")
  find_program(QV_TAO_IDL tao_idl REQUIRED)
else()
  find_program(QV_OMNIIDL omniidl REQUIRED)
endif()
set(QV_IDL_BACKEND_DIR ${CMAKE_CURRENT_LIST_DIR}/idl CACHE INTERNAL "Folder of the operation table back-end")
set(QV_STANDARD_IDL_DIRS /usr/share/idl/omniORB /usr/share/idl/omniORB/COS
  CACHE STRING "Folders with the IDL files of the OMG")

# Generates the sources of one IDL file into `dir` and appends their names to the variable named.
# Further arguments are files that it includes.
function(qv_generate_idl idl dir include_dirs out_variable)
  get_filename_component(idl ${idl} ABSOLUTE)
  get_filename_component(name ${idl} NAME_WE)
  if(QV_ORB STREQUAL "TAO")
    # TAO's stubs carry what interceptors need, under the file names that the sources include.
    list(TRANSFORM include_dirs PREPEND -I)
    add_custom_command(
      OUTPUT ${dir}/${name}C.cpp ${dir}/${name}S.cpp
      COMMAND ${CMAKE_COMMAND} -E make_directory ${dir}
      COMMAND ${QV_TAO_IDL} ${include_dirs} -o ${dir} ${idl}
      DEPENDS ${idl} ${ARGN}
      COMMENT "Compiling ${name}.idl"
      VERBATIM)
    set(${out_variable} ${${out_variable}} ${dir}/${name}C.cpp ${dir}/${name}S.cpp PARENT_SCOPE)
    return()
  endif()
  set(flags)
  foreach(folder IN LISTS include_dirs QV_STANDARD_IDL_DIRS)
    list(APPEND flags -I${folder})
  endforeach()
  set(generated ${dir}/${name}.hh ${dir}/${name}SK.cc ${dir}/${name}DynSK.cc ${dir}/${name}_tables.cpp)
  add_custom_command(
    OUTPUT ${generated}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${dir}
    COMMAND ${QV_OMNIIDL} ${flags} -C${dir} -p${QV_IDL_BACKEND_DIR}
      -bcxx -Wba -Wbh=.hh -Wbs=SK.cc -Wbd=DynSK.cc -bqv_tables ${idl}
    DEPENDS ${idl} ${ARGN} ${QV_IDL_BACKEND_DIR}/qv_tables.py
    COMMENT "Compiling ${name}.idl"
    VERBATIM)
  file(CONFIGURE OUTPUT ${dir}/${name}C.h CONTENT
"// Stubs of @name@.idl. Generated; changes are lost.
#pragma once

#include <tao/ORB.h>

#include \"@name@.hh\"
" @ONLY)
  string(MAKE_C_IDENTIFIER ${name} symbol)
  file(CONFIGURE OUTPUT ${dir}/${name}S.h CONTENT
"// Skeletons of @name@.idl. Generated; changes are lost.
#pragma once

#include <tao/PortableServer/PortableServer.h>

#include \"@name@C.h\"

// Whoever implements a servant needs the operation tables: this reference draws them out of an archive.
extern const bool qv_tables_@symbol@;
namespace {
[[gnu::used]] const bool* const qv_use_tables_@symbol@ = &qv_tables_@symbol@;
}
" @ONLY)
  set(${out_variable} ${${out_variable}} ${generated} PARENT_SCOPE)
endfunction()

function(qv_add_idl target)
  cmake_parse_arguments(arg "" "TYPE" "IDL;INCLUDE_DIRS;LINK" ${ARGN})
  if(NOT arg_IDL)
    message(FATAL_ERROR "qv_add_idl(${target}): no IDL files given")
  endif()
  if(NOT arg_TYPE)
    set(arg_TYPE STATIC)
  endif()
  set(dir ${CMAKE_CURRENT_BINARY_DIR}/${target}_idl)
  set(include_dirs ${CMAKE_CURRENT_SOURCE_DIR})
  set(idl_files)
  foreach(idl IN LISTS arg_IDL)
    get_filename_component(idl ${idl} ABSOLUTE)
    list(APPEND idl_files ${idl})
  endforeach()
  foreach(folder IN LISTS arg_INCLUDE_DIRS)
    get_filename_component(folder ${folder} ABSOLUTE)
    list(APPEND include_dirs ${folder})
  endforeach()
  foreach(other IN LISTS arg_LINK)
    foreach(property QV_IDL_DIRS QV_IDL_FILES)
      get_property(${property} TARGET ${other} PROPERTY ${property})
    endforeach()
    list(APPEND include_dirs ${QV_IDL_DIRS})
    list(APPEND idl_files ${QV_IDL_FILES})
  endforeach()
  set(sources)
  foreach(idl IN LISTS arg_IDL)
    qv_generate_idl(${idl} ${dir} "${include_dirs}" sources ${idl_files})
    get_filename_component(folder ${idl} ABSOLUTE)
    get_filename_component(folder ${folder} DIRECTORY)
    list(APPEND include_dirs ${folder})
  endforeach()
  list(REMOVE_DUPLICATES include_dirs)
  add_library(${target} ${arg_TYPE} ${sources})
  set_target_properties(${target} PROPERTIES
    QV_IDL_DIRS "${include_dirs}" QV_IDL_FILES "${idl_files}" POSITION_INDEPENDENT_CODE ON)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PRIVATE -w)
  target_include_directories(${target} SYSTEM PUBLIC $<BUILD_INTERFACE:${dir}>)
  if(TARGET qv::orb)
    target_link_libraries(${target} PUBLIC qv::orb ${arg_LINK})
  else()
    target_link_libraries(${target} PUBLIC qv_orb ${arg_LINK})
  endif()
endfunction()
