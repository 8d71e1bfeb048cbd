# Run by cpack after it has installed the files that the packages are made from: compresses manual
# pages and changelogs, and strips objects.
set(usr ${CPACK_TEMPORARY_DIRECTORY}/*/usr)
file(GLOB texts ${usr}/share/doc/*/changelog.Debian ${usr}/share/man/man?/*.?)
foreach(text IN LISTS texts)
  execute_process(COMMAND gzip -9n ${text} COMMAND_ERROR_IS_FATAL ANY)
endforeach()

file(GLOB_RECURSE objects ${CPACK_TEMPORARY_DIRECTORY}/*.so ${CPACK_TEMPORARY_DIRECTORY}/*.so.*)
list(FILTER objects EXCLUDE REGEX "-gdb[.]py$")
file(GLOB programs ${usr}/bin/*)
foreach(object IN LISTS objects programs)
  if(NOT IS_SYMLINK ${object})
    execute_process(COMMAND strip --strip-unneeded --remove-section=.comment ${object}
                    COMMAND_ERROR_IS_FATAL ANY)
  endif()
endforeach()
