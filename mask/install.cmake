# Where the engine is installed: the component engine. Its providers belong to the component mask.
set(KORV_PROVIDERS_DIR ${CMAKE_INSTALL_LIBDIR}/korv-providers CACHE STRING
    "Where the providers are installed; a relative folder moves with the prefix")
korv_path_between(providers ${CMAKE_INSTALL_LIBDIR} ${KORV_PROVIDERS_DIR} "")
set_source_files_properties(provider_module.cpp PROPERTIES
                            COMPILE_DEFINITIONS KORV_PROVIDERS_DIR="${providers}")

install(TARGETS korv-mask EXPORT korv-mask-targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
          COMPONENT engine NAMELINK_COMPONENT development
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
korv_install_package(korv-mask)
