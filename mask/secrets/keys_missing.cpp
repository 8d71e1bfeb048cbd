// A build without libcrypto.
#include <stdexcept>

#include "secrets/keys.h"

namespace secrets {

bool hasCryptography() {
    return false;
}

void deriveKey(std::span<const uint8_t>, const std::string&, const std::string&, const std::string&,
               uint8_t*) {
    throw std::runtime_error("this build has no libcrypto");
}

std::string fingerprint(std::span<const uint8_t>) {
    throw std::runtime_error("this build has no libcrypto");
}

}  // namespace secrets
