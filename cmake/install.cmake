# What cmake --install puts where, in the components runtime, datacnv (the companion's stand-in),
# development and documentation. The example host's own rules stand in its folder.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
include(${CMAKE_CURRENT_LIST_DIR}/path_between.cmake)

# Folders but that of the headers may be absolute; relative ones let the installed tree move.
set(packages ${CMAKE_INSTALL_LIBDIR}/cmake/korv-support)

install(TARGETS korv-support EXPORT korv-support-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT runtime NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS korv-datacnv EXPORT korv-datacnv-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT datacnv
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/korv DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
        COMPONENT development FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")

# find_package(korv-support)
set_target_properties(korv-support PROPERTIES EXPORT_NAME support)
set_target_properties(korv-datacnv PROPERTIES EXPORT_NAME datacnv)
foreach(name IN ITEMS korv-support korv-datacnv)
  install(EXPORT ${name}-targets NAMESPACE korv:: DESTINATION ${packages} COMPONENT development)
endforeach()
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/korv-support-config.cmake.in
  korv-support-config.cmake INSTALL_DESTINATION ${packages} PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(korv-support-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korv-support-config.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/korv-support-config-version.cmake
        DESTINATION ${packages} COMPONENT development)

# pkg-config
set(pc_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
korv_path_between(pc_prefix ${pc_folder} . "\${pcfiledir}/")
korv_path_between(pc_libdir . ${CMAKE_INSTALL_LIBDIR} "\${prefix}/")
korv_path_between(pc_includedir . ${CMAKE_INSTALL_INCLUDEDIR} "\${prefix}/")
foreach(name IN ITEMS korv-support korv-datacnv)
  configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${name}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc DESTINATION ${pc_folder}
          COMPONENT development)
endforeach()

install(FILES ${PROJECT_SOURCE_DIR}/README.md ${PROJECT_SOURCE_DIR}/CHANGELOG.md
              ${PROJECT_SOURCE_DIR}/CONTRIBUTING.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/examples/provider_template
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples COMPONENT documentation)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs DESTINATION ${CMAKE_INSTALL_DOCDIR}
        COMPONENT documentation PATTERN reference EXCLUDE)
