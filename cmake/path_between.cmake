# korv_path_between(variable from to start): the relative path between two of the folders, after
# `start`, or the folder `to` itself if one of them does not move with the prefix.
function(korv_path_between variable from to start)
  if(IS_ABSOLUTE "${from}" OR IS_ABSOLUTE "${to}")
    get_filename_component(path "${to}" ABSOLUTE BASE_DIR "${CMAKE_INSTALL_PREFIX}")
  else()
    file(RELATIVE_PATH path "/${from}" "/${to}")
    string(REGEX REPLACE "/$" "" path "${start}${path}")
  endif()
  set(${variable} "${path}" PARENT_SCOPE)
endfunction()

# korv_search_path(target build installed): where an installed target looks for the libraries, in the build folder
# and when it is installed. CMake would write both into the build folder's one and end it with a colon. The
# loader reads that as the current folder, so anyone who can write there could replace a library.
function(korv_search_path target build installed)
  set(path "${build}" "${installed}")
  list(REMOVE_DUPLICATES path)
  set_target_properties(${target} PROPERTIES INSTALL_RPATH "${path}")
  if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_SKIP_INSTALL_RPATH)
    set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON)
  endif()
endfunction()
