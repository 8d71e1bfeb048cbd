# libcrypto of OpenSSL, for the keyed methods. A 64-bit build needs it; a 32-bit one uses it where it is
# present for 32 bits. Sets KORV_HAS_LIBCRYPTO.
option(KORV_LIBCRYPTO_REQUIRED "Fail without libcrypto, also for 32 bits" OFF)
include(CheckCXXSourceCompiles)

find_package(OpenSSL 3.0 COMPONENTS Crypto)
set(KORV_HAS_LIBCRYPTO OFF)
if(OPENSSL_FOUND)
  # On a 64-bit machine its own libcrypto is found for 32 bits, too, but cannot be linked.
  set(CMAKE_REQUIRED_LIBRARIES OpenSSL::Crypto)
  check_cxx_source_compiles("#include <openssl/evp.h>
int main() { return EVP_sha256() == nullptr; }" KORV_LIBCRYPTO_LINKS)
  unset(CMAKE_REQUIRED_LIBRARIES)
  set(KORV_HAS_LIBCRYPTO ${KORV_LIBCRYPTO_LINKS})
endif()
if(NOT KORV_HAS_LIBCRYPTO)
  if(CMAKE_SIZEOF_VOID_P EQUAL 8 OR KORV_LIBCRYPTO_REQUIRED)
    message(FATAL_ERROR "libcrypto is missing: install libssl-dev, or set KORV_BUILD_MASK to OFF")
  endif()
  message(STATUS "Without libcrypto for 32 bits: rules with a secret will be refused")
endif()
