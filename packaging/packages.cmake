# Debian packages for i386, one for each component: configure with the preset `packages`, build, run cpack.
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 4 OR NOT KORV_BUILD_MASK)
  message(FATAL_ERROR "The packages are made for i386, with the engine: use the preset packages")
endif()

# The changelog's first line names the version of the packages.
set(folder ${CMAKE_CURRENT_LIST_DIR})
file(STRINGS ${folder}/changelog version LIMIT_COUNT 1)
if(NOT version MATCHES "^korv-support \\(${PROJECT_VERSION}-([0-9a-z]+)\\) ")
  message(FATAL_ERROR "${folder}/changelog does not begin with version ${PROJECT_VERSION}")
endif()
set(CPACK_DEBIAN_PACKAGE_RELEASE ${CMAKE_MATCH_1})
set(this "(= ${PROJECT_VERSION}-${CMAKE_MATCH_1})")
# A package with the framework's own companion library provides korv-datacnv.
set(companion "libkorvdatacnvlib | korv-datacnv")
get_target_property(mask_soversion korv-mask SOVERSION)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libkorvsupport${KORV_SOVERSION})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "support library of a data-masking framework
It is shared by the framework and its masking providers: request records,
error chains, data types, numeric text, digit transposition, text and date
helpers, sorting.")

set(CPACK_DEBIAN_DATACNV_PACKAGE_NAME libkorvdatacnvlib)
set(CPACK_DEBIAN_DATACNV_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_DATACNV_PACKAGE_PROVIDES korv-datacnv)
set(CPACK_DEBIAN_DATACNV_PACKAGE_CONFLICTS korv-datacnv)
set(CPACK_DEBIAN_DATACNV_PACKAGE_REPLACES korv-datacnv)
set(CPACK_DEBIAN_DATACNV_DESCRIPTION "stand-in for a framework's conversion library
The korv support library converts text through this one: code pages, wide
text, integers and timestamps. It stands in where the framework's own library
of the same name is not installed.")

set(CPACK_DEBIAN_ENGINE_PACKAGE_NAME libkorvmask${mask_soversion})
set(CPACK_DEBIAN_ENGINE_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_ENGINE_PACKAGE_RECOMMENDS korv-mask)
set(CPACK_DEBIAN_ENGINE_DESCRIPTION "masking engine of a data-masking framework
It masks columns of records by rules: it reads the rules, loads the masking
providers that they name, hands them the values in batches, and checks what
they return. The package korv-mask has the providers.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libkorv-support-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
    "${CPACK_DEBIAN_RUNTIME_PACKAGE_NAME} ${this}, ${CPACK_DEBIAN_ENGINE_PACKAGE_NAME} ${this}, \
${companion}, libc6-dev")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS korv-support-doc)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION "headers of the korv libraries
Masking providers, frameworks and programs that use the masking engine are
compiled with these headers, and find the libraries through pkg-config or
CMake.")

set(CPACK_DEBIAN_MASK_PACKAGE_NAME korv-mask)
set(CPACK_DEBIAN_MASK_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_MASK_DESCRIPTION "mask columns of CSV files by rules
The program reads a CSV file, masks the columns by the rules of a rules file,
and writes the masked file. The package has the masking providers for card and
identity numbers, e-mail addresses, dates, lookup tables and more.")

set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_NAME korv-support-doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_SECTION doc)
set(CPACK_DEBIAN_DOCUMENTATION_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DOCUMENTATION_DESCRIPTION "documentation of the korv libraries
How to call the libraries, how to write masking providers, and what the binary
interfaces promise.")

set(CPACK_COMPONENTS_ALL runtime datacnv engine mask development documentation)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  string(TOUPPER ${component} upper)
  set(texts ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${upper}_PACKAGE_NAME})
  install(FILES ${folder}/copyright DESTINATION ${texts} COMPONENT ${component})
  install(FILES ${folder}/changelog DESTINATION ${texts} RENAME changelog.Debian
          COMPONENT ${component})
endforeach()
install(FILES ${folder}/libkorvdatacnvlib.lintian-overrides COMPONENT datacnv
        DESTINATION ${CMAKE_INSTALL_DATADIR}/lintian/overrides RENAME libkorvdatacnvlib)

# korv_symbols(component object exports template): packages with programs that link the object get
# `template` as a dependency, and the loader's cache is updated.
function(korv_symbols component object exports template)
  file(STRINGS ${exports} lines REGEX "^(function|data) ")
  list(TRANSFORM lines REPLACE "^[a-z]+ ([A-Za-z0-9_]+).*" " \\1@Base ${PROJECT_VERSION}")
  list(SORT lines)
  list(JOIN lines "\n" lines)
  set(control ${PROJECT_BINARY_DIR}/packaging/${component})
  file(WRITE ${control}/symbols
       "${object} ${template}\n* Build-Depends-Package: libkorv-support-dev\n${lines}\n")
  file(WRITE ${control}/triggers "activate-noawait ldconfig\n")
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports})
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA ${control}/symbols ${control}/triggers
      PARENT_SCOPE)
endfunction()
korv_symbols(runtime libKORVSupport.so.${KORV_SOVERSION} ${PROJECT_SOURCE_DIR}/src/exports.txt
             "libkorvsupport${KORV_SOVERSION} #MINVER#")
korv_symbols(datacnv libKORVDataCnvLib.so ${PROJECT_SOURCE_DIR}/datacnv/exports.txt "${companion}")
korv_symbols(engine libkorvmask.so.${mask_soversion} ${PROJECT_SOURCE_DIR}/mask/exports.txt
             "libkorvmask${mask_soversion} #MINVER#")

# korv_shlibs(component library soversion package): the same dependency in the older form.
function(korv_shlibs component library soversion package)
  set(shlibs ${PROJECT_BINARY_DIR}/packaging/${component}/shlibs)
  file(WRITE ${shlibs} "${library} ${soversion} ${package} (>= ${PROJECT_VERSION})\n")
  string(TOUPPER ${component} upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA
      ${CPACK_DEBIAN_${upper}_PACKAGE_CONTROL_EXTRA} ${shlibs} PARENT_SCOPE)
endfunction()
korv_shlibs(runtime libKORVSupport ${KORV_SOVERSION} libkorvsupport${KORV_SOVERSION})
korv_shlibs(engine libkorvmask ${mask_soversion} libkorvmask${mask_soversion})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "The korv-support developers <korv-support@example.org>")
set(CPACK_DEBIAN_PACKAGE_SOURCE korv-support)
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE i386)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PROJECT_CONFIG_FILE ${folder}/depends.cmake)
set(CPACK_PRE_BUILD_SCRIPTS ${folder}/finish.cmake)
set(CPACK_KORV_BUILD ${PROJECT_BINARY_DIR})
set(CPACK_KORV_OWN
    "libKORVSupport.so.${KORV_SOVERSION}=libkorvsupport${KORV_SOVERSION} (>= ${PROJECT_VERSION})"
    "libkorvmask.so.${mask_soversion}=libkorvmask${mask_soversion} (>= ${PROJECT_VERSION})"
    "libKORVDataCnvLib.so=${companion}")
include(CPack)
