# What cmake --install puts where, in the components runtime, datacnv (the stand-in for the companion
# library), development and documentation. The rules of the components engine and mask are in the
# folders mask, providers and tools.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(${CMAKE_CURRENT_LIST_DIR}/path_between.cmake)

# The folder of documents that a surrounding project has chosen holds that project's own README.md.
if(NOT PROJECT_IS_TOP_LEVEL)
  set(CMAKE_INSTALL_DOCDIR ${CMAKE_INSTALL_DATAROOTDIR}/doc/korv-support)
endif()

# The folder of the headers must be relative to the prefix. All others may be absolute; the installed
# tree can be moved as a whole if they are relative.
set(packages ${CMAKE_INSTALL_LIBDIR}/cmake/korv-support)
set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
korv_path_between(pc_prefix ${pc_folder} . "\${pcfiledir}/")
# pkg-config leaves out the flags for folders of the system only if their paths have no "..".
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
  set(pc_prefix /usr)
endif()
korv_path_between(pc_libdir . ${CMAKE_INSTALL_LIBDIR} "\${prefix}/")
korv_path_between(pc_includedir . ${CMAKE_INSTALL_INCLUDEDIR} "\${prefix}/")

# korv_install_package(target): how consumers find the library that `target` builds: the export set
# TARGET-targets for the CMake package, where korv-NAME becomes korv::NAME, and a pkg-config file from
# the template TARGET.pc.in.
function(korv_install_package target)
  string(REGEX REPLACE "^korv-" "" name ${target})
  set_target_properties(${target} PROPERTIES EXPORT_NAME ${name})
  install(EXPORT ${target}-targets NAMESPACE korv:: DESTINATION ${packages} COMPONENT development)
  set(pc ${CMAKE_CURRENT_BINARY_DIR}/${target}.pc)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${target}.pc.in ${pc} @ONLY)
  install(FILES ${pc} DESTINATION ${pc_folder} COMPONENT development)
endfunction()

install(TARGETS korv-support EXPORT korv-support-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
korv_install_package(korv-support)
install(TARGETS korv-datacnv EXPORT korv-datacnv-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT datacnv
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
korv_install_package(korv-datacnv)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/korv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")

# find_package(korv-support)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/korv-support-config.cmake.in
  korv-support-config.cmake INSTALL_DESTINATION ${packages}
  PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_BINDIR)
write_basic_package_version_file(korv-support-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korv-support-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/korv-support-config-version.cmake
              ${CMAKE_CURRENT_LIST_DIR}/korv_add_provider.cmake
              ${CMAKE_CURRENT_LIST_DIR}/korv_add_provider_check.cmake
        DESTINATION ${packages} COMPONENT development)

# The documents keep their places relative to each other, so that their links lead to installed files.
install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
              ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md ${PROJECT_SOURCE_DIR}/SECURITY.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
foreach(folder IN ITEMS postgresql python tools/korv-mask)
  install(FILES ${PROJECT_SOURCE_DIR}/${folder}/README.md
          DESTINATION ${CMAKE_INSTALL_DOCDIR}/${folder} COMPONENT documentation)
endforeach()
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/provider_template
                  ${PROJECT_SOURCE_DIR}/examples/provider_template_cpp
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT documentation)
install(FILES ${PROJECT_SOURCE_DIR}/examples/mask_column/mask_column.c
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/mask_column COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
        COMPONENT documentation PATTERN reference EXCLUDE)
