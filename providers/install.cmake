# Where the providers are installed: the component mask.
korv_path_between(libraries ${KORV_PROVIDERS_DIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
foreach(name IN LISTS provider_names)
  korv_search_path(korvprv_${name} "$ORIGIN/.." "${libraries}")
  install(TARGETS korvprv_${name} DESTINATION ${KORV_PROVIDERS_DIR} COMPONENT mask)
endforeach()
