// Secrets from the environment, and new ones.
#pragma once

#include <string>
#include <vector>

#include "korv/mask.h"
#include "secrets/secret_pages.h"

namespace tool {

// The secrets of the variables KORV_SECRET_NAME; NAME is the secret's name in capitals.
class SecretVariables {
  public:
    // Takes the secrets out of the environment and overwrites them there. To be called before the
    // first thread. Throws ToolError, with names only.
    void take();

    // As KorvMaskSettings has them; they live as long as the object.
    const std::vector<KorvMaskSecret>& secrets() const { return secrets_; }

  private:
    secrets::SecretPages pages_;
    std::vector<std::string> names_;
    std::vector<KorvMaskSecret> secrets_;
};

// Prints a line for a secrets file with 32 random bytes. Throws ToolError.
int printNewSecret(const std::string& name);

}  // namespace tool
