# Where korv-mask, its manual and the demo's records are installed: the component mask.
korv_path_between(libraries ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
korv_search_path(korv-mask-program "$ORIGIN/../lib" "${libraries}")
install(TARGETS korv-mask-program DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT mask)
install(FILES korv-mask.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT mask)
# The component documentation has the manual in tools/korv-mask. This copy lies above, so its links are shorter.
file(READ README.md manual)
string(REPLACE "](../../" "](" manual "${manual}")
file(WRITE ${CMAKE_CURRENT_BINARY_DIR}/korv-mask.md "${manual}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/korv-mask.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT mask)
set(data ${PROJECT_SOURCE_DIR}/examples/data)
install(FILES ${data}/customers.csv ${data}/rules.txt ${data}/cities.txt ${data}/first_names.txt
        DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples/data COMPONENT mask)
