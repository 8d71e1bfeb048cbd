# Where the host, its providers and the demo's records are installed: the component example.
set(KORV_PROVIDERS_DIR ${CMAKE_INSTALL_LIBDIR}/korv-providers CACHE STRING
    "Where the host's providers are installed; a relative folder moves with the prefix")
korv_path_between(providers ${CMAKE_INSTALL_BINDIR} ${KORV_PROVIDERS_DIR} "")
set_source_files_properties(host/provider_loader.cpp PROPERTIES
                            COMPILE_DEFINITIONS MASK_CSV_PROVIDERS="${providers}")

korv_path_between(libraries ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
set_target_properties(mask_csv PROPERTIES INSTALL_RPATH "${libraries}")
install(TARGETS mask_csv DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT example)

korv_path_between(libraries ${KORV_PROVIDERS_DIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
foreach(name IN LISTS provider_names)
  set_target_properties(korvprv_${name} PROPERTIES INSTALL_RPATH "${libraries}")
  install(TARGETS korvprv_${name} DESTINATION ${KORV_PROVIDERS_DIR} COMPONENT example)
endforeach()

set(texts ${CMAKE_INSTALL_DOCDIR}/examples/mask_csv)
install(FILES mask_csv.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT example)
install(FILES provider.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/mask_csv COMPONENT example)
install(FILES README.md DESTINATION ${texts} COMPONENT example)
install(FILES data/customers.csv data/rules.txt data/cities.txt data/first_names.txt
        DESTINATION ${texts}/data COMPONENT example)
