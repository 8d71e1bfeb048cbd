# Where korv-mask, its manual and the demo's records are installed: the component mask.
korv_path_between(libraries ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
korv_search_path(korv-mask-program "$ORIGIN/../lib" "${libraries}")
install(TARGETS korv-mask-program DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT mask)
install(FILES korv-mask.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT mask)
install(FILES README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} RENAME korv-mask.md COMPONENT mask)
set(data ${PROJECT_SOURCE_DIR}/examples/data)
install(FILES ${data}/customers.csv ${data}/rules.txt ${data}/cities.txt ${data}/first_names.txt
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/data COMPONENT mask)
