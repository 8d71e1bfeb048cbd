# Where korv-provider and its helper are installed: the program in the component mask, the helper in a
# folder of the libraries, so that helpers of both word sizes can be installed together.
korv_path_between(libraries ${CMAKE_INSTALL_LIBDIR}/korv ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
korv_search_path(korv-provider-run "$ORIGIN/../lib" "${libraries}")
install(TARGETS korv-provider-run DESTINATION ${CMAKE_INSTALL_LIBDIR}/korv COMPONENT mask)
korv_path_between(libraries ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR} "$ORIGIN/")
korv_search_path(korv-provider "$ORIGIN/../lib" "${libraries}")
install(TARGETS korv-provider DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT mask)
install(FILES korv-provider.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT mask)
