# Read by cpack: the dependencies of packages with objects, as the objects name them.
function(depends_of component)
  file(GLOB objects ${ARGN})
  execute_process(COMMAND python3 ${CMAKE_CURRENT_LIST_DIR}/needs.py ${CPACK_KORV_OWN} ${objects}
                  OUTPUT_VARIABLE needs OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ERROR_IS_FATAL ANY)
  set(CPACK_DEBIAN_${component}_PACKAGE_DEPENDS "${needs}" PARENT_SCOPE)
endfunction()

set(build ${CPACK_KORV_BUILD})
depends_of(RUNTIME ${build}/lib/libKORVSupport.so)
depends_of(DATACNV ${build}/lib/libKORVDataCnvLib.so)
depends_of(ENGINE ${build}/lib/libkorvmask.so)
depends_of(MASK ${build}/bin/korv-mask ${build}/lib/korv-providers/*.so)
