# What the project's targets share: compile options, and shared objects that export a list of names.

# korv_flags: warnings, sanitizers and instruction set, for every target of the project.
add_library(korv_flags INTERFACE)
target_compile_options(korv_flags INTERFACE -Wall -Wextra -Wpedantic)
# Time does not end in 2038 on 32 bits either.
target_compile_definitions(korv_flags INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
if(KORV_WERROR)
  target_compile_options(korv_flags INTERFACE -Werror)
endif()
if(CMAKE_SIZEOF_VOID_P EQUAL 4 AND KORV_SSE2)
  target_compile_options(korv_flags INTERFACE -msse2 -mfpmath=sse)
endif()
if(KORV_SANITIZE)
  set(sanitizers ${KORV_SANITIZE})
  if(sanitizers STREQUAL "ON")
    set(sanitizers address,undefined)
  endif()
  target_compile_options(korv_flags INTERFACE -fsanitize=${sanitizers} -fno-sanitize-recover=all
                                              -fno-omit-frame-pointer)
  target_link_options(korv_flags INTERFACE -fsanitize=${sanitizers})
endif()

# korv_export_names(target exports): exactly the names in the file `exports` are visible.
function(korv_export_names target exports)
  file(STRINGS ${exports} lines REGEX "^(function|data) ")
  set(names "")
  foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[a-z]+ ([A-Za-z0-9_]+).*" "    \\1;\n" name "${line}")
    string(APPEND names "${name}")
  endforeach()
  set(map ${CMAKE_CURRENT_BINARY_DIR}/${target}.map)
  file(CONFIGURE OUTPUT ${map} CONTENT "{\nglobal:\n${names}local:\n    *;\n};\n" @ONLY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${exports})
  set_target_properties(${target} PROPERTIES LINK_DEPENDS ${map}
                                             CXX_VISIBILITY_PRESET hidden
                                             VISIBILITY_INLINES_HIDDEN ON)
  target_link_options(${target} PRIVATE -Wl,--version-script=${map} -Wl,--as-needed -Wl,-z,relro
                                        -Wl,-z,now)
  # Clang puts the sanitizers' run-time library into the program alone.
  if(NOT (KORV_SANITIZE AND CMAKE_C_COMPILER_ID MATCHES Clang))
    target_link_options(${target} PRIVATE -Wl,-z,defs)
  endif()
  target_link_libraries(${target} PRIVATE korv_flags)
endfunction()

# korv_shared_object(target exports): C++ inside, a plain C interface outside. Exactly the names in the
# file `exports` are visible, and no C++ run-time library is needed. Callers may enter with a stack
# that is aligned to 4 bytes only.
function(korv_shared_object target exports)
  korv_export_names(${target} ${exports})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE C)
  target_compile_options(${target} PRIVATE $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti
                                           -fno-threadsafe-statics>)
  # A zeroed block stays malloc and memset: the compiler would make it calloc, which glibc's per-thread
  # cache does not serve (41 ns for a field and a reference converted and released, not 73). The few bytes
  # of thread-local state need no call into the loader.
  target_compile_options(${target} PRIVATE -fno-builtin-malloc -ftls-model=initial-exec)
  # Otherwise the place of a function among others decides about its speed.
  target_compile_options(${target} PRIVATE -falign-functions=64)
  # Without SSE2 blocks are passed in another way, but only among the functions of one object.
  target_compile_options(${target} PRIVATE -Wno-psabi)
  if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(${target} PRIVATE -mstackrealign)
  endif()
  if(KORV_COVERAGE)
    target_compile_options(${target} PRIVATE --coverage -fprofile-update=atomic)
    target_link_options(${target} PRIVATE --coverage)
  endif()
endfunction()
