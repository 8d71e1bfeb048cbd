# korv_add_provider(name source...): the masking provider NAME as the module libkorvprv_<name>.so, where engines
# look for it. It exports the entry function only, so that modules do not get in each other's way.
function(korv_add_provider name)
  string(TOLOWER ${name} lower)
  set(target korvprv_${lower})
  add_library(${target} MODULE ${ARGN})
  target_link_libraries(${target} PRIVATE korv::support)
  set_target_properties(${target} PROPERTIES
    PREFIX lib
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    # The program that loads it has loaded the support library.
    SKIP_BUILD_RPATH ON)
  # Visibility does not hide what the module takes from the C++ library's templates.
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "{ global: KorvProviderEntry; local: *; };\n" @ONLY)
  set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${map})
  target_link_options(${target} PRIVATE -Wl,--version-script=${map} -Wl,-z,relro -Wl,-z,now)
endfunction()
