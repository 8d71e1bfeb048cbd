# 32-bit x86 Linux, built on a 64-bit machine with a multilib compiler.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_C_FLAGS_INIT -m32)
set(CMAKE_CXX_FLAGS_INIT -m32)

# A multilib compiler without the 32-bit run-time libraries fails later, and does not say why.
set(korv_compiler c++)
if(DEFINED ENV{CXX})
  set(korv_compiler $ENV{CXX})
endif()
if(CMAKE_CXX_COMPILER)
  set(korv_compiler ${CMAKE_CXX_COMPILER})
endif()
execute_process(COMMAND ${korv_compiler} -m32 -print-file-name=libstdc++.so
                OUTPUT_VARIABLE korv_libstdcxx ERROR_QUIET OUTPUT_STRIP_TRAILING_WHITESPACE)
if(NOT EXISTS "${korv_libstdcxx}" AND NOT CMAKE_HOST_SYSTEM_PROCESSOR MATCHES "^i[3-6]86$")
  message(FATAL_ERROR "${korv_compiler} has no 32-bit run-time libraries: install g++-multilib, or build for "
                      "64 bits with cmake --preset native64")
endif()
