// libcrypto has failed, which happens only when there is no memory.
#pragma once

#include <new>

namespace crypto {

inline void require(bool succeeded) {
    if (!succeeded) throw std::bad_alloc();
}

}  // namespace crypto
