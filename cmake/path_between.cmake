# korv_path_between(variable from to start): the way between two of the folders, which begins with
# `start`, or the folder `to` itself where one of them does not move with the prefix.
function(korv_path_between variable from to start)
  if(IS_ABSOLUTE "${from}" OR IS_ABSOLUTE "${to}")
    get_filename_component(path "${to}" ABSOLUTE BASE_DIR "${CMAKE_INSTALL_PREFIX}")
  else()
    file(RELATIVE_PATH path "/${from}" "/${to}")
    string(REGEX REPLACE "/$" "" path "${start}${path}")
  endif()
  set(${variable} "${path}" PARENT_SCOPE)
endfunction()
