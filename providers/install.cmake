# Where the providers are installed: the component mask.
korv_path_between(libraries ${KORV_PROVIDERS_DIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
foreach(name IN LISTS provider_names)
  set_target_properties(korvprv_${name} PROPERTIES INSTALL_RPATH "${libraries}")
  install(TARGETS korvprv_${name} DESTINATION ${KORV_PROVIDERS_DIR} COMPONENT mask)
endforeach()
